// In what the floor of processors has.
#include "effects/SwirloPasses.h"

namespace {

struct Two {
  typedef double Lanes __attribute__((vector_size(16)));
  typedef float Floats __attribute__((vector_size(8)));
};

}  // namespace

const SwirloKernel kSwirloBaseline = SwirloPasses<Two>::kKernel;
