#pragma once
#include "plugin/MPlugin.h"

// Base of all effects. A block of audio is an array of addresses, one per channel that Prepare was given, of
// buffers of 32-bit floats, nominally within -1 to 1 and never clipped at this level. A block with a null
// address is left alone. Denormals are flushed while an effect works.
class MAudioEffectPlugin : public MPlugin {
 public:
  MWord Service(int32_t service, MServiceArguments* arguments) override;

  // Stores the format, calls Update() and returns 0; a negative number of channels is 0. An effect with
  // memory then sizes and clears it, when the sample rate is at least 1. [host]
  virtual int32_t Prepare(int32_t channels, int32_t sampleRate);
  // Reads `samples` values, 0 or more, from each in[c] and overwrites each out[c]. Both may be the same
  // arrays. Allocates nothing unless the effect's own head comment says so. [audio]
  virtual void Process(float** in, float** out, int32_t samples) = 0;
  // 1 if nothing is left in the effect's memory. [audio]
  virtual int32_t IsSilent() { return 1; }
  // The samples by which the effect delays the signal. [host]
  virtual int32_t GetLatency() { return 0; }
  // `samples`, 0 or more, of time pass without a block. [audio]
  virtual void Skip([[maybe_unused]] int32_t samples) {}

 protected:
  // The magnitude up to which what is left in a memory counts as silent.
  static constexpr float kSilence = 0.0001f;

  // Copies channels that an effect does not work on. [audio]
  static void CopyChannels(float** in, float** out, int32_t first, int32_t end, int32_t samples) noexcept;

  int32_t channels_ = 0;
  int32_t sampleRate_ = 1;  // in hertz; 1 keeps divisions safe before the first Prepare
};
