// Two samples at a time, in what the floor of processors has.
#include "effects/SqueezelPasses.h"

namespace {

struct Two {
  typedef double Lanes __attribute__((vector_size(16)));
  typedef float Floats __attribute__((vector_size(8)));
  typedef int32_t Ints __attribute__((vector_size(8)));

  static Lanes Root(Lanes a) { return Lanes{__builtin_sqrt(a[0]), __builtin_sqrt(a[1])}; }
};

}  // namespace

const SqueezelKernel kSqueezelBaseline = SqueezelPasses<Two>::kKernel;
