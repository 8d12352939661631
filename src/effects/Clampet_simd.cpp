// Two samples at a time, in what the floor of processors has.
#include "effects/ClampetPasses.h"

namespace {

struct Two {
  typedef double Lanes __attribute__((vector_size(16)));
  typedef int64_t Bits __attribute__((vector_size(16)));
  typedef float Floats __attribute__((vector_size(8)));

  template <typename Mask>
  static bool AreAll(Mask mask) {
    return (mask[0] & mask[1]) != 0;
  }
};

}  // namespace

const ClampetKernel kClampetBaseline = ClampetPasses<Two>::kKernel;
