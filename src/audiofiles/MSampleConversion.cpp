#include "audiofiles/MSampleConversion.h"

#include <bit>
#include <cstring>

#include "audiofiles/MSampleContents.h"

namespace {

// A product of an integer of up to 24 bits and a float is exact in double, so the float product rounds the
// same.
struct Unsigned8 {
  static constexpr int32_t kBytes = 1;
  static float Get(const uint8_t* bytes) noexcept {
    return static_cast<float>(bytes[0] - 127) * 0.007874015718698502f;
  }
};

// Copying on little-endian machines is a form that the compiler turns into vectors.
constexpr bool kIsLittle = std::endian::native == std::endian::little;

struct Signed16 {
  static constexpr int32_t kBytes = 2;
  static float Get(const uint8_t* bytes) noexcept {
    int16_t sample;
    if constexpr (kIsLittle)
      std::memcpy(&sample, bytes, sizeof sample);
    else
      sample = static_cast<int16_t>(MGetLittle16(bytes));
    return static_cast<float>(sample) * 3.0518509447574615e-05f;
  }
};

struct Signed24 {
  static constexpr int32_t kBytes = 3;
  static float Get(const uint8_t* bytes) noexcept {
    const uint32_t high = uint32_t{MGetLittle16(bytes)} << 8 | uint32_t{bytes[2]} << 24;
    return static_cast<float>(static_cast<int32_t>(high) >> 8) * 1.1920930376163597e-07f;
  }
};

struct Signed32 {
  static constexpr int32_t kBytes = 4;
  static float Get(const uint8_t* bytes) noexcept {
    return static_cast<float>(static_cast<int32_t>(MGetLittle32(bytes)) * 4.656613150633165e-10);
  }
};

struct Float32 {
  static constexpr int32_t kBytes = 4;
  static float Get(const uint8_t* bytes) noexcept {
    float sample;
    if constexpr (kIsLittle)
      std::memcpy(&sample, bytes, sizeof sample);
    else
      sample = std::bit_cast<float>(MGetLittle32(bytes));
    return sample;
  }
};

// `stride`: bytes from one frame to the next.
template <typename Sample>
inline void ConvertChannel(float* target, const uint8_t* bytes, int32_t frames, std::ptrdiff_t stride) {
  for (int32_t i = 0; i < frames; ++i) target[i] = Sample::Get(bytes + i * stride);
}

template <typename Sample>
void Convert(MAudioBuffer& buffer, int32_t start, const uint8_t* bytes, int32_t frames) {
  constexpr int32_t kBytes = Sample::kBytes;
  const int32_t channels = buffer.GetChannelCount();
  if (channels == 1) return ConvertChannel<Sample>(buffer.GetChannel(0) + start, bytes, frames, kBytes);
  if (channels == 2) {
    float* const left = buffer.GetChannel(0) + start;
    float* const right = buffer.GetChannel(1) + start;
    for (int32_t i = 0; i < frames; ++i) {
      left[i] = Sample::Get(bytes + 2 * i * std::ptrdiff_t{kBytes});
      right[i] = Sample::Get(bytes + (2 * i + 1) * std::ptrdiff_t{kBytes});
    }
    return;
  }
  for (int32_t c = 0; c < channels; ++c)
    ConvertChannel<Sample>(buffer.GetChannel(c) + start, bytes + c * kBytes, frames,
                           std::ptrdiff_t{kBytes} * channels);
}

}  // namespace

void MConvertSamples(MAudioBuffer& buffer, int32_t start, const MSampleFormat& format, const uint8_t* bytes,
                     int32_t frames) {
  if (format.bits == 8) return Convert<Unsigned8>(buffer, start, bytes, frames);
  if (format.bits == 16) return Convert<Signed16>(buffer, start, bytes, frames);
  if (format.bits == 24) return Convert<Signed24>(buffer, start, bytes, frames);
  if (format.isFloat) return Convert<Float32>(buffer, start, bytes, frames);
  Convert<Signed32>(buffer, start, bytes, frames);
}
