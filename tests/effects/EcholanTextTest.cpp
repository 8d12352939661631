// How Echolan's values are shown and typed.

#include <gtest/gtest.h>

#include <cmath>

#include "plugin/MParameterText.h"
#include "tests/common/Texts.h"
#include "tests/effects/EcholanUnderTest.h"

namespace {

class EcholanText : public testing::Test {
 protected:
  std::string Show(int32_t row, double value) { return Utf8(MParameterText(echolan_.GetRow(row), value)); }
  std::optional<double> Read(int32_t row, const char* text) {
    return ParseParameterText(echolan_.GetRow(row), Buffer(text));
  }

  enum { kFeedback, kDelay };
  EcholanUnderTest echolan_;
};

TEST_F(EcholanText, OfTheFeedbackIsTheGainOfAnEchoInDecibels) {
  EXPECT_EQ(Show(kFeedback, 0), "silence");
  EXPECT_EQ(Show(kFeedback, 0.4), "-15.9 dB");
  EXPECT_EQ(Show(kFeedback, 0.8), "-3.9 dB");
}

TEST_F(EcholanText, OfTheDelayHasADecimalUpToAHundredthOfASecond) {
  EXPECT_EQ(Show(kDelay, 0), "0.0 ms");
  EXPECT_EQ(Show(kDelay, 0.0012), "1.2 ms");
  EXPECT_EQ(Show(kDelay, 0.01), "10.0 ms");
  EXPECT_EQ(Show(kDelay, 0.0101), "10 ms");
  EXPECT_EQ(Show(kDelay, 0.1), "100 ms");
  EXPECT_EQ(Show(kDelay, 0.5), "500 ms");
}

TEST_F(EcholanText, OfTheFeedbackIsTypedInDecibels) {
  for (const double decibels : {-3.9, -6.0, -15.9, -60.0})
    EXPECT_EQ(Read(kFeedback, (std::to_string(decibels) + " dB").c_str()),
              std::sqrt(std::pow(10, decibels * 0.05)));
  EXPECT_EQ(Read(kFeedback, "silence"), 0);
  EXPECT_EQ(Read(kFeedback, "loud"), std::nullopt);
}

TEST_F(EcholanText, OfTheDelayIsTypedInMilliseconds) {
  for (const int milliseconds : {0, 7, 120, 500}) {
    EXPECT_EQ(Read(kDelay, std::to_string(milliseconds).c_str()), milliseconds * 0.001);
    EXPECT_EQ(Read(kDelay, (std::to_string(milliseconds) + " ms").c_str()), milliseconds * 0.001);
  }
  EXPECT_EQ(Read(kDelay, "0.12 s"), 0.12);
  EXPECT_EQ(Read(kDelay, "a bit"), std::nullopt);
}

}  // namespace
