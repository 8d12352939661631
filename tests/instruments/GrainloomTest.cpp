#include "instruments/Grainloom.h"

#include <gtest/gtest.h>

#include "dsp/MCubic.h"
#include "dsp/MRandomSequence.h"
#include "plugin/MParameterText.h"
#include "tests/common/AudioThreadWatch.h"
#include "tests/common/TestRandom.h"
#include "tests/common/Texts.h"
#include "tests/instruments/GrainloomUnderTest.h"

namespace {

class Grainloom : public testing::Test {
 protected:
  void LoadSmallLibrary(int32_t length = 9000) {
    grainloom.WriteLibrary(SmallLibrary(3, length));
    grainloom.LoadEmptyState();
  }
  // Sample c of the recording at a place, by the cubic, 0 outside.
  float At(const std::vector<float>& samples, double place) {
    const auto p = static_cast<int64_t>(std::floor(place));
    if (p < 0 || p >= static_cast<int64_t>(samples.size())) return 0;
    const auto y = [&](int64_t i) {
      return i < 0 || i >= static_cast<int64_t>(samples.size())
                 ? 0.0
                 : double{samples[static_cast<std::size_t>(i)]};
    };
    return static_cast<float>(MCubic(y(p - 1), y(p), y(p + 1), y(p + 2), place - static_cast<double>(p)));
  }

