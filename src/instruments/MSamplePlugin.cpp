#include "instruments/MSamplePlugin.h"

#include <algorithm>
#include <cstring>

#include "core/MFileTools.h"
#include "core/MGuard.h"
#include "core/MPath.h"
#include "core/MSystemPath.h"
#include "core/MXMLItem.h"
#include "instruments/MCurves.h"
#include "instruments/MSampleFolders.h"
#include "plugin/SonvelleConfiguration.h"

MSamplePlugin::MSamplePlugin(const Names& names)
    : MAudioStreamPlugin(names.create), envelope_(MLineCurve(1, 1)), names_(names) {}

MSamplePlugin::~MSamplePlugin() {
  Unload();
}

bool MSamplePlugin::SaveState(MXMLItem& item) {
  MPlugin::SaveState(item);
  const MLocker locker(lock_);
  item.SetAttribute("subpath", isImported_ ? importedSubpath_ : subpath_);
  item.SetAttribute("CustomSamplePath", MString::FromInteger(isCustomPath_ && !isImported_));
  item.SetAttribute(MString::Literal(names_.fileName), isImported_ ? importedName_ : fileName_);
  isImported_ = false;
  MSaveCurve(envelope_, item, MString::Literal(names_.envelope));
  return false;
}

bool MSamplePlugin::LoadState(MXMLItem& item) {
  MPlugin::LoadState(item);
  const MLocker locker(lock_);
  subpath_ = item.GetAttribute("subpath");
  isCustomPath_ = item.GetAttribute("CustomSamplePath").ToInteger() != 0;
  fileName_ = item.GetAttribute(MString::Literal(names_.fileName));
  isImported_ = false;
  MEnvelopeData envelope = MLineCurve(1, 1);
  MLoadCurve(envelope, item, MString::Literal(names_.envelope));
  envelope_ = std::move(envelope);
  MRunGuarded(names_.load, [this] { Load(); });
  return false;
}

MWord MSamplePlugin::Command(const char* name, MWord argument) {
  if (std::strcmp(name, "ImportSample") != 0) return MAudioStreamPlugin::Command(name, argument);
  const auto* const texts = MAsAddress<const MString>(argument);
  if (!texts) return 1;
  const MLocker locker(lock_);
  MRunGuarded(names_.load, [&] { Import(texts[0], texts[1]); });
  return sample_ ? 0 : 1;
}

int32_t MSamplePlugin::CollectFiles(MCollectedFiles* files) {
  const MLocker locker(lock_);
  if (sample_ && files->count >= 0 && files->count < MCollectedFiles::kMost)
    MRunGuarded(names_.collect, [&] { Collect(*files); });
  return 0;
}

const MAudioBuffer* MSamplePlugin::ShareSample() const {
  SonvelleConfiguration* const shared = SonvelleConfiguration::Get();
  if (!sample_ || !shared) return nullptr;
  shared->sampleCache.Share(sample_);
  return sample_;
}

void MSamplePlugin::ReleaseSample(const MAudioBuffer* sample) noexcept {
  SonvelleConfiguration* const shared = SonvelleConfiguration::Get();
  if (sample && shared) MRunGuarded("MSampleCache::Release", [&] { shared->sampleCache.Release(sample); });
}

void MSamplePlugin::Unload() noexcept {
  ReleaseSample(std::exchange(sample_, nullptr));
}

// The old sample is released first, so that a file which only this plug-in plays is read anew.
void MSamplePlugin::Load() {
  Unload();
  SonvelleConfiguration* const shared = SonvelleConfiguration::Get();
  if (!shared || fileName_.IsEmpty()) return;
  const MString& root = isCustomPath_ ? shared->samplePathCustom : shared->samplePath;
  path_ = JoinPath(JoinPath(root, subpath_), fileName_);
  sample_ = shared->sampleCache.Acquire(path_);
}

void MSamplePlugin::Import(const MString& folder, const MString& name) {
  Unload();
  SonvelleConfiguration* const shared = SonvelleConfiguration::Get();
  const MString source = NormalizePath(folder);
  MString subpath;
  const bool isThere = shared && MIsBelowFolder(source, shared->samplePath, subpath);
  if (!isThere) subpath = JoinPath("Imported", MWithoutParents(source));
  subpath_ = importedSubpath_ = subpath;
  fileName_ = importedName_ = isThere ? name : GetPathName(name);
  isCustomPath_ = false;
  isImported_ = true;
  if (!shared) return;
  if (!isThere) {
    const MString target = JoinPath(shared->samplePath, subpath_);
    CreatePath(target);
    CopyFile(JoinPath(source, name), JoinPath(target, fileName_));
  }
  Load();
}

void MSamplePlugin::Collect(MCollectedFiles& files) {
  SonvelleConfiguration* const shared = SonvelleConfiguration::Get();
  MString path = path_;
  if (isCustomPath_ && shared) {
    const MString subpath = MCollectedFolder(subpath_);
    const MString target = JoinPath(shared->samplePath, subpath);
    CreatePath(target);
    const MString name = GetPathName(fileName_);
    path = JoinPath(target, name);
    CopyFile(path_, path);
    importedSubpath_ = subpath;
    importedName_ = name;
    isImported_ = true;
  }
  files.path[files.count++] = path;
}
