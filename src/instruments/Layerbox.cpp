#include "instruments/Layerbox.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "audiofiles/MMultiSample.h"
#include "core/MGuard.h"
#include "core/MPath.h"
#include "core/MXMLNumber.h"
#include "dsp/MRandomSequence.h"
#include "instruments/MCurves.h"
#include "instruments/MSampleStream.h"
#include "plugin/MParameterFormatters.h"
#include "plugin/SonvelleConfiguration.h"

namespace {

constexpr double kNoMaximum = 20;      // of the row, in seconds
constexpr double kSoftestTake = 0.05;  // softer ones are not lifted more than that
constexpr double kNoPan = 1e-20;
constexpr double kMostGain = 1e30;  // so that samples stay finite

double LimitPan(double pan) {
  return std::isfinite(pan) ? std::clamp(pan, -1.0, 1.0) : 0;
}

// The name of a track's attribute.
MString TrackKey(const char* name, int32_t track) {
  MString key = MString::FromNarrow(name);
  key.Append(MString::FromInteger(track));
  return key;
}

void Release(MMultiSample* multiSample) noexcept {
  SonvelleConfiguration* const shared = SonvelleConfiguration::Get();
  if (multiSample && shared)
    MRunGuarded("LayerboxAudioStreamPlugin::Release", [&] { shared->multiSampleCache.Release(multiSample); });
}

}  // namespace

struct LayerboxAudioStreamPlugin::Note : MSampleStream {
  MMultiSample* multiSample = nullptr;
  int32_t take = 0;
  double gain[kTracks] = {};
  double pan[kTracks] = {};
};

LayerboxAudioStreamPlugin::LayerboxAudioStreamPlugin()
    : MAudioStreamPlugin("LayerboxAudioStreamPlugin::CreateStream"),
      velocity_(MLineCurve(0, 1)),
      envelope_(MLineCurve(1, 1)) {
  AddSampleDelayParameter(rows_[kDelay]);
  AddRealParameter(rows_[kMaximalLength], "Maximal length", "maxlength",
                   "<name>Maximal length</name> defines maximal length of each sample. If specified, every "
                   "longer sample is shorten to that value and fade-out is applied. Maximal length can "
                   "significantly reduce memory and CPU usage for long sounds such as ride cymbals.",
                   1.0, kNoMaximum, kNoMaximum, MString(), MShowMilliseconds);
  AddSwitchParameter(
      rows_[kSingleSample], "Single sample", "singlesample",
      "<name>Single sample</name> causes multisampler to use only one sample (which is from the maximal "
      "velocity layer). It can significantly reduce memory and CPU usage, especially for long sounds such as "
      "ride cymbals.",
      false);
  SetParameters(rows_);
  SetPluginFlag();
}

LayerboxAudioStreamPlugin::~LayerboxAudioStreamPlugin() {
  Release(multiSample_);
}

void LayerboxAudioStreamPlugin::SetSolo(int32_t track) noexcept {
  solo_ = track >= 0 && track < kTracks ? track : -1;
}

double LayerboxAudioStreamPlugin::GetMaximalSeconds() const noexcept {
  const double seconds = MLimitedValue(rows_[kMaximalLength], 0, kNoMaximum);
  return seconds < kNoMaximum ? seconds : MMultiSample::kNoLimit;
}

// The old multisample is released first, so that a file which only this plug-in plays is read anew. Reading
// is done without the lock.
void LayerboxAudioStreamPlugin::Reload(const MXMLItem* state) {
  MMultiSample* next = nullptr;
  MString path;
  const bool isSingle = MIsOn(rows_[kSingleSample]);
  SonvelleConfiguration* const shared = SonvelleConfiguration::Get();
  {
    const MLocker locker(lock_);
    std::swap(multiSample_, next);
    if (shared && !fileName_.IsEmpty())
      path = JoinPath(JoinPath(shared->multiSamplePath, subpath_), fileName_);
  }
  Release(std::exchange(next, nullptr));
  if (!path.IsEmpty())
    MRunGuarded("LayerboxAudioStreamPlugin::LoadState",
                [&] { next = shared->multiSampleCache.Acquire(path, GetMaximalSeconds(), isSingle); });
  bool isOtherCount = false;
  {
    const MLocker locker(lock_);
    std::swap(multiSample_, next);
    isSingle_ = isSingle;
    const int32_t before = trackCount_;
    if (state)
      LoadTracks(*state);
    else
      AddTracks();
    isOtherCount = trackCount_ != before;
  }
  Release(next);  // of a load on another thread
  if (isOtherCount) NotifyLayoutChanged();
}

