#include <sndfile.h>

#include "audiofiles/MWAVReader.h"
#include "tests/audiofiles/SampleFiles.h"
#include "tests/common/TemporaryFolder.h"

namespace {

struct Depth {
  int format;
  int bits;
  double scale;  // what libsndfile's full scale is for us
};

class MWAVReaderOracle : public testing::TestWithParam<Depth> {};

// Files of libsndfile, whose full scale is a power of two, and read back by it.
TEST_P(MWAVReaderOracle, FilesOfAnotherProgramSoundAsThere) {
  const TemporaryFolder folder;
  TestRandom random;
  for (const int channels : {1, 2, 5}) {
    const std::string path = folder.Path("x.wav");
    SF_INFO info = {0, 48000, channels, SF_FORMAT_WAV | GetParam().format, 0, 0};
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr);
    std::vector<double> samples(static_cast<std::size_t>(channels) * 3001);
    for (double& sample : samples) sample = random.Real(-0.99, 0.99);
    sf_writef_double(file, samples.data(), 3001);
    sf_close(file);

    info = {};
    file = sf_open(path.c_str(), SFM_READ, &info);
    ASSERT_EQ(sf_readf_double(file, samples.data(), 3001), 3001);
    sf_close(file);
    const std::string bytes = folder.ReadFile("x.wav");
    MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
    MAudioBuffer buffer;
    LoadWAV(buffer, stream);
    ASSERT_EQ(buffer.GetLength(), 3001);
    ASSERT_EQ(buffer.GetChannelCount(), channels);
    EXPECT_EQ(buffer.sampleRate, 48000);
    EXPECT_EQ(buffer.bitDepth, GetParam().bits);
    const double offset = GetParam().bits == 8 ? 1 / 127.0 : 0;  // our middle is 127
    for (std::size_t i = 0; i < samples.size(); ++i) {
      const auto at = static_cast<int32_t>(i) / channels;
      ASSERT_NEAR(buffer.GetChannel(static_cast<int32_t>(i) % channels)[at],
                  samples[i] * GetParam().scale + offset, 1.2e-7);
    }
  }
}

constexpr Depth kDepths[] = {{SF_FORMAT_PCM_U8, 8, 128 / 127.0},
                             {SF_FORMAT_PCM_16, 16, 32768 / 32767.0},
                             {SF_FORMAT_PCM_24, 24, 8388608 / 8388607.0},
                             {SF_FORMAT_FLOAT, 32, 1},
                             {SF_FORMAT_PCM_32, 32, 2147483648 / 2147483520.0}};
INSTANTIATE_TEST_SUITE_P(Depths, MWAVReaderOracle, testing::ValuesIn(kDepths));

}  // namespace
