// Random sequences of the operations of MAudioBuffer against the same operations on plain vectors.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/MAudioBuffer.h"
#include "tests/common/TestRandom.h"

namespace {

// Written as the definitions read.
struct Model {
  std::vector<std::vector<float>> channels;
  int32_t length = 0;

  void SetSize(int32_t count, int32_t newLength) {
    if (count == static_cast<int32_t>(channels.size()) && newLength == length) return;
    length = newLength;
    channels.assign(static_cast<std::size_t>(count), std::vector<float>(static_cast<std::size_t>(length)));
  }
  void Resize(int32_t newLength) {
    length = newLength;
    if (length == 0) channels.clear();
    for (auto& channel : channels) channel.resize(static_cast<std::size_t>(length));
  }
  void Clear() {
    for (auto& channel : channels) channel.assign(channel.size(), 0.0f);
  }
  void Rotate(int64_t offset) {
    for (auto& channel : channels) {
      const std::vector<float> before = channel;
      for (int64_t i = 0; i < length; ++i)
        channel[static_cast<std::size_t>(((i + offset) % length + length) % length)] =
            before[static_cast<std::size_t>(i)];
    }
  }
  void Fade(int32_t begin, double beginGain, int32_t end, double endGain) {
    for (auto& channel : channels)
      for (int32_t i = begin; i <= end && begin < end; ++i)
        if (i >= 0 && i < length) {
          float& sample = channel[static_cast<std::size_t>(i)];
          const double gain = beginGain + (endGain - beginGain) * (i - begin) / (end - begin);
          sample = static_cast<float>(sample * gain);
        }
  }
  double Peak() const {
    double peak = 0;
    for (const auto& channel : channels)
      for (const float sample : channel) peak = std::max(peak, std::abs(static_cast<double>(sample)));
    return peak;
  }
};

void ExpectEqual(const MAudioBuffer& buffer, const Model& model) {
  ASSERT_EQ(buffer.GetChannelCount(), static_cast<int32_t>(model.channels.size()));
  ASSERT_EQ(buffer.GetLength(), model.length);
  ASSERT_GE(buffer.GetCapacity(), model.length);
  for (int32_t c = 0; c < buffer.GetChannelCount(); ++c) {
    const float* const samples = buffer.GetChannel(c);
    ASSERT_EQ(std::vector<float>(samples, samples + model.length),
              model.channels[static_cast<std::size_t>(c)]);
    ASSERT_EQ(samples[-1], 0);
    ASSERT_EQ(samples[model.length], 0);
  }
}

void ChangeSize(TestRandom& random, MAudioBuffer& buffer, Model& model) {
  switch (random.Below(3)) {
    case 0: {
      const int32_t channels = random.Integer(0, 8), length = random.Integer(0, 70);
      buffer.SetSize(channels, length, random.Integer(-5, 100));
      model.SetSize(channels, length);
      break;
    }
    case 1: {
      const int32_t length = random.OneIn(10) ? 0 : random.Integer(1, 90);
      buffer.Resize(length, true);
      model.Resize(length);
      break;
    }
    default:
      buffer.Reserve(random.Integer(-5, 120));
  }
}

void ChangeSamples(TestRandom& random, MAudioBuffer& buffer, Model& model) {
  switch (random.Below(7)) {
    case 0:
      buffer.Clear();
      model.Clear();
      break;
    case 1:
    case 2: {
      const int32_t offset = random.Integer(-200, 200);
      buffer.Rotate(offset);
      model.Rotate(offset);
      break;
    }
    case 3:
    case 4: {
      const int32_t begin = random.Integer(-20, 90), end = begin + random.Integer(0, 60);
      const double beginGain = random.Real(-1.1, 1.1), endGain = random.Real(-1.1, 1.1);
      buffer.Fade(begin, beginGain, end, endGain);
      model.Fade(begin, beginGain, end, endGain);
      break;
    }
    default:  // new samples
      for (int32_t c = 0; c < buffer.GetChannelCount(); ++c) {
        std::vector<float>& channel = model.channels[static_cast<std::size_t>(c)];
        for (float& sample : channel) sample = static_cast<float>(random.Real(-1, 1));
        std::copy(channel.begin(), channel.end(), buffer.GetChannel(c));
      }
  }
}

class MAudioBufferRandom : public testing::TestWithParam<uint32_t> {};

TEST_P(MAudioBufferRandom, AnySequenceOfOperationsEqualsPlainVectors) {
  TestRandom random(GetParam());
  MAudioBuffer buffer;
  Model model;
  for (int32_t step = 0; step < 400; ++step) {
    SCOPED_TRACE(testing::Message() << "seed " << GetParam() << ", step " << step);
    if (random.OneIn(3))
      ChangeSize(random, buffer, model);
    else
      ChangeSamples(random, buffer, model);
    ASSERT_NO_FATAL_FAILURE(ExpectEqual(buffer, model));
    const double peak = model.Peak();
    ASSERT_TRUE(buffer.IsAllBelow(peak));
    ASSERT_EQ(buffer.IsAllBelow(peak * 0.999), peak == 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, MAudioBufferRandom, testing::Range(1u, 26u));

}  // namespace
