// Compiled for AVX2 and FMA, and run only where MHasAVX2() allows.
#include "effects/SwirloPasses.h"

#if defined(__AVX2__) && defined(__FMA__)

namespace {

struct FusedTwo {
  typedef double Lanes __attribute__((vector_size(16)));
  typedef float Floats __attribute__((vector_size(8)));
};

}  // namespace

const SwirloKernel kSwirloWide = SwirloPasses<FusedTwo>::kKernel;

#else

const SwirloKernel kSwirloWide = {};

#endif
