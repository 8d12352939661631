#pragma once
// A mixer of written signals and its model.

#include <gtest/gtest.h>

#include <deque>

#include "instruments/generators/MMixerAudioFilter.h"
#include "tests/instruments/generators/MixerModel.h"
#include "tests/instruments/generators/Pumped.h"

// Rises from -1 to 1.
inline Signal Ramp(int32_t length) {
  Signal ramp;
  for (int32_t i = 0; i < length; ++i) ramp.push_back(static_cast<float>(2.0 * i / length - 1));
  return ramp;
}

class MixerInTest {
 public:
  explicit MixerInTest(const std::vector<MixerModel::Object>& plan, int32_t channels = 2)
      : channels_(channels), plan_(plan) {
    for (const MixerModel::Object& wanted : plan) {
      Written& object = objects.emplace_back(wanted.signal);
      mixer.Add(object, wanted.isEnabled);
      object.SetFlag(MAudioGeneratorObject::kMode, wanted.mode);
      object.volume = wanted.volume;
      object.pan = wanted.pan;
    }
    mixer.SetFormat(channels, 44100);
  }

  // The first samples in these blocks are those of the model, and so is what each block says of the end.
  void ExpectModel(const Sizes& sizes, int32_t samples = 1500) {
    const MGeneratorStatePointer state = mixer.CreateState(1, 1);
    std::vector<bool> calls;
    const AudioBlock out = Pump(mixer, *state, channels_, samples, sizes, &calls);
    MixerModel model{plan_};
    std::size_t next = 0;
    for (int32_t done = 0; done < samples;) {
      const int32_t size = std::min(samples - done, sizes[std::min(next, sizes.size() - 1)]);
      MixerModel::Block block(static_cast<std::size_t>(channels_), Signal(static_cast<std::size_t>(size)));
      ASSERT_EQ(calls[next++], model.Compute(block)) << "at " << done;
      for (int32_t c = 0; c < channels_; ++c)
        ASSERT_LE(SoundModel::GetDistance(out[c] + done, block[static_cast<std::size_t>(c)]), 1e-6)
            << "channel " << c << " at " << done << ", blocks of " << sizes[0];
      done += size;
    }
  }

  std::deque<Written> objects;
  MMixerAudioFilter mixer;

 private:
  int32_t channels_;
  std::vector<MixerModel::Object> plan_;
};