void LayerboxAudioStreamPlugin::ParameterChanged(int32_t index) {
  if (index != kMaximalLength && index != kSingleSample) return;
  bool isSame = false;
  {
    const MLocker locker(lock_);
    isSame = multiSample_ && multiSample_->GetMaximalSeconds() == GetMaximalSeconds() &&
             isSingle_ == MIsOn(rows_[kSingleSample]);
  }
  if (!isSame) Reload(nullptr);
}

bool LayerboxAudioStreamPlugin::SaveState(MXMLItem& item) {
  MAudioStreamPlugin::SaveState(item);
  const MLocker locker(lock_);
  item.SetAttribute("subpath", subpath_);
  item.SetAttribute("filename", fileName_);
  item.SetAttribute("solo", MString::FromInteger(solo_));
  MSaveCurve(velocity_, item, "velocity");
  MSaveCurve(envelope_, item, "envelope");
  for (int32_t i = 0; i < trackCount_; ++i) {
    item.SetAttribute(TrackKey("pan", i), MExactNumberText(tracks_[i].pan));
    item.SetAttribute(TrackKey("volume", i), MExactNumberText(tracks_[i].volume));
    item.SetAttribute(TrackKey("enabling", i), MString::FromInteger(tracks_[i].isEnabled));
  }
  return false;
}

bool LayerboxAudioStreamPlugin::LoadState(MXMLItem& item) {
  MAudioStreamPlugin::LoadState(item);
  MEnvelopeData velocity = velocity_, envelope = envelope_;
  MLoadCurve(velocity, item, "velocity");
  MLoadCurve(envelope, item, "envelope");
  {
    const MLocker locker(lock_);
    subpath_ = item.GetAttribute("subpath");
    fileName_ = item.GetAttribute("filename");
    velocity_ = std::move(velocity);
    envelope_ = std::move(envelope);
  }
  Reload(&item);
  return false;
}

// As the file has them, and what the state says otherwise. Those of a file that is not there are kept for the
// next state.
void LayerboxAudioStreamPlugin::LoadTracks(const MXMLItem& item) {
  trackCount_ = 0;
  AddTracks();
  if (!multiSample_)
    while (trackCount_ < kTracks && item.HasAttribute(TrackKey("volume", trackCount_)))
      tracks_[trackCount_++] = Track();
  for (int32_t i = 0; i < trackCount_; ++i) {
    tracks_[i].volume = MReadNumber(item, TrackKey("volume", i), tracks_[i].volume);
    tracks_[i].pan = MReadNumber(item, TrackKey("pan", i), tracks_[i].pan);
    tracks_[i].isEnabled = item.GetAttribute(TrackKey("enabling", i), "1").ToInteger() != 0;
  }
  const int64_t solo = item.GetAttribute("solo", "-1").ToInteger();
  SetSolo(static_cast<int32_t>(std::clamp<int64_t>(solo, -1, kTracks)));
  if (multiSample_ && solo_ >= trackCount_) solo_ = -1;
}

// As the file has them, behind those that are here.
void LayerboxAudioStreamPlugin::AddTracks() {
  if (!multiSample_) return;
  const auto& tracks = multiSample_->GetFile().GetTracks();
  const auto count = static_cast<int32_t>(tracks.size());
  for (int32_t i = trackCount_; i < count; ++i) {
    const MMultiSampleFile::Track& track = tracks[static_cast<std::size_t>(i)];
    tracks_[i] = {track.volume, track.pan, true};
  }
  trackCount_ = count;
}

MWord LayerboxAudioStreamPlugin::Command(const char* name, MWord argument) {
  if (std::strcmp(name, "FinishLoading") != 0) return MAudioStreamPlugin::Command(name, argument);
  MMultiSample* waited = nullptr;
  {
    const MLocker locker(lock_);
    waited = Share();
  }
  if (!waited) return 0;
  const bool isDone = waited->FinishLoading();
  Release(waited);
  return isDone ? 0 : 1;
}

MMultiSample* LayerboxAudioStreamPlugin::Share() const {
  SonvelleConfiguration* const shared = SonvelleConfiguration::Get();
  if (!multiSample_ || !shared) return nullptr;
  shared->multiSampleCache.Share(multiSample_);
  return multiSample_;
}

// A take of the layer, drawn where that is asked for; the first one as long as the drawn one is not there.
int32_t LayerboxAudioStreamPlugin::ChooseTake(double velocity) const {
  const int32_t number = multiSample_->FindLayer(velocity);
  const auto& layer = multiSample_->GetFile().GetLayers()[static_cast<std::size_t>(number)];
  int32_t take = layer.first;
  if (!MIsOn(rows_[kSingleSample])) {
    const auto takes = static_cast<uint32_t>(layer.last - layer.first + 1);
    take += static_cast<int32_t>((MRandomSequence::Next() >> 16) % takes);
  }
  if (multiSample_->GetTake(take).IsLoaded()) return take;
  multiSample_->Request(number);
  return layer.first;
}

