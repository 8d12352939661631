#include "instruments/Vinylrake.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "core/MAudioBuffer.h"
#include "dsp/MCubic.h"
#include "dsp/MEnvelopeComputer.h"
#include "instruments/MCurves.h"
#include "instruments/MSampleStream.h"
#include "plugin/MParameterFormatters.h"

namespace {

constexpr int32_t kChunk = 256;

struct Note : MAudioStream {
  double time = 0;
  double step = 1;
  double length = 0;
  const MAudioBuffer* sample = nullptr;
  MEnvelopeComputer volume;
  MEnvelopeComputer scratch;
};

// Where an output sample is read.
struct Place {
  int32_t whole;
  float t;
};

Place FindPlace(double place, int32_t length) noexcept {
  place = place >= -8 ? std::min(place, length - 1.0) : -8;  // -8 is in front as all below it are
  const int32_t whole = std::min(static_cast<int32_t>(place), length - 2);
  return {whole, static_cast<float>(place - whole)};
}

float ReadPlace(const float* samples, int32_t length, const Place& place) noexcept {
  const auto at = [&](int32_t i) { return i >= 0 && i < length ? samples[i] : 0.0f; };
  return MCubic(at(place.whole - 1), at(place.whole), at(place.whole + 1), at(place.whole + 2), place.t);
}

}  // namespace

VinylrakeAudioStreamPlugin::VinylrakeAudioStreamPlugin()
    : MSamplePlugin({"FileName", "Envelope", "VinylrakeAudioStreamPlugin::CreateStream",
                     "VinylrakeAudioStreamPlugin::LoadState", "VinylrakeAudioStreamPlugin::CollectFiles"}),
      scratch_(MLineCurve(0, 1)) {
  AddRealParameter(rows_[kLength], "Length", "length",
                   "<name>Length</name> defines length of resulting sound.", 0.01, 10.0, 1.0, MString(),
                   MShowMilliseconds);
  SetParameters(rows_);
}

bool VinylrakeAudioStreamPlugin::SaveState(MXMLItem& item) {
  MSamplePlugin::SaveState(item);
  const MLocker locker(lock_);
  MSaveCurve(scratch_, item, "Scratch");
  return false;
}

bool VinylrakeAudioStreamPlugin::LoadState(MXMLItem& item) {
  MEnvelopeData scratch = MLineCurve(0, 1);
  MLoadCurve(scratch, item, "Scratch");
  {
    const MLocker locker(lock_);
    scratch_ = std::move(scratch);
  }
  return MSamplePlugin::LoadState(item);
}

MAudioStream* VinylrakeAudioStreamPlugin::NewStream(const MStreamRequest& request) {
  const MLocker locker(lock_);
  const MAudioBuffer* const sample = GetSample();
  if (!sample) return nullptr;
  auto note = std::make_unique<Note>();
  note->step = request.ratio;
  note->length = std::max(std::trunc(GetRate() * GetSeconds(rows_[kLength])), 0.0) / request.ratio;
  MEnvelopeData volume = envelope_;
  volume.ScaleX(note->length, true);
  volume.ScaleY(request.volume, true);
  note->volume.Build(volume);
  if (note->volume.GetTailStart() < note->length) note->length = std::trunc(note->volume.GetTailStart());
  MEnvelopeData scratch = scratch_;
  scratch.ScaleX(note->length, true);
  scratch.ScaleY(sample->GetLength(), true);
  note->scratch.Build(scratch);
  note->sample = ShareSample();
  return note->sample ? note.release() : nullptr;
}

int32_t VinylrakeAudioStreamPlugin::Render(MAudioStream& stream, float** out, int32_t first,
                                           int32_t samples) {
  auto& note = static_cast<Note&>(stream);
  const int32_t recorded = note.sample->GetChannelCount();
  const int32_t length = note.sample->GetLength();
  const int32_t end =
      recorded == 0 ? first : first + MStepsBelow(note.length, note.time, note.step, samples - first);
  for (int32_t done = first; done < end; done += kChunk) {
    const int32_t run = std::min(kChunk, end - done);
    const double time = note.time + (done - first) * note.step;
    double volumes[kChunk], scratch[kChunk];
    note.volume.FillDouble(volumes, time, note.step, run);
    note.scratch.FillDouble(scratch, time, note.step, run);
    Place places[kChunk];
    for (int32_t i = 0; i < run; ++i) places[i] = FindPlace(scratch[i], length);
    for (int32_t c = 0; c < channels_; ++c) {
      const float* const source = note.sample->GetChannel(c % recorded);
      for (int32_t i = 0; i < run; ++i)
        out[c][done + i] = static_cast<float>(ReadPlace(source, length, places[i]) * volumes[i]);
    }
  }
  ClearBlock(out, end, samples);
  note.time += (samples - first) * note.step;
  return note.time >= note.length ? MStreamResult::kEnded : MStreamResult::kSounds;
}

void VinylrakeAudioStreamPlugin::FreeStream(MAudioStream* stream) {
  const std::unique_ptr<Note> note(static_cast<Note*>(stream));
  ReleaseSample(note->sample);
}

M_PLUGIN_ENTRY(VinylrakeAudioStreamPlugin)
