#pragma once
#include "dsp/MClickRepair.h"
#include "effects/SwirloPasses.h"
#include "plugin/MModulationPlugin.h"
#include "plugin/MPublished.h"

// Phaser: a chain of all-pass stages whose corner a wave moves between two frequencies, mixed with the
// signal. With x the sample plus a tiny bias and z the last stage's output of the frame before,
//   d = dmin + (dmax - dmin) (wave(phase) + 1) / 2, at least 0,  dmin, dmax = 2 10^frequency / sample rate,
//   a = (1 - d) / (1 + d),  y = feedback^2 z + x;
//   for each stage with the memory s:  t = s - a y,  s = t a + y,  y = t;
//   z = y,  out = depth y + (1 - depth) x,  phase += 10^rate / sample rate, in cycles.
// Channel c is c times the phase difference, in cycles, ahead of the first one.
//
// The stages that a growing number adds start empty, and each change of their number, the first Update
// included, asks for a click repair (MClickRepair.h). Skipping empties all stages and moves the phase. Serves
// eight channels, further ones pass. A sample that is not finite counts as 0. A sweep at a loop gain of 1 may
// grow: a channel that leaves the range of float starts afresh at the next block.
class SwirloAudioEffectPlugin final : public MModulationPlugin {
 public:
  SwirloAudioEffectPlugin();

  void Update() override;                                           // [host]
  void Process(float** in, float** out, int32_t samples) override;  // [audio]
  void Skip(int32_t samples) override;                              // [audio]

 private:
  static constexpr int32_t kChannels = 8;
  static constexpr int32_t kMaximumStages = SwirloChannel::kMaximumStages;
  static constexpr int32_t kChunk = 256;

  struct Settings {
    double scale = 0;  // of the wave, to d
    double offset = 0;
    double feedback = 0;
    double depth = 0;
    double difference = 0;  // cycles
    int32_t stages = 0;     // none before the first Update with a sample rate
  };

  void ClearAddedStages() noexcept;
  void RunChunk(const Settings& at, float* const* in, float* const* out, int32_t channels, int32_t first,
                int32_t samples) noexcept;

  enum { kDepth, kMinFreq, kMaxFreq, kRate, kFeedback, kDelays, kPhaseDifference, kShape, kRowCount };
  MPluginParameter rows_[kRowCount];
  MPublished<Settings> settings_;
  int32_t stages_ = 0;                      // of the last Update
  std::atomic<uint32_t> addedStages_ = 0u;  // a bit for each stage to be cleared
  SwirloChannel memory_[kChannels] = {};
  double phase_ = 0;  // of the first channel, in cycles
  MClickRepair repair_;
};
