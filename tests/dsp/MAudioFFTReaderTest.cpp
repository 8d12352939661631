#include "dsp/MAudioFFTReader.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/common/CountingFunctions.h"
#include "tests/common/Texts.h"
#include "tests/dsp/FFTModel.h"

namespace {

using Spectra = std::vector<std::vector<float>>;

class Reader : public MAudioFFTReader {
 public:
  explicit Reader(int32_t size = 4096, double overlap = 0) {
    if (size != 4096) SetSize(size);
    SetOverlap(overlap);
  }

  // Of a signal, in pieces of the given sizes by turns.
  Spectra Collect(const std::vector<float>& samples, const std::vector<int32_t>& pieces = {1000}) {
    std::size_t done = 0;
    for (std::size_t i = 0; done < samples.size(); ++i) {
      const auto piece = std::min(static_cast<std::size_t>(pieces[i % pieces.size()]), samples.size() - done);
      Feed(samples.data() + done, static_cast<int32_t>(piece));
      done += piece;
    }
    return std::exchange(spectra, {});
  }

  Spectra spectra;
  int32_t count = 0;
  bool keep = true;

 protected:
  void HandleSpectrum(int32_t size, float* spectrum) override {
    ++count;
    EXPECT_EQ(size, GetSize());
    if (keep) spectra.emplace_back(spectrum, spectrum + size);
    std::fill_n(spectrum, size, 1e30f);  // it is the handler's
  }
};

// What the reader should hand out, from the definition.
std::vector<double> Expected(const std::vector<float>& samples, std::size_t begin,
                             const MSignalWindow& window) {
  std::vector<double> block;
  for (std::size_t i = 0; i < static_cast<std::size_t>(window.GetSize()); ++i)
    block.push_back(double{samples[begin + i]} * window.GetSamples()[i]);
  return ModelForward(block);
}

void ExpectSpectraEvery(std::size_t hop, const Spectra& spectra, const std::vector<float>& samples,
                        const MSignalWindow& window) {
  const auto size = static_cast<std::size_t>(window.GetSize());
  ASSERT_EQ(spectra.size(), (samples.size() - size) / hop + 1);
  for (std::size_t i = 0; i < spectra.size(); ++i)
    EXPECT_LT(RelativeError(spectra[i], Expected(samples, i * hop, window)), 5e-7) << i;
}

TEST(MAudioFFTReader, StartsWithAHannWindowOf4096AndNoOverlap) {
  const auto reader = std::make_unique<Reader>();
  EXPECT_EQ(reader->GetSize(), 4096);
  EXPECT_EQ(reader->GetOverlap(), 0);
  EXPECT_EQ(reader->GetWindow().GetType(), MSignalWindow::kHann);
  for (int32_t i = 0; i < 4096; ++i)
    ASSERT_FLOAT_EQ(reader->GetWindow().GetSamples()[i],
                    static_cast<float>((1 - std::cos(i * (2 * std::numbers::pi / 4095))) * 0.5));
}

TEST(MAudioFFTReader, WithoutOverlapSpectraShareNoSamples) {
  const auto reader = std::make_unique<Reader>();
  const std::vector<float> samples = NoiseSamples(20000);
  ExpectSpectraEvery(4096, reader->Collect(samples), samples, reader->GetWindow());
  EXPECT_EQ(reader->GetFill(), 20000 % 4096);
}

TEST(MAudioFFTReader, HalfAnOverlapGivesASpectrumEvery2048Samples) {
  const auto reader = std::make_unique<Reader>(4096, 0.5);
  const std::vector<float> samples = NoiseSamples(20000);
  ExpectSpectraEvery(2048, reader->Collect(samples), samples, reader->GetWindow());
  reader->Reset();
  const std::vector<float> first(4095), one(1);
  EXPECT_TRUE(reader->Collect(first).empty());
  EXPECT_EQ(reader->Collect(one).size(), 1u);
  EXPECT_TRUE(reader->Collect(std::vector<float>(2047)).empty());
  EXPECT_EQ(reader->Collect(one).size(), 1u);
}

TEST(MAudioFFTReader, SharedSamplesAreTheTruncatedPart) {
  const auto reader = std::make_unique<Reader>(64, 0.3);  // 19.2 samples
  const std::vector<float> samples = NoiseSamples(1000);
  ExpectSpectraEvery(64 - 19, reader->Collect(samples), samples, reader->GetWindow());
}

TEST(MAudioFFTReader, AnyWindowTypeAndSizeHasTheSpectraOfTheDefinition) {
  const auto reader = std::make_unique<Reader>();
  for (const int32_t size : {4, 32, 1024, 16384, 32768}) {
    for (int32_t type = 0; type < MSignalWindow::kTypeCount; ++type) {
      reader->SetSize(size);
      reader->SetWindowType(type);
      reader->Reset();
      const std::vector<float> samples = NoiseSamples(size);
      ExpectSpectraEvery(1, reader->Collect(samples), samples, reader->GetWindow());
    }
  }
}

TEST(MAudioFFTReader, AnySplitOfTheInputGivesTheSameSpectra) {
  const std::vector<float> samples = NoiseSamples(10000);
  const Spectra whole = std::make_unique<Reader>(1024, 0.75)->Collect(samples, {10000});
  EXPECT_GT(whole.size(), 30u);
  for (const std::vector<int32_t>& pieces :
       {std::vector<int32_t>{1}, {2, 3, 5}, {64}, {1023, 1025}, {1024}, {4096}})
    EXPECT_EQ(std::make_unique<Reader>(1024, 0.75)->Collect(samples, pieces), whole);
}

TEST(MAudioFFTReader, SilenceIsTheSameAsZeros) {
  const auto fed = std::make_unique<Reader>(256, 0.5), silent = std::make_unique<Reader>(256, 0.5);
  std::vector<float> samples = NoiseSamples(300);
  Spectra expected = silent->Collect(samples);
  silent->FeedSilence(700);
  expected.insert(expected.end(), silent->spectra.begin(), silent->spectra.end());
  samples.resize(1000);
  EXPECT_EQ(fed->Collect(samples), expected);
  EXPECT_EQ(fed->GetFill(), silent->GetFill());
}

TEST(MAudioFFTReader, CountsBelowOneDoNothing) {
  const auto reader = std::make_unique<Reader>(4);
  const float sample = 1;
  for (const int32_t count : {0, -1, INT32_MIN}) {
    reader->Feed(&sample, count);
    reader->FeedSilence(count);
  }
  EXPECT_EQ(reader->GetFill(), 0);
}

TEST(MAudioFFTReader, OverlapIsLimitedSoThatFeedingEnds) {
  const auto reader = std::make_unique<Reader>(64);
  const auto fillAfter = [&](double overlap) {
    reader->SetOverlap(overlap);
    reader->Reset();
    reader->FeedSilence(64);
    return reader->GetFill();
  };
  EXPECT_EQ(fillAfter(0.95), 60);
  for (const double overlap : {0.96, 1.0, 1e300, HUGE_VAL}) EXPECT_EQ(fillAfter(overlap), 60);
  for (const double overlap : {0.0, -0.5, -HUGE_VAL, std::nan("")}) EXPECT_EQ(fillAfter(overlap), 0);
  reader->SetSize(4);
  EXPECT_EQ((reader->SetOverlap(2), reader->FeedSilence(1000), reader->GetFill()), 3);
}

TEST(MAudioFFTReader, SmallerSizeKeepsTheOldestSamplesAndFiresBeforeItTakesMore) {
  const auto reader = std::make_unique<Reader>(1024);
  const std::vector<float> samples = NoiseSamples(1000);
  EXPECT_TRUE(reader->Collect(samples).empty());
  reader->SetSize(256);
  EXPECT_EQ(reader->GetFill(), 256);
  EXPECT_TRUE(reader->spectra.empty());
  reader->Feed(samples.data(), 1);
  ASSERT_EQ(reader->spectra.size(), 1u);
  EXPECT_LT(RelativeError(reader->spectra[0], Expected(samples, 0, reader->GetWindow())), 5e-7);
  EXPECT_EQ(reader->GetFill(), 1);
}

TEST(MAudioFFTReader, LargerSizeKeepsWhatWaits) {
  const auto reader = std::make_unique<Reader>(256);
  const std::vector<float> samples = NoiseSamples(1024);
  reader->Feed(samples.data(), 100);
  reader->SetSize(1024);
  EXPECT_EQ(reader->GetFill(), 100);
  reader->Feed(samples.data() + 100, 924);
  ExpectSpectraEvery(1024, reader->spectra, samples, reader->GetWindow());
}

TEST(MAudioFFTReader, SizeMakesTheWindowHannAgain) {
  const auto reader = std::make_unique<Reader>();
  for (const int32_t size : {4096, 512}) {
    reader->SetWindowType(MSignalWindow::kGauss);
    EXPECT_EQ(reader->GetWindow().GetType(), MSignalWindow::kGauss);
    reader->SetSize(size);
    EXPECT_EQ(reader->GetWindow().GetType(), MSignalWindow::kHann);
    EXPECT_EQ(reader->GetWindow().GetSize(), size);
  }
}

TEST(MAudioFFTReader, SizesThatAreNoneAreIgnored) {
  const auto reader = std::make_unique<Reader>(512);
  reader->SetWindowType(MSignalWindow::kBartlett);
  reader->FeedSilence(300);
  for (const int32_t size : {INT32_MIN, -512, 0, 1, 2, 3, 100, 65536, INT32_MAX}) reader->SetSize(size);
  EXPECT_EQ(reader->GetSize(), 512);
  EXPECT_EQ(reader->GetFill(), 300);
  EXPECT_EQ(reader->GetWindow().GetType(), MSignalWindow::kBartlett);
  EXPECT_RAISES(reader->SetWindowType(7), "Unknown signal window type.", 0);
}

TEST(MAudioFFTReader, SizeThatCannotBeHadChangesNothing) {
  const auto reader = std::make_unique<Reader>(512);
  reader->FeedSilence(300);
  const CountingFunctions table;
  table.FailAfter(0);
  EXPECT_RAISES(reader->SetSize(32768), "Out of memory.", 0);
  EXPECT_EQ(reader->GetSize(), 512);
  EXPECT_EQ(reader->GetWindow().GetSize(), 512);
  EXPECT_EQ(reader->GetFill(), 300);
}

TEST(MAudioFFTReader, FeedingAllocatesNothing) {
  const auto reader = std::make_unique<Reader>(1024, 0.75);
  const std::vector<float> samples = NoiseSamples(5000);
  reader->keep = false;
  const CountingFunctions table;
  reader->Feed(samples.data(), 5000);
  reader->FeedSilence(5000);
  reader->SetOverlap(0.5);
  reader->Reset();
  EXPECT_EQ(table.GetCalls(), 0);
  EXPECT_EQ(reader->count, (10000 - 1024) / 256 + 1);
}

}  // namespace
