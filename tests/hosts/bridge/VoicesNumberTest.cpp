// Notes by their numbers.

#include "tests/hosts/bridge/VoicesUnderTest.h"

using testing::Each;
using testing::ElementsAre;

namespace {

class VoicesNumberTest : public VoicesUnderTest {
 protected:
  static constexpr int32_t kChokeFrames = 5;
};

TEST_F(VoicesNumberTest, ReleaseTheNewerOfTwoNotesOfOneKey) {
  voices_->Press(0, 60, 0.25);
  const int64_t newer = voices_->Press(0, 60, 0.5);
  voices_->ReleaseNote(newer);
  Play(kReleaseFrames);
  EXPECT_FALSE(voices_->HasNote(newer));
  EXPECT_THAT(Play(4), Each(0.25f));
}

TEST_F(VoicesNumberTest, HoldANoteThatIsReleasedUnderThePedal) {
  const int64_t note = voices_->Press(3, 60, 1);
  voices_->SetPedal(3, true);
  voices_->ReleaseNote(note);
  EXPECT_THAT(Play(2 * kReleaseFrames), Each(1.0f));
  voices_->SetPedal(3, false);
  Play(kReleaseFrames);
  EXPECT_TRUE(voices_->IsSilent());
}

TEST_F(VoicesNumberTest, LetANoteThatRingsOutGoOnWhenItIsReleasedButNotWhenItIsChoked) {
  voices_->SetOneShot(true);
  const int64_t note = voices_->Press(0, 60, 1);
  voices_->ReleaseNote(note);
  EXPECT_THAT(Play(2 * kReleaseFrames), Each(1.0f));
  voices_->ChokeNote(note);
  EXPECT_THAT(Play(kChokeFrames), ElementsAre(0.8f, 0.6f, 0.4f, 0.2f, 0.0f));
  EXPECT_FALSE(voices_->HasNote(note));
}

TEST_F(VoicesNumberTest, ChokeAFadingNoteWithoutAStepUpwards) {
  const int64_t note = voices_->Press(0, 60, 1);
  voices_->ReleaseNote(note);
  EXPECT_FLOAT_EQ(Play(10).back(), 0.5f);
  voices_->ChokeNote(note);
  EXPECT_THAT(Play(kChokeFrames), ElementsAre(0.4f, 0.3f, 0.2f, 0.1f, 0.0f));
  EXPECT_TRUE(voices_->IsSilent());
}

TEST_F(VoicesNumberTest, DoNothingForANumberThatIsOver) {
  FakeInstrument::length = 4;
  const int64_t over = voices_->Press(0, 60, 1);
  Play(8);
  FakeInstrument::length = 1000;
  const int64_t next = voices_->Press(0, 60, 1);
  for (const int64_t number : {over, int64_t{-1}, next + 1}) {
    EXPECT_FALSE(voices_->HasNote(number));
    voices_->ReleaseNote(number);
    voices_->ChokeNote(number);
  }
  EXPECT_TRUE(voices_->HasNote(next));
  EXPECT_THAT(Play(2 * kReleaseFrames), Each(1.0f));
}

}  // namespace
