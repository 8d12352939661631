#pragma once
#include "core/MUnitText.h"
#include "plugin/MValueNumber.h"

// A real number that is shown in a unit (MUnitText).
class MValueUnit : public MValueDouble {
 protected:
  MValueUnit(const MUnitText& unit, double initial, double minimum, double maximum)
      : MValueDouble(initial, minimum, maximum), unit_(unit) {}
  MValueUnit(const MUnitText& unit, MBound<double> bound, double minimum, double maximum)
      : MValueDouble(bound, minimum, maximum), unit_(unit) {}

  void Show(MString& text, double value) const override { text = unit_.show(value); }
  bool Read(const MString& text, double& value) const override;

 private:
  const MUnitText& unit_;
};

// A fraction, 1 is 100%: "12%".
class MValuePercents final : public MValueUnit {
 public:
  explicit MValuePercents(double initial = 0, double minimum = 0, double maximum = 1)
      : MValueUnit(MUnits::kWholePercent, initial, minimum, maximum) {}
  MValuePercents(MBound<double> bound, double minimum, double maximum)
      : MValueUnit(MUnits::kWholePercent, bound, minimum, maximum) {}
};

// A linear gain, shown in decibels: "-6.02 dB", "silence".
class MValueVolume final : public MValueUnit {
 public:
  explicit MValueVolume(double initial = 1, double minimum = 0, double maximum = 1)
      : MValueUnit(MUnits::kVolume, initial, minimum, maximum) {}
  MValueVolume(MBound<double> bound, double minimum, double maximum)
      : MValueUnit(MUnits::kVolume, bound, minimum, maximum) {}
};

// -1 left to 1 right: "50% left", "center".
class MValuePan final : public MValueUnit {
 public:
  explicit MValuePan(double initial = 0, double minimum = -1, double maximum = 1)
      : MValueUnit(MUnits::kPan, initial, minimum, maximum) {}
  MValuePan(MBound<double> bound, double minimum, double maximum)
      : MValueUnit(MUnits::kPan, bound, minimum, maximum) {}
};

// Hertz: "440Hz".
class MValueFrequency final : public MValueUnit {
 public:
  explicit MValueFrequency(double initial = 440, double minimum = 20, double maximum = 20000)
      : MValueUnit(MUnits::kFrequency, initial, minimum, maximum) {}
  MValueFrequency(MBound<double> bound, double minimum, double maximum)
      : MValueUnit(MUnits::kFrequency, bound, minimum, maximum) {}
};

// The decimal logarithm of hertz, shown in hertz.
class MValueFrequencyLog final : public MValueUnit {
 public:
  explicit MValueFrequencyLog(double initial = 3, double minimum = 1, double maximum = 4)
      : MValueUnit(MUnits::kFrequencyLog10, initial, minimum, maximum) {}
  MValueFrequencyLog(MBound<double> bound, double minimum, double maximum)
      : MValueUnit(MUnits::kFrequencyLog10, bound, minimum, maximum) {}
};

// Seconds, shown in milliseconds: "12 ms".
class MValueTimeMS final : public MValueUnit {
 public:
  explicit MValueTimeMS(double initial = 0, double minimum = 0, double maximum = 1)
      : MValueUnit(MUnits::kWholeMilliseconds, initial, minimum, maximum) {}
  MValueTimeMS(MBound<double> bound, double minimum, double maximum)
      : MValueUnit(MUnits::kWholeMilliseconds, bound, minimum, maximum) {}
};

// Semitones: "+1.00".
class MValuePitch final : public MValueDouble {
 public:
  explicit MValuePitch(double initial = 0, double minimum = -24, double maximum = 24)
      : MValueDouble(initial, minimum, maximum) {
    SetUp();
  }
  MValuePitch(MBound<double> bound, double minimum, double maximum) : MValueDouble(bound, minimum, maximum) {
    SetUp();
  }

 private:
  void SetUp();
};

// A number on a grid: the minimum plus multiples of the grid, as far as the maximum. LoadFromXml also reads
// "step", the grid. Without a grid above 0 every number of the range is allowed.
class MValueStepDouble final : public MValueDouble {
 public:
  explicit MValueStepDouble(double initial = 0, double minimum = 0, double maximum = 100)
      : MValueDouble(initial, minimum, maximum) {
    Validate();
  }
  MValueStepDouble(MBound<double> bound, double minimum, double maximum)
      : MValueDouble(bound, minimum, maximum) {
    Validate();
  }

  void LoadFromXml(const MXMLItem& item) override;

  double GetGrid() const noexcept { return grid_; }
  void SetGrid(double grid);  // limits the value

 protected:
  double Limit(double value) const noexcept override;

 private:
  double grid_ = 0.01;
};
