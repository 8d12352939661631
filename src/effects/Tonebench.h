#pragma once
#include "dsp/MBiquadFilter.h"
#include "plugin/MAudioEffectPlugin.h"
#include "plugin/MPublished.h"
#include "plugin/MValueNumber.h"

// One band of the equalizer: a point of its graph.
struct BandPoint {
  double x = 0;  // decimal logarithm of the frequency in hertz
  double y = 0;  // gain in decibels
  uint8_t enabled = 0;
  double width = 0;                   // 0 to 1; the quality is Q = 20 - 19.95 width^(1/4)
  int32_t type = MBiquadType::kPeak;  // of MBiquadType
};

// Parametric equalizer of six bands, each a cookbook section (MBiquadFilter.h) of any type. The bands that
// are enabled run in their order, one behind the other, each output rounded to float; without one the input
// passes.
//
// The bands are no rows of the table but points, which a state keeps in its item "graph". Gains are limited
// to -60..60 dB, frequencies to 1e-6..1e6 Hz, and to 0.4999 of the sample rate from its half on. Sections run
// on the state of their place among the enabled ones, so switching a band moves the later ones to another
// state; states are never reset. Serves eight channels, further ones pass. A sample that is not finite counts
// as 0.
class TonebenchAudioEffectPlugin final : public MAudioEffectPlugin {
 public:
  static constexpr int32_t kBands = 6;

  // Edits the width of a band through its quality, 0.05 to 20.
  class ValueQ final : public MValueNumber<double, double> {
   public:
    explicit ValueQ(MBound<double> width);

   protected:
    void Show(MString& text, double width) const override;
    bool Read(const MString& text, double& width) const override;
  };

  TonebenchAudioEffectPlugin();

  // `index` is below kBands. SetBand also designs the filters anew. [ui]
  BandPoint GetBand(int32_t index);
  void SetBand(int32_t index, const BandPoint& point);
  // The response of all enabled bands, as the graph draws it: decibels at a frequency. 0 without a sample
  // rate, -400 at the least. [ui]
  double GetShape(double frequencyLog10Hz);

  void Update() override;                                           // [host]
  bool SaveState(MXMLItem& item) override;                          // [host]
  bool LoadState(MXMLItem& item) override;                          // [host]
  void Process(float** in, float** out, int32_t samples) override;  // [audio]

 private:
  static constexpr int32_t kChannels = 8;
  static constexpr int32_t kPlaces = kBands + 1;  // of states in each channel
  struct Sections {
    MBiquadFilter filters[kBands];
    int32_t count;
  };

  void LoadOldestState(const MXMLItem& item);
  void LoadGraph(const MXMLItem& graph);

  BandPoint bands_[kBands];
  Sections sections_ = {};  // for the graph
  MPublished<Sections> published_;
  MBiquadState states_[kChannels * kPlaces];
};