MAudioStream* LayerboxAudioStreamPlugin::NewStream(const MStreamRequest& request) {
  const MLocker locker(lock_);
  if (!multiSample_) return nullptr;
  auto note = std::make_unique<Note>();
  note->SetStart(rows_[kDelay], GetRate());
  note->SetSpeed(multiSample_->GetFile().GetSampleRate(), request.ratio, GetRate());
  const double velocity = MIsOn(rows_[kSingleSample]) ? 1 : request.volume;
  note->take = ChooseTake(MEnvelopeComputer::Evaluate(velocity_, std::clamp(velocity, 0.0, 1.0)));
  const double loudness = multiSample_->GetFile().GetTakes()[static_cast<std::size_t>(note->take)].loudness;
  const double gain = velocity / std::max(loudness, kSoftestTake) * request.volume;
  for (int32_t i = 0; i < trackCount_; ++i) {
    note->gain[i] = std::clamp(tracks_[i].volume * gain, -kMostGain, kMostGain);
    note->pan[i] = LimitPan(tracks_[i].pan);
  }
  note->length = multiSample_->GetLongest();
  note->SetEnvelope(envelope_);
  note->multiSample = Share();
  return note->multiSample ? note.release() : nullptr;
}

// The samples of a track as far as they are there.
const MAudioBuffer* LayerboxAudioStreamPlugin::FindBuffer(const Note& note, int32_t track) {
  const MSampleTake& take = note.multiSample->GetTake(note.take);
  if (take.IsLoaded()) return take.GetWhole(track);
  const MAudioBuffer* const head = take.GetHead(track);
  const bool isEmpty = !head || head->GetChannelCount() == 0 || head->GetLength() == 0;
  return note.speed != 1 && isEmpty ? take.GetWhole(track) : head;
}

// Adds `run` samples of a track; `gains` is the envelope.
void LayerboxAudioStreamPlugin::AddTrack(const Note& note, int32_t track, const float* gains,
                                         const MSampleReading& reading, float** out, int32_t start,
                                         int32_t run) const {
  const MAudioBuffer* const buffer = FindBuffer(note, track);
  if (!buffer || buffer->GetChannelCount() == 0) return;
  const int32_t recorded = std::min(buffer->GetChannelCount(), channels_);
  float samples[MAudioBuffer::kMaximumChannels][MSampleStream::kChunk];
  for (int32_t c = 0; c < recorded; ++c) reading.Read(samples[c], buffer->GetChannel(c), buffer->GetLength());
  const double pan = channels_ == 2 ? note.pan[track] : 0;
  // The signal of the side that the pan turns away from moves across.
  const auto stay = [&](double away) {
    return static_cast<float>((1 - std::max(away, 0.0)) * note.gain[track]);
  };
  const auto cross = [&](double away) { return static_cast<float>(std::max(away, 0.0) * note.gain[track]); };
  for (int32_t c = 0; c < channels_; ++c) {
    const double away = std::abs(pan) > kNoPan ? (c == 0 ? pan : -pan) : 0;
    const float own = stay(away), other = cross(-away);
    const float* const from = samples[c % recorded];
    const float* const across = samples[(1 - c % 2) % recorded];
    float* const to = out[c] + start;
    if (other == 0)
      for (int32_t i = 0; i < run; ++i) to[i] += from[i] * own * gains[i];
    else
      for (int32_t i = 0; i < run; ++i) to[i] += (from[i] * own + across[i] * other) * gains[i];
  }
}

int32_t LayerboxAudioStreamPlugin::Render(MAudioStream& stream, float** out, int32_t first, int32_t samples) {
  const MLocker locker(lock_);
  auto& note = static_cast<Note&>(stream);
  ClearBlock(out, first, samples);
  const auto tracks = static_cast<int32_t>(note.multiSample->GetFile().GetTracks().size());
  const int32_t solo = solo_ < tracks ? solo_ : -1;
  for (int32_t done = first; done < samples; done += MSampleStream::kChunk) {
    const int32_t run = std::min(MSampleStream::kChunk, samples - done);
    const double place = note.position + (done - first) * note.speed;
    float gains[MSampleStream::kChunk];
    note.ReadGains(gains, place, run);
    const MSampleReading reading(place, note.speed, run);
    for (int32_t track = 0; track < tracks; ++track)
      if (solo >= 0 ? track == solo : tracks_[track].isEnabled)
        AddTrack(note, track, gains, reading, out, done, run);
  }
  note.position += samples * note.speed;
  return note.position >= note.length ? MStreamResult::kEnded : MStreamResult::kSounds;
}

void LayerboxAudioStreamPlugin::FreeStream(MAudioStream* stream) {
  const std::unique_ptr<Note> note(static_cast<Note*>(stream));
  Release(note->multiSample);
}

M_PLUGIN_ENTRY(LayerboxAudioStreamPlugin)
