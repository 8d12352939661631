#include "effects/WidenorPasses.h"

#include <gtest/gtest.h>

#include "tests/common/AudioBlock.h"

namespace {

// The samples, the line and the bands of a stretch, two channels each, from an odd address on.
struct Buffers {
  AudioBlock in, out, line;
  std::vector<double> bands[2];

  Buffers(int32_t samples, TestRandom& random)
      : in(AudioBlock::Noise(2, samples + 1, random)),
        out(AudioBlock::Constant(2, samples + 1, 7)),
        line(AudioBlock::Noise(2, samples + 1, random)) {
    for (std::vector<double>& band : bands)
      for (int32_t i = 0; i <= samples; ++i) band.push_back(random.Real(-2, 2));
  }
  WidenorStretch Get(bool isDelayed, bool inPlace) {
    AudioBlock& to = inPlace ? in : out;
    return {bands[0].data() + 1,
            bands[1].data() + 1,
            in[0] + 1,
            in[1] + 1,
            to[0] + 1,
            to[1] + 1,
            isDelayed ? line[0] + 1 : nullptr,
            isDelayed ? line[1] + 1 : nullptr,
            0.7,
            0.3};
  }
};

TEST(WidenorPasses, FoursGiveTheBitsOfSingleFrames) {
  TestRandom random;
  const std::vector<double> extremes = {NAN, INFINITY, -INFINITY, 1e300, -1e300, 3.4e38, 0, -0.0, 1e-40};
  for (const int32_t samples : {0, 1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 64, 99}) {
    for (int32_t run = 0; run < 40; ++run) {
      Buffers fours(samples, random);
      for (int32_t i = run % 5; i < samples; i += 5) {
        fours.bands[random.Below(2)][static_cast<std::size_t>(i)] = random.OneOf(extremes);
        fours.in[random.Below(2)][i] = static_cast<float>(random.OneOf(extremes));
      }
      Buffers singles = fours;
      const bool isDelayed = random.OneIn(2), inPlace = random.OneIn(2);
      WidenFrames(fours.Get(isDelayed, inPlace), samples);
      const WidenorStretch at = singles.Get(isDelayed, inPlace);
      for (int32_t i = 0; i < samples; ++i) WidenFrame(at, i);
      ASSERT_TRUE(fours.in == singles.in && fours.out == singles.out && fours.line == singles.line)
          << samples << " samples";
    }
  }
}

}  // namespace
