#pragma once
#include <bitset>
#include <memory>

#include "dsp/MEnvelopeData.h"
#include "instruments/MSubSampleRenderer.h"
#include "plugin/MAudioStreamPlugin.h"

// Makes a new sample out of a library of spectra (MSubSampleRenderer.h) and plays it as Playbox plays a file.
// The library is a file below the root of subsample libraries. One that cannot be loaded, or read while a
// sample is made, leaves the plug-in silent; the failure is reported, and the state keeps the file's name.
//
// A sample is made on the thread that changes something, under the lock. A block takes the lock too, so it
// waits until the sample is there; a stream that plays goes on with the new one.
class GrainloomAudioStreamPlugin final : public MAudioStreamPlugin {
 public:
  static constexpr int32_t kBands = MSubSampleLibrary::kBands;

  GrainloomAudioStreamPlugin();
  ~GrainloomAudioStreamPlugin() override;

  int32_t Prepare(int32_t channels, int32_t sampleRate) override;               // [host]
  void ParameterChanged(int32_t index) override;                                // [host]
  bool SaveState(MXMLItem& item) override;                                      // [host]
  bool LoadState(MXMLItem& item) override;                                      // [host]
  void StateLoaded() override;                                                  // [host]
  int32_t ComputeStream(float** out, int32_t samples, MWord* handle) override;  // [audio]

  // Loads another library and puts its bands somewhere at random. [ui]
  void SelectLibrary(const MString& subpath, const MString& fileName);
  // Draws volume, shift and index of each band anew; with `hasCommonColor` one index for all. Nothing happens
  // without a library. [ui]
  void Randomize(bool hasCommonColor = false);
  // The bands from 0 to kBands - 1. [ui]
  void SetBand(int32_t band, const MSubSampleBand& setting);
  MSubSampleBand GetBand(int32_t band);
  // How far a band's values go: its index up to the last sound, 0 without a sound or a library, and its shift
  // in both directions. [ui]
  int32_t GetLastIndex(int32_t band);
  static int32_t GetShiftLimit(int32_t band) noexcept;
  static const char* GetBandTitle(int32_t band) noexcept;

  // For editors and tests. The lock is the caller's. [any]
  const MAudioBuffer* GetSample() const noexcept { return sample_.get(); }
  MEnvelopeData& GetEnvelope() noexcept { return envelope_; }

 private:
  struct ReleaseLibrary {
    void operator()(MSubSampleLibrary* library) const noexcept;
  };
  using Library = std::unique_ptr<MSubSampleLibrary, ReleaseLibrary>;

  MAudioStream* NewStream(const MStreamRequest& request) override;
  int32_t Render(MAudioStream& stream, float** out, int32_t first, int32_t samples) override;
  void FreeStream(MAudioStream* stream) override;

  void LoadBands(const MXMLItem& item);
  void Reload(bool randomizes);
  // Under the lock.
  bool IsEmpty() const noexcept { return !sample_ || sample_->GetLength() == 0; }
  void DrawBands(bool hasCommonColor) noexcept;
  void MakeSample();
  // Makes the sample anew if what it is made from has changed.
  void Refresh();

  enum { kColorOffset, kVolumeDeviance, kOffsetDeviance, kRowCount };
  MPluginParameter rows_[kRowCount];
  // Under the lock.
  bool isChosen_ = false;  // a state or a file, or the default one was tried
  MString subpath_;
  MString fileName_;
  MEnvelopeData envelope_;
  Library library_;
  MSubSampleBands bands_;
  std::bitset<kBands> withoutOffset_;  // bands that get their offset from the library
  std::unique_ptr<MAudioBuffer> sample_;
  MSubSampleBands renderedBands_;  // what sample_ was made from
  double renderedColorOffset_ = 0;
};
