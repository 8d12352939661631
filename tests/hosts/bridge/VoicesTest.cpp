#include <cmath>

#include "tests/common/Texts.h"
#include "tests/hosts/bridge/VoicesUnderTest.h"

using testing::Each;
using testing::ElementsAre;

namespace {

class VoicesTest : public VoicesUnderTest {};

TEST_F(VoicesTest, AreSilentWithoutNotesAndOverwriteWhatWasThere) {
  EXPECT_TRUE(voices_->IsSilent());
  EXPECT_THAT(Play(8), Each(0.0f));
  EXPECT_THAT(Play(0), testing::IsEmpty());
}

TEST_F(VoicesTest, HandTheFormatToTheInstrument) {
  voices_->Prepare(5, 96000, 64);
  EXPECT_EQ(FakeInstrument::channels, 5);
  EXPECT_EQ(FakeInstrument::sampleRate, 96000);
}

TEST_F(VoicesTest, PlayAKeyAtTheRatioOfItsDistanceFromTheRoot) {
  for (const int32_t key : {60, 72, 53, 127, 0}) voices_->Press(0, key, 1);
  EXPECT_THAT(FakeInstrument::ratios,
              ElementsAre(1.0, 2.0, std::exp2(-7 / 12.0), std::exp2(67 / 12.0), std::exp2(-60 / 12.0)));
}

TEST_F(VoicesTest, SumUpAndEndByThemselves) {
  FakeInstrument::length = 10;
  EXPECT_EQ(voices_->Press(0, 60, 0.5), 0);
  EXPECT_THAT(Play(4), Each(0.5f));
  EXPECT_EQ(voices_->Press(1, 60, 0.25), 1);
  const std::vector<float> both = Play(8);
  EXPECT_THAT(both, ElementsAre(0.75f, 0.75f, 0.75f, 0.75f, 0.75f, 0.75f, 0.25f, 0.25f));
  EXPECT_THAT(voices_->GetEnded(), ElementsAre(0));
  EXPECT_EQ(FakeInstrument::openStreams, 1);
  EXPECT_FALSE(voices_->IsSilent());
  EXPECT_THAT(Play(8), ElementsAre(0.25f, 0.25f, 0, 0, 0, 0, 0, 0));
  EXPECT_THAT(voices_->GetEnded(), ElementsAre(1));
  EXPECT_EQ(voices_->GetSoundEnd(), 8);
  EXPECT_TRUE(voices_->IsSilent());
  Play(1);
  EXPECT_THAT(voices_->GetEnded(), testing::IsEmpty());
}

TEST_F(VoicesTest, ReportANoteThatTheInstrumentDoesNotMake) {
  FakeInstrument::makesStreams = false;
  EXPECT_EQ(voices_->Press(0, 60, 1), -1);
  EXPECT_TRUE(voices_->IsSilent());
  voices_->Release(0, 60);
}

TEST_F(VoicesTest, TakeNothingFromABlockThatHasNotBegun) {
  FakeInstrument::latency = 6;
  voices_->Press(0, 60, 1);
  EXPECT_THAT(Play(4), Each(0.0f));
  EXPECT_FALSE(voices_->IsSilent());
  EXPECT_THAT(Play(4), ElementsAre(0, 0, 1, 1));
}

TEST_F(VoicesTest, FadeOutLinearlyWhenTheKeyGoesUp) {
  voices_->Press(0, 60, 1);
  Play(5);
  voices_->Release(0, 60);
  const std::vector<float> faded = Play(30);
  for (int32_t i = 0; i < 30; ++i)
    EXPECT_EQ(faded[static_cast<std::size_t>(i)],
              i < kReleaseFrames ? static_cast<float>((19.0 - i) / 20) : 0)
        << i;
  EXPECT_EQ(voices_->GetSoundEnd(), kReleaseFrames);
  EXPECT_TRUE(voices_->IsSilent());
  EXPECT_THAT(voices_->GetEnded(), testing::IsEmpty());
}

TEST_F(VoicesTest, FadeAsLongAsTheyAreTold) {
  voices_->SetRelease(0.002);
  voices_->Press(0, 60, 1);
  voices_->Release(0, 60);
  EXPECT_THAT(Play(4), ElementsAre(0.5f, 0, 0, 0));
  voices_->SetRelease(0);
  voices_->Press(0, 60, 1);
  voices_->Release(0, 60);
  EXPECT_TRUE(voices_->IsSilent());
}

TEST_F(VoicesTest, ReleaseTheOldestOfSeveralNotesOfOneKeyOfTheChannel) {
  voices_->Press(3, 60, 1);
  voices_->Press(0, 60, 0.5);
  voices_->Press(0, 60, 0.25);
  voices_->Press(0, 61, 0.125);
  voices_->Release(0, 60);
  Play(kReleaseFrames);
  EXPECT_EQ(Play(1)[0], 1.375f);
  voices_->Release(0, 60);
  Play(kReleaseFrames);
  EXPECT_EQ(Play(1)[0], 1.125f);
  voices_->Release(0, 60);
  Play(kReleaseFrames);
  EXPECT_EQ(Play(1)[0], 1.125f);
}

TEST_F(VoicesTest, SoundOnWhileThePedalOfTheirChannelIsDown) {
  voices_->SetPedal(0, true);
  voices_->Press(0, 60, 1);
  voices_->Press(0, 61, 0.5);
  voices_->Press(1, 60, 0.25);
  voices_->Release(0, 60);
  voices_->Release(1, 60);
  Play(kReleaseFrames);
  EXPECT_EQ(Play(1)[0], 1.5f);
  voices_->SetPedal(0, true);
  voices_->SetPedal(1, false);
  Play(kReleaseFrames);
  EXPECT_EQ(Play(1)[0], 1.5f);
  voices_->SetPedal(0, false);
  Play(kReleaseFrames);
  EXPECT_EQ(Play(1)[0], 0.5f);
}

TEST_F(VoicesTest, AKeyThatThePedalHoldsCanBePressedAgain) {
  voices_->SetPedal(0, true);
  voices_->Press(0, 60, 1);
  voices_->Release(0, 60);
  voices_->Press(0, 60, 0.5);
  EXPECT_EQ(Play(1)[0], 1.5f);
  voices_->SetPedal(0, false);
  Play(kReleaseFrames);
  EXPECT_EQ(Play(1)[0], 0.5f);
}

TEST_F(VoicesTest, EndWhenAllKeysOfTheirChannelGoUp) {
  voices_->SetPedal(0, true);
  voices_->Press(0, 60, 1);
  voices_->Press(0, 61, 1);
  voices_->Release(0, 61);
  voices_->Press(1, 60, 0.25);
  voices_->ReleaseAll(0);
  Play(kReleaseFrames);
  EXPECT_EQ(Play(1)[0], 0.25f);
  voices_->Press(0, 60, 1);
  voices_->Release(0, 60);  // the pedal is up
  Play(kReleaseFrames);
  EXPECT_EQ(Play(1)[0], 0.25f);
}

TEST_F(VoicesTest, RingOutAsOneShotsWhateverBecomesOfTheirKeys) {
  FakeInstrument::length = 100;
  voices_->SetOneShot(true);
  voices_->Press(0, 60, 1);
  voices_->Release(0, 60);
  voices_->ReleaseAll(0);
  EXPECT_THAT(Play(100), Each(1.0f));
  EXPECT_THAT(voices_->GetEnded(), ElementsAre(0));
  voices_->Press(0, 60, 1);
  voices_->Press(1, 60, 0.5);
  voices_->Silence(0);
  Play(kReleaseFrames);
  EXPECT_EQ(Play(1)[0], 0.5f);
}

TEST_F(VoicesTest, ThatRingOutAreNotTakenForLaterNotesOfTheirKey) {
  voices_->SetOneShot(true);
  voices_->SetPedal(1, true);
  voices_->Press(0, 60, 1);
  voices_->Press(1, 60, 2);
  voices_->Release(0, 60);
  voices_->SetPedal(1, false);
  voices_->ReleaseAll(1);
  voices_->SetOneShot(false);
  for (const int32_t channel : {0, 1}) {
    voices_->Press(channel, 60, 0.5);
    voices_->Release(channel, 60);
    Play(kReleaseFrames);
    EXPECT_EQ(Play(1)[0], 3.0f);
  }
}

TEST_F(VoicesTest, RingOutAlsoWhereThePedalGoesUpLater) {
  voices_->SetPedal(0, true);
  voices_->Press(0, 60, 1);
  voices_->Release(0, 60);
  voices_->SetOneShot(true);
  voices_->SetPedal(0, false);
  Play(kReleaseFrames);
  EXPECT_EQ(Play(1)[0], 1.0f);
  voices_->SetOneShot(false);
  voices_->ReleaseAll(0);
  Play(kReleaseFrames);
  EXPECT_EQ(Play(1)[0], 0.0f);
}

TEST_F(VoicesTest, FallSilentAtOnceHoweverLongTheyFade) {
  voices_->SetRelease(10);
  voices_->Press(0, 60, 1);
  voices_->Press(0, 61, 1);
  voices_->Press(1, 60, 0.25);
  voices_->Release(0, 60);
  voices_->Silence(0);
  EXPECT_GT(Play(1)[0], 1.25f);
  EXPECT_EQ(Play(5)[4], 0.25f);
}

TEST_F(VoicesTest, CutEndsThemAtOnceAndLiftsThePedalAndSoDoesPrepare) {
  for (const bool isCut : {true, false}) {
    voices_->SetPedal(0, true);
    voices_->Press(0, 60, 1);
    if (isCut)
      voices_->Cut();
    else
      voices_->Prepare(1, kRate, 16);
    EXPECT_TRUE(voices_->IsSilent());
    EXPECT_EQ(FakeInstrument::openStreams, 0);
    voices_->Press(0, 60, 1);
    voices_->Release(0, 60);
    EXPECT_EQ(Play(1)[0], 0.95f);
  }
}

TEST_F(VoicesTest, GiveNothingThatIsNotFinite) {
  FakeInstrument::wave = [](int32_t frame) { return frame == 2 ? NAN : frame == 5 ? INFINITY : 1.0; };
  voices_->Press(0, 60, 0.5);
  EXPECT_THAT(Play(4), Each(0.0f));
  EXPECT_THAT(Play(4), Each(0.0f));
  EXPECT_THAT(Play(4), Each(0.5f));
}

TEST_F(VoicesTest, BlocksOfAnySizesGiveTheSameSound) {
  FakeInstrument::length = 300;
  FakeInstrument::wave = [](int32_t frame) { return std::sin(0.1 * frame); };
  const auto render = [this](std::initializer_list<int32_t> sizes) {
    std::vector<float> all;
    for (int32_t part = 0; part < 3; ++part) {
      if (part == 0) voices_->Press(0, 60, 0.7);
      if (part == 1) voices_->Press(0, 64, 0.3);
      if (part == 2) voices_->Release(0, 60);
      for (int32_t done = 0; done < 150;)
        for (const int32_t size : sizes) {
          const std::vector<float> block = Play(std::min(size, 150 - done));
          all.insert(all.end(), block.begin(), block.end());
          done += static_cast<int32_t>(block.size());
        }
    }
    voices_->Cut();
    return all;
  };
  const std::vector<float> whole = render({150});
  EXPECT_EQ(render({1}), whole);
  EXPECT_EQ(render({7, 64, 3}), whole);
}

TEST_F(VoicesTest, GoAwayAlsoWhenTheInstrumentFails) {
  voices_->Press(0, 60, 1);
  voices_->Press(0, 61, 1);
  FakeInstrument::failsToClose = true;
  EXPECT_RAISES(voices_->Cut(), "It fails.", MErrorCode::kOrdinary);
  voices_.reset();
  EXPECT_EQ(FakeInstrument::openStreams, 0);
}

}  // namespace
