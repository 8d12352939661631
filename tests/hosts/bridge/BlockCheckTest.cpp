#include "hosts/bridge/BlockCheck.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <cmath>
#include <utility>
#include <vector>

namespace {

TEST(BlockCheck, FindsWhatIsNotFiniteAtAnyPlaceOfAnyLength) {
  for (int32_t length = 0; length < 70; ++length)
    for (int32_t start = 0; start < 4; ++start) {
      std::vector<float> samples(static_cast<std::size_t>(start + length), FLT_MAX);
      for (std::size_t i = 0; i < samples.size(); i += 3) samples[i] = i % 2 ? -0.0f : -FLT_MIN / 2;
      EXPECT_TRUE(bridge::IsFinite(samples.data() + start, length));
      for (int32_t i = 0; i < length; ++i)
        for (const float value : {NAN, -NAN, INFINITY, -INFINITY, std::bit_cast<float>(0x7F800001)}) {
          float& sample = samples[static_cast<std::size_t>(start + i)];
          const float before = std::exchange(sample, value);
          EXPECT_FALSE(bridge::IsFinite(samples.data() + start, length)) << i << " of " << length;
          sample = before;
        }
    }
}

TEST(BlockCheck, OnlyZerosOfEitherSignAreSilent) {
  std::vector<float> samples(150, 0.0f);
  samples[7] = -0.0f;
  EXPECT_TRUE(bridge::IsSilent(samples.data(), 150));
  for (float& sample : samples)
    for (const float value : {FLT_MIN / 2, -1.0f, NAN}) {
      const float before = std::exchange(sample, value);
      EXPECT_FALSE(bridge::IsSilent(samples.data(), 150));
      sample = before;
    }
  EXPECT_TRUE(bridge::IsSilent(samples.data(), 0));
}

}  // namespace
