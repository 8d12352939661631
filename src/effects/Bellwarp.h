#pragma once
#include "plugin/MModulationPlugin.h"

// Ring modulator with two oscillators. Each one that is enabled multiplies the signal, one behind the other,
//   y[i] = (x[i] + 1e-25) (depth wave(phase + c offset) + 1 - depth),  phase += 10^frequency / sample rate,
// with c the number of the channel and the offset the value "phase". With "modulate" and both enabled they
// are added instead:
//   y[i] = (x[i] + 1e-25) ((wave1 + wave2) d + 1 - d),  d = (depth1 + depth2) / 2.
//
// Serves all channels; with nothing enabled they pass. Phases are in cycles; that of an oscillator which is
// off rests, but time that is skipped moves both. A sample that is not finite counts as 0. A state holds the
// waves, and with them the only record of their shapes, in its items "shape1" and "shape2".
class BellwarpAudioEffectPlugin final : public MAudioEffectPlugin {
 public:
  BellwarpAudioEffectPlugin();

  void Update() override;                                           // [host]
  bool SaveState(MXMLItem& item) override;                          // [host]
  bool LoadState(MXMLItem& item) override;                          // [host]
  void Process(float** in, float** out, int32_t samples) override;  // [audio]
  void Skip(int32_t samples) override;                              // [audio]

 private:
  static constexpr int32_t kOscillators = 2;

  enum { kPanel, kEnable, kDepth, kFrequency, kPhase, kRowsOfOne };  // behind the first row
  enum { kModulate, kRowCount = 1 + kOscillators * kRowsOfOne };
  struct Oscillator {
    MSignalGenerator wave;  // settings under the lock
    double step = 0;        // cycles per sample
    double phase = 0;
    MWord editor = 0;
  };

  MPluginParameter& GetRow(int32_t oscillator, int32_t row) noexcept {
    return rows_[1 + oscillator * kRowsOfOne + row];
  }
  void AddRows(int32_t oscillator, const MString& panel, const char* const (&keys)[kRowsOfOne]);
  static void Move(Oscillator& oscillator, int32_t samples) noexcept;
  // Multiplies by one oscillator, first and last, or by the sum of both.
  void Multiply(int32_t first, int32_t last, double depth, float** in, float** out, int32_t samples) noexcept;

  MPluginParameter rows_[kRowCount];
  Oscillator oscillators_[kOscillators];
  MPluginEditorRow editors_[kOscillators];
};
