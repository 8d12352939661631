#include "audiofiles/MWAVReader.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "audiofiles/MSampleContents.h"
#include "core/MException.h"
#include "core/MTranslate.h"

namespace {

constexpr int32_t kPieceBytes = 1 << 16;  // read and converted while it is in the processor's cache
constexpr int32_t kFormatBytes = 16;

bool Is(const uint8_t* id, const char* name) {
  return std::memcmp(id, name, 4) == 0;
}

bool IsKnown(const MSampleFormat& format) {
  return format.bits == 8 || format.bits == 16 || format.bits == 24 || format.bits == 32;
}

}  // namespace

void MWAVReader::Fail(const char* message) const {
  MThrowInvalidContents(message, position_);
}

bool MWAVReader::Take(void* bytes, int32_t count) {
  const int32_t read = MReadFully(*stream_, bytes, count);
  if (read == count) position_ += count;
  return read == count;
}

void MWAVReader::Skip(int64_t count) {
  MSkip(*stream_, count);
  position_ += count;
}

void MWAVReader::Open(MStream& stream) {
  format_ = {};
  sampleRate_ = dataBytes_ = bytesLeft_ = 0;
  position_ = 0;
  stream_ = &stream;
  try {
    ParseChunks();
  } catch (...) {
    stream_ = nullptr;
    throw;
  }
}

void MWAVReader::ParseChunks() {
  uint8_t head[12];
  if (!Take(head, sizeof head)) Fail("No WAVe header found.");
  if (!Is(head, "RIFF")) MThrowInvalidContents("The stream is not a RIFF standard file.", 0);
  if (!Is(head + 8, "WAVE")) MThrowInvalidContents("Note a WAVe file.", 8);
  for (;;) {
    uint8_t id[4];
    if (!Take(id, sizeof id)) Fail("No chunk identifier found.");
    if (Is(id, "data")) return ParseData();
    if (Is(id, "fmt "))
      ParseFormat();
    else
      SkipUnknown();
  }
}

void MWAVReader::ParseFormat() {
  uint8_t chunk[4 + kFormatBytes];
  const int64_t start = position_;
  if (!Take(chunk, sizeof chunk)) Fail("No format chunk found.");
  const uint16_t tag = MGetLittle16(chunk + 4);
  const uint16_t channels = MGetLittle16(chunk + 6);
  if ((tag != 1 && tag != 3) || channels < 1 || channels > MAudioBuffer::kMaximumChannels)
    MThrowInvalidContents("Invalid WAVe file format tag contents.", start + 4);
  format_ = {channels, MGetLittle16(chunk + 18), tag == 3};
  sampleRate_ = static_cast<int32_t>(MGetLittle32(chunk + 8));
  Skip(int64_t{MGetLittle32(chunk)} - kFormatBytes);
}

void MWAVReader::ParseData() {
  uint8_t size[4];
  if (!Take(size, sizeof size)) Fail("No data chunk length found.");
  const auto length = static_cast<int32_t>(MGetLittle32(size));
  if (length < 1) MThrowInvalidContents("Invalid data chunk length.", position_ - 4);
  if (!IsKnown(format_)) {
    MException failure(Translate("Invalid source bitrate."), MErrorCode::kTransferFailed);
    MAddPlace(failure, position_);
    throw failure;
  }
  dataBytes_ = bytesLeft_ = length;
}

void MWAVReader::SkipUnknown() {
  uint8_t size[4];
  if (!Take(size, sizeof size)) Fail("No unknown chunk length found.");
  Skip(MGetLittle32(size));
}

bool MWAVReader::Read(MAudioBuffer& target) {
  const int64_t length = target.GetLength();
  const int32_t before = bytesLeft_;
  ReadBytes(target, static_cast<int32_t>(std::min<int64_t>(before, format_.GetFrameBytes() * length)));
  return before < length || before == 0;
}

void MWAVReader::ReadRest(MAudioBuffer& target) {
  ReadBytes(target, bytesLeft_);
}

void MWAVReader::ReadBytes(MAudioBuffer& target, int32_t count) {
  if (!stream_ || bytesLeft_ == 0) return target.SetSize(0, 0);
  try {
    MMemoryStream copy;
    MStream* const source = MRequireBytes(*stream_, count, copy);
    if (!source) Fail("Could not load WAV samples.");
    ReadPieces(*source, target, count);
  } catch (...) {
    stream_ = nullptr;
    bytesLeft_ = 0;
    throw;
  }
}

void MWAVReader::ReadPieces(MStream& source, MAudioBuffer& target, int32_t count) {
  const int32_t frameBytes = format_.GetFrameBytes();
  const int32_t frames = count / frameBytes;
  const int32_t piece = kPieceBytes / frameBytes * frameBytes;
  if (target.GetChannelCount() != format_.channels || target.GetLength() != frames) {
    target.SetSize(0, 0);
    target.SetSize(format_.channels, 0, frames);
  }
  std::vector<uint8_t, MAllocator<uint8_t>> bytes(static_cast<std::size_t>(std::min(count, piece)));
  int32_t done = 0;
  for (int32_t left = count; left > 0;) {
    const int32_t wanted = std::min(left, piece);
    const int32_t read = MReadFully(source, bytes.data(), wanted);
    const int32_t end = done + read / frameBytes;
    if (end > target.GetLength()) target.Resize(end, false);
    MConvertSamples(target, done, format_, bytes.data(), end - done);
    done = end;
    position_ += read;
    if (read < wanted) {
      target.Resize(done, false);
      Fail("Could not load WAV samples.");
    }
    left -= read;
  }
  bytesLeft_ -= count;
}

void LoadWAV(MAudioBuffer& buffer, MStream& stream) {
  buffer.SetSize(0, 0);
  MWAVReader reader;
  reader.Open(stream);
  buffer.bitDepth = reader.GetFormat().bits;
  buffer.sampleRate = reader.GetSampleRate();
  reader.ReadRest(buffer);
}
