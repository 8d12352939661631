// MRenderSubSamples beside a plain model, over random libraries and bands.

#include <gtest/gtest.h>

#include "tests/instruments/SubSampleLibraryInTest.h"
#include "tests/instruments/SubSampleModel.h"

namespace {

SubSampleFile RandomFile(TestRandom& random) {
  const std::vector<int32_t> lengths = {0,    1,    2,    150,  199,  200,   201,  4095,
                                        4096, 4097, 8191, 8192, 8193, 12288, 12289};
  SubSampleFile file;
  for (SubSampleFile::Band& band : file.bands) {
    band.firstBin = random.OneIn(3) ? random.Integer(8180, 8191) : random.Below(8192);
    if (random.OneIn(4)) band.firstBin = random.Below(4);
    band.binCount = random.Integer(1, 5);
    for (int32_t sounds = random.Below(4); sounds > 0; --sounds) {
      const int32_t length = random.OneIn(2) ? random.OneOf(lengths) : random.Below(14000);
      band.sounds.push_back(NoiseSound(random.Below(4), length, random.Integer(1, 3), band.binCount, random));
    }
  }
  return file;
}

MSubSampleBands RandomBands(const SubSampleFile& file, TestRandom& random) {
  MSubSampleBands bands;
  for (std::size_t b = 0; b < bands.size(); ++b) {
    const auto count = static_cast<double>(file.bands[b].sounds.size());
    bands[b].index = static_cast<float>(random.Real(-0.5, count));
    if (random.OneIn(3)) bands[b].index = std::floor(bands[b].index);
    bands[b].shift = random.OneIn(3)   ? random.Integer(-8, 8)
                     : random.OneIn(4) ? random.Integer(-8192, 8192)
                                       : 0;
    bands[b].volume = static_cast<float>(random.Real(-0.2, 1));
  }
  return bands;
}

TEST(MSubSampleOracle, RendersWhatTheModelRenders) {
  TestRandom random;
  int32_t loud = 0;
  for (int32_t round = 0; round < 25; ++round) {
    const SubSampleFile file = RandomFile(random);
    SubSampleLibraryInTest library(file);
    const MSubSampleBands bands = RandomBands(file, random);
    const double colorOffset = random.OneIn(4) ? random.Below(2) : random.Real(0, 1);
    const SubSampleModel model(file, bands, colorOffset);
    const auto channels = library.Render(bands, colorOffset);
    ASSERT_EQ(channels.size(), model.channels.size());
    for (std::size_t c = 0; c < channels.size(); ++c) {
      ASSERT_EQ(channels[c].size(), model.channels[c].size());
      for (std::size_t i = 0; i < channels[c].size(); ++i) {
        ASSERT_NEAR(channels[c][i], model.channels[c][i], 5e-6)
            << "round " << round << ", " << c << ", " << i;
        loud += std::abs(channels[c][i]) > 0.1f;
      }
    }
  }
  EXPECT_GT(loud, 10000);
}

}  // namespace
