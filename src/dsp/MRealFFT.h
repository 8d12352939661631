#pragma once
#include "core/MTypes.h"

struct MRealFFTKernel;
struct MRealFFTTables;

// The real Fourier transform of N samples, in place. With n and k running from 0,
//   R[k] = sum x[n] cos(2 pi k n / N),  I[k] = + sum x[n] sin(2 pi k n / N),
// and the N floats of a spectrum are R[0], R[N/2], R[1], I[1], R[2], I[2], ... I[N/2 - 1]. Forward has no
// factor; Inverse gives N/2 times the samples, so that its caller multiplies by 2 / N.
//
// N is a power of two from 4 to 32768. A value of this class is a transform of one size, which any number of
// threads may use; making it for the first time builds tables that stay, making it again is cheap. The
// transforms take any alignment and need no memory but the stack: 16 KB, and 128 KB for N above 4096.
class MRealFFT {
 public:
  static constexpr int32_t kMinimumSize = 4;
  static constexpr int32_t kMaximumSize = 32768;
  static constexpr bool IsSize(int32_t size) noexcept {
    return size >= kMinimumSize && size <= kMaximumSize && (size & (size - 1)) == 0;
  }

  // Which instructions run: the widest that the processor has, or those that every processor has.
  enum class Path { kWidest, kBaseline };

  MRealFFT() noexcept = default;  // size 0; its transforms do nothing
  // Another size than IsSize allows is a mistake of the caller; it is asserted, and otherwise counts as 0.
  // [any, not audio]
  explicit MRealFFT(int32_t size, Path path = Path::kWidest);

  int32_t GetSize() const noexcept;
  void Forward(float* data) const noexcept;  // [audio]
  void Inverse(float* data) const noexcept;  // [audio]

 private:
  const MRealFFTTables* tables_ = nullptr;
  const MRealFFTKernel* kernel_ = nullptr;
};
