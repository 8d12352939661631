#include "instruments/Grainloom.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "core/MFileTools.h"
#include "core/MGuard.h"
#include "core/MPath.h"
#include "core/MXMLItemIterator.h"
#include "core/MXMLNumber.h"
#include "dsp/MRandomSequence.h"
#include "instruments/MCurves.h"
#include "instruments/MSampleStream.h"
#include "plugin/MParameterFormatters.h"
#include "plugin/SonvelleConfiguration.h"

namespace {

constexpr char kDefaultSubpath[] = "Natural";
constexpr char kDefaultFileName[] = "Natural Bass.qxSubSampleLib";

struct BandDescription {
  const char* title;
  int32_t shiftLimit;
};
constexpr BandDescription kDescriptions[GrainloomAudioStreamPlugin::kBands] = {
    {"Subbass 1", 16}, {"Subbass 2", 16}, {"Bass 1", 32},  {"Bass 2", 32},        {"Middle 1", 32},
    {"Middle 2", 64},  {"High 1", 128},   {"High 2", 256}, {"Ultra high 1", 512}, {"Ultra high 2", 512},
};

const BandDescription& Describe(int32_t band) noexcept {
  return kDescriptions[std::clamp(band, 0, GrainloomAudioStreamPlugin::kBands - 1)];
}

float ReadFloat(const MXMLItem& item, const MString& name, double fallback) {
  return static_cast<float>(std::clamp<double>(MReadNumber(item, name, fallback), -FLT_MAX, FLT_MAX));
}

int32_t ReadInteger(const MXMLItem& item, const MString& name) {
  return static_cast<int32_t>(std::clamp<double>(MReadNumber(item, name), INT32_MIN, INT32_MAX));
}

// A number from 0 to 999 and one from 0 to 32767 out of the next of the sequence.
int32_t DrawThousandth() noexcept {
  return static_cast<int32_t>((MRandomSequence::Next() >> 16) % 1000);
}

float DrawColor(int32_t count) noexcept {
  const auto drawn = static_cast<double>((MRandomSequence::Next() >> 16) & 0x7fff);
  return static_cast<float>(std::max(drawn * (count - 1) / 32767, 0.0));
}

}  // namespace

GrainloomAudioStreamPlugin::GrainloomAudioStreamPlugin()
    : MAudioStreamPlugin("GrainloomAudioStreamPlugin::CreateStream"),
      subpath_(kDefaultSubpath),
      fileName_(kDefaultFileName),
      envelope_(MLineCurve(1, 1)),
      bands_{},
      renderedBands_{} {
  withoutOffset_.set();
  AddRealParameter(rows_[kColorOffset], "Color offset between channels", "coloroffset",
                   "<name>Color offset between channels</name> affects colors of all bands depending on "
                   "channel. So this is a cool way to provide some sort of stereo expansion. Higher number "
                   "causes bigger differences and therefore more stereo sound.",
                   0.0, 1.0, 0.2, MString(), MShowPercent);
  AddRealParameter(rows_[kVolumeDeviance], "Volume deviance", "volumedeviance",
                   "<name>Volume deviance</name> defines how much can separate bands distinguish in volume "
                   "when randomized.",
                   0.0, 1.0, 0.1, MString(), MShowPercent);
  AddRealParameter(rows_[kOffsetDeviance], "Offset deviance", "offsetdeviance",
                   "<name>Offset deviance</name> defines how far separate bands can be shifted in frequency "
                   "when randomized.",
                   0.0, 1.0, 0.0, MString(), MShowPercent);
  SetParameters(rows_);
}

GrainloomAudioStreamPlugin::~GrainloomAudioStreamPlugin() = default;

void GrainloomAudioStreamPlugin::ReleaseLibrary::operator()(MSubSampleLibrary* library) const noexcept {
  SonvelleConfiguration* const configuration = SonvelleConfiguration::Get();
  if (!configuration) return;  // it was the library's owner
  MRunGuarded("GrainloomAudioStreamPlugin::ReleaseLibrary",
              [=] { configuration->subSampleCache.Release(library); });
}

// A new instrument plays the default library, where there is one.
int32_t GrainloomAudioStreamPlugin::Prepare(int32_t channels, int32_t sampleRate) {
  const int32_t result = MAudioStreamPlugin::Prepare(channels, sampleRate);
  const SonvelleConfiguration* const configuration = SonvelleConfiguration::Get();
  if (!configuration) return result;
  {
    const MLocker locker(lock_);
    const MString path = JoinPath(configuration->subSampleLibraryPath, JoinPath(subpath_, fileName_));
    if (isChosen_ || !FileExists(path)) return result;
    isChosen_ = true;
  }
  Reload(false);
  return result;
}

