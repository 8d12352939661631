#include "tests/hosts/bridge/VoicesUnderTest.h"

using bridge::Voices;
using testing::ElementsAre;

namespace {

class VoicesLimitTest : public VoicesUnderTest {};

TEST_F(VoicesLimitTest, TheQuietestGivesWayToTheSixtyFifthNoteWithAShortFade) {
  PressAll([](int32_t i) { return i == 40 ? 0.5 : 1.0; });
  EXPECT_EQ(Play(1)[0], 63.5f);
  voices_->Press(0, 99, 2);
  EXPECT_EQ(FakeInstrument::openStreams, 65);
  EXPECT_THAT(Play(6), ElementsAre(65.4f, 65.3f, 65.2f, 65.1f, 65.0f, 65.0f));
  EXPECT_EQ(FakeInstrument::openStreams, 64);
}

TEST_F(VoicesLimitTest, OfEquallyQuietOnesTheOldestGivesWay) {
  PressAll([](int32_t i) { return i < 10 ? 1.0 : 0.5; });
  Play(1);
  for (int32_t i = 0; i < 3; ++i) voices_->Press(0, 99, 1);
  Play(5);
  voices_->Release(0, 10);
  voices_->Release(0, 12);
  EXPECT_EQ(Play(kReleaseFrames + 1)[kReleaseFrames], 13 + 0.5f * 51);
  voices_->Release(0, 13);
  EXPECT_EQ(Play(kReleaseFrames + 1)[kReleaseFrames], 13 + 0.5f * 50);
}

TEST_F(VoicesLimitTest, OnesThatAreNotHeardYetDoNotGiveWayToLaterOnes) {
  PressAll([](int32_t) { return 3.0; });
  Play(1);
  for (int32_t i = 0; i < 3; ++i) voices_->Press(0, 99, 0.5);
  EXPECT_EQ(Play(6)[5], 61 * 3.0f + 3 * 0.5f);
}

TEST_F(VoicesLimitTest, OnesThatBeginLaterAreNotTakenForQuiet) {
  FakeInstrument::latency = 50;
  voices_->Press(0, 60, 1);
  FakeInstrument::latency = 0;
  for (int32_t i = 1; i < Voices::kMost; ++i) voices_->Press(0, 60, 0.5);
  Play(1);
  voices_->Press(0, 99, 0.25);
  EXPECT_EQ(Play(60)[59], 1 + 62 * 0.5f + 0.25f);
}

TEST_F(VoicesLimitTest, ABurstOfNotesTakesThePlacesOfThoseThatFade) {
  for (int32_t i = 0; i < 1000; ++i) voices_->Press(0, 60, 1);
  EXPECT_EQ(FakeInstrument::openStreams, 2 * Voices::kMost);
  Play(5);
  EXPECT_EQ(FakeInstrument::openStreams, Voices::kMost);
  EXPECT_EQ(Play(1)[0], 64.0f);
}

TEST_F(VoicesLimitTest, NotesThatAreReleasedForLongGiveWayWithoutAClick) {
  voices_->SetRelease(10);
  float last = 0;
  for (int32_t i = 0; i < 300; ++i) {
    voices_->Press(0, 60, 1);
    voices_->Release(0, 60);
    for (const float sample : Play(10)) {
      ASSERT_GT(sample, last - 0.22f) << i;  // a voice that gives way, and 64 that fade slowly
      last = sample;
    }
    ASSERT_LE(FakeInstrument::openStreams, Voices::kMost);
  }
}

TEST_F(VoicesLimitTest, NotesThatAreReleasedGiveWayToAllThatArePressed) {
  voices_->SetRelease(10);
  voices_->Press(0, 99, 9);
  for (int32_t i = 1; i < Voices::kMost; ++i) voices_->Press(0, i, 0.5);
  Play(1);
  voices_->Release(0, 99);
  voices_->Press(0, 98, 0.5);
  EXPECT_EQ(Play(6)[5], 0.5f * Voices::kMost);
}

TEST_F(VoicesLimitTest, ANoteThatIsNotMadeTakesNoOnesPlace) {
  PressAll([](int32_t) { return 1.0; });
  FakeInstrument::makesStreams = false;
  EXPECT_EQ(voices_->Press(0, 99, 1), -1);
  EXPECT_EQ(Play(10)[9], 64.0f);
}

}  // namespace
