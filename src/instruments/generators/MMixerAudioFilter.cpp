#include "instruments/generators/MMixerAudioFilter.h"

#include <algorithm>
#include <cmath>

#include "core/MXMLNumber.h"
#include "instruments/generators/MMixing.h"

namespace {

int32_t KnownMode(int64_t mode) {
  return mode == MMixerMode::kRing || mode == MMixerMode::kFreq ? static_cast<int32_t>(mode)
                                                                : MMixerMode::kAdd;
}

// Makes `part` a view of samples of `whole`, at most `channels`.
void SetPart(MAudioBuffer& part, MAudioBuffer& whole, int32_t channels, int32_t first, int32_t samples) {
  float* at[MAudioBuffer::kMaximumChannels];
  const int32_t count = std::min(channels, whole.GetChannelCount());
  for (int32_t c = 0; c < count; ++c) at[c] = whole.GetChannel(c) + first;
  part.SetView(at, count, samples);
}

}  // namespace

// One object in a sound.
struct MMixerAudioFilter::Voice {
  MGeneratorStatePointer state;  // null for an object that was not enabled
  bool isOver = false;
  bool sounds = false;  // it was not over when the block began
  int32_t mode = MMixerMode::kAdd;
  MMixerGains gains{1, 0};
  std::vector<float, MAllocator<float>> past;  // of the mix, all channels, for kFreq
};

struct MMixerAudioFilter::Mix : MGeneratorState {
  std::vector<Voice, MAllocator<Voice>> voices;  // one per object
};

void MMixerAudioFilter::Add(MAudioGeneratorObject& object, bool isEnabledAtFirst) {
  objects_.push_back({&object, isEnabledAtFirst});
  object.isEnabled = isEnabledAtFirst;
  object.SetFlag(kShown, 0);
  object.SetFlag(kMode, MMixerMode::kAdd);
}

MString MMixerAudioFilter::GetDisplayName() const {
  MString name;
  for (const Entry& entry : objects_) {
    if (!name.IsEmpty()) name.Append(" & ");
    name.Append(entry.object->GetDisplayName());
  }
  return name;
}

void MMixerAudioFilter::SetFormat(int32_t channels, int32_t sampleRate) {
  MAudioGeneratorObject::SetFormat(channels, sampleRate);
  for (const Entry& entry : objects_) entry.object->SetFormat(channels, sampleRate);
  work_.SetSize(channels, kPart);
  work_.sampleRate = GetRate();
}

double MMixerAudioFilter::GetLength(bool inSeconds) const {
  double length = 0;
  for (const Entry& entry : objects_) length = std::max(length, entry.object->GetLength(inSeconds));
  return length;
}

MGeneratorStatePointer MMixerAudioFilter::CreateState(double gain, double ratio) const {
  std::unique_ptr<Mix> mix(new Mix);
  mix->voices.resize(objects_.size());
  bool hasBase = false;
  for (std::size_t i = 0; i < objects_.size(); ++i) {
    const MAudioGeneratorObject& object = *objects_[i].object;
    if (!object.isEnabled) continue;
    Voice& voice = mix->voices[i];
    voice.mode = KnownMode(object.GetFlag(kMode, MMixerMode::kAdd));
    const double usedVolume = std::isfinite(object.volume) ? object.volume : 1;
    const double usedPan = usesPan && std::isfinite(object.pan) ? std::clamp(object.pan, -1.0, 1.0) : 0;
    voice.gains = MMixerGains(usedVolume, usedPan);
    const bool modulates = hasBase && voice.mode == MMixerMode::kFreq;
    if (modulates)
      voice.past.resize(static_cast<std::size_t>(work_.GetChannelCount()) * MMixing::kPastSamples);
    voice.state = object.CreateState(modulates ? 1.0 : gain, ratio);
    hasBase = true;
  }
  return mix;
}

// The index of the base, -1 when there is none any more.
int32_t MMixerAudioFilter::ChooseBase(const Mix& mix) noexcept {
  const auto begin = mix.voices.begin(), end = mix.voices.end();
  auto base = std::find_if(begin, end, [](const Voice& voice) { return voice.state != nullptr; });
  if (base != end && base->isOver)
    base = std::find_if(begin, end, [](const Voice& voice) {
      return voice.state && voice.mode == MMixerMode::kAdd && !voice.isOver;
    });
  return base == end ? -1 : static_cast<int32_t>(base - begin);
}

