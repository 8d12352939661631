// Numbers as text beside the C library, for random numbers and in a process that writes a decimal comma.

#include <bit>
#include <cmath>
#include <cstdio>
#include <string>

#include "core/MFormat.h"
#include "tests/common/CommaLocale.h"
#include "tests/common/TestRandom.h"
#include "tests/core/Balanced.h"

namespace {

using MStringNumbersModel = Balanced;

// Of any magnitude, now and then one of the edges.
uint64_t RandomBits(TestRandom& random) {
  if (random.OneIn(10)) return random.OneOf<uint64_t>({0, 1, ~uint64_t{0}, uint64_t{1} << 63, INT64_MAX});
  return random.Bits() >> random.Below(64);
}

std::string PrintedDouble(double value, int precision) {
  char text[512];
  std::snprintf(text, sizeof text, "%.*f", precision, value);
  return text;
}

TEST_F(MStringNumbersModel, IntegersComeBackFromTheirTextInEveryBase) {
  TestRandom random(1);
  for (int i = 0; i < 20000; ++i) {
    const int64_t value = static_cast<int64_t>(RandomBits(random));
    const int32_t base = random.Integer(2, 16);
    if (base == 2 && (value >= int64_t{1} << 62 || value <= -(int64_t{1} << 62)))
      continue;  // more than 62 digits
    const int32_t width = random.Integer(0, 62);
    const MString text = MString::FromInteger(value, base, width, u'0');
    int32_t consumed = 0;
    ASSERT_EQ(text.ToInteger(base, &consumed), value) << base;
    ASSERT_EQ(consumed, text.GetLength());
    ASSERT_GE(text.GetLength(), width + (value < 0));
  }
}

TEST_F(MStringNumbersModel, IntegersAreThoseOfTheCLibrary) {
  TestRandom random(2);
  for (int i = 0; i < 5000; ++i) {
    const uint64_t bits = RandomBits(random);
    const int width = random.Integer(0, 40);
    char text[80];
    std::snprintf(text, sizeof text, "%*llu", width, static_cast<unsigned long long>(bits));
    ASSERT_EQ(Utf8(MString::FromUnsigned(bits, 10, width)), text);
    std::snprintf(text, sizeof text, "%0*llX", width, static_cast<unsigned long long>(bits));
    ASSERT_EQ(Utf8(MString::FromUnsigned(bits, 16, width, u'0')), text);
    std::snprintf(text, sizeof text, "%lld", static_cast<long long>(bits));
    ASSERT_EQ(Utf8(MString::FromInteger(static_cast<int64_t>(bits))), text);
  }
}

TEST_F(MStringNumbersModel, DoublesOfAllBitPatternsAreThoseOfTheCLibrary) {
  TestRandom random(3);
  for (int i = 0; i < 20000; ++i) {
    const double value = std::bit_cast<double>(random.Bits());
    const int precision = random.Below(100);
    ASSERT_EQ(Utf8(MString::FromDouble(value, precision)), PrintedDouble(value, precision));
  }
}

TEST_F(MStringNumbersModel, DoublesAtAndBesideATieRoundAsInTheCLibrary) {
  TestRandom random(4);
  for (int i = 0; i < 20000; ++i) {
    const int precision = random.Below(12);
    double value = (random.Integer(-1000000, 1000000) + 0.5) / std::pow(10, precision);
    if (random.OneIn(3)) value = std::nextafter(value, random.OneIn(2) ? -INFINITY : INFINITY);
    ASSERT_EQ(Utf8(MString::FromDouble(value, precision)), PrintedDouble(value, precision));
  }
}

TEST_F(MStringNumbersModel, DoublesReadAsInTheCLibrary) {
  TestRandom random(5);
  for (int i = 0; i < 5000; ++i) {
    std::string text;
    for (int k = random.Below(12); k > 0; --k) text += " +-0123456789.eExXinfa"[random.Below(22)];
    const double expected = std::strtod(text.c_str(), nullptr);
    const double value = Buffer(text.c_str()).ToDouble();
    ASSERT_TRUE(value == expected || (std::isnan(value) && std::isnan(expected))) << text;
  }
}

TEST_F(MStringNumbersModel, ADecimalCommaOfTheHostChangesNothing) {
  const CommaLocale comma;
  if (!comma.IsInForce()) GTEST_SKIP() << "localedef (package libc-bin) could not make a locale with a comma";
  ASSERT_EQ(PrintedDouble(0.5, 4), "0,5000");  // that is what the C library does now
  EXPECT_EQ(MString::FromDouble(0.5, 4), "0.5000");
  EXPECT_EQ(MString::FromDouble(1234567.5, 1), "1234567.5");
  EXPECT_EQ(MString::Printf("%.2f", 0.25), "0.25");
  EXPECT_EQ(Format("{0;.2}").Arg(-0.25).Text(), "-0.25");
  EXPECT_EQ(MString("0.5").ToDouble(), 0.5);
  EXPECT_EQ(Buffer("0.5").ToDouble(), 0.5);
  EXPECT_EQ(Buffer("0,5").ToDouble(), 0);
  EXPECT_EQ(PrintedDouble(0.5, 1), "0,5");  // and the host's setting stays
}

}  // namespace
