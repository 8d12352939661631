#include "dsp/MComplex.h"

#include <gtest/gtest.h>

#include <complex>

#include "tests/common/TestRandom.h"
#include "tests/common/Texts.h"

namespace {

TEST(MComplex, CalculatesAsTheStandardLibraryDoes) {
  TestRandom random(1);
  for (int32_t i = 0; i < 1000; ++i) {
    const MComplex a{random.Real(-9, 9), random.Real(-9, 9)};
    const MComplex b{random.Real(-9, 9), random.Real(-9, 9)};
    const std::complex<double> x(a.real, a.imaginary), y(b.real, b.imaginary);
    const auto expectNear = [](MComplex value, std::complex<double> expected) {
      EXPECT_NEAR(value.real, expected.real(), 1e-12 * std::abs(expected));
      EXPECT_NEAR(value.imaginary, expected.imag(), 1e-12 * std::abs(expected));
    };
    expectNear(MComplex(a) += b, x + y);
    expectNear(MComplex(a) -= b, x - y);
    expectNear(MComplex(a) *= b, x * y);
    expectNear(MComplex(a) /= b, x / y);
    EXPECT_NEAR(a.GetModulus(), std::abs(x), 1e-12);
  }
}

TEST(MComplex, ProductsAndQuotientsMayBeTheirOwnFactors) {
  MComplex value{3, 4};
  value *= value;
  EXPECT_EQ(value.real, -7);
  EXPECT_EQ(value.imaginary, 24);
  value /= value;
  EXPECT_EQ(value.real, 1);
  EXPECT_EQ(value.imaginary, 0);
}

TEST(MComplex, DivisionStaysInRangeWherePlainFormulasOverflow) {
  MComplex value{1e300, 1e300};
  value /= MComplex{1e300, 1e300};
  EXPECT_DOUBLE_EQ(value.real, 1);
  EXPECT_DOUBLE_EQ(value.imaginary, 0);
  value = {1, 0};
  value /= MComplex{0, 2};
  EXPECT_EQ(value.real, 0);
  EXPECT_EQ(value.imaginary, -0.5);
}

TEST(MComplex, DivisionByZeroRaises) {
  MComplex value{1, 2};
  EXPECT_RAISES(value /= (MComplex{0, 0}), "Complex division by zero.", 0);
  EXPECT_EQ(value.real, 1);
  EXPECT_EQ(value.imaginary, 2);
}

}  // namespace
