#include "audiofiles/MSampleContents.h"

#include <algorithm>

#include "core/MFormat.h"
#include "core/MTranslate.h"

void MAddPlace(MException& failure, int64_t position) {
  failure.AddSource(Format(Translate("byte {0}")).Arg(position).Text());
}

void MThrowInvalidContents(const char* message, int64_t position) {
  MString text = Translate("Invalid file contents. ");
  text.Append(Translate(MString::Literal(message)));
  MException failure(text, MErrorCode::kTransferFailed);
  MAddPlace(failure, position);
  throw failure;
}

int32_t MReadFully(MStream& stream, void* bytes, int32_t count) {
  int32_t done = 0;
  while (done < count) {
    const int32_t read = stream.Read(static_cast<uint8_t*>(bytes) + done, count - done);
    if (read <= 0) break;
    done += read;
  }
  return done;
}

void MSkip(MStream& stream, int64_t count) {
  constexpr int64_t kStep = 1 << 30;
  for (; count > kStep; count -= kStep) stream.Seek(kStep, MSeekOrigin::kCurrent);
  if (count != 0) stream.Seek(count, MSeekOrigin::kCurrent);
}

int64_t MGetBytesLeft(MStream& stream) {
  try {
    return std::max<int64_t>(stream.GetSize() - stream.GetPosition(), 0);
  } catch (const MException&) {  // filters and pipes do not know
    return -1;
  }
}

MStream* MRequireBytes(MStream& stream, int64_t count, MMemoryStream& copy) {
  const int64_t left = MGetBytesLeft(stream);
  if (left >= 0) return left >= count ? &stream : nullptr;
  uint8_t piece[4096];
  for (int64_t done = 0; done < count;) {
    const int32_t read =
        MReadFully(stream, piece, static_cast<int32_t>(std::min<int64_t>(sizeof piece, count - done)));
    if (read == 0) return nullptr;
    copy.Write(piece, read);
    done += read;
  }
  copy.Seek(0, MSeekOrigin::kStart);
  return &copy;
}
