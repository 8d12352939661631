// Compiled for AVX2 and FMA, and run only where MHasAVX2() allows.
#include "dsp/MFirPasses.h"

#if defined(__AVX2__) && defined(__FMA__)

namespace {

struct Vector8 {
  typedef float Lanes __attribute__((vector_size(32)));
  static constexpr int32_t kRegisters = 8;
  static constexpr int32_t kSteps = 4;
};

}  // namespace

const MFirKernel kFirWide = {MFirPasses<Vector8>::Run};

#else

const MFirKernel kFirWide = {};

#endif
