#pragma once
#include "dsp/MClickRepair.h"
#include "plugin/MModulationPlugin.h"

// Vibrato: reads the signal of the last 404 samples at a place that a wave moves,
//   y[i] = x at i - 204 + reach wave(phase),  reach = truncate(200 depth), limited to 1..200,
// with the four-point interpolation of MModulationKernels::interpolate, and phase += 10^rate / sample rate.
// Channel c runs at phase + start + c offset, in cycles, of which only the fraction is heard:
//   offset = sample rate / 10^rate x phase difference,  start = -8 offset if the offset is negative, else 0.
//
// The mean delay is 204 samples; the latency that is told is the reach. Each update asks for a click repair
// (MClickRepair.h). Serves eight channels, further ones pass undelayed. A sample that is not finite counts as
// 0. Preparing clears the lines. Skipped time leaves the phase. A block holds the lock, so that it reads one
// wave.
class QuaverlyAudioEffectPlugin final : public MModulationPlugin {
 public:
  QuaverlyAudioEffectPlugin();

  void Update() override;                                               // [host]
  int32_t Prepare(int32_t channels, int32_t sampleRate) override;       // [host]
  void Process(float** in, float** out, int32_t samples) override;      // [audio]
  int32_t IsSilent() override;                                          // [audio]
  int32_t GetLatency() override { return MLoadShared(reachSamples_); }  // [host]

 private:
  static constexpr int32_t kChannels = 8;
  static constexpr int32_t kDelay = 204;
  static constexpr int32_t kHistory = 2 * kDelay;
  static constexpr int32_t kStart = 4;    // of the last block, which count for the silence
  static constexpr int32_t kChunk = 256;  // samples that are worked on at a time
  // The newest input of a channel, before `end`.
  struct Line {
    double samples[kHistory + 2 * kChunk] = {};
    int32_t end = kHistory;
    float start[kStart] = {};

    // Makes room for so many samples behind the end, up to kChunk, where it keeps those before.
    double* Append(int32_t count) noexcept;
  };

  void KeepStart(float** in, int32_t channels, int32_t samples) noexcept;
  void Delay(Line& line, const float* in, float* out, double phase, int32_t samples) noexcept;

  enum { kDepth, kRate, kPhaseDifference, kShape, kRowCount };
  MPluginParameter rows_[kRowCount];
  Line lines_[kChannels];
  double phase_ = 0;
  double offset_ = 0;  // cycles, under the lock
  int32_t reachSamples_ = 80;
  MClickRepair repair_;
};
