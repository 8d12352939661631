#pragma once
// Voices of a fake instrument. Whatever a test does, no stream is left open.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "hosts/bridge/Voices.h"
#include "tests/hosts/FakeInstrument.h"

class VoicesUnderTest : public testing::Test {
 protected:
  static constexpr int32_t kRate = 1000;  // a release takes 20 frames, giving way 5
  static constexpr int32_t kReleaseFrames = 20;
  static constexpr int32_t kMostFrames = 4096;

  VoicesUnderTest() {
    FakeInstrument::Reset();
    voices_->Prepare(1, kRate, kMostFrames);
  }
  ~VoicesUnderTest() override {
    voices_.reset();
    EXPECT_EQ(FakeInstrument::openStreams, 0);
  }

  std::vector<float> Play(int32_t frames) {
    std::vector<float> samples(static_cast<std::size_t>(frames), 7.0f);
    float* const out[] = {samples.data()};
    voices_->Process(out, frames);
    return samples;
  }
  // A voice of each number up to the most, with volumes that `volume` gives.
  void PressAll(double (*volume)(int32_t)) {
    for (int32_t i = 0; i < bridge::Voices::kMost; ++i) voices_->Press(0, i, volume(i));
  }

  bridge::Plugin instrument_{FakeInstrument::EntryPoint};
  std::optional<bridge::Voices> voices_{std::in_place, instrument_};
};
