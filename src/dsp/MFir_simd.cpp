// Four samples at a time, in what the floor of processors has.
#include "dsp/MFirPasses.h"

namespace {

struct Vector4 {
  typedef float Lanes __attribute__((vector_size(16)));
  static constexpr int32_t kRegisters = 8;
  static constexpr int32_t kSteps = 1;
};

}  // namespace

const MFirKernel kFirBaseline = {MFirPasses<Vector4>::Run};
