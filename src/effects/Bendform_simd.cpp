// In what the floor of processors has.
#include "effects/BendformPasses.h"

namespace {
struct Baseline;
}  // namespace

const BendformKernel kBendformBaseline = {BendformPasses<Baseline>::Run};
