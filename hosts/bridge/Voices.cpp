#include "hosts/bridge/Voices.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/MException.h"
#include "hosts/bridge/BlockCheck.h"

namespace bridge {

namespace {

constexpr double kGiveWaySeconds = 0.005;
constexpr double kMostFadeFrames = 0x7FFFFFFF;

}  // namespace

Voices::~Voices() {
  for (Voice& voice : voices_) try {
      if (voice.state != State::kFree) Close(voice);
    } catch (const MException&) {
      // Nobody is left who could use the stream.
    }
}

void Voices::Prepare(int32_t channels, int32_t sampleRate, int32_t mostFrames) {
  Cut();
  channels_ = channels;
  sampleRate_ = sampleRate;
  samples_.assign(static_cast<std::size_t>(channels) * static_cast<std::size_t>(mostFrames), 0.0f);
  block_.resize(static_cast<std::size_t>(channels));
  for (std::size_t c = 0; c < block_.size(); ++c)
    block_[c] = samples_.data() + c * static_cast<std::size_t>(mostFrames);
  instrument_.PrepareStreams(channels, sampleRate);
}

void Voices::SetPatient(bool isPatient) {
  isPatient_ = isPatient;
  readVolumes_.clear();
}

// Instruments that have nothing to read do not know the command.
void Voices::FinishLoading(double volume) {
  if (std::find(readVolumes_.begin(), readVolumes_.end(), volume) != readVolumes_.end()) return;
  readVolumes_.push_back(volume);
  if (instrument_.Command("FinishLoading") == -1) return;
  MWord stream = instrument_.CreateStream(0, volume, 1);
  instrument_.CloseStream(stream);
  hasFailed_ = instrument_.Command("FinishLoading") == 1 || hasFailed_;
}

int64_t Voices::Play(const NoteEvent& event) {
  switch (event.kind) {
    case NoteEvent::Kind::kPress:
      return Press(event.channel, event.key, event.volume);
    case NoteEvent::Kind::kRelease:
      Release(event.channel, event.key);
      break;
    case NoteEvent::Kind::kPedal:
      SetPedal(event.channel, event.isDown);
      break;
    case NoteEvent::Kind::kReleaseAll:
      ReleaseAll(event.channel);
      break;
    case NoteEvent::Kind::kSilence:
      Silence(event.channel);
      break;
  }
  return -1;
}

int64_t Voices::Press(int32_t channel, int32_t key, double volume) {
  if (isPatient_) FinishLoading(volume);
  Voice voice;
  voice.stream = instrument_.CreateStream(0, volume, std::exp2((key - kRootKey) / 12.0));
  if (voice.stream == 0) return -1;
  MakeRoom();
  voice.state = State::kPressed;
  voice.number = nextNumber_++;
  voice.channel = channel;
  voice.key = key;
  voice.level = std::numeric_limits<float>::infinity();  // not heard yet: others give way first
  FindPlace() = voice;
  return voice.number;
}

// Released ones first: their keys are up.
bool Voices::IsLess(const Voice& a, const Voice& b) noexcept {
  if (IsSounding(a) != IsSounding(b)) return IsSounding(b);
  return a.level != b.level ? a.level < b.level : a.number < b.number;
}

// One of the voices begins to fade away where there are as many as may be.
void Voices::MakeRoom() {
  Voice* least = nullptr;
  int32_t count = 0;
  for (Voice& voice : voices_) {
    if (voice.state == State::kFree || voice.state == State::kGivingWay) continue;
    ++count;
    if (!least || IsLess(voice, *least)) least = &voice;
  }
  if (count >= kMost) GiveWay(*least);
}

// A free place, if need be that of the voice that has faded most of those that give way.
Voices::Voice& Voices::FindPlace() {
  Voice* best = nullptr;
  for (Voice& voice : voices_) {
    if (voice.state == State::kFree) return voice;
    if (voice.state == State::kGivingWay && (!best || GetFade(voice) < GetFade(*best))) best = &voice;
  }
  Close(*best);
  return *best;
}

void Voices::Release(int32_t channel, int32_t key) {
  Voice* oldest = nullptr;
  for (Voice& voice : voices_)
    if (voice.state == State::kPressed && voice.channel == channel && voice.key == key &&
        (!oldest || voice.number < oldest->number))
      oldest = &voice;
  if (oldest) LetGo(*oldest);
}

void Voices::LetGo(Voice& voice) {
  if (isOneShot_)
    voice.state = State::kRinging;
  else if (isPedalDown_[static_cast<std::size_t>(voice.channel & kLastChannel)])
    voice.state = State::kHeldByPedal;
  else
    Fade(voice, releaseSeconds_);
}

void Voices::ReleaseNote(int64_t number) {
  for (Voice& voice : voices_)
    if (voice.state == State::kPressed && voice.number == number) LetGo(voice);
}

void Voices::ChokeNote(int64_t number) {
  for (Voice& voice : voices_)
    if (voice.state != State::kFree && voice.number == number) GiveWay(voice);
}

bool Voices::HasNote(int64_t number) const noexcept {
  return std::any_of(voices_.begin(), voices_.end(), [number](const Voice& voice) {
    return voice.state != State::kFree && voice.number == number;
  });
}

void Voices::SetPedal(int32_t channel, bool isDown) {
  isPedalDown_[static_cast<std::size_t>(channel & kLastChannel)] = isDown;
  if (isDown) return;
  for (Voice& voice : voices_)
    if (voice.state == State::kHeldByPedal && voice.channel == channel) LetGo(voice);
}

void Voices::ReleaseAll(int32_t channel) {
  isPedalDown_[static_cast<std::size_t>(channel & kLastChannel)] = false;
  for (Voice& voice : voices_)
    if (IsSounding(voice) && voice.channel == channel) LetGo(voice);
}

void Voices::Silence(int32_t channel) {
  for (Voice& voice : voices_)
    if (voice.state != State::kFree && voice.channel == channel) GiveWay(voice);
}

void Voices::Cut() {
  isPedalDown_ = {};
  for (Voice& voice : voices_)
    if (voice.state != State::kFree) Close(voice);
}

void Voices::Fade(Voice& voice, double seconds) {
  const double frames = std::min(std::floor(seconds * sampleRate_), kMostFadeFrames);
  if (!(frames >= 1)) return Close(voice);
  voice.state = State::kReleased;
  voice.fadeFrames = voice.fadeLeft = static_cast<int32_t>(frames);
}

// A voice that fades goes on from the gain that it has, along a steeper line.
void Voices::GiveWay(Voice& voice) {
  const double gain = IsFading(voice) ? GetFade(voice) : 1;
  const int32_t left = IsFading(voice) ? voice.fadeLeft : std::numeric_limits<int32_t>::max();
  Fade(voice, kGiveWaySeconds);
  if (voice.state == State::kFree) return;
  voice.state = State::kGivingWay;
  voice.fadeLeft = std::min(voice.fadeLeft, left);
  voice.fadeFrames = static_cast<int32_t>(std::min(std::round(voice.fadeLeft / gain), kMostFadeFrames));
}

void Voices::Close(Voice& voice) {
  voice.state = State::kFree;
  instrument_.CloseStream(voice.stream);
}

void Voices::Process(float* const* out, int32_t frames) {
  for (int32_t c = 0; c < channels_; ++c) std::fill_n(out[c], frames, 0.0f);
  endedCount_ = 0;
  soundEnd_ = 0;
  if (frames < 1) return;
  for (Voice& voice : voices_)
    if (voice.state != State::kFree) Mix(voice, out, frames);
}

void Voices::Mix(Voice& voice, float* const* out, int32_t frames) {
  const int32_t result = instrument_.ComputeStream(voice.stream, block_.data(), frames);
  const bool isFading = IsFading(voice);
  if (result != MStreamResult::kNotStarted) Add(voice, out, frames);
  const int32_t heard = isFading ? std::min(voice.fadeLeft, frames) : frames;
  if (isFading) voice.fadeLeft -= heard;
  const bool isEnded = result == MStreamResult::kEnded;
  if (isEnded) ended_[static_cast<std::size_t>(endedCount_++)] = voice.number;
  if (!isEnded && !(isFading && voice.fadeLeft == 0)) return;
  soundEnd_ = std::max(soundEnd_, heard);
  Close(voice);
}

void Voices::Add(Voice& voice, float* const* out, int32_t frames) noexcept {
  voice.level = 0;
  for (std::size_t c = 0; c < block_.size(); ++c) {
    if (!IsFinite(block_[c], frames)) continue;
    if (IsFading(voice)) FadeBlock(voice, block_[c], frames);
    for (int32_t i = 0; i < frames; ++i) {
      out[c][i] += block_[c][i];
      voice.level = std::max(voice.level, std::abs(block_[c][i]));
    }
  }
}

// The last frame of a fade has the gain 0.
void Voices::FadeBlock(const Voice& voice, float* samples, int32_t frames) noexcept {
  for (int32_t i = 0; i < frames; ++i) {
    const double gain = double(std::max(voice.fadeLeft - 1 - i, 0)) / voice.fadeFrames;
    samples[i] *= static_cast<float>(gain);
  }
}

bool Voices::IsSilent() const noexcept {
  return std::all_of(voices_.begin(), voices_.end(),
                     [](const Voice& voice) { return voice.state == State::kFree; });
}

}  // namespace bridge
