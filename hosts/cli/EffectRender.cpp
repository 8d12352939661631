#include "hosts/cli/EffectRender.h"

#include <algorithm>
#include <bit>
#include <span>

namespace cli {

namespace {

constexpr int64_t kChunkSamples = 1 << 15;  // of all channels together
constexpr int64_t kAskFrames = 512;  // asking an effect whether it is silent may cost a look at its memory

// Frames from one question to the next, whole blocks.
int64_t AskInterval(int64_t blockFrames) {
  return (kAskFrames + blockFrames - 1) / blockFrames * blockFrames;
}

int64_t ChunkFrames(const EffectRender::Format& format) {
  const int64_t frames = kChunkSamples / format.audio.channels;
  return std::max(frames / format.blockFrames * format.blockFrames, AskInterval(format.blockFrames));
}

// The greatest magnitude as the bits of a float, 0 for nothing.
uint32_t GreatestMagnitude(std::span<const float> samples) noexcept {
  int32_t greatest = 0;
  for (const float sample : samples)
    greatest = std::max(greatest, std::bit_cast<int32_t>(sample) & 0x7FFFFFFF);
  return static_cast<uint32_t>(greatest);
}

// With two channels in one loop the compiler moves several frames at once.
void SplitStereo(const float* interleaved, float* __restrict left, float* __restrict right, int64_t frames) {
  for (int64_t i = 0; i < frames; ++i) {
    left[i] = interleaved[2 * i];
    right[i] = interleaved[2 * i + 1];
  }
}

void JoinStereo(const float* left, const float* right, float* __restrict interleaved, int64_t frames) {
  for (int64_t i = 0; i < frames; ++i) {
    interleaved[2 * i] = left[i];
    interleaved[2 * i + 1] = right[i];
  }
}

}  // namespace

EffectRender::EffectRender(bridge::Plugin& effect, const Format& format)
    : effect_(effect),
      format_(format),
      chunkFrames_(ChunkFrames(format)),
      interleaved_(static_cast<std::size_t>(chunkFrames_ * format.audio.channels)),
      planes_(interleaved_.size()),
      block_(static_cast<std::size_t>(format.audio.channels)) {}

void EffectRender::Run(const Source& source, const Sink& sink) {
  RenderInput(source, sink);
  if (!format_.tailFrames) RenderAutomaticTail(sink);
}

// The input and the tail whose length is known, as one stream.
void EffectRender::RenderInput(const Source& source, const Sink& sink) {
  int64_t tailLeft = format_.tailFrames.value_or(0);
  bool isInput = true;
  for (int64_t frames = chunkFrames_; frames == chunkFrames_;) {
    frames = isInput ? source(interleaved_.data(), chunkFrames_) : 0;
    isInput = frames == chunkFrames_;
    const int64_t silence = std::min(chunkFrames_ - frames, tailLeft);
    FillWithSilence(frames, silence);
    tailLeft -= silence;
    frames += silence;
    Process(frames, sink);
  }
}

void EffectRender::RenderAutomaticTail(const Sink& sink) {
  const int64_t interval = AskInterval(format_.blockFrames);
  for (int64_t left = format_.mostTailFrames; left > 0 && !effect_.IsSilent();) {
    const int64_t frames = std::min(left, interval - position_ % interval);
    FillWithSilence(0, frames);
    Process(frames, sink);
    left -= frames;
  }
}

void EffectRender::FillWithSilence(int64_t start, int64_t frames) {
  std::fill_n(interleaved_.begin() + start * format_.audio.channels, frames * format_.audio.channels, 0.0f);
}

// Takes the first frames of the chunk to the next boundaries of blocks, and on.
void EffectRender::Process(int64_t frames, const Sink& sink) {
  const std::span<const float> samples(interleaved_.data(),
                                       static_cast<std::size_t>(frames * format_.audio.channels));
  levels_.input = std::max(levels_.input, GreatestMagnitude(samples));
  Split(frames);
  for (int64_t done = 0; done < frames;) {
    const int64_t block = std::min(format_.blockFrames - position_ % format_.blockFrames, frames - done);
    for (std::size_t c = 0; c < block_.size(); ++c) block_[c] = GetPlane(c) + done;
    effect_.Process(block_.data(), block_.data(), static_cast<int32_t>(block));
    position_ += block;
    done += block;
  }
  Join(frames);
  levels_.output = std::max(levels_.output, GreatestMagnitude(samples));
  if (frames > 0) sink(interleaved_.data(), frames);
}

void EffectRender::Split(int64_t frames) {
  const std::size_t channels = block_.size();
  if (channels == 2) return SplitStereo(interleaved_.data(), GetPlane(0), GetPlane(1), frames);
  for (std::size_t c = 0; c < channels; ++c) {
    const float* from = interleaved_.data() + c;
    float* const to = GetPlane(c);
    for (int64_t i = 0; i < frames; ++i, from += channels) to[i] = *from;
  }
}

void EffectRender::Join(int64_t frames) {
  const std::size_t channels = block_.size();
  if (channels == 2) return JoinStereo(GetPlane(0), GetPlane(1), interleaved_.data(), frames);
  for (std::size_t c = 0; c < channels; ++c) {
    const float* const from = GetPlane(c);
    float* to = interleaved_.data() + c;
    for (int64_t i = 0; i < frames; ++i, to += channels) *to = from[i];
  }
}

}  // namespace cli
