#include "effects/Slidebench.h"

#include <algorithm>
#include <cmath>

#include "core/MXMLItem.h"
#include "dsp/MEnvelopeComputer.h"
#include "plugin/MLimitedRows.h"
#include "plugin/MParameterFormatters.h"

namespace {

constexpr double kLog10Of2 = 0.30102999566398119521;

// No block leaves the range of float: N sqrt(N) times both is below it.
constexpr float kLargestSample = 1e20f;
constexpr double kLargestGain = 1e13;

float CleanSample(float sample) noexcept {
  return std::abs(sample) <= kLargestSample ? sample : 0.0f;
}

void AddFixedPoint(MEnvelopeData& curve, double x) {
  curve.Add(x, 1).Set(MEnvelopeFlag::kFixedX, true);
}

}  // namespace

SlidebenchAudioEffectPlugin::SlidebenchAudioEffectPlugin()
    : processor_(
          source_, destination_, kSize,
          [](float* spectrum, int32_t size, void* user) {
            const float* const gains =
                static_cast<const SlidebenchAudioEffectPlugin*>(user)->current_->values;
            for (int32_t k = 0; k < size; ++k) spectrum[k] *= gains[k];
          },
          this) {
  AddRealParameter(rows_[kDepth], "Depth", "depth",
                   "<name>Depth</name> defines how powerful the effect is: without depth the response is "
                   "flat, with full depth it is the drawn one.",
                   0.0, 1.0, 1.0, MString(), MShowPercent);
  SetParameters(rows_);
  SetPluginFlag();
  curve_.xMinimum = 10 * kLog10Of2;
  curve_.xMaximum = 20000 * kLog10Of2;
  curve_.yMaximum = 2;
  AddFixedPoint(curve_, curve_.xMinimum);
  AddFixedPoint(curve_, curve_.xMaximum);
}

void SlidebenchAudioEffectPlugin::ReadCurve() {
  MEnvelopeComputer computer;
  computer.Build(curve_);
  const double step = 0.5 * sampleRate_ / kSize;
  for (int32_t k = 0; k < kSize; ++k) response_[k] = computer.GetValue(std::log10(std::max(1.0, k * step)));
  responseRate_ = sampleRate_;
}

void SlidebenchAudioEffectPlugin::Update() {
  if (sampleRate_ < 1) return;
  const double depth = MLimitedAmount(rows_[kDepth]);
  const MLocker locker(lock_);
  if (responseRate_ != sampleRate_) ReadCurve();
  for (int32_t k = 0; k < kSize; ++k) {
    const double root = (response_[k] - 1) * depth + 1;
    gains_.values[k] = static_cast<float>(std::min(root * root, kLargestGain));
  }
  published_.Set(gains_);
}

bool SlidebenchAudioEffectPlugin::SaveState(MXMLItem& item) {
  {
    const MLocker locker(lock_);
    curve_.Save(item.AddSubItem("graph"));
  }
  return MAudioEffectPlugin::SaveState(item);
}

bool SlidebenchAudioEffectPlugin::LoadState(MXMLItem& item) {
  if (item.HasSubItem("graph")) {
    const MLocker locker(lock_);
    curve_.Load(item.CachedSubItem());
    responseRate_ = 0;
  }
  return MAudioEffectPlugin::LoadState(item);
}

int32_t SlidebenchAudioEffectPlugin::Prepare(int32_t channels, int32_t sampleRate) {
  if (sampleRate < 1) return MAudioEffectPlugin::Prepare(channels, sampleRate);
  isReady_ = false;
  const int32_t result = MAudioEffectPlugin::Prepare(channels, sampleRate);
  source_.Prepare(channels_, sampleRate, kSize + kPart);
  destination_.Prepare(channels_, sampleRate, GetLatency() + kPart);
  processor_.Prepare();
  isReady_ = true;
  return result;
}

void SlidebenchAudioEffectPlugin::Process(float** in, float** out, int32_t samples) {
  if (samples < 1) return;
  if (!isReady_) return CopyChannels(in, out, 0, channels_, samples);
  current_ = &published_.Get();
  const int32_t served = std::min(channels_, source_.GetChannelCount());
  for (int32_t done = 0; done < samples; done += kPart) {
    float* from[MAudioBuffer::kMaximumChannels];
    float* to[MAudioBuffer::kMaximumChannels];
    for (int32_t c = 0; c < served; ++c) {
      from[c] = in[c] + done;
      to[c] = out[c] + done;
    }
    ProcessPart(from, to, served, std::min(kPart, samples - done));
  }
  CopyChannels(in, out, served, channels_, samples);
}

// Channels that are not served pass as silence.
void SlidebenchAudioEffectPlugin::ProcessPart(float* const* in, float* const* out, int32_t served,
                                              int32_t samples) {
  float clean[MAudioBuffer::kMaximumChannels][kPart];
  const float* from[MAudioBuffer::kMaximumChannels] = {};
  float* to[MAudioBuffer::kMaximumChannels] = {};
  for (int32_t c = 0; c < served; ++c) {
    std::transform(in[c], in[c] + samples, clean[c], CleanSample);
    from[c] = clean[c];
    to[c] = out[c];
  }
  source_.Append(from, samples);
  processor_.Run();
  destination_.Read(to, samples);
}

std::vector<float, MAllocator<float>> SlidebenchAudioEffectPlugin::GetGains() {
  const MLocker locker(lock_);
  return {gains_.values, gains_.values + kSize};
}

M_PLUGIN_ENTRY(SlidebenchAudioEffectPlugin)
