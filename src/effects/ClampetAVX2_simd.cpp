// Compiled for AVX2 and FMA, and run only where MHasAVX2() allows.
#include "effects/ClampetPasses.h"

#if defined(__AVX2__) && defined(__FMA__)
#include <immintrin.h>

namespace {

struct Four {
  typedef double Lanes __attribute__((vector_size(32)));
  typedef int64_t Bits __attribute__((vector_size(32)));
  typedef float Floats __attribute__((vector_size(16)));

  template <typename Mask>
  static bool AreAll(Mask mask) {
    return _mm256_movemask_pd(reinterpret_cast<__m256d>(mask)) == 15;
  }
};

}  // namespace

const ClampetKernel kClampetWide = ClampetPasses<Four>::kKernel;

#else

const ClampetKernel kClampetWide = {};

#endif
