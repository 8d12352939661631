#pragma once
#include <vector>

#include "core/MMemory.h"

// A window for spectra: a shape of a number of samples, with the sums that spectra are scaled by. With
// x = i / (size - 1) and t = 2 x - 1:
//   rectangular 1, Hamming 0.53836 - 0.46164 cos(2 pi x), Hann (1 - cos(2 pi x)) 0.5, cosine sin(pi x),
//   Lanczos sin(t) / t (in radians and without a pi, so a gentle one),
//   Bartlett w[i] = w[size - 1 - i] = 2 i / size for i = 0 to size / 2,
//   Gauss exp(-0.5 ((i - (size - 1) / 2) / (0.4 (size - 1) / 2))^2).
// One sample is 1, and 0 for Bartlett. Samples and sums are formed in double and rounded once.
class MSignalWindow {
 public:
  M_LIBRARY_MEMORY

  enum Type : int32_t { kRectangular, kHamming, kHann, kCosine, kLanczos, kBartlett, kGauss };
  static constexpr int32_t kTypeCount = 7;
  // The type's name, such as "Hann"; null for another number.
  static const char* GetTypeName(int32_t type) noexcept;

  // Makes the window; a size below 1 makes an empty one. With `halfComplement` the first half becomes the
  // complement of the second, w[i] = 1 - w[i + size / 2] for i below size / 2, for cross-fades. Another type
  // raises "Unknown signal window type.", missing memory "Out of memory."; the window is then as it was. The
  // memory never shrinks. [any, not audio]
  void Set(int32_t size, int32_t type, bool halfComplement = false);

  int32_t GetType() const noexcept { return type_; }
  int32_t GetSize() const noexcept { return static_cast<int32_t>(samples_.size()); }
  const float* GetSamples() const noexcept { return samples_.data(); }
  float GetSum() const noexcept { return sum_; }
  float GetSquareSum() const noexcept { return squareSum_; }

 private:
  std::vector<float, MAllocator<float>> samples_;
  int32_t type_ = kRectangular;
  float sum_ = 0;
  float squareSum_ = 0;
};
