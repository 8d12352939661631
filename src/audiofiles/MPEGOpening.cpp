#include "audiofiles/MPEGOpening.h"

#include <cstring>

#include "audiofiles/MSampleContents.h"

namespace mp3dec {

namespace {

constexpr int32_t kMostTags = 8;
constexpr int32_t kMostSteps = 1024;  // of two bytes, of the search for a sync word
constexpr uint32_t kLowestSync = 0xFFF0;
constexpr int32_t kFormatBytes = 16;

[[noreturn]] void FailHeader(binfile& file) {
  MThrowInvalidContents("MPEG stream header error.", file.Ioctl(kGetPosition));
}

[[noreturn]] void FailWAV(binfile& file) {
  MThrowInvalidContents("Invalid MPEG header in WAVe file.", file.Ioctl(kGetPosition));
}

bool Is(const uint8_t* bytes, const char* name) {
  return std::memcmp(bytes, name, std::strlen(name)) == 0;
}

// MPEG-2.5 of layer III. Elsewhere than at the start its sync word is too likely to be something else.
bool IsLowRateSync(uint32_t value) {
  return value == 0xFFE2 || value == 0xFFE3;
}

void FindSync(binfile& file) {
  for (int32_t step = 0; step <= kMostSteps; ++step) {
    uint32_t value;
    if (!file.Peek16(value)) break;
    if (value >= kLowestSync || (step == 0 && IsLowRateSync(value))) return;
    if (!file.Skip(2)) break;
  }
  FailHeader(file);
}

void SkipInfo(binfile& file) {
  uint8_t head[8];
  if (!file.Read(head, sizeof head) || !file.Skip(MGetLittle32(head + 4))) FailHeader(file);
}

void SkipID3(binfile& file) {
  constexpr int32_t kBeforeSize = 6;  // "ID3", the version, the flags
  uint32_t size;
  if (!file.Skip(kBeforeSize) || !file.Read28(size) || !file.Skip(size)) FailHeader(file);
}

// Reads a format chunk's contents up to the next chunk.
void CheckFormat(binfile& file, uint32_t length) {
  uint8_t format[kFormatBytes];
  if (length < kFormatBytes || !file.Read(format, sizeof format)) FailWAV(file);
  const uint16_t tag = MGetLittle16(format);
  if (tag != 0x50 && tag != 0x55) FailWAV(file);
  if (!file.Skip(int64_t{length} - kFormatBytes + length % 2)) FailWAV(file);
}

// Goes to the samples of a WAV file, which ends behind them.
void OpenWAV(binfileMStream& file) {
  uint8_t head[12];
  if (!file.Read(head, sizeof head) || !Is(head + 8, "WAVE")) FailWAV(file);
  for (bool hasFormat = false;;) {
    uint8_t chunk[8];
    if (!file.Read(chunk, sizeof chunk)) FailWAV(file);
    const uint32_t length = MGetLittle32(chunk + 4);
    if (Is(chunk, "data")) {
      if (!hasFormat) FailWAV(file);
      return file.SetEnd(file.Ioctl(kGetPosition) + length);
    }
    if (Is(chunk, "fmt ")) {
      CheckFormat(file, length);
      hasFormat = true;
    } else if (!file.Skip(int64_t{length} + length % 2)) {
      FailWAV(file);
    }
  }
}

}  // namespace

std::unique_ptr<mpegsplitstream> OpenMPEG(binfileMStream& file) {
  constexpr uint8_t kPack[] = {0, 0, 1, 0xBA};
  for (int32_t tag = 0; tag <= kMostTags; ++tag) {
    uint8_t start[4];
    if (file.RawPeek(start, sizeof start) < 4) FailHeader(file);
    if (Is(start, "INFO")) {
      SkipInfo(file);
    } else if (Is(start, "ID3")) {
      SkipID3(file);
    } else if (std::memcmp(start, kPack, sizeof kPack) == 0) {
      auto split = std::make_unique<mpegsplitstream>(file);
      FindSync(*split);
      return split;
    } else {
      if (Is(start, "RIFF")) OpenWAV(file);
      FindSync(file);
      return nullptr;
    }
  }
  FailHeader(file);
}

}  // namespace mp3dec