void GrainloomAudioStreamPlugin::ParameterChanged(int32_t index) {
  if (index == kColorOffset) Refresh();
}

bool GrainloomAudioStreamPlugin::SaveState(MXMLItem& item) {
  MAudioStreamPlugin::SaveState(item);
  const MLocker locker(lock_);
  item.SetAttribute("subpath", subpath_);
  item.SetAttribute("filename", fileName_);
  item.SetAttribute("coloroffset", MString::FromDouble(MLoadShared(rows_[kColorOffset].real.value), 4));
  MSaveCurve(envelope_, item, "envelope");
  if (item.HasSubItem("generator")) item.RemoveSubItem(item.CachedSubItem());
  MXMLItem& generator = item.AddSubItem("generator");
  for (const MSubSampleBand& band : bands_) {
    MXMLItem& saved = generator.AddSubItem("item");
    saved.SetAttribute("Index", MExactNumberText(band.index));
    saved.SetAttribute("Offset", MString::FromInteger(band.offset));
    saved.SetAttribute("OffsetModif", MString::FromInteger(band.shift));
    saved.SetAttribute("Volume", MExactNumberText(band.volume));
  }
  return false;
}

bool GrainloomAudioStreamPlugin::LoadState(MXMLItem& item) {
  MAudioStreamPlugin::LoadState(item);
  if (item.HasAttribute("coloroffset"))
    MStoreShared(rows_[kColorOffset].real.value, item.CachedAttribute().ToDouble());
  {
    const MLocker locker(lock_);
    isChosen_ = true;
    subpath_ = item.GetAttribute("subpath", kDefaultSubpath);
    fileName_ = item.GetAttribute("filename", kDefaultFileName);
    MLoadCurve(envelope_, item, "envelope");
    LoadBands(item);
  }
  Reload(false);
  return false;
}

void GrainloomAudioStreamPlugin::LoadBands(const MXMLItem& item) {
  bands_ = {};
  withoutOffset_.set();
  if (!item.HasSubItem("generator")) return;
  MXMLItemIterator items(item.CachedSubItem(), "item");
  for (std::size_t b = 0; b < bands_.size(); ++b) {
    const MXMLItem* const saved = items.Next();
    if (!saved) return;
    withoutOffset_[b] = !saved->HasAttribute("Offset");
    bands_[b] = {ReadFloat(*saved, "Index", 0), ReadInteger(*saved, "Offset"),
                 ReadInteger(*saved, "OffsetModif"), ReadFloat(*saved, "Volume", 1)};
  }
}

void GrainloomAudioStreamPlugin::StateLoaded() {
  Refresh();
}

void GrainloomAudioStreamPlugin::SelectLibrary(const MString& subpath, const MString& fileName) {
  {
    const MLocker locker(lock_);
    isChosen_ = true;
    subpath_ = subpath;
    fileName_ = fileName;
  }
  Reload(true);
  NotifyParametersChanged();
}

void GrainloomAudioStreamPlugin::Reload(bool randomizes) {
  SonvelleConfiguration* const configuration = SonvelleConfiguration::Get();
  Library library;
  MString path;
  {
    const MLocker locker(lock_);
    library.swap(library_);
    path = JoinPath(subpath_, fileName_);
  }
  library.reset();  // first, so that a file that nobody else uses is read anew
  MRunGuarded("GrainloomAudioStreamPlugin::LoadLibrary", [&] {
    if (!configuration) return;
    library.reset(configuration->subSampleCache.Acquire(JoinPath(configuration->subSampleLibraryPath, path)));
  });
  const MLocker locker(lock_);
  library_.swap(library);  // another thread may have put one there
  for (int32_t b = 0; library_ && b < kBands; ++b) {
    const auto band = static_cast<std::size_t>(b);
    if (withoutOffset_[band]) bands_[band].offset = library_->GetBand(b).firstBin;
  }
  if (library_) withoutOffset_.reset();
  if (randomizes) DrawBands(false);
  MakeSample();
}

void GrainloomAudioStreamPlugin::Randomize(bool hasCommonColor) {
  {
    const MLocker locker(lock_);
    if (!library_) return;
    DrawBands(hasCommonColor);
    MakeSample();
  }
  NotifyParametersChanged();
}

