// Compiled for AVX2 and FMA, and run only where MHasAVX2() allows.
#include "dsp/MRealFFTPasses.h"

#if defined(__AVX2__) && defined(__FMA__)

namespace {

struct Vector8 {
  static constexpr int32_t kLanes = 8;
  typedef float Lanes __attribute__((vector_size(32)));

  static Lanes Even(Lanes a, Lanes b) {
    return __builtin_shufflevector(FirstHalves(a, b), SecondHalves(a, b), 0, 2, 8, 10, 4, 6, 12, 14);
  }
  static Lanes Odd(Lanes a, Lanes b) {
    return __builtin_shufflevector(FirstHalves(a, b), SecondHalves(a, b), 1, 3, 9, 11, 5, 7, 13, 15);
  }
  static Lanes ZipLow(Lanes a, Lanes b) { return FirstHalves(ZipFront(a, b), ZipBack(a, b)); }
  static Lanes ZipHigh(Lanes a, Lanes b) { return SecondHalves(ZipFront(a, b), ZipBack(a, b)); }
  static Lanes Reverse(Lanes a) {
    const Lanes exchanged = __builtin_shufflevector(a, a, 4, 5, 6, 7, 0, 1, 2, 3);
    return __builtin_shufflevector(exchanged, exchanged, 3, 2, 1, 0, 7, 6, 5, 4);
  }

  static void StoreTransposed(float* to, const Lanes (&x)[8]) {
    Lanes pairs[8], fours[8];
    for (int32_t j = 0; j < 8; j += 2) {
      pairs[j] = ZipFront(x[j], x[j + 1]);
      pairs[j + 1] = ZipBack(x[j], x[j + 1]);
    }
    for (int32_t j = 0; j < 8; j += 4) {
      for (int32_t k = 0; k < 2; ++k) {
        const Lanes &a = pairs[j + k], &b = pairs[j + k + 2];
        fours[j + 2 * k] = __builtin_shufflevector(a, b, 0, 1, 8, 9, 4, 5, 12, 13);
        fours[j + 2 * k + 1] = __builtin_shufflevector(a, b, 2, 3, 10, 11, 6, 7, 14, 15);
      }
    }
    for (int32_t l = 0; l < 4; ++l) {
      const Lanes low = FirstHalves(fours[l], fours[l + 4]), high = SecondHalves(fours[l], fours[l + 4]);
      std::memcpy(to + 16 * l, &low, sizeof low);
      std::memcpy(to + 16 * (l + 4), &high, sizeof high);
    }
  }

 private:
  static Lanes FirstHalves(Lanes a, Lanes b) {
    return __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11);
  }
  static Lanes SecondHalves(Lanes a, Lanes b) {
    return __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15);
  }
  // Within each half alone, which is what the instructions do.
  static Lanes ZipFront(Lanes a, Lanes b) { return __builtin_shufflevector(a, b, 0, 8, 1, 9, 4, 12, 5, 13); }
  static Lanes ZipBack(Lanes a, Lanes b) { return __builtin_shufflevector(a, b, 2, 10, 3, 11, 6, 14, 7, 15); }
};

}  // namespace

const MRealFFTKernel kMRealFFTWide = {MRealFFTPasses<Vector8>::Transform<false>,
                                      MRealFFTPasses<Vector8>::Transform<true>};

#else

const MRealFFTKernel kMRealFFTWide = {nullptr, nullptr};

#endif
