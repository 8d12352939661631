#include "audiofiles/MSubSampleLibrary.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <thread>

#include "tests/audiofiles/SubSampleFile.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/Texts.h"

namespace {

constexpr char kFields[] = "Invalid file contents. Subsample library contains invalid fields.";
constexpr char kData[] = "Invalid file contents. Subsample library contains invalid data.";
constexpr char kShort[] = "Could not read required data from stream.";

class MSubSampleLibraryTest : public testing::Test {
 protected:
  MString Write(std::string_view bytes) {
    return Buffer(folder.WriteFile("a.qxSubSampleLib", bytes).c_str());
  }
  std::unique_ptr<MSubSampleLibrary> Load(const SubSampleFile& content) {
    return std::unique_ptr<MSubSampleLibrary>(new MSubSampleLibrary(Write(content.GetBytes())));
  }
  // A library of one sound of one channel, one frame and two bins in band 3, once it is changed.
  template <typename Change>
  void ExpectRefused(const char* message, Change change) {
    SubSampleFile content = OneSound();
    change(content, content.bands[3], content.bands[3].sounds[0]);
    EXPECT_RAISES(Load(content), message, 256);
  }
  template <typename Change>
  void ExpectTaken(Change change) {
    SubSampleFile content = OneSound();
    change(content, content.bands[3], content.bands[3].sounds[0]);
    EXPECT_NO_THROW(Load(content));
  }
  static SubSampleFile OneSound() {
    SubSampleFile content;
    content.bands[3] = {100, 2, {{.values = {1.5f, -2}}}};
    return content;
  }

