#pragma once
#include <functional>
#include <vector>

#include "hosts/bridge/Plugin.h"
#include "hosts/cli/AudioFiles.h"

namespace cli {

// Streams audio through an effect that is prepared for its format.
//
// The effect gets one stream, the input with silence behind it, in blocks of exactly `blockFrames` counted
// from its start; only the last one is shorter. An automatic tail is cut where the input ends as well, so
// that an effect that is silent there gets no silence at all.
class EffectRender {
 public:
  struct Format {
    AudioFormat audio;
    int32_t blockFrames;
    std::optional<int64_t> tailFrames;  // none: until the effect is silent, at most `mostTailFrames`
    int64_t mostTailFrames;
  };
  // The greatest magnitudes, as the bits of the float: order as that of the floats, what is not finite last.
  struct Levels {
    uint32_t input = 0;
    uint32_t output = 0;
  };
  // Reads as AudioReader does; gets what came out, interleaved.
  using Source = std::function<int64_t(float* interleaved, int64_t frames)>;
  using Sink = std::function<void(const float* interleaved, int64_t frames)>;

  EffectRender(bridge::Plugin& effect, const Format& format);

  void Run(const Source& source, const Sink& sink);
  const Levels& GetLevels() const noexcept { return levels_; }

 private:
  void RenderInput(const Source& source, const Sink& sink);
  void RenderAutomaticTail(const Sink& sink);
  void FillWithSilence(int64_t start, int64_t frames);
  void Process(int64_t frames, const Sink& sink);
  void Split(int64_t frames);
  void Join(int64_t frames);
  float* GetPlane(std::size_t channel) {
    return planes_.data() + channel * static_cast<std::size_t>(chunkFrames_);
  }

  bridge::Plugin& effect_;
  const Format format_;
  const int64_t chunkFrames_;       // read and written at a time, whole blocks
  int64_t position_ = 0;            // in the stream
  std::vector<float> interleaved_;  // one chunk
  std::vector<float> planes_;       // the same, channel by channel
  std::vector<float*> block_;       // where the block's channels begin in the planes
  Levels levels_;
};

}  // namespace cli
