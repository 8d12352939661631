#pragma once
#include "audiofiles/MMultiSampleCache.h"
#include "audiofiles/MSampleCache.h"
#include "audiofiles/MSubSampleLibrary.h"
#include "core/MFileList.h"
#include "core/MXMLItem.h"

// What all plug-ins of the library share: the settings, the folders of the content with what is in them, and
// the caches of what is loaded from there. The module makes it at its start and destroys it at its end.
//
// The settings are the file SonvelleConfiguration.cfg in the folder MSystemPath::kData: an element
// "SonvelleCfg" with the attributes "GlobalPath" and "SamplePathCustom"; what else is in it is kept. A file
// that is missing or broken counts as an empty one; so does one that cannot be opened, which is never
// replaced then, since nobody knows what it holds. The first run puts the current folder there as GlobalPath,
// for all later ones.
class SonvelleConfiguration {
 public:
  M_LIBRARY_MEMORY

  SonvelleConfiguration();
  SonvelleConfiguration(const SonvelleConfiguration&) = delete;
  SonvelleConfiguration& operator=(const SonvelleConfiguration&) = delete;
  // Saves the settings, as a whole. A failure is reported to ReportFatal, and the old file stays.
  ~SonvelleConfiguration();

  // The one configuration; null before the module's start, and when it could not be made.
  static SonvelleConfiguration* Get() noexcept { return instance; }
  static void Create();
  static void Destroy();

  MXMLItem root;
  MString globalPath;
  MString samplePath;            // "Samples" in the global path
  MString samplePathCustom;      // the user's own folder of samples, may be empty
  MString subSampleLibraryPath;  // "SubSampleLibraries"
  MString multiSamplePath;       // "MultiSamples"
  MFileTree sampleFiles;         // as they were at the start
  MFileTree subSampleLibraryFiles;
  MFileTree multiSampleFiles;
  MSampleCache sampleCache;
  MMultiSampleCache multiSampleCache;
  MSubSampleLibraryCache subSampleCache;

 private:
  void Save();

  static SonvelleConfiguration* instance;

  MString file_;
  bool isUnread_ = false;  // the file is there and could not be opened
};
