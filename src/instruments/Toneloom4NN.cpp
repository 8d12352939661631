#include "instruments/Toneloom4NN.h"

#include <algorithm>

#include "core/MXMLItem.h"

namespace {

MString Numbered(const MString& name, int32_t number) {
  MString numbered = name;
  numbered.Append(MString::FromInteger(number));
  return numbered;
}

}  // namespace

struct Toneloom4NNAudioStreamPlugin::Note : MAudioStream {
  MGeneratorStatePointer state;
};

Toneloom4NNAudioStreamPlugin::Toneloom4NNAudioStreamPlugin()
    : MAudioStreamPlugin("Toneloom4NNAudioStreamPlugin::CreateStream"),
      noiseEnvelopes_{MEnvelopeAudioFilter(noises_[0]), MEnvelopeAudioFilter(noises_[1])},
      noiseBandPasses_{SlotterAudioFilter(noiseEnvelopes_[0]), SlotterAudioFilter(noiseEnvelopes_[1])},
      oscillatorBandPasses_{SlotterAudioFilter(oscillators_[0]), SlotterAudioFilter(oscillators_[1]),
                            SlotterAudioFilter(oscillators_[2]), SlotterAudioFilter(oscillators_[3])},
      oscillatorEnvelopes_{
          MEnvelopeAudioFilter(oscillatorBandPasses_[0]), MEnvelopeAudioFilter(oscillatorBandPasses_[1]),
          MEnvelopeAudioFilter(oscillatorBandPasses_[2]), MEnvelopeAudioFilter(oscillatorBandPasses_[3])} {
  for (int32_t i = 0; i < 4; ++i) {
    oscillators_[i].displayName = Numbered("Oscillator ", i + 1);
    oscillators_[i].itemName = Numbered("Oscillator", i + 1);
    oscillatorBandPasses_[i].itemName = Numbered("BandPassoscillator", i + 1);
    oscillatorEnvelopes_[i].itemName = Numbered("envelope", i + 1);
    mixer_.Add(oscillatorEnvelopes_[i], i == 0);
  }
  for (int32_t i = 0; i < 2; ++i) {
    noises_[i].displayName = Numbered("Noise ", i + 1);
    noises_[i].itemName = Numbered("NoiseGen", i + 1);
    noiseEnvelopes_[i].itemName = Numbered("envelopenoise", i + 1);
    noiseBandPasses_[i].itemName = Numbered("BandPass", i + 1);
    mixer_.Add(noiseBandPasses_[i], false);
  }
  mixer_.AddChangeHandler({this, OnChange});
  mixer_.AddStructureHandler({this, OnChange});
}

void Toneloom4NNAudioStreamPlugin::OnChange(MEventTarget* plugin, [[maybe_unused]] MWord extra,
                                            [[maybe_unused]] const MOnNotifyParams& parameters) {
  static_cast<Toneloom4NNAudioStreamPlugin*>(plugin)->NotifyParametersChanged();
}

int32_t Toneloom4NNAudioStreamPlugin::Prepare(int32_t channels, int32_t sampleRate) {
  {
    const MLocker locker(lock_);
    mixer_.SetFormat(channels, sampleRate);
  }
  return MAudioStreamPlugin::Prepare(channels, sampleRate);
}

bool Toneloom4NNAudioStreamPlugin::SaveState(MXMLItem& item) {
  const bool result = MAudioStreamPlugin::SaveState(item);
  const MLocker locker(lock_);
  mixer_.Save(item);
  return result;
}

bool Toneloom4NNAudioStreamPlugin::LoadState(MXMLItem& item) {
  const bool result = MAudioStreamPlugin::LoadState(item);
  const MLocker locker(lock_);
  mixer_.Load(item);
  return result;
}

MAudioStream* Toneloom4NNAudioStreamPlugin::NewStream(const MStreamRequest& request) {
  std::unique_ptr<Note> note(new Note);
  const MLocker locker(lock_);
  note->state = mixer_.CreateState(request.volume, request.ratio);
  return note.release();
}

int32_t Toneloom4NNAudioStreamPlugin::Render(MAudioStream& stream, float** out, int32_t first,
                                             int32_t samples) {
  const int32_t served = std::min(channels_, MAudioBuffer::kMaximumChannels);
  float* channels[MAudioBuffer::kMaximumChannels];
  for (int32_t c = 0; c < served; ++c) channels[c] = out[c] + first;
  for (int32_t c = served; c < channels_; ++c) std::fill(out[c] + first, out[c] + samples, 0.0f);
  MAudioBuffer block;
  block.SetView(channels, served, samples - first);
  const bool isOver = mixer_.Compute(*static_cast<Note&>(stream).state, block);
  return isOver ? MStreamResult::kEnded : MStreamResult::kSounds;
}

void Toneloom4NNAudioStreamPlugin::FreeStream(MAudioStream* stream) {
  delete static_cast<Note*>(stream);
}

M_PLUGIN_ENTRY(Toneloom4NNAudioStreamPlugin)
