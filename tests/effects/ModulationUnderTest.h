#pragma once
// An effect with a low-frequency oscillator as its tests use it, and the wave that it reads.

#include "dsp/MSignalGenerator.h"
#include "tests/effects/NamedEffect.h"

class ModulationUnderTest : public NamedEffect {
 public:
  explicit ModulationUnderTest(std::string_view name) : NamedEffect(name) {}

  void SetRate(double hertz) { Set("rate", std::log10(hertz)); }
  void SetShape(double shape) { Set("Shape", shape); }
  double GetShape() { return Get(GetRowCount() - 1); }
  void Load(MXMLItem& item) { Call(MService::kLoadState, MAsWord(&item)); }
  void Save(MXMLItem& item) { Call(MService::kSaveState, MAsWord(&item)); }
};

// A wave of one shape.
class TestWave : public MSignalGenerator {
 public:
  explicit TestWave(double shape) {
    SetShape(shape);
    Rebuild();
  }
};
