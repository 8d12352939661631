#include "dsp/MRealFFTPasses.h"

namespace {

struct Vector4 {
  static constexpr int32_t kLanes = 4;
  typedef float Lanes __attribute__((vector_size(16)));

  static Lanes Even(Lanes a, Lanes b) { return __builtin_shufflevector(a, b, 0, 2, 4, 6); }
  static Lanes Odd(Lanes a, Lanes b) { return __builtin_shufflevector(a, b, 1, 3, 5, 7); }
  static Lanes ZipLow(Lanes a, Lanes b) { return __builtin_shufflevector(a, b, 0, 4, 1, 5); }
  static Lanes ZipHigh(Lanes a, Lanes b) { return __builtin_shufflevector(a, b, 2, 6, 3, 7); }
  static Lanes Reverse(Lanes a) { return __builtin_shufflevector(a, a, 3, 2, 1, 0); }

  static void StoreTransposed(float* to, const Lanes (&x)[8]) {
    for (int32_t half = 0; half < 2; ++half) {
      const Lanes* const v = x + 4 * half;
      const Lanes low01 = ZipLow(v[0], v[1]), high01 = ZipHigh(v[0], v[1]);
      const Lanes low23 = ZipLow(v[2], v[3]), high23 = ZipHigh(v[2], v[3]);
      const Lanes rows[] = {__builtin_shufflevector(low01, low23, 0, 1, 4, 5),
                            __builtin_shufflevector(low01, low23, 2, 3, 6, 7),
                            __builtin_shufflevector(high01, high23, 0, 1, 4, 5),
                            __builtin_shufflevector(high01, high23, 2, 3, 6, 7)};
      for (int32_t l = 0; l < 4; ++l) std::memcpy(to + 16 * l + 8 * half, rows + l, sizeof(Lanes));
    }
  }
};

}  // namespace

const MRealFFTKernel kMRealFFTBaseline = {MRealFFTPasses<Vector4>::Transform<false>,
                                          MRealFFTPasses<Vector4>::Transform<true>};
