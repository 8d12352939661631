#include "core/MXMLNumber.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/common/TestRandom.h"
#include "tests/common/Texts.h"

namespace {

TEST(MXMLNumber, HasNineSignificantDigitsAndAtLeastFourDecimals) {
  EXPECT_EQ(Utf8(MExactNumberText(0)), "0.0000");
  EXPECT_EQ(Utf8(MExactNumberText(1)), "1.00000000");
  EXPECT_EQ(Utf8(MExactNumberText(-12345.678)), "-12345.6780");
  EXPECT_EQ(Utf8(MExactNumberText(123456789012.0)), "123456789012.0000");
  EXPECT_EQ(Utf8(MExactNumberText(0.001)), "0.00100000000");
  EXPECT_EQ(Utf8(MExactNumberText(1e-300)), "0.0000");
}

TEST(MXMLNumber, ComesBackAsTheSameFloat) {
  TestRandom random;
  for (int32_t i = 0; i < 2000; ++i) {
    const auto value = static_cast<float>(random.Real(-1, 1) * std::pow(10, random.Real(-30, 30)));
    MXMLItem item;
    item.SetAttribute("v", MExactNumberText(double{value}));
    EXPECT_EQ(static_cast<float>(MReadNumber(item, "V")), value);
  }
}

TEST(MXMLNumber, IsTheFallbackWithoutAnAttributeAndZeroWithoutAFiniteNumber) {
  MXMLItem item;
  EXPECT_EQ(MReadNumber(item, "v", 3), 3);
  for (const char* const text : {"", "x", "nan", "inf", "-inf", "1e999"}) {
    item.SetAttribute("v", MString::Literal(text));
    EXPECT_EQ(MReadNumber(item, "v", 3), 0) << text;
  }
}

}  // namespace