  TemporaryFolder folder;
};

using File = SubSampleFile;

TEST_F(MSubSampleLibraryTest, ReadsAllFields) {
  File content;
  content.rate = 48000;
  content.bands[0] = {7, 3, {{2, 5000, 1, {1, 2, 3, 4, 5, 6}}, {1, -5, 2, {7, 8, 9, 10, 11, 12}}}};
  content.bands[9] = {8191, 8192, {}};
  const auto library = Load(content);
  EXPECT_EQ(library->GetRate(), 48000);
  EXPECT_EQ(library->GetLargestCount(), 2);
  const MSubSampleLibrary::Band& first = library->GetBand(0);
  EXPECT_EQ(first.firstBin, 7);
  EXPECT_EQ(first.binCount, 3);
  ASSERT_EQ(first.GetCount(), 2);
  EXPECT_EQ(first.sounds[0].frames, 2);
  EXPECT_EQ(first.sounds[0].length, 5000);
  EXPECT_EQ(first.sounds[1].length, 0) << "a negative length is none";
  EXPECT_EQ(first.sounds[1].channels, 2);
  EXPECT_EQ(first.sounds[1].offset, 24);
  EXPECT_EQ(library->GetBand(9).firstBin, 8191);
  EXPECT_EQ(library->GetBand(9).binCount, 8192);
  EXPECT_EQ(library->GetBand(9).GetCount(), 0);
  const float* const second = library->Read(0, 1);
  EXPECT_EQ(std::vector<float>(second, second + 6), content.bands[0].sounds[1].values);
  const float* const one = library->Read(0, 0);
  EXPECT_EQ(std::vector<float>(one, one + 6), content.bands[0].sounds[0].values);
}

TEST_F(MSubSampleLibraryTest, LimitsOfTheRateAreIncluded) {
  for (const int32_t rate : {22050, 192000}) ExpectTaken([=](File& file, auto&, auto&) { file.rate = rate; });
  for (const int32_t rate : {22049, 192001, 0, -1, INT32_MIN})
    ExpectRefused(kFields, [=](File& file, auto&, auto&) { file.rate = rate; });
}

TEST_F(MSubSampleLibraryTest, LimitsOfABandAreIncluded) {
  for (const int32_t bin : {0, 8191})
    ExpectTaken([=](File&, File::Band& band, auto&) { band.firstBin = bin; });
  for (const int32_t bin : {-1, 8192})
    ExpectRefused(kFields, [=](File&, File::Band& band, auto&) { band.firstBin = bin; });
  for (const int32_t bins : {1, 8192})
    ExpectTaken([=](File&, File::Band& band, auto&) { band.binCount = bins; });
  for (const int32_t bins : {0, 8193, INT32_MAX})
    ExpectRefused(kFields, [=](File&, File::Band& band, auto&) { band.binCount = bins; });
  ExpectRefused(kFields, [](File&, File::Band& band, auto&) { band.count = -1; });
}

TEST_F(MSubSampleLibraryTest, BandHasTenThousandSoundsAndNotOneMore) {
  File content;
  content.bands[4].sounds.resize(10000);
  EXPECT_EQ(Load(content)->GetBand(4).GetCount(), 10000);
  content.bands[4].sounds.resize(10001);
  EXPECT_RAISES(Load(content), kFields, 256);
}

TEST_F(MSubSampleLibraryTest, LimitsOfASoundAreIncluded) {
  for (const int32_t channels : {1, 8})
    ExpectTaken([=](File&, auto&, File::Sound& sound) { sound.channels = channels; });
  for (const int32_t channels : {0, 9, -1})
    ExpectRefused(kData, [=](File&, auto&, File::Sound& sound) { sound.channels = channels; });
  ExpectTaken([](File&, auto&, File::Sound& sound) { sound.frames = 0; });
  ExpectRefused(kData, [](File&, auto&, File::Sound& sound) { sound.frames = -1; });
  ExpectTaken([](File&, auto&, File::Sound& sound) { sound.offset = INT64_MAX; });
  ExpectRefused(kData, [](File&, auto&, File::Sound& sound) { sound.offset = -1; });
}

TEST_F(MSubSampleLibraryTest, FailureNamesTheFileAndThePlace) {
  File content = OneSound();
  content.bands[1].binCount = 0;
  try {
    Load(content);
    FAIL();
  } catch (const MException& raised) {
    const std::string source = Utf8(raised.source);
    EXPECT_NE(source.find("a.qxSubSampleLib"), std::string::npos) << source;
    EXPECT_NE(source.find("byte 96"), std::string::npos) << source;
  }
}

TEST_F(MSubSampleLibraryTest, HeaderThatEndsAnywhereIsTooShort) {
  const std::string header = OneSound().GetHeader();
  EXPECT_EQ(header.size(), 76u + 10 * 20 + 28);
  for (std::size_t size = 0; size < header.size(); ++size)
    EXPECT_RAISES(MSubSampleLibrary(Write(header.substr(0, size))), kShort, 256);
  EXPECT_NO_THROW(MSubSampleLibrary(Write(header)));
}

TEST_F(MSubSampleLibraryTest, FileThatIsNotThereCannotBeOpened) {
  try {
    MSubSampleLibrary library(Buffer(folder.Path("none").c_str()));
    FAIL();
  } catch (const MException& raised) {
    EXPECT_EQ(raised.code, MErrorCode::kNotOpened);
  }
}

TEST_F(MSubSampleLibraryTest, DataIsReadWhenItIsAskedForAndStays) {
  const auto library = Load(OneSound());
  File later = OneSound();
  later.bands[3].sounds[0].values = {3, 4};
  Write(later.GetBytes());
  const float* const data = library->Read(3, 0);
  EXPECT_EQ(data[0], 3);
  std::filesystem::remove(folder.Path("a.qxSubSampleLib"));
  EXPECT_EQ(library->Read(3, 0), data);
  EXPECT_EQ(data[1], 4);
}

TEST_F(MSubSampleLibraryTest, DataBehindTheEndIsRefusedBeforeMemoryIsMade) {
  const auto expectShort = [this](int32_t frames, int32_t channels, int64_t offset) {
    File content = OneSound();
    content.bands[3].sounds[0] = {frames, 1, channels, {1, 2}, offset};
    const auto library = Load(content);
    SCOPED_TRACE(testing::Message() << frames << ", " << channels << ", " << offset);
    EXPECT_RAISES(library->Read(3, 0), kShort, 256);
  };
  expectShort(1, 1, 1);
  expectShort(1, 1, INT64_MAX);
  expectShort(2, 1, 0);
  expectShort(1, 2, 0);
  expectShort(INT32_MAX, 8, 0);
  expectShort(1 << 29, 1, 0);
  expectShort(1 << 30, 4, INT64_MAX);
}

TEST_F(MSubSampleLibraryTest, DataThatHasBecomeShorterIsTooShort) {
  const auto library = Load(OneSound());
  Write(OneSound().GetHeader());
  EXPECT_RAISES(library->Read(3, 0), kShort, 256);
  Write(OneSound().GetBytes());
  EXPECT_EQ(library->Read(3, 0)[1], -2) << "a failure is not kept";
}

TEST_F(MSubSampleLibraryTest, SoundWithoutFramesHasNoDataWhereverItLies) {
  File content = OneSound();
  content.bands[3].sounds[0] = {0, 100, 1, {}, INT64_MAX};
  EXPECT_EQ(Load(content)->Read(3, 0), nullptr);
}

TEST_F(MSubSampleLibraryTest, ValuesThatAreNoNumbersAreZero) {
  File content;
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  content.bands[0] = {
      0, 4, {{.values = {kInfinity, 1, std::numeric_limits<float>::quiet_NaN(), -kInfinity}}}};
  const auto library = Load(content);
  const float* const data = library->Read(0, 0);
  EXPECT_EQ(std::vector<float>(data, data + 4), std::vector<float>({0, 1, 0, 0}));
}

TEST_F(MSubSampleLibraryTest, SoundThatIsNotThereCannotBeRead) {
  const auto library = Load(OneSound());
  for (const auto& [band, sound] : {std::pair(3, 1), {3, -1}, {2, 0}, {-1, 0}, {10, 0}})
    EXPECT_RAISES(library->Read(band, sound), "Invalid subsample index.", 0);
}

TEST_F(MSubSampleLibraryTest, CacheSharesLibrariesAndHasItsOwnMessage) {
  const MString path = Write(OneSound().GetBytes());
  MSubSampleLibraryCache cache;
  MSubSampleLibrary* const library = cache.Acquire(path);
  EXPECT_EQ(cache.Acquire(path), library);
  cache.Release(library);
  EXPECT_EQ(library->GetRate(), 44100);
  const MSubSampleLibrary stranger(path);
  EXPECT_RAISES(cache.Release(&stranger), "Invalid subsample library to release.", 0);
  cache.Release(library);
  EXPECT_EQ(cache.GetCount(), 0);
  EXPECT_RAISES(cache.Acquire(Write("too short")), kShort, 256);
  EXPECT_EQ(cache.GetCount(), 0);
}

TEST_F(MSubSampleLibraryTest, ThreadsReadTheSameData) {
  File content;
  for (int32_t s = 0; s < 50; ++s) content.bands[0].sounds.push_back({.values = {static_cast<float>(s)}});
  const auto library = Load(content);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      for (int32_t s = 0; s < 50; ++s) EXPECT_EQ(*library->Read(0, s), static_cast<float>(s));
    });
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
