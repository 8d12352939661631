#include "effects/Bellwarp.h"

#include <algorithm>
#include <memory>

#include "dsp/MModulationKernels.h"
#include "plugin/MLimitedRows.h"
#include "plugin/MParameterFormatters.h"

namespace {

constexpr const char* kItems[] = {"shape1", "shape2"};

}  // namespace

BellwarpAudioEffectPlugin::BellwarpAudioEffectPlugin() {
  AddSwitchParameter(rows_[kModulate], "Modulate oscillators", "modulate",
                     "<name>Modulate oscillators</name> multiplies the signal by the sum of both oscillators "
                     "instead of one behind the other. It needs both to be enabled.",
                     false);
  AddRows(0, "Oscillator 1", {"", "enable1", "depth1", "frequency1", "phase1"});
  AddRows(1, "Oscillator 2", {"", "enable2", "depth2", "frequency2", "phase2"});
  editors_[0].name = "Oscillator 1 shape";
  editors_[1].name = "Oscillator 2 shape";
  for (int32_t o = 0; o < kOscillators; ++o) editors_[o].editor = &oscillators_[o].editor;
  SetParameters(rows_);
  SetEditors(editors_);
}

void BellwarpAudioEffectPlugin::AddRows(int32_t oscillator, const MString& panel,
                                        const char* const (&keys)[kRowsOfOne]) {
  const auto row = [&](int32_t which) -> MPluginParameter& { return GetRow(oscillator, which); };
  const auto key = [&](int32_t which) { return MString::Literal(keys[which]); };
  AddPanel(row(kPanel), panel);
  AddSwitchParameter(row(kEnable), "Enable", key(kEnable), "<name>Enable</name> switches the oscillator on.",
                     oscillator == 0);
  AddRealParameter(row(kDepth), "Depth", key(kDepth),
                   "<name>Depth</name> defines how much of the signal is multiplied by the oscillator; the "
                   "rest passes.",
                   0.0, 1.0, 0.4, MString(), MShowPercent);
  AddRealParameter(row(kFrequency), "Frequency", key(kFrequency),
                   "<name>Frequency</name> defines the frequency of the oscillator.", 2.0, 4.0, 3.0,
                   MString(), MShowFrequencyLog10);
  AddRealParameter(
      row(kPhase), "Phase", key(kPhase),
      "<name>Phase</name> defines how far the oscillator is ahead in each channel of where it is "
      "in the channel before, in parts of the period.",
      0.0, 1.0, 0.1, MString(), MShowPercent);
}

bool BellwarpAudioEffectPlugin::SaveState(MXMLItem& item) {
  const MLocker locker(lock_);
  for (int32_t o = 0; o < kOscillators; ++o)
    MSaveWave(oscillators_[o].wave, item, MString::Literal(kItems[o]));
  return MAudioEffectPlugin::SaveState(item);
}

bool BellwarpAudioEffectPlugin::LoadState(MXMLItem& item) {
  // Both are read before one is changed.
  std::unique_ptr<MSignalGenerator> waves[kOscillators];
  for (int32_t o = 0; o < kOscillators; ++o) {
    waves[o] = std::make_unique<MSignalGenerator>();
    MLoadWave(*waves[o], item, MString::Literal(kItems[o]));
  }
  const MLocker locker(lock_);
  for (int32_t o = 0; o < kOscillators; ++o) oscillators_[o].wave.CopyFrom(*waves[o]);
  return MAudioEffectPlugin::LoadState(item);
}

void BellwarpAudioEffectPlugin::Update() {
  const MLocker locker(lock_);
  if (sampleRate_ < 1) return;
  for (int32_t o = 0; o < kOscillators; ++o)
    MStoreShared(oscillators_[o].step, MLimitedFrequency(GetRow(o, kFrequency)) / sampleRate_);
}

void BellwarpAudioEffectPlugin::Multiply(int32_t first, int32_t last, double depth, float** in, float** out,
                                         int32_t samples) noexcept {
  constexpr int32_t kChunk = 256;
  const MModulationKernels& kernels = MGetModulationKernels();
  double wave[kChunk], other[kChunk];
  const auto read = [&](int32_t index, double* values, int32_t channel, int32_t done, int32_t run) {
    const Oscillator& at = oscillators_[index];
    const double step = MLoadShared(at.step);
    const double phase = at.phase + channel * MLimitedAmount(GetRow(index, kPhase));
    at.wave.Read(values, phase + done * step, step, run);
  };
  for (int32_t done = 0; done < samples; done += kChunk) {
    const int32_t run = std::min(kChunk, samples - done);
    for (int32_t c = 0; c < channels_; ++c) {
      read(first, wave, c, done, run);
      if (last != first) {
        read(last, other, c, done, run);
        for (int32_t i = 0; i < run; ++i) wave[i] += other[i];
      }
      kernels.multiply(in[c] + done, out[c] + done, wave, depth, 1 - depth, kModulationBias, run);
    }
  }
}

void BellwarpAudioEffectPlugin::Process(float** in, float** out, int32_t samples) {
  bool isOn[kOscillators];
  double depths[kOscillators];
  for (int32_t o = 0; o < kOscillators; ++o) {
    isOn[o] = MLoadShared(oscillators_[o].step) > 0 && MIsOn(GetRow(o, kEnable));
    depths[o] = MLimitedAmount(GetRow(o, kDepth));
  }
  if (isOn[0] && isOn[1] && MIsOn(rows_[kModulate])) {
    Multiply(0, 1, (depths[0] + depths[1]) / 2, in, out, samples);
  } else {
    if (isOn[0]) Multiply(0, 0, depths[0], in, out, samples);
    if (isOn[1]) Multiply(1, 1, depths[1], isOn[0] ? out : in, out, samples);
    if (!isOn[0] && !isOn[1]) CopyChannels(in, out, 0, channels_, samples);
  }
  for (int32_t o = 0; o < kOscillators; ++o)
    if (isOn[o]) Move(oscillators_[o], samples);
}

void BellwarpAudioEffectPlugin::Skip(int32_t samples) {
  for (Oscillator& oscillator : oscillators_) Move(oscillator, samples);
}

void BellwarpAudioEffectPlugin::Move(Oscillator& oscillator, int32_t samples) noexcept {
  oscillator.phase = MWrapPhase(oscillator.phase + samples * MLoadShared(oscillator.step));
}

M_PLUGIN_ENTRY(BellwarpAudioEffectPlugin)
