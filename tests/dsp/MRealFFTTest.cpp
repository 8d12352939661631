#include "dsp/MRealFFT.h"

#include <gtest/gtest.h>

#include "dsp/MProcessor.h"
#include "tests/common/CountingFunctions.h"
#include "tests/dsp/FFTModel.h"

namespace {

class MRealFFTOf : public testing::TestWithParam<MRealFFT::Path> {
 protected:
  static std::vector<float> Forward(std::vector<float> samples) {
    MRealFFT(static_cast<int32_t>(samples.size()), GetParam()).Forward(samples.data());
    return samples;
  }
  static std::vector<float> Inverse(std::vector<float> spectrum) {
    MRealFFT(static_cast<int32_t>(spectrum.size()), GetParam()).Inverse(spectrum.data());
    return spectrum;
  }
};

INSTANTIATE_TEST_SUITE_P(Path, MRealFFTOf,
                         testing::Values(MRealFFT::Path::kBaseline, MRealFFT::Path::kWidest),
                         [](const auto& instance) { return instance.index == 0 ? "Baseline" : "Widest"; });

// What single precision leaves, about that of FFTW: the error of 2 log2 N roundings in a random order.
double Rounding(std::size_t size) {
  return 1e-7 * std::sqrt(std::log2(static_cast<double>(size)));
}

std::vector<int32_t> AllSizes() {
  std::vector<int32_t> sizes;
  for (int32_t size = 4; size <= 32768; size *= 2) sizes.push_back(size);
  return sizes;
}

TEST(FFTModel, IsTheDirectSum) {
  for (const int32_t size : AllSizes()) {
    const std::vector<double> samples = Widen(NoiseSamples(size));
    const std::vector<double> spectrum = ModelForward(samples);
    const auto half = static_cast<std::size_t>(size / 2);
    EXPECT_NEAR(spectrum[0], DirectBin(samples, 0).real(), 1e-9);
    EXPECT_NEAR(spectrum[1], DirectBin(samples, half).real(), 1e-9);
    const std::size_t step = std::max<std::size_t>(1, half / 17);
    for (std::size_t k = 1; k < half; k += step)
      EXPECT_NEAR(std::abs(std::complex(spectrum[2 * k], spectrum[2 * k + 1]) - DirectBin(samples, k)), 0,
                  1e-9)
          << "bin " << k << " of " << size;
    const std::vector<double> back = ModelInverse(spectrum);
    for (std::size_t i = 0; i < back.size(); i += step)
      EXPECT_NEAR(back[i], samples[i] * static_cast<double>(half), 1e-8 * size);
  }
}

TEST_P(MRealFFTOf, NoiseOfEverySizeHasTheSpectrumOfTheDefinition) {
  for (const int32_t size : AllSizes()) {
    const std::vector<float> noise = NoiseSamples(size);
    const std::vector<float> spectrum = Forward(noise);
    const std::vector<double> expected = ModelForward(Widen(noise));
    EXPECT_LT(RelativeError(spectrum, expected), Rounding(noise.size())) << size;
    const double each = 1e-6 * std::sqrt(size);  // no single bin is far off
    for (std::size_t i = 0; i < expected.size(); ++i) ASSERT_NEAR(spectrum[i], expected[i], each) << size;
  }
}

TEST_P(MRealFFTOf, CosineGivesOneRealBinAndASineAPositiveImaginaryOne) {
  for (const int32_t size : {4, 8, 32, 64, 256, 4096, 32768}) {
    const auto count = static_cast<std::size_t>(size);
    for (const std::size_t bin : {std::size_t{1}, count / 4, count / 2 - 1}) {
      std::vector<float> cosine(count), sine(count);
      for (std::size_t n = 0; n < count; ++n) {
        cosine[n] = static_cast<float>(UnitRoot(bin * n, count).real());
        sine[n] = static_cast<float>(UnitRoot(bin * n, count).imag());
      }
      std::vector<double> expected(count);
      expected[2 * bin] = size / 2;
      EXPECT_LT(RelativeError(Forward(cosine), expected), 1e-6) << bin << " of " << size;
      expected[2 * bin] = 0;
      expected[2 * bin + 1] = size / 2;
      EXPECT_LT(RelativeError(Forward(sine), expected), 1e-6) << bin << " of " << size;
    }
  }
}

TEST_P(MRealFFTOf, ConstantIsAllAtTheFirstIndexAndAnAlternatingSignAllAtTheSecond) {
  for (const int32_t size : AllSizes()) {
    const auto count = static_cast<std::size_t>(size);
    std::vector<float> alternating(count, 1);
    for (std::size_t n = 1; n < count; n += 2) alternating[n] = -1;
    std::vector<float> expected(count);
    expected[0] = static_cast<float>(size);
    EXPECT_EQ(Forward(std::vector<float>(count, 1)), expected);
    std::swap(expected[0], expected[1]);
    EXPECT_EQ(Forward(alternating), expected);
  }
}

TEST_P(MRealFFTOf, ImpulseHasAllBinsOfMagnitudeOneAtItsOwnPhase) {
  for (const int32_t size : AllSizes()) {
    const auto count = static_cast<std::size_t>(size);
    for (const std::size_t place : {std::size_t{0}, std::size_t{1}, count / 2, count - 1}) {
      std::vector<float> impulse(count);
      impulse[place] = 1;
      ComplexList bins(count);
      for (std::size_t k = 0; k < count; ++k) bins[k] = UnitRoot(k * place, count);
      EXPECT_LT(RelativeError(Forward(impulse), Packed(bins)), 2e-7) << place << " of " << size;
    }
  }
}

TEST_P(MRealFFTOf, FourSamplesAreTransformedByHand) {
  // x0 + x1 + x2 + x3, x0 - x1 + x2 - x3, x0 - x2, x1 - x3
  EXPECT_EQ(Forward({1, 2, 4, 8}), (std::vector<float>{15, -5, -3, -6}));
  EXPECT_EQ(Inverse({15, -5, -3, -6}), (std::vector<float>{2, 4, 8, 16}));
}

TEST_P(MRealFFTOf, InverseOfAnySpectrumIsHalfTheSizeTimesTheSamples) {
  for (const int32_t size : AllSizes()) {
    const std::vector<float> spectrum = NoiseSamples(size, 2);
    EXPECT_LT(RelativeError(Inverse(spectrum), ModelInverse(Widen(spectrum))), Rounding(spectrum.size()))
        << size;
  }
}

TEST_P(MRealFFTOf, ThereAndBackTimesTwoByTheSizeIsTheInput) {
  for (const int32_t size : AllSizes()) {
    const std::vector<float> noise = NoiseSamples(size, 3);
    std::vector<float> back = Inverse(Forward(noise));
    for (float& sample : back) sample *= 2.0f / static_cast<float>(size);
    EXPECT_LT(RelativeError(back, Widen(noise)), 1.5 * Rounding(noise.size())) << size;
    for (std::size_t i = 0; i < noise.size(); ++i) ASSERT_NEAR(back[i], noise[i], 2e-6) << size;
  }
}

TEST_P(MRealFFTOf, AnyAlignmentGivesTheSameAndNothingOutsideIsTouched) {
  for (const int32_t size : AllSizes()) {
    const auto count = static_cast<std::size_t>(size);
    const std::vector<float> noise = NoiseSamples(size, 4);
    const std::vector<float> spectrum = Forward(noise), back = Inverse(noise);
    const MRealFFT transform(size, GetParam());
    for (std::size_t offset = 1; offset < 16; offset += 5) {
      std::vector<float> room(count + 32, 77);
      float* const data = room.data() + offset;
      std::copy(noise.begin(), noise.end(), data);
      transform.Forward(data);
      EXPECT_TRUE(std::equal(spectrum.begin(), spectrum.end(), data)) << size;
      std::copy(noise.begin(), noise.end(), data);
      transform.Inverse(data);
      EXPECT_TRUE(std::equal(back.begin(), back.end(), data)) << size;
      EXPECT_EQ(std::count(room.begin(), room.end(), 77.0f), 32);
    }
  }
}

TEST_P(MRealFFTOf, NothingIsAllocatedByATransform) {
  const CountingFunctions table;
  for (const int32_t size : {4, 64, 4096, 32768}) {
    const MRealFFT transform(size, GetParam());
    std::vector<float> data = NoiseSamples(size);
    transform.Forward(data.data());
    transform.Inverse(data.data());
  }
  EXPECT_EQ(table.GetCalls(), 0);
}

TEST_P(MRealFFTOf, ValuesThatAreNotFiniteStayInTheArray) {
  for (const int32_t size : AllSizes()) {
    for (const float value : {std::nanf(""), HUGE_VALF, 3e38f, 1e-45f}) {
      std::vector<float> data(static_cast<std::size_t>(size), value);
      data = Inverse(Forward(std::move(data)));
      EXPECT_EQ(std::isfinite(data[0]), value < 1) << size;
    }
  }
}

TEST(MRealFFT, BothPathsAgreeWithinAMillionthOfThePeak) {
  if (!MHasAVX2()) GTEST_SKIP() << "this processor has only one path";
  for (const int32_t size : AllSizes()) {
    const MRealFFT baseline(size, MRealFFT::Path::kBaseline), widest(size);
    std::vector<float> a = NoiseSamples(size, 5), b = a;
    const auto expectNear = [&] {
      double peak = 0, difference = 0;
      for (std::size_t i = 0; i < a.size(); ++i) {
        peak = std::max<double>(peak, std::abs(a[i]));
        difference = std::max<double>(difference, std::abs(double{a[i]} - b[i]));
      }
      EXPECT_LE(difference, 1e-6 * peak) << size;
#ifdef NDEBUG  // optimised, the wide path has fused operations, which round otherwise
      EXPECT_TRUE(size < 128 || difference > 0) << size;
#endif
    };
    baseline.Forward(a.data());
    widest.Forward(b.data());
    expectNear();
    b = a;
    baseline.Inverse(a.data());
    widest.Inverse(b.data());
    expectNear();
  }
}

TEST(MRealFFT, OnlyPowersOfTwoFromFourTo32768AreSizes) {
  for (const int32_t size :
       {INT32_MIN, -4096, -1, 0, 1, 2, 3, 5, 6, 4095, 4097, 32767, 65536, INT32_MAX, 1 << 30})
    EXPECT_FALSE(MRealFFT::IsSize(size)) << size;
  for (const int32_t size : AllSizes()) {
    EXPECT_TRUE(MRealFFT::IsSize(size));
    EXPECT_EQ(MRealFFT(size).GetSize(), size);
  }
}

TEST(MRealFFT, OneWithoutASizeDoesNothing) {
  float samples[] = {1, 2, 4, 8};
  MRealFFT transform;
  transform.Forward(samples);
  transform.Inverse(samples);
  EXPECT_EQ(transform.GetSize(), 0);
  EXPECT_EQ(samples[0] + samples[1] + samples[2] + samples[3], 15);
}

TEST(MRealFFTDeathTest, AnotherSizeIsAsserted) {
  for (const int32_t size : {-4, 0, 2, 6, 65536}) {
    EXPECT_DEBUG_DEATH({ EXPECT_EQ(MRealFFT(size).GetSize(), 0); }, "power of two from 4 to 32768");
  }
}

#if defined(__x86_64__)
TEST(MProcessor, HasWhatTheCompilersOwnTestFinds) {
  EXPECT_EQ(MHasAVX2(), __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"));
}
#endif

}  // namespace
