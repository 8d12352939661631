#include "hosts/cli/Words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(NumbersOfTheCommand, AreReadWhole) {
  EXPECT_EQ(cli::ParseNumber("0.5"), 0.5);
  EXPECT_EQ(cli::ParseNumber("-3"), -3);
  EXPECT_EQ(cli::ParseNumber("+1e-3"), 0.001);
  EXPECT_EQ(cli::ParseNumber(".25"), 0.25);
  for (const char* const text : {"", "+", "-", "+-1", "++1", "1 ", " 1", "1,5", "1.5x", "0x10", "nan", "inf",
                                 "-inf", "infinity", "1e999", "-1e999", "e5", "1e"})
    EXPECT_EQ(cli::ParseNumber(text), std::nullopt) << text;
}

TEST(NumbersOfTheCommand, AreShownAsShortAsTheyCanBeReadAgain) {
  EXPECT_EQ(cli::NumberText(0), "0");
  EXPECT_EQ(cli::NumberText(0.8), "0.8");
  EXPECT_EQ(cli::NumberText(-2.5), "-2.5");
  EXPECT_EQ(cli::NumberText(100000000), "100000000");
  EXPECT_EQ(cli::NumberText(2147483647), "2147483647");
  EXPECT_EQ(cli::NumberText(0.0001), "0.0001");
  for (const double number : {1e-5, 0.1 + 0.2, 4.3010299956639813, 1e15, std::numeric_limits<double>::max()})
    EXPECT_EQ(cli::ParseNumber(cli::NumberText(number)), number);
}

TEST(Names, AreNearWhenFewLettersDifferWhateverTheirCase) {
  const std::string_view names[] = {"Squeezel", "Echolan", "Slotter", "Swirlo"};
  EXPECT_EQ(cli::NearestName(names, "ekolan"), "Echolan");
  EXPECT_EQ(cli::NearestName(names, "SLOTER"), "Slotter");
  EXPECT_EQ(cli::NearestName(names, "swirl"), "Swirlo");
  EXPECT_EQ(cli::NearestName(names, "sqeuezel"), "Squeezel");
}

TEST(Lines, HaveNoControlCharacters) {
  EXPECT_EQ(cli::OneLine("a\nb\tc\x1b[0m\x7f\u00e4"), "a?b?c?[0m?\u00e4");
}

TEST(Lines, AreAlignedByLettersAndNotByBytes) {
  EXPECT_THAT(cli::Columns({{"\u00d7", "a", "x"}, {"long", "b"}}),
              testing::ElementsAre("\u00d7     a  x", "long  b"));
}

}  // namespace
