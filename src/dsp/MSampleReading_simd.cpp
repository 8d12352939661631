#include "dsp/MSampleReading.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "dsp/MCubic.h"

namespace {

typedef float Lanes __attribute__((vector_size(16)));
typedef int32_t Indices __attribute__((vector_size(16)));
typedef double Places __attribute__((vector_size(32)));
constexpr int32_t kLanes = 4;

// Four samples in a row for each of four places, turned into columns, and how far each place is behind the
// second one.
Lanes Interpolate(const Lanes (&rows)[kLanes], Lanes behind) {
  const Lanes low01 = __builtin_shufflevector(rows[0], rows[1], 0, 4, 1, 5);
  const Lanes high01 = __builtin_shufflevector(rows[0], rows[1], 2, 6, 3, 7);
  const Lanes low23 = __builtin_shufflevector(rows[2], rows[3], 0, 4, 1, 5);
  const Lanes high23 = __builtin_shufflevector(rows[2], rows[3], 2, 6, 3, 7);
  const Lanes y0 = __builtin_shufflevector(low01, low23, 0, 1, 4, 5);
  const Lanes y1 = __builtin_shufflevector(low01, low23, 2, 3, 6, 7);
  const Lanes y2 = __builtin_shufflevector(high01, high23, 0, 1, 4, 5);
  const Lanes y3 = __builtin_shufflevector(high01, high23, 2, 3, 6, 7);
  return MCubic(y0, y1, y2, y3, behind);
}

// Four places whose neighbours are all in the recording.
Lanes ReadInside(const float* samples, const int32_t* whole, const float* behind) {
  Lanes rows[kLanes], t;
  for (int32_t k = 0; k < kLanes; ++k) std::memcpy(&rows[k], samples + whole[k] - 1, sizeof rows[k]);
  std::memcpy(&t, behind, sizeof t);
  return Interpolate(rows, t);
}

// One place anywhere.
float ReadAnywhere(const float* samples, int32_t length, int32_t whole, float behind) {
  if (whole < 0 || whole >= length || behind < 0) return 0;
  const auto at = [=](int64_t i) { return i >= 0 && i < length ? samples[i] : 0.0f; };
  const int64_t i = whole;
  return MCubic(at(i - 1), at(i), at(i + 1), at(i + 2), behind);
}

}  // namespace

MSampleReading::MSampleReading(double start, double speed, int32_t count) noexcept
    : isCopy_(speed == 1 && start == std::floor(start)), count_(std::min(count, kMost)), start_(start) {
  if (isCopy_) return;
  constexpr Places kLowest = Places{} - 1, kHighest = Places{} + std::numeric_limits<int32_t>::max();
  for (int32_t i = 0; i < count_; i += kLanes) {
    Places places = start + (Places{0, 1, 2, 3} + i) * speed;
    places = places > kLowest ? places : kLowest;
    places = places < kHighest ? places : kHighest;
    const Indices whole = __builtin_convertvector(places, Indices);
    const Lanes behind = __builtin_convertvector(places - __builtin_convertvector(whole, Places), Lanes);
    std::memcpy(whole_ + i, &whole, sizeof whole);
    std::memcpy(behind_ + i, &behind, sizeof behind);
  }
}

void MSampleReading::Read(float* out, const float* samples, int32_t length) const noexcept {
  if (isCopy_) return Copy(out, samples, length);
  int32_t i = 0;
  for (; i + kLanes <= count_; i += kLanes) {
    if (whole_[i] >= 1 && whole_[i + kLanes - 1] < length - 2) {
      const Lanes values = ReadInside(samples, whole_ + i, behind_ + i);
      std::memcpy(out + i, &values, sizeof values);
    } else {
      for (int32_t k = i; k < i + kLanes; ++k) out[k] = ReadAnywhere(samples, length, whole_[k], behind_[k]);
    }
  }
  for (; i < count_; ++i) out[i] = ReadAnywhere(samples, length, whole_[i], behind_[i]);
}

void MSampleReading::Copy(float* out, const float* samples, int32_t length) const noexcept {
  const auto start = static_cast<int64_t>(std::clamp<double>(start_, -count_, length));
  const auto first = static_cast<int32_t>(std::clamp<int64_t>(-start, 0, count_));
  const auto end = static_cast<int32_t>(std::clamp<int64_t>(length - start, first, count_));
  std::fill(out, out + first, 0.0f);
  std::copy(samples + start + first, samples + start + end, out + first);
  std::fill(out + end, out + count_, 0.0f);
}
