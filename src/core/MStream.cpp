#include "core/MStream.h"

#include <algorithm>
#include <limits>

#include "core/MEncoding.h"
#include "core/MException.h"
#include "core/MTranslate.h"

namespace {

constexpr int32_t kChunk = 1024;  // of filler and of forward seeks

}  // namespace

void MStream::WriteFiller(int32_t count) {
  static constexpr uint8_t kZeros[kChunk] = {};
  for (; count > 0; count -= std::min(count, kChunk)) Write(kZeros, std::min(count, kChunk));
}

int32_t MStream::Read(void*, int32_t) {
  MThrowNotImplemented("read from stream");
}

MLineStatus MStream::ReadLine(char* text, int32_t size) {
  if (size < 1) return MLineStatus::kFull;
  MLineStatus status = MLineStatus::kNone;
  for (*text = 0; size > 1;) {
    uint8_t byte;
    if (Read(&byte, 1) < 1) return status;
    if (byte == 0 || byte == '\n') return MLineStatus::kLine;
    if (byte == '\r') continue;
    *text++ = static_cast<char>(byte);
    *text = 0;
    --size;
    status = MLineStatus::kLine;
  }
  return MLineStatus::kFull;
}

void MStream::WriteText(const MString& text) {
  const MBytes bytes = MEncoding::UTF8Codec::Get().Encode(text, false);
  Write(bytes.GetData(), std::min(text.GetLength(), bytes.GetSize()));
}

void MStream::WriteTextLine(const MString& text) {
  WriteText(text);
  Write("\n", 1);
}

void MStream::Seek(int64_t offset, MSeekOrigin origin) {
  int64_t distance = offset;
  switch (origin) {
    case MSeekOrigin::kStart:
      distance = AddLimited(offset, -GetPosition());
      break;
    case MSeekOrigin::kCurrent:
      break;
    case MSeekOrigin::kEnd:
      distance = AddLimited(AddLimited(GetSize(), -GetPosition()), offset);
      break;
    default:
      ThrowInvalidOrigin();
  }
  if (distance < 0) MThrowNotImplemented("backward seek in a stream");
  uint8_t scratch[kChunk];
  while (distance > 0) {
    const auto chunk = static_cast<int32_t>(std::min<int64_t>(distance, kChunk));
    if (Read(scratch, chunk) < chunk) return;
    distance -= chunk;
  }
}

int64_t MStream::GetPosition() {
  MThrowNotImplemented("get stream position");
}

void MStream::Flush() {
  MThrowNotImplemented("flush stream");
}

bool MStream::IsEnd() {
  MThrowNotImplemented("end of stream test");
}

void MStream::Truncate() {
  MThrowNotImplemented("truncate stream");
}

int64_t MStream::GetSize() {
  MThrowNotImplemented("stream size detection");
}

bool MStream::IsValid() {
  return true;
}

void MStream::ReadRequired(void* bytes, int32_t count) {
  if (Read(bytes, count) < count) ThrowShortRead();
}

void MStream::ThrowShortRead() {
  throw MException(Translate("Could not read required data from stream."), MErrorCode::kTransferFailed);
}

void MStream::ThrowInvalidOrigin() {
  throw MException(Translate("Invalid seek origin."), MErrorCode::kBadArgument);
}

void MStream::ThrowNotOpen() {
  throw MException(Translate("File stream is not initialized."), MErrorCode::kStreamClosed);
}

int64_t MStream::AddLimited(int64_t a, int64_t b) noexcept {
  constexpr int64_t kLowest = std::numeric_limits<int64_t>::min();
  constexpr int64_t kHighest = std::numeric_limits<int64_t>::max();
  if (b > 0 && a > kHighest - b) return kHighest;
  if (b < 0 && a < kLowest - b) return kLowest;
  return a + b;
}
