#pragma once
#include <memory>

#include "dsp/MEnvelopeData.h"
#include "plugin/MAudioStreamPlugin.h"

class MAudioBuffer;
class MMultiSample;
class MSampleReading;

// Multisampler: a note plays one take of a multisample, of the layer that its volume, by the curve of
// velocities, asks for. All tracks of the take sound together, each with its volume and pan:
//   gain = velocity / max(loudness of the take, 0.05) x volume of the note x volume of the track,
// where the velocity is the note's volume as well. Which take of the layer is drawn at random; as long as one
// is not in memory, its layer is requested and the layer's first take plays, whose beginning always is there.
//
// Takes longer than the maximal length are faded out at it; from 20 seconds on there is none. With a single
// sample all notes play the first take of the loudest layer. A solo track plays alone, enabled or not. The
// envelope runs over the sample, as in Playbox.
//
// A note that starts inside a block skips as many samples of its beginning as its delay had left there.
class LayerboxAudioStreamPlugin final : public MAudioStreamPlugin {
 public:
  static constexpr int32_t kTracks = 16;

  struct Track {
    double volume = 1;
    double pan = 0;  // -1 to 1
    bool isEnabled = true;
  };

  LayerboxAudioStreamPlugin();
  ~LayerboxAudioStreamPlugin() override;

  // The file is acquired anew when the maximal length or the single sample changed.
  void ParameterChanged(int32_t index) override;
  bool SaveState(MXMLItem& item) override;
  bool LoadState(MXMLItem& item) override;
  // "FinishLoading": returns when every layer requested so far is read, 0 or, after a failure, 1. For hosts
  // that render offline, on a thread that may wait. [host]
  MWord Command(const char* name, MWord argument) override;

  // For editors and tests, which hold the lock. [any]
  const MMultiSample* GetMultiSample() const noexcept { return multiSample_; }
  int32_t GetTrackCount() const noexcept { return trackCount_; }
  Track& GetTrack(int32_t track) noexcept { return tracks_[track]; }
  void SetSolo(int32_t track) noexcept;  // -1 for none
  MEnvelopeData& GetEnvelope() noexcept { return envelope_; }
  MEnvelopeData& GetVelocityCurve() noexcept { return velocity_; }

 protected:
  MAudioStream* NewStream(const MStreamRequest& request) override;
  int32_t Render(MAudioStream& stream, float** out, int32_t first, int32_t samples) override;
  void FreeStream(MAudioStream* stream) override;

 private:
  struct Note;

  double GetMaximalSeconds() const noexcept;
  // Loads the multisample of the file and the rows, or none, with a report, where that fails. Its tracks are
  // those of the state; without one they stay, and tracks that are new are as the file has them.
  void Reload(const MXMLItem* state);
  // These hold the lock.
  MMultiSample* Share() const;
  void LoadTracks(const MXMLItem& item);
  void AddTracks();
  int32_t ChooseTake(double velocity) const;
  static const MAudioBuffer* FindBuffer(const Note& note, int32_t track);
  void AddTrack(const Note& note, int32_t track, const float* gains, const MSampleReading& reading,
                float** out, int32_t start, int32_t run) const;

  enum { kDelay, kMaximalLength, kSingleSample, kRowCount };
  MPluginParameter rows_[kRowCount];
  MMultiSample* multiSample_ = nullptr;
  bool isSingle_ = false;  // how it was acquired
  MString subpath_;
  MString fileName_;
  int32_t trackCount_ = 0;  // of the file, or of the state that names a file which is not there
  Track tracks_[kTracks];
  int32_t solo_ = -1;
  MEnvelopeData velocity_;
  MEnvelopeData envelope_;
};