  GrainloomUnderTest grainloom;
};

TEST_F(Grainloom, NewPluginHasNoSampleAndMakesNoStream) {
  EXPECT_EQ(grainloom->GetSample(), nullptr);
  EXPECT_EQ(grainloom.Create(), 0);
  EXPECT_TRUE(grainloom.reported.Get().empty());
}

TEST_F(Grainloom, NewPluginPlaysTheDefaultLibraryFromItsFirstFormatOn) {
  grainloom.WriteLibrary(SmallLibrary(3, 9000));
  grainloom.Call(MService::kPrepareStreams, 2, 44100);
  ASSERT_NE(grainloom->GetSample(), nullptr);
  MXMLItem state("state");
  state.SetAttribute("filename", "none.qxSubSampleLib");
  grainloom.Load(state);
  grainloom.Call(MService::kPrepareStreams, 2, 44100);
  EXPECT_EQ(grainloom->GetSample(), nullptr) << "a state is the user's choice";
}

TEST_F(Grainloom, RowsAreThoseOfTheTable) {
  auto* const block = MAsAddress<MPluginPublicBlock>(grainloom.Call(MService::kPublicBlock));
  ASSERT_EQ(block->parameterCount, 3);
  EXPECT_EQ(block->pluginFlag, 0);
  EXPECT_EQ(block->parameters[0].key, "coloroffset");
  EXPECT_EQ(block->parameters[1].key, "volumedeviance");
  EXPECT_EQ(block->parameters[2].key, "offsetdeviance");
  EXPECT_EQ(grainloom.Call(MService::kCommand, MAsWord("ImportSample")), -1);
}

TEST_F(Grainloom, BandsHaveTitlesAndLimits) {
  const std::vector<const char*> titles = {"Subbass 1",    "Subbass 2",   "Bass 1", "Bass 2",
                                           "Middle 1",     "Middle 2",    "High 1", "High 2",
                                           "Ultra high 1", "Ultra high 2"};
  for (int32_t b = 0; b < 10; ++b)
    EXPECT_STREQ(grainloom->GetBandTitle(b), titles[static_cast<std::size_t>(b)]);
  const std::vector<int32_t> limits = {16, 16, 32, 32, 32, 64, 128, 256, 512, 512};
  for (int32_t b = 0; b < 10; ++b)
    EXPECT_EQ(grainloom->GetShiftLimit(b), limits[static_cast<std::size_t>(b)]);
  EXPECT_EQ(grainloom->GetLastIndex(0), 0) << "no library";
  LoadSmallLibrary();
  EXPECT_EQ(grainloom->GetLastIndex(0), 2);
  EXPECT_EQ(grainloom->GetLastIndex(9), 0) << "an empty band";
}

TEST_F(Grainloom, PlaysTheSampleAsItIsAtItsOwnRate) {
  LoadSmallLibrary();
  const std::vector<float> left = grainloom.GetSample(0), right = grainloom.GetSample(1);
  ASSERT_EQ(left.size(), 9000u);
  EXPECT_NE(left, right) << "by the colour offset";
  for (const int32_t size : {63, 512, 4096}) {
    MWord stream = grainloom.Create(0.5);
    for (int32_t done = 0; done < 9000;) {
      const int32_t end = done + size;
      const auto block =
          grainloom.Compute(stream, size, end >= 9000 ? MStreamResult::kEnded : MStreamResult::kSounds);
      for (std::size_t i = 0; i < static_cast<std::size_t>(size); ++i, ++done) {
        const bool sounds = done < 9000;
        ASSERT_EQ(block[0][i], sounds ? left[static_cast<std::size_t>(done)] * 0.5f : 0);
        ASSERT_EQ(block[1][i], sounds ? right[static_cast<std::size_t>(done)] * 0.5f : 0);
      }
    }
    EXPECT_EQ(grainloom.Compute(stream, 8, MStreamResult::kEnded)[0], std::vector<float>(8, 0.0f));
    grainloom.Close(stream);
    EXPECT_EQ(stream, 0);
    grainloom.Close(stream);
  }
}

TEST_F(Grainloom, PlaysAtTheSpeedOfRatioAndRates) {
  LoadSmallLibrary();
  const std::vector<float> right = grainloom.GetSample(1);
  for (const auto& [rate, ratio] :
       {std::pair(22050, 1.0), {96000, 1.0}, {44100, 0.5}, {44100, 2.0}, {48000, 1.5}}) {
    grainloom.Call(MService::kPrepareStreams, 3, rate);
    const double speed = 44100.0 * ratio / rate;
    MWord stream = grainloom.Create(1, ratio);
    const auto samples = static_cast<int32_t>(std::ceil(9000 / speed));
    const auto block = grainloom.Compute(stream, samples, MStreamResult::kEnded, 3);
    for (std::size_t i = 0; i < block[1].size(); ++i)
      ASSERT_NEAR(block[1][i], At(right, static_cast<double>(i) * speed), 2e-6) << rate << ", " << i;
    EXPECT_EQ(block[2], block[0]) << "outputs take the channels in turn";
    grainloom.Close(stream);
  }
}

TEST_F(Grainloom, EnvelopeIsSpreadOverTheSample) {
  LoadSmallLibrary();
  MEnvelopeData& envelope = grainloom->GetEnvelope();
  envelope.Clear();
  envelope.Add(0, 0.5);
  envelope.Add(0.5, 0.5);
  envelope.Add(0.75, 0);
  envelope.Add(1, 0);
  MWord stream = grainloom.Create();
  const auto block = grainloom.Compute(stream, 8000, MStreamResult::kEnded);
  const std::vector<float> left = grainloom.GetSample(0);
  for (std::size_t i = 0; i < 4400; ++i) ASSERT_NEAR(block[0][i], left[i] * 0.5, 1e-6);
  for (std::size_t i = 6750; i < 8000; ++i) ASSERT_EQ(block[0][i], 0);
  grainloom.Close(stream);
}

TEST_F(Grainloom, DelayComesBeforeTheSound) {
  LoadSmallLibrary();
  MWord stream = grainloom.Create(1, 1, 300);
  EXPECT_TRUE(std::isnan(grainloom.Compute(stream, 256, MStreamResult::kNotStarted)[0][0]));
  const auto block = grainloom.Compute(stream, 256, MStreamResult::kSounds);
  EXPECT_EQ(block[0][43], 0);
  EXPECT_EQ(block[0][44 + 100], grainloom.GetSample(0)[100]);
  grainloom.Close(stream);
}

TEST_F(Grainloom, StreamGoesOnWithTheNewSampleAndEndsWhenThereIsNone) {
  LoadSmallLibrary();
  MWord stream = grainloom.Create();
  MWord delayed = grainloom.Create(1, 1, 100000);
  grainloom.Compute(stream, 1000, MStreamResult::kSounds);
  grainloom.Set(0, 0.9);
  EXPECT_EQ(grainloom.Compute(stream, 1000, MStreamResult::kSounds)[1][0], grainloom.GetSample(1)[1000]);
  grainloom.WriteLibrary(SmallLibrary(3, 2500), "short");
  grainloom->SelectLibrary("", "short");
  const auto block = grainloom.Compute(stream, 1000, MStreamResult::kSounds);
  EXPECT_EQ(block[0][100], grainloom.GetSample(0)[2100]);
  EXPECT_EQ(block[0][500], 0) << "behind the end of the shorter sample";
  grainloom->SelectLibrary("", "missing");
  EXPECT_EQ(grainloom.Compute(stream, 16, MStreamResult::kEnded)[1], std::vector<float>(16, 0.0f));
  EXPECT_EQ(grainloom.Compute(delayed, 16, MStreamResult::kEnded)[1], std::vector<float>(16, 0.0f));
  grainloom.Close(stream);
  grainloom.Close(delayed);
}

TEST_F(Grainloom, StreamsDoNotKnowOfEachOther) {
  LoadSmallLibrary();
  MWord one = grainloom.Create();
  MWord two = grainloom.Create(0.25, 2);
  const auto first = grainloom.Compute(one, 500, MStreamResult::kSounds);
  grainloom.Compute(two, 700, MStreamResult::kSounds);
  const auto second = grainloom.Compute(one, 500, MStreamResult::kSounds);
  const std::vector<float> left = grainloom.GetSample(0);
  EXPECT_EQ(first[0][499], left[499]);
  EXPECT_EQ(second[0][0], left[500]);
  grainloom.Close(one);
  grainloom.Close(two);
}

TEST_F(Grainloom, ComputesWithoutMemory) {
  LoadSmallLibrary();
  grainloom->GetEnvelope().Add(1, 0.5);
  MWord stream = grainloom.Create(1, 1.3);
  float left[256], right[256];
  float* out[] = {left, right};
  MServiceArguments arguments(MAsWord(out), 256, MAsWord(&stream));
  int64_t allocations = -1;
  {
    const AudioThreadWatch watch;
    for (int i = 0; i < 5; ++i) grainloom->Service(MService::kComputeStream, &arguments);
    allocations = watch.GetAllocations();
  }
  EXPECT_EQ(allocations, 0);
  grainloom.Close(stream);
}

// The numbers of the sequence behind a start.
class Sequence {
 public:
  explicit Sequence(uint32_t start) : x_(start) {}
  uint32_t Next() { return (x_ = x_ * 214013 + 2531011) >> 16; }

