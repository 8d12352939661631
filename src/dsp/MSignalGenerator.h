#pragma once
// MSignalGenerator, one period of a wave: a shape of MWaveShapes or the way between two of them, mixed with a
// drawn curve by the custom depth, and normalised. For oscillators that sound and for those that modulate.
//
// Settings are changed, and the wave is rebuilt, by one thread at a time. Other threads may read the wave
// meanwhile; until the rebuild is over they may see old and new samples side by side.

#include "core/MXMLItem.h"
#include "dsp/MEnvelopeComputer.h"
#include "dsp/MWaveShapes.h"

class MSignalGenerator {
 public:
  M_LIBRARY_MEMORY

  // A sine. The curve has the range -1..1 and the points (0, 0), (0.25, 1), (0.75, -1) and (1, 0).
  MSignalGenerator();
  MSignalGenerator(const MSignalGenerator&) = delete;
  MSignalGenerator& operator=(const MSignalGenerator&) = delete;

  // Takes over the settings of another one, curve included, and rebuilds.
  void CopyFrom(const MSignalGenerator& other);

  // Settings come into force with Rebuild. Shape 0..15, limited; not finite counts as a sine.
  double GetShape() const noexcept { return shape_; }
  void SetShape(double shape) noexcept;
  // 0..1, limited; not finite counts as 0. From 0.99999 on the curve stands alone, below 0.00001 it is out.
  double GetCustomDepth() const noexcept { return customDepth_; }
  void SetCustomDepth(double depth) noexcept;
  // After a change of the curve call BuildCurve.
  MEnvelopeData& GetCurve() noexcept { return curve_; }
  const MEnvelopeData& GetCurve() const noexcept { return curve_; }
  // Hertz, and samples per second. What is not finite or not above 0 counts as 1.
  void SetFrequency(double frequencyHz, int32_t sampleRate) noexcept;

  // Compiles the curve for the rebuilds to come; allocates. "Invalid control point type."
  void BuildCurve();
  // Computes the wave. Allocates nothing.
  void Rebuild() noexcept;

  double GetMorphFraction() const noexcept { return morphFraction_; }  // of the last rebuild, as the next two
  double GetSamplesPerPeriod() const noexcept { return samplesPerPeriod_; }  // rate / frequency
  double GetTableStep() const noexcept { return tableStep_; }  // per sample: frequency / rate 8192

  // The wave: kLength samples, the greatest magnitude 1 (less where it would be amplified more than tenfold),
  // and the first one again behind them. Read it through Read.
  const float* GetTable() const noexcept { return table_; }

  // The wave at a phase in cycles, linearly interpolated. Any phase will do: its whole part is dropped, and
  // one that is not finite counts as 0. Calls no function for phases within 2^31 / 8192 cycles. [audio]
  static double Read(const float* table, double phase) noexcept;
  double Read(double phase) const noexcept { return Read(table_, phase); }
  // The wave at phase + i step, i below the count, for loops that can take a block at once. [audio]
  void Read(double* values, double phase, double step, int32_t count) const noexcept;

  // Attributes "value" and "EnvelopeDepth", child "Envelope". Load gives what is missing its default, and
  // rebuilds. A failure leaves the generator as it was.
  void Save(MXMLItem& item) const;
  void Load(const MXMLItem& item);

 private:
  static constexpr int32_t kLength = MWaveShapes::kLength;

  static MEnvelopeData DefaultCurve();
  static double Fraction(double phase) noexcept;
  float Sample(int32_t index, const float* from, const float* to) noexcept;

  double samplesPerPeriod_ = 1;
  double tableStep_ = kLength;
  double morphFraction_ = 0;
  float table_[kLength + 1] = {};
  float scratch_[kLength + 1] = {};
  double shape_ = MWaveShapes::kSine;
  double frequencyHz_ = 1;
  int32_t sampleRate_ = 1;
  MEnvelopeData curve_;
  double customDepth_ = 0;
  MEnvelopeComputer computer_;
};

inline double MSignalGenerator::Read(const float* table, double phase) noexcept {
  double x = phase * kLength;
  if (!(std::abs(x) < 2147483647.0)) [[unlikely]]
    x = Fraction(phase) * kLength;
  auto whole = static_cast<int32_t>(x);
  whole -= x < whole;  // towards minus infinity
  const double t = x - whole;
  const float* const at = table + (whole & (kLength - 1));
  const double y0 = MLoadShared(at[0]);
  const double y1 = MLoadShared(at[1]);
  return y0 + t * (y1 - y0);
}