void GrainloomAudioStreamPlugin::DrawBands(bool hasCommonColor) noexcept {
  if (!library_) return;
  const double volumeDeviance = MLimitedValue(rows_[kVolumeDeviance], 0, 1);
  const double offsetDeviance = MLimitedValue(rows_[kOffsetDeviance], 0, 1);
  const float common = hasCommonColor ? DrawColor(library_->GetLargestCount()) : 0;
  for (int32_t b = 0; b < kBands; ++b) {
    const MSubSampleLibrary::Band& source = library_->GetBand(b);
    MSubSampleBand& band = bands_[static_cast<std::size_t>(b)];
    band.offset = source.firstBin;
    band.volume = static_cast<float>(1 - DrawThousandth() * volumeDeviance * 0.001);
    band.shift = static_cast<int32_t>((DrawThousandth() * 0.002 - 1) * offsetDeviance * source.firstBin);
    band.shift = std::min(band.shift, MSubSampleLibrary::kBins - source.binCount);
    band.index = hasCommonColor ? common : DrawColor(source.GetCount());
  }
}

void GrainloomAudioStreamPlugin::MakeSample() {
  std::unique_ptr<MAudioBuffer> sample;
  renderedColorOffset_ = MLimitedValue(rows_[kColorOffset], 0, 1);
  if (library_) {
    const bool isMade = MRunGuarded("GrainloomAudioStreamPlugin::MakeSample", [&] {
      sample.reset(new MAudioBuffer);
      MRenderSubSamples(*sample, *library_, bands_, renderedColorOffset_);
    });
    if (!isMade) sample.reset();
  }
  renderedBands_ = bands_;
  sample_.swap(sample);
}

void GrainloomAudioStreamPlugin::Refresh() {
  const MLocker locker(lock_);
  if (bands_ == renderedBands_ && MLimitedValue(rows_[kColorOffset], 0, 1) == renderedColorOffset_) return;
  MakeSample();
}

void GrainloomAudioStreamPlugin::SetBand(int32_t band, const MSubSampleBand& setting) {
  if (band < 0 || band >= kBands) return;
  {
    const MLocker locker(lock_);
    bands_[static_cast<std::size_t>(band)] = setting;
    Refresh();
  }
  NotifyParametersChanged();
}

MSubSampleBand GrainloomAudioStreamPlugin::GetBand(int32_t band) {
  const MLocker locker(lock_);
  return bands_[static_cast<std::size_t>(std::clamp(band, 0, kBands - 1))];
}

int32_t GrainloomAudioStreamPlugin::GetLastIndex(int32_t band) {
  const MLocker locker(lock_);
  return library_ ? std::max(library_->GetBand(std::clamp(band, 0, kBands - 1)).GetCount() - 1, 0) : 0;
}

int32_t GrainloomAudioStreamPlugin::GetShiftLimit(int32_t band) noexcept {
  return Describe(band).shiftLimit;
}

const char* GrainloomAudioStreamPlugin::GetBandTitle(int32_t band) noexcept {
  return Describe(band).title;
}

MAudioStream* GrainloomAudioStreamPlugin::NewStream(const MStreamRequest& request) {
  const MLocker locker(lock_);
  if (IsEmpty()) return nullptr;
  std::unique_ptr<MSampleStream> stream(new MSampleStream);
  stream->SetSpeed(sample_->sampleRate, request.ratio, GetRate());
  stream->length = sample_->GetLength();
  stream->volume = request.volume;
  stream->SetEnvelope(envelope_);
  return stream.release();
}

int32_t GrainloomAudioStreamPlugin::ComputeStream(float** out, int32_t samples, MWord* handle) {
  const MLocker locker(lock_);
  if (!IsEmpty()) return MAudioStreamPlugin::ComputeStream(out, samples, handle);
  ClearBlock(out, 0, samples);
  return MStreamResult::kEnded;
}

int32_t GrainloomAudioStreamPlugin::Render(MAudioStream& stream, float** out, int32_t first,
                                           int32_t samples) {
  const bool hasEnded = static_cast<MSampleStream&>(stream).Play(*sample_, out, channels_, first, samples);
  return hasEnded ? MStreamResult::kEnded : MStreamResult::kSounds;
}

void GrainloomAudioStreamPlugin::FreeStream(MAudioStream* stream) {
  delete static_cast<MSampleStream*>(stream);
}

M_PLUGIN_ENTRY(GrainloomAudioStreamPlugin)
