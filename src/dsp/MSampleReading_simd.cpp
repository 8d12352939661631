#include <algorithm>
#include <cstring>

#include "dsp/MCubic.h"
#include "dsp/MSampleReading.h"

namespace {

typedef float Lanes __attribute__((vector_size(16)));
constexpr int32_t kLanes = 4;

// The neighbours of a place inside of the recording, and how far it is behind the second one.
void ReadInside(const float* samples, double place, Lanes& row, float& t) {
  const auto whole = static_cast<int32_t>(place);
  std::memcpy(&row, samples + whole - 1, sizeof row);
  t = static_cast<float>(place - whole);
}

// The same of any place.
void ReadAnywhere(const float* samples, int32_t length, double place, Lanes& row, float& t) {
  row = Lanes{};
  t = 0;
  if (!(place >= 0 && place < length)) return;
  const auto whole = static_cast<int32_t>(place);
  for (int32_t j = 0; j < kLanes; ++j) {
    const int64_t i = int64_t{whole} + j - 1;
    if (i >= 0 && i < length) row[j] = samples[i];
  }
  t = static_cast<float>(place - whole);
}

// The values at four places; the rows are turned into columns.
void Interpolate(float* out, const Lanes (&rows)[kLanes], Lanes t) {
  const Lanes low01 = __builtin_shufflevector(rows[0], rows[1], 0, 4, 1, 5);
  const Lanes high01 = __builtin_shufflevector(rows[0], rows[1], 2, 6, 3, 7);
  const Lanes low23 = __builtin_shufflevector(rows[2], rows[3], 0, 4, 1, 5);
  const Lanes high23 = __builtin_shufflevector(rows[2], rows[3], 2, 6, 3, 7);
  const Lanes y0 = __builtin_shufflevector(low01, low23, 0, 1, 4, 5);
  const Lanes y1 = __builtin_shufflevector(low01, low23, 2, 3, 6, 7);
  const Lanes y2 = __builtin_shufflevector(high01, high23, 0, 1, 4, 5);
  const Lanes y3 = __builtin_shufflevector(high01, high23, 2, 3, 6, 7);
  const Lanes y = MCubic(y0, y1, y2, y3, t);
  std::memcpy(out, &y, sizeof y);
}

}  // namespace

namespace MSampleReading {

void Copy(float* out, const float* samples, int32_t length, int64_t start, int32_t count) noexcept {
  start = std::clamp<int64_t>(start, -count, length);
  const auto first = static_cast<int32_t>(std::clamp<int64_t>(-start, 0, count));
  const auto end = static_cast<int32_t>(std::clamp<int64_t>(length - start, first, count));
  std::fill(out, out + first, 0.0f);
  std::copy(samples + start + first, samples + start + end, out + first);
  std::fill(out + end, out + count, 0.0f);
}

void Resample(float* out, const float* samples, int32_t length, double start, double speed,
              int32_t count) noexcept {
  for (int32_t i = 0; i < count; i += kLanes) {
    Lanes rows[kLanes];
    float t[kLanes];
    const bool isInside = start + i * speed >= 1 && start + (i + kLanes - 1) * speed < length - 2.0;
    for (int32_t k = 0; k < kLanes; ++k) {
      const double place = start + (i + k) * speed;
      if (isInside)
        ReadInside(samples, place, rows[k], t[k]);
      else
        ReadAnywhere(samples, length, place, rows[k], t[k]);
    }
    float values[kLanes];
    Interpolate(values, rows, Lanes{t[0], t[1], t[2], t[3]});
    std::copy_n(values, std::min(kLanes, count - i), out + i);
  }
}

}  // namespace MSampleReading
