#pragma once
#include "dsp/MEnvelopeData.h"
#include "plugin/MAudioStreamPlugin.h"

class MAudioBuffer;

// Base of the instruments that play one sample file: which file that is, its place in a state, and the
// samples themselves, which all plug-ins and streams that play the file share.
//
// A file lies in a folder below the root of samples, or below the user's own root. A file that cannot be
// loaded leaves the plug-in silent; the failure is reported, and the state keeps the file's name.
class MSamplePlugin : public MAudioStreamPlugin {
 public:
  ~MSamplePlugin() override;

  bool SaveState(MXMLItem& item) override;
  bool LoadState(MXMLItem& item) override;
  // "ImportSample", with the address of two MStrings, a folder and a file name: plays that file, which is
  // copied below the root of samples unless it lies there. Returns 0, or 1 if it is not loaded. [host]
  MWord Command(const char* name, MWord argument) override;
  // Appends the sample's path. A file below the user's own root is copied below the root of samples, and the
  // next state names the copy. [host]
  int32_t CollectFiles(MCollectedFiles* files) override;

  // For editors and tests, which hold the lock. [any]
  const MAudioBuffer* GetSample() const noexcept { return sample_; }
  MEnvelopeData& GetEnvelope() noexcept { return envelope_; }

 protected:
  // What each class spells in its own way: attribute and child of a state, places of reports.
  struct Names {
    const char* fileName;
    const char* envelope;
    const char* create;
    const char* load;
    const char* collect;
  };
  explicit MSamplePlugin(const Names& names);

  // The sample for a new stream, one more use of it counted; null if there is none. The lock is held. [audio]
  const MAudioBuffer* ShareSample() const;
  // The end of that use. [audio]
  static void ReleaseSample(const MAudioBuffer* sample) noexcept;
  double GetSeconds(const MPluginParameter& row) const noexcept { return MLimitedValue(row, -60, 60); }

  MEnvelopeData envelope_;

 private:
  // These hold the lock.
  void Load();
  void Unload() noexcept;
  void Import(const MString& folder, const MString& name);
  void Collect(MCollectedFiles& files);

  const Names names_;
  const MAudioBuffer* sample_ = nullptr;
  MString path_;  // of the sample
  MString subpath_;
  MString fileName_;
  MString importedSubpath_;
  MString importedName_;
  bool isCustomPath_ = false;
  bool isImported_ = false;  // the next state names these
};
