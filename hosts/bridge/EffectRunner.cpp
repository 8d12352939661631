#include "hosts/bridge/EffectRunner.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>

#include "hosts/bridge/BlockCheck.h"

namespace bridge {

namespace {

constexpr int32_t kLooksPerSecond = 4;   // for what is left in the effect's memory
constexpr int32_t kForgetFrames = 4096;  // until nothing is left in memories that survive being prepared
constexpr int32_t kSpareFrames = 64;

// Gives a copy with 0 for what is not finite; silence for null.
[[gnu::cold]] const float* CopyClean(const float* samples, int32_t frames, float* clean) noexcept {
  for (int32_t i = 0; i < frames; ++i) clean[i] = samples && std::isfinite(samples[i]) ? samples[i] : 0.0f;
  return clean;
}

}  // namespace

void EffectRunner::Prepare(int32_t channels, int32_t sampleRate, int32_t mostFrames) {
  channels_ = channels;
  sampleRate_ = std::max(sampleRate, 1);
  mostFrames_ = std::max(mostFrames, 1);
  effect_.Prepare(channels, sampleRate);
  latency_ = effect_.GetLatency();
  fadeFrames_ = std::max(1, static_cast<int32_t>(std::lround(kFadeSeconds * sampleRate_)));
  const auto count = static_cast<std::size_t>(channels);
  in_.assign(count, nullptr);
  out_.assign(count, nullptr);
  spare_.assign((count + 1) * kSpareFrames, 0.0f);
  zeros_.assign(count, spare_.data());
  waste_.resize(count);
  for (std::size_t c = 0; c < count; ++c) waste_[c] = spare_.data() + (c + 1) * kSpareFrames;
  clean_.assign(count * static_cast<std::size_t>(mostFrames_), 0.0f);
  dry_.assign(clean_.size(), 0.0f);
  // An effect whose latency follows its parameters has room for that of a second.
  const auto most = static_cast<std::size_t>(std::max(latency_, sampleRate_) + mostFrames_);
  rings_.resize(count);
  for (Ring& ring : rings_) {
    ring.samples.assign(std::bit_ceil(most), 0.0f);
    ring.mask = ring.samples.size() - 1;
    ring.end = 0;
  }
  state_ = isBypassed_ ? State::kBypassed : State::kActive;
  wetFrames_ = isBypassed_ ? 0 : fadeFrames_;
  mustClear_ = false;
  isQuiet_ = false;
  silentFrames_ = nextLook_ = 0;
}

void EffectRunner::Reset() {
  for (Ring& ring : rings_) std::fill(ring.samples.begin(), ring.samples.end(), 0.0f);
  state_ = isBypassed_ ? State::kBypassed : State::kActive;
  wetFrames_ = isBypassed_ ? 0 : fadeFrames_;
  mustClear_ = true;
  TryClear();
}

void EffectRunner::SetBypass(bool isBypassed) noexcept {
  if (isBypassed == isBypassed_) return;
  isBypassed_ = isBypassed;
  if (state_ == State::kBypassed) {
    startFrames_ = latency_;
    state_ = startFrames_ > 0 ? State::kStarting : State::kFading;
  } else if (state_ == State::kStarting) {
    state_ = State::kBypassed;
    mustClear_ = true;
  } else {
    state_ = State::kFading;
  }
}

bool EffectRunner::UpdateLatency() {
  const int32_t latency = effect_.GetLatency();
  const int32_t room = rings_.empty() ? 0 : static_cast<int32_t>(rings_[0].mask) - mostFrames_;
  if (latency == latency_) return false;
  latency_ = std::clamp(latency, 0, std::max(room, 0));
  return true;
}

// Preparing again for the same format clears most memories, silence the others: filters that keep their
// history and repairs of a click, which lead on from the last sample. If another thread is changing the
// effect now, the next block tries again.
void EffectRunner::TryClear() {
  if (!hasMemory_) mustClear_ = false;
  if (!mustClear_ || !turn_.TryTake()) return;
  const TurnTaker turn(turn_, std::adopt_lock);
  effect_.Prepare(channels_, sampleRate_);
  effect_.Skip(kForgetFrames);
  for (int32_t done = 0; done < kForgetFrames; done += kSpareFrames)
    effect_.Process(zeros_.data(), waste_.data(), kSpareFrames);
  mustClear_ = false;
}

void EffectRunner::Process(const float* const* in, float* const* out, int32_t start, int32_t frames) {
  while (frames > 0) {
    const int32_t piece = std::min(frames, GetPieceEnd());
    for (std::size_t c = 0; c < out_.size(); ++c) out_[c] = out[c] + start;
    TakeInput(in, start, piece);
    RunPiece(piece);
    start += piece;
    frames -= piece;
  }
}

// The frames until the state changes, so that it does at the same sample whatever the blocks.
int32_t EffectRunner::GetPieceEnd() const noexcept {
  if (state_ == State::kStarting) return startFrames_;
  if (state_ != State::kFading) return mostFrames_;
  return std::clamp(isBypassed_ ? wetFrames_ : fadeFrames_ - wetFrames_, 1, mostFrames_);
}

void EffectRunner::RunPiece(int32_t frames) {
  if (latency_ > 0 || state_ != State::kActive) KeepDry(frames);
  if (mustClear_) TryClear();
  if (state_ == State::kBypassed)
    effect_.Skip(frames);
  else
    RunEffect(frames);
  if (state_ == State::kFading) return Fade(frames);
  if (state_ != State::kActive) WriteDry(frames);
  if (state_ != State::kStarting) return;
  startFrames_ -= frames;
  if (startFrames_ == 0) state_ = State::kFading;
}

// Whether another output, or this one elsewhere, lies where a channel is yet to be read.
bool EffectRunner::IsOverwritten(const float* samples, int32_t channel, int32_t frames) const noexcept {
  const std::less<const float*> isBefore;
  for (std::size_t c = 0; c < out_.size(); ++c) {
    const bool isSame = static_cast<int32_t>(c) == channel && out_[c] == samples;
    if (!isSame && isBefore(samples, out_[c] + frames) && isBefore(out_[c], samples + frames)) return true;
  }
  return false;
}

// Points in_ to the input, with what is not finite replaced by 0.
void EffectRunner::TakeInput(const float* const* in, int32_t start, int32_t frames) {
  bool isSilent = true;
  for (int32_t c = 0; c < channels_; ++c) {
    const float* const samples = in && in[c] ? in[c] + start : nullptr;
    isSilent = isSilent && (!samples || IsSilent(samples, frames));
    const bool isClean =
        samples && (isSilent || IsFinite(samples, frames)) && !IsOverwritten(samples, c, frames);
    in_[static_cast<std::size_t>(c)] = isClean ? samples : CopyClean(samples, frames, GetPlane(clean_, c));
  }
  WatchSilence(isSilent, frames);
}

void EffectRunner::WatchSilence(bool isSilent, int32_t frames) {
  if (!isSilent) {
    isQuiet_ = false;
    silentFrames_ = 0;
    nextLook_ = latency_;
    return;
  }
  silentFrames_ += frames;
  if (isQuiet_ || silentFrames_ < nextLook_) return;
  nextLook_ = silentFrames_ + sampleRate_ / kLooksPerSecond;
  isQuiet_ = state_ == State::kBypassed || effect_.IsSilent();
}

// The dry signal lies apart from the output, which may be the input.
void EffectRunner::KeepDry(int32_t frames) noexcept {
  const auto count = static_cast<std::size_t>(frames);
  for (int32_t c = 0; c < channels_; ++c) {
    const float* const in = in_[static_cast<std::size_t>(c)];
    float* const dry = GetPlane(dry_, c);
    if (latency_ == 0) {
      std::copy_n(in, frames, dry);
      continue;
    }
    Ring& ring = rings_[static_cast<std::size_t>(c)];
    for (std::size_t i = 0; i < count; ++i) ring.samples[(ring.end + i) & ring.mask] = in[i];
    const std::size_t start = ring.end - static_cast<std::size_t>(latency_);
    for (std::size_t i = 0; i < count; ++i) dry[i] = ring.samples[(start + i) & ring.mask];
    ring.end += count;
  }
}

// What is not finite is silence, and the effect begins anew.
void EffectRunner::RunEffect(int32_t frames) {
  effect_.Process(in_.data(), out_.data(), frames);
  for (float* const out : out_) {
    if (IsFinite(out, frames)) continue;
    std::fill_n(out, frames, 0.0f);
    mustClear_ = true;
  }
  if (mustClear_) TryClear();
}

void EffectRunner::WriteDry(int32_t frames) noexcept {
  for (int32_t c = 0; c < channels_; ++c)
    std::copy_n(GetPlane(dry_, c), frames, out_[static_cast<std::size_t>(c)]);
}

// Moves on towards dry or wet, at most to the end of the fade.
void EffectRunner::Fade(int32_t frames) {
  const int32_t step = isBypassed_ ? -1 : 1;
  for (int32_t c = 0; c < channels_; ++c) {
    const float* const dry = GetPlane(dry_, c);
    float* const out = out_[static_cast<std::size_t>(c)];
    for (int32_t i = 0; i < frames; ++i) {
      const auto wet = static_cast<float>(wetFrames_ + (i + 1) * step);
      out[i] = dry[i] + (out[i] - dry[i]) * (wet / static_cast<float>(fadeFrames_));
    }
  }
  wetFrames_ = std::clamp(wetFrames_ + frames * step, 0, fadeFrames_);
  if (wetFrames_ == fadeFrames_ && !isBypassed_) state_ = State::kActive;
  if (wetFrames_ == 0 && isBypassed_) {
    state_ = State::kBypassed;
    mustClear_ = true;
  }
}

}  // namespace bridge
