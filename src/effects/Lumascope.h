#pragma once
#include <atomic>

#include "dsp/MBiquadFilter.h"
#include "effects/LumascopeDisplay.h"
#include "plugin/MAudioEffectPlugin.h"

// Spectrum analyzer: the output is the input, and while an editor is open a running spectrum of the left
// channel, the right one or half of their sum is measured (LumascopeSpectrum.h) and can be drawn
// (LumascopeDisplay.h). In front of the measurement lie a gain and five sections that weight the signal as
// the ear does.
//
// Audio never waits for a change of parameters: a block that meets one is passed on and not measured.
// Skipped time counts as silence. Preparing forgets what was measured.
class LumascopeAudioEffectPlugin final : public MAudioEffectPlugin {
 public:
  using Levels = LumascopeDisplay::Levels;
  using Points = LumascopeDisplay::Points;

  struct View {
    bool showsPeaks = true;
    bool normalizes = false;  // levels are relative to the highest of their curve
    bool showsComparison = false;
  };
  // In decibels, as many as the mode has; none of what is not shown. The peaks are normalised as the current
  // levels are.
  struct Picture {
    int32_t mode = LumascopeDisplay::Mode::kMeter;
    Levels current, peaks, comparison;
  };
  // Of the points of a curve on the clipboard.
  static constexpr const char* kClipboardFormat = "LumascopeSpectrum";
  using ClipboardData = LumascopeDisplay::Packed;

  LumascopeAudioEffectPlugin();

  Picture GetPicture();            // [ui]
  View GetView();                  // [ui]
  void SetView(const View& view);  // [ui]
  // While it is frozen nothing is measured and the curves stand. [any]
  void SetFrozen(bool isFrozen) noexcept { isFrozen_.store(isFrozen, std::memory_order_relaxed); }
  bool IsFrozen() const noexcept { return isFrozen_.load(std::memory_order_relaxed); }
  ClipboardData CopyCurve();  // [ui] the current curve
  // Makes the curve of the clipboard the one to compare with. False, and no change, for data of another size.
  // [ui]
  bool PasteComparison(const uint8_t* data, std::size_t size);

  void Update() override;                                           // [host]
  int32_t Prepare(int32_t channels, int32_t sampleRate) override;   // [host]
  bool SaveState(MXMLItem& item) override;                          // [host]
  bool LoadState(MXMLItem& item) override;                          // [host]
  void Process(float** in, float** out, int32_t samples) override;  // [audio]
  void Skip(int32_t samples) override;                              // [audio]

 private:
  static constexpr int32_t kPart = 512;  // samples that are worked on at a time
  static constexpr std::size_t kSections = 5;
  enum {
    kMode,
    kAverage,
    kSmooth,
    kSlope,
    kFFTSize,
    kOverlap,
    kWindow,
    kChannelMode,
    kGain,
    kSimulation,
    kRowCount
  };
  struct ChannelMode {
    enum : int32_t { kLeft, kRight, kStereo };
  };

  void AddAnalysis();
  void AddSource();
  void DesignSimulation();
  int32_t GetMode() const noexcept;
  Points GetCurve(Points& peaks);
  bool IsMeasuring() const noexcept { return IsEditorOpen() && !IsFrozen(); }
  void Measure(const float* const* in, int32_t samples);
  void MeasurePart(const float* const* in, int32_t first, int32_t samples);

  MPluginParameter rows_[kRowCount];
  std::atomic<bool> isFrozen_ = false;
  // Under the lock.
  LumascopeDisplay display_;
  View view_;
  Points comparison_ = {};

  // Held by the thread that measures or changes the settings; audio only tries. Taken before the lock.
  MLock measuring_;
  LumascopeSpectrum spectrum_{lock_};
  bool isReady_ = false;
  int32_t channelMode_ = ChannelMode::kLeft;
  double gainDecibels_ = 0;
  double gain_ = 1;
  bool isSimulating_ = false;
  MBiquadFilter sections_[kSections];
  MBiquadState states_[kSections];
  float part_[kPart] = {};
};