 private:
  uint32_t x_;
};

TEST_F(Grainloom, RandomizesVolumeShiftAndColorOfEachBandInTurn) {
  SubSampleFile file = SmallLibrary();
  file.bands[2].sounds.resize(1);
  file.bands[8].firstBin = 8000;
  file.bands[8].binCount = 8192;
  file.bands[8].sounds.clear();
  grainloom.WriteLibrary(file);
  grainloom.LoadEmptyState();
  grainloom.Set(1, 0.4);
  grainloom.Set(2, 0.5);
  for (const uint32_t start : {0u, 12345u, 4000000000u}) {
    MRandomSequence::Set(start);
    grainloom->Randomize();
    Sequence sequence(start);
    for (int32_t b = 0; b < 10; ++b) {
      const SubSampleFile::Band& source = file.bands[static_cast<std::size_t>(b)];
      const double volume = 1 - (sequence.Next() % 1000) * 0.4 * 0.001;
      auto shift = static_cast<int32_t>(((sequence.Next() % 1000) * 0.002 - 1) * 0.5 * source.firstBin);
      if (source.binCount + shift > 8192) shift = 8192 - source.binCount;
      double color = (sequence.Next() & 0x7fff) * (static_cast<double>(source.sounds.size()) - 1) / 32767;
      if (color < 0) color = 0;
      const MSubSampleBand band = grainloom->GetBand(b);
      EXPECT_EQ(band.offset, source.firstBin);
      EXPECT_FLOAT_EQ(band.volume, static_cast<float>(volume));
      EXPECT_EQ(band.shift, shift) << b;
      EXPECT_FLOAT_EQ(band.index, static_cast<float>(color));
    }
  }
}

TEST_F(Grainloom, CommonColorIsDrawnOnceFromTheBandWithTheMostSounds) {
  SubSampleFile file = SmallLibrary(3);
  file.bands[4].sounds.resize(1);
  grainloom.WriteLibrary(file);
  grainloom.LoadEmptyState();
  MRandomSequence::Set(99);
  grainloom->Randomize(true);
  Sequence sequence(99);
  const auto color = static_cast<float>((sequence.Next() & 0x7fff) * 2.0 / 32767);
  for (int32_t b = 0; b < 10; ++b) {
    EXPECT_FLOAT_EQ(grainloom->GetBand(b).index, b == 4 || b == 9 ? 0 : color);
    EXPECT_FLOAT_EQ(grainloom->GetBand(b).volume, static_cast<float>(1 - (sequence.Next() % 1000) * 0.0001));
    sequence.Next();
    EXPECT_EQ(grainloom->GetBand(b).shift, 0) << "the offset deviance is 0";
  }
}

TEST_F(Grainloom, EditsTellTheHostAndMakeTheSampleAnew) {
  static int notes = 0;
  notes = 0;
  MHostCallback* const callback = [](void*, int32_t code, MServiceArguments*) -> MWord {
    notes += code == MHostCode::kParametersChanged;
    return 0;
  };
  grainloom.Call(MService::kAttach, 0, MAsWord(reinterpret_cast<void*>(callback)));
  LoadSmallLibrary();
  EXPECT_EQ(notes, 0);
  const std::vector<float> before = grainloom.GetSample(0);
  grainloom->SetBand(0, {2, 0, 5, 3});
  EXPECT_EQ(notes, 1);
  const std::vector<float> after = grainloom.GetSample(0);
  EXPECT_NE(after, before);
  grainloom->Randomize();
  EXPECT_EQ(notes, 2);
  EXPECT_NE(grainloom.GetSample(0), after);
  grainloom->SelectLibrary("Natural", "Natural Bass.qxSubSampleLib");
  EXPECT_EQ(notes, 3);
  grainloom->SetBand(10, {});
  grainloom->SetBand(-1, {});
  EXPECT_EQ(notes, 3);
}

TEST_F(Grainloom, TwoPluginsShareALibrary) {
  LoadSmallLibrary();
  const auto& cache = SonvelleConfiguration::Get()->subSampleCache;
  {
    GrainloomAudioStreamPlugin other;
    MXMLItem item("state");
    MServiceArguments arguments(MAsWord(&item));
    other.Service(MService::kLoadState, &arguments);
    EXPECT_NE(other.GetSample(), nullptr);
    EXPECT_EQ(cache.GetCount(), 1);
  }
  EXPECT_EQ(cache.GetCount(), 1);
  grainloom->SelectLibrary("", "missing");
  EXPECT_EQ(cache.GetCount(), 0);
}

}  // namespace
