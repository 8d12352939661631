#pragma once
#include "dsp/MSignalGenerator.h"
#include "plugin/MAudioEffectPlugin.h"

// What effects with a low-frequency oscillator share.

// A tiny part of every sample, so that what an effect computes from silence is no denormal number.
inline constexpr double kModulationBias = 1e-25;

// A phase in cycles without its whole part. [any]
inline double MWrapPhase(double phase) noexcept {
  return phase - std::floor(phase);
}

// Keeps a wave in the item `name` of a state. There is one such item, however often the state is saved.
void MSaveWave(const MSignalGenerator& wave, MXMLItem& state, const MString& name);
// Without the item the wave is that of a new plug-in. A failure leaves it as it was.
void MLoadWave(MSignalGenerator& wave, const MXMLItem& state, const MString& name);
// Gives the wave another shape, if it has not got it, and rebuilds it. Allocates nothing.
void MShapeWave(MSignalGenerator& wave, double shape) noexcept;

// Base of the effects with one oscillator, which has a rate, a shape and an editor of its own. Phases are in
// cycles and belong to the effects: they survive everything, and are wrapped once a block.
//
// A state holds the wave in its item "shape". The shape's row wins over the shape that the item names; a
// state without the row takes the item's.
class MModulationPlugin : public MAudioEffectPlugin {
 public:
  void Update() override;                   // [host]
  bool SaveState(MXMLItem& item) override;  // [host]
  bool LoadState(MXMLItem& item) override;  // [host]

 protected:
  MModulationPlugin();

  // Rows that all have; each is called once by a constructor. Hertz.
  void AddRateParameter(MPluginParameter& row, double minimum, double maximum, double defaultValue);
  void AddShapeParameter(MPluginParameter& row);

  const MSignalGenerator& GetWave() const noexcept { return wave_; }
  // Cycles per sample; 0 before the first Update with a sample rate, when an effect copies its input. [any]
  double GetStep() const noexcept { return MLoadShared(step_); }

 private:
  MSignalGenerator wave_;  // settings under the lock
  double step_ = 0;
  const MPluginParameter* rate_ = nullptr;
  const MPluginParameter* shape_ = nullptr;
  MWord shapeEditor_ = 0;
  MPluginEditorRow editors_[1];
};
