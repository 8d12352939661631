#include "plugin/SonvelleConfiguration.h"

#include <utility>

#include "core/MFileStream.h"
#include "core/MFileTools.h"
#include "core/MGuard.h"
#include "core/MPath.h"
#include "core/MSystemPath.h"

constinit SonvelleConfiguration* SonvelleConfiguration::instance = nullptr;

SonvelleConfiguration::SonvelleConfiguration()
    : file_(JoinPath(GetSystemPath(MSystemPath::kData), "SonvelleConfiguration.cfg")) {
  try {
    root.LoadFile(file_);
  } catch (const MException& raised) {
    isUnread_ = raised.code == MErrorCode::kNotOpened && FileExists(file_);
    root.Clear();
    root.SetName("SonvelleCfg");
  }
  globalPath = root.HasAttribute("GlobalPath") ? root.CachedAttribute() : GetCurrentFolder();
  root.SetAttribute("GlobalPath", globalPath);
  samplePath = JoinPath(globalPath, "Samples");
  samplePathCustom = root.GetAttribute("SamplePathCustom");
  subSampleLibraryPath = JoinPath(globalPath, "SubSampleLibraries");
  multiSamplePath = JoinPath(globalPath, "MultiSamples");
  sampleFiles = MFileTree::Scan(samplePath);
  subSampleLibraryFiles = MFileTree::Scan(subSampleLibraryPath);
  multiSampleFiles = MFileTree::Scan(multiSamplePath);
}

SonvelleConfiguration::~SonvelleConfiguration() {
  MRunGuarded("Sonvelle configuration could not be saved.", [this] { Save(); });
}

void SonvelleConfiguration::Save() {
  if (isUnread_) MFileStream::ThrowNotCreated(file_);
  root.SetAttribute("SamplePathCustom", samplePathCustom);
  root.SaveFile(file_);
}

void SonvelleConfiguration::Create() {
  if (!instance) instance = new SonvelleConfiguration;
}

void SonvelleConfiguration::Destroy() {
  delete std::exchange(instance, nullptr);
}
