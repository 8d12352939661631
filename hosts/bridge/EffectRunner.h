#pragma once
#include <vector>

#include "hosts/bridge/Plugin.h"
#include "hosts/bridge/Turn.h"

namespace bridge {

// Runs an effect as a DAW expects it: what comes in and out is finite, a bypass cross-fades in 10 ms and
// keeps the latency, and an effect that was bypassed starts anew, without what it still held from before.
//
// All of it is [audio] but Prepare; nothing here allocates, locks or waits.
class EffectRunner {
 public:
  static constexpr double kFadeSeconds = 0.01;

  // The effect outlives the runner. `turn` says whether the audio thread may clear the effect's memory now;
  // an effect that `hasMemory` is false for is never cleared.
  EffectRunner(Plugin& effect, Turn& turn, bool hasMemory) noexcept
      : effect_(effect), turn_(turn), hasMemory_(hasMemory) {}

  // Prepares the effect, for blocks of up to `mostFrames`. [host]
  void Prepare(int32_t channels, int32_t sampleRate, int32_t mostFrames);
  // Clears all memory.
  void Reset();
  void SetBypass(bool isBypassed) noexcept;
  // Follows a change of the effect's parameters; whether the latency has changed.
  bool UpdateLatency();
  // The samples by which out is behind in, bypassed or not.
  int32_t GetLatency() const noexcept { return latency_; }

  // Reads in[c] and overwrites out[c], which may be any channel of `in`, from `start` on; at most the frames
  // of Prepare. A null channel of `in`, or no `in` at all, is silence.
  void Process(const float* const* in, float* const* out, int32_t start, int32_t frames);
  // Whether the input is silence by now, and nothing is left in the effect.
  bool IsQuiet() const noexcept { return isQuiet_; }

 private:
  enum class State { kActive, kFading, kBypassed, kStarting };

  // The input as it was `latency_` samples ago, in a ring of a power of two per channel.
  struct Ring {
    std::vector<float> samples;
    std::size_t mask = 0;
    std::size_t end = 0;  // behind the newest sample, counted from the beginning
  };

  float* GetPlane(std::vector<float>& planes, int32_t channel) const noexcept {
    return planes.data() + static_cast<std::size_t>(channel) * static_cast<std::size_t>(mostFrames_);
  }
  int32_t GetPieceEnd() const noexcept;
  bool IsOverwritten(const float* samples, int32_t channel, int32_t frames) const noexcept;
  void TakeInput(const float* const* in, int32_t start, int32_t frames);
  void RunPiece(int32_t frames);
  void KeepDry(int32_t frames) noexcept;
  void RunEffect(int32_t frames);
  void WriteDry(int32_t frames) noexcept;
  void Fade(int32_t frames);
  void WatchSilence(bool isSilent, int32_t frames);
  void TryClear();

  Plugin& effect_;
  Turn& turn_;
  const bool hasMemory_;
  int32_t channels_ = 0;
  int32_t sampleRate_ = 1;
  int32_t mostFrames_ = 0;
  int32_t latency_ = 0;
  State state_ = State::kActive;
  bool isBypassed_ = false;
  bool mustClear_ = false;
  int32_t fadeFrames_ = 1;
  int32_t wetFrames_ = 0;    // of the fade: 0 dry, fadeFrames_ wet
  int32_t startFrames_ = 0;  // until the effect's output has caught up with the input
  bool isQuiet_ = false;
  int64_t silentFrames_ = 0;
  int64_t nextLook_ = 0;
  std::vector<const float*> in_;  // the piece that is being processed
  std::vector<float*> out_;
  std::vector<float> clean_, dry_;  // planes of mostFrames_
  std::vector<float> spare_;        // what the effect is cleared with: zeros, and a plane per channel
  std::vector<const float*> zeros_;
  std::vector<float*> waste_;
  std::vector<Ring> rings_;
};

}  // namespace bridge
