// Compiled for AVX2 and FMA, and run only where MHasAVX2() allows.
#include "effects/BendformPasses.h"

#if defined(__AVX2__) && defined(__FMA__)

namespace {
struct Wide;
}  // namespace

const BendformKernel kBendformWide = {BendformPasses<Wide>::Run};

#else

const BendformKernel kBendformWide = {};

#endif
