#include "core/MHexaStream.h"

#include <algorithm>

void MHexaStream::Write(const void* bytes, int32_t count) {
  MStream& target = Target();
  const auto* from = static_cast<const uint8_t*>(bytes);
  while (count > 0) {
    const int32_t chunk = std::min(count, kChunk);
    char digits[2 * kChunk];
    Encode(from, chunk, digits);
    target.Write(digits, 2 * chunk);
    from += chunk;
    count -= chunk;
  }
}

int32_t MHexaStream::Read(void* bytes, int32_t count) {
  MStream& target = Target();
  auto* const to = static_cast<uint8_t*>(bytes);
  int32_t decoded = 0;
  while (decoded < count) {
    const int32_t chunk = std::min(count - decoded, kChunk);
    uint8_t digits[2 * kChunk];
    const int32_t found = target.Read(digits, 2 * chunk) / 2;
    for (int32_t i = 0; i < found; ++i) {
      const int32_t high = MDigitValue(digits[2 * i]);
      const int32_t low = MDigitValue(digits[2 * i + 1]);
      if (high < 0 || low < 0) ThrowShortRead();
      to[decoded + i] = static_cast<uint8_t>(high << 4 | low);
    }
    decoded += found;
    if (found < chunk) break;
  }
  return decoded;
}

void MHexaStream::Seek(int64_t offset, MSeekOrigin origin) {
  Target().Seek(offset, origin);
}

int64_t MHexaStream::GetPosition() {
  return Target().GetPosition() / 2;
}

void MHexaStream::Flush() {
  Target().Flush();
}

bool MHexaStream::IsEnd() {
  return Target().IsEnd();
}

int64_t MHexaStream::GetSize() {
  return Target().GetSize() / 2;
}

bool MHexaStream::IsValid() {
  return target_ != nullptr;
}

void MHexaStream::Encode(const uint8_t* bytes, int32_t count, char* digits) noexcept {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  for (int32_t i = 0; i < count; ++i) {
    *digits++ = kDigits[bytes[i] >> 4];
    *digits++ = kDigits[bytes[i] & 15];
  }
}

MStream& MHexaStream::Target() const {
  if (!target_) ThrowNotOpen();
  return *target_;
}