bool MMixerAudioFilter::Compute(MGeneratorState& state, MAudioBuffer& buffer) {
  auto& mix = static_cast<Mix&>(state);
  const int32_t base = ChooseBase(mix);
  if (base < 0) {
    buffer.Clear();
    return true;
  }
  for (Voice& voice : mix.voices) voice.sounds = voice.state && !voice.isOver;
  MAudioBuffer part;
  for (int32_t done = 0; done < buffer.GetLength(); done += kPart) {
    const int32_t samples = std::min(kPart, buffer.GetLength() - done);
    SetPart(part, buffer, buffer.GetChannelCount(), done, samples);
    MixPart(mix, base, part);
  }
  return std::all_of(mix.voices.begin(), mix.voices.end(),
                     [](const Voice& voice) { return !voice.state || voice.isOver; });
}

void MMixerAudioFilter::MixPart(Mix& mix, int32_t base, MAudioBuffer& out) {
  const auto first = static_cast<std::size_t>(base);
  Voice& begin = mix.voices[first];
  begin.isOver = objects_[first].object->Compute(*begin.state, out);
  MMixing::Apply(out, begin.gains);
  // A format that came behind the start of the sound may have other channels.
  MAudioBuffer mixed, work;
  SetPart(mixed, out, work_.GetChannelCount(), 0, out.GetLength());
  SetPart(work, work_, mixed.GetChannelCount(), 0, out.GetLength());
  for (std::size_t i = first + 1; i < mix.voices.size(); ++i)
    if (mix.voices[i].state) MixVoice(mix.voices[i], *objects_[i].object, mixed, work);
}

void MMixerAudioFilter::MixVoice(Voice& voice, MAudioGeneratorObject& object, MAudioBuffer& out,
                                 MAudioBuffer& work) {
  if (voice.sounds) voice.isOver = object.Compute(*voice.state, work);
  if (voice.mode == MMixerMode::kAdd) {
    if (voice.sounds) MMixing::Add(out, work, voice.gains);
    return;
  }
  if (voice.sounds)
    MMixing::Apply(work, voice.gains);
  else
    work.Clear();
  if (voice.mode == MMixerMode::kRing) return MMixing::Ring(out, work, voice.gains.volume);
  const double wanted =
      std::clamp(voice.gains.volume * MMixing::kMaximumDepth, 0.0, double{MMixing::kMaximumDepth});
  const auto depth = static_cast<int32_t>(wanted);
  const auto channels = static_cast<int32_t>(voice.past.size()) / MMixing::kPastSamples;
  for (int32_t c = 0; c < std::min(channels, out.GetChannelCount()); ++c)
    MMixing::ModulateTime(out.GetChannel(c), work.GetChannel(c), out.GetLength(), depth,
                          voice.past.data() + c * MMixing::kPastSamples);
}

void MMixerAudioFilter::AddChangeHandler(const Handler& handler) {
  MAudioGeneratorObject::AddChangeHandler(handler);
  for (const Entry& entry : objects_) entry.object->AddChangeHandler(handler);
}

void MMixerAudioFilter::AddStructureHandler(const Handler& handler) {
  MAudioGeneratorObject::AddStructureHandler(handler);
  for (const Entry& entry : objects_) entry.object->AddStructureHandler(handler);
}

void MMixerAudioFilter::Reset() {
  Load(MXMLItem());
}

void MMixerAudioFilter::Save(MXMLItem& item) const {
  for (const Entry& entry : objects_) {
    const MAudioGeneratorObject& object = *entry.object;
    if (item.HasSubItem(object.itemName)) item.RemoveSubItem(item.CachedSubItem());
    MXMLItem& child = item.AddSubItem(object.itemName);
    object.Save(child);
    child.SetAttribute("enabled", object.isEnabled ? "1" : "0");
    child.SetAttribute("volume", MString::FromDouble(object.volume, 4));
    child.SetAttribute("pan", MString::FromDouble(object.pan, 4));
    child.SetAttribute("mixermode", MString::FromInteger(object.GetFlag(kMode, MMixerMode::kAdd)));
  }
}

void MMixerAudioFilter::Load(const MXMLItem& item) {
  const MXMLItem nothing;
  for (const Entry& entry : objects_) {
    MAudioGeneratorObject& object = *entry.object;
    const bool isThere = item.HasSubItem(object.itemName);
    const MXMLItem& child = isThere ? item.CachedSubItem() : nothing;
    if (isThere)
      object.Load(child);
    else
      object.Reset();
    object.isEnabled = ReadSwitch(child, "enabled", entry.isEnabledAtFirst);
    object.volume = MReadNumber(child, "volume", 1);
    object.pan = MReadNumber(child, "pan", 0);
    object.SetFlag(kShown, 0);
    object.SetFlag(kMode, child.HasAttribute("mixermode") ? KnownMode(child.CachedAttribute().ToInteger())
                                                          : MMixerMode::kAdd);
  }
}
