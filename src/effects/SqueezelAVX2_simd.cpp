// Compiled for AVX2 and FMA, and run only where MHasAVX2() allows.
#include "effects/SqueezelPasses.h"

#if defined(__AVX2__) && defined(__FMA__)
#include <immintrin.h>

namespace {

struct Four {
  typedef double Lanes __attribute__((vector_size(32)));
  typedef float Floats __attribute__((vector_size(16)));
  typedef int32_t Ints __attribute__((vector_size(16)));

  static Lanes Root(Lanes a) { return _mm256_sqrt_pd(a); }
};

}  // namespace

const SqueezelKernel kSqueezelWide = SqueezelPasses<Four>::kKernel;

#else

const SqueezelKernel kSqueezelWide = {};

#endif
