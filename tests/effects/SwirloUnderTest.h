#pragma once
// Swirlo and a plain model of it, with phases in radians.

#include <gtest/gtest.h>

#include <numbers>

#include "tests/effects/ModulationUnderTest.h"

struct SwirloSetting {
  double depth = 0.4, minimumHertz = 400, maximumHertz = 1600, hertz = 2, feedback = 0.7;
  int32_t stages = 6;
  double difference = 0.5, shape = 5;
};

class SwirloUnderTest : public ModulationUnderTest {
 public:
  static constexpr int32_t kRate = 48000;
  static constexpr int32_t kSettle = 512;

  SwirloUnderTest() : ModulationUnderTest("Swirlo") {}

  void Apply(const SwirloSetting& at) {
    Set("Depth", at.depth);
    Set("MinFreq", std::log10(at.minimumHertz));
    Set("MaxFreq", std::log10(at.maximumHertz));
    SetRate(at.hertz);
    Set("feedback", at.feedback);
    Set("delays", at.stages);
    Set("phasediff", at.difference);
    SetShape(at.shape);
  }
  // Prepared, with the first repair used up by a block of silence, which moves the phase by its length.
  void Start(const SwirloSetting& at, int32_t channels, int32_t sampleRate = kRate) {
    Apply(at);
    Prepare(channels, sampleRate);
    AnswerToSilence(channels, kSettle);
  }
};

class SwirloModel {
 public:
  // As SwirloUnderTest::Start leaves it.
  explicit SwirloModel(const SwirloSetting& at, int32_t sampleRate = SwirloUnderTest::kRate)
      : wave_(at.shape), sampleRate_(sampleRate) {
    Apply(at);
    Skip(SwirloUnderTest::kSettle);
  }

  void Apply(const SwirloSetting& at) {
    for (int32_t k = at_.stages; k < at.stages; ++k)
      for (Channel& channel : channels_) channel.stages[k] = 0;
    at_ = at;
    for (int32_t c = 1; c < 8; ++c) {
      double& phase = channels_[c].phase;
      phase = std::fmod(channels_[c - 1].phase + kTurn * at.difference, kTurn);
      if (phase < 0) phase += kTurn;
    }
  }
  AudioBlock Answer(const AudioBlock& in) {
    AudioBlock out = in;
    for (int32_t c = 0; c < std::min(in.GetChannelCount(), 8); ++c)
      for (int32_t i = 0; i < in.GetLength(); ++i) out[c][i] = Next(channels_[c], in[c][i]);
    return out;
  }
  void Skip(int32_t samples) {
    for (Channel& channel : channels_) channel = {std::fmod(channel.phase + samples * GetStep(), kTurn)};
  }

 private:
  static constexpr double kTurn = 2 * std::numbers::pi;
  struct Channel {
    double phase = 0;
    double z = 0;
    double stages[10] = {};
  };

  double GetStep() const { return kTurn * at_.hertz / sampleRate_; }

  float Next(Channel& channel, double in) {
    const double x = in + 1e-25;
    const double dmin = 2 * at_.minimumHertz / sampleRate_, dmax = 2 * at_.maximumHertz / sampleRate_;
    const double d = (dmax - dmin) * (wave_.Read(channel.phase / kTurn) + 1) * 0.5 + dmin;
    channel.phase += GetStep();
    if (channel.phase >= kTurn) channel.phase -= kTurn;
    const double a = (1 - d) / (1 + d);
    double y = at_.feedback * at_.feedback * channel.z + x;
    for (int32_t k = 0; k < at_.stages; ++k) {
      double& s = channel.stages[k];
      const double t = s - a * y;
      s = t * a + y;
      y = t;
    }
    channel.z = y;
    return static_cast<float>(y * at_.depth + x * (1 - at_.depth));
  }

  const TestWave wave_;
  int32_t sampleRate_;
  SwirloSetting at_;
  Channel channels_[8];
};

inline void ExpectClose(const AudioBlock& out, const AudioBlock& expected) {
  EXPECT_LE(out.GetDistance(expected), 1e-6 * expected.GetPeak());
}
