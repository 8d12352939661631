#include "dsp/MSignalGenerator.h"

#include "dsp/MWaveReading.h"

namespace {

constexpr double kCurveAlone = 0.99999;
constexpr double kNoCurve = 0.00001;
constexpr double kLeastPeak = 0.1;
constexpr int32_t kDecimals = 4;

double NumberOr(const MXMLItem& item, const MString& name, double fallback) {
  return item.HasAttribute(name) ? item.CachedAttribute().ToDouble() : fallback;
}

}  // namespace

MSignalGenerator::MSignalGenerator() : curve_(DefaultCurve()) {
  BuildCurve();
  Rebuild();
}

MEnvelopeData MSignalGenerator::DefaultCurve() {
  MEnvelopeData curve;
  curve.yMinimum = -1;
  curve.Add(0, 0).Set(MEnvelopeFlag::kFixedX, true);
  curve.Add(0.25, 1);
  curve.Add(0.75, -1);
  curve.Add(1, 0).Set(MEnvelopeFlag::kFixedX, true);
  return curve;
}

void MSignalGenerator::CopyFrom(const MSignalGenerator& other) {
  if (this == &other) return;
  MEnvelopeData curve = other.curve_;
  computer_.Build(curve);
  curve_ = std::move(curve);
  shape_ = other.shape_;
  customDepth_ = other.customDepth_;
  frequencyHz_ = other.frequencyHz_;
  sampleRate_ = other.sampleRate_;
  Rebuild();
}

void MSignalGenerator::SetShape(double shape) noexcept {
  const auto [index, fraction] = MWaveShapes::Locate(shape);
  shape_ = index + fraction;
}

void MSignalGenerator::SetCustomDepth(double depth) noexcept {
  customDepth_ = MLimitedNumber(depth, 0, 1);
}

void MSignalGenerator::SetFrequency(double frequencyHz, int32_t sampleRate) noexcept {
  frequencyHz_ = std::isfinite(frequencyHz) && frequencyHz > 0 ? frequencyHz : 1;
  sampleRate_ = sampleRate > 0 ? sampleRate : 1;
}

void MSignalGenerator::BuildCurve() {
  computer_.Build(curve_);
}

// One sample before it is normalised.
float MSignalGenerator::Sample(int32_t index, const float* from, const float* to) noexcept {
  const double curve =
      customDepth_ >= kNoCurve ? computer_.GetValue(static_cast<double>(index) / kLength) : 0;
  if (customDepth_ >= kCurveAlone) return static_cast<float>(curve);
  const double shape = (1 - morphFraction_) * from[index] + morphFraction_ * to[index];
  if (customDepth_ < kNoCurve) return static_cast<float>(shape);
  return static_cast<float>((1 - customDepth_) * shape + customDepth_ * curve);
}

void MSignalGenerator::Rebuild() noexcept {
  const auto [index, fraction] = MWaveShapes::Locate(shape_);
  const float* const from = MWaveShapes::GetTable(index);
  const float* const to = fraction > 0 ? MWaveShapes::GetTable(index + 1) : from;
  morphFraction_ = fraction;
  computer_.Seek(0);
  float peak = 0;
  for (int32_t i = 0; i < kLength; ++i) {
    scratch_[i] = Sample(i, from, to);
    peak = std::max(peak, std::abs(scratch_[i]));
  }
  const double gain = 1 / std::max<double>(peak, kLeastPeak);
  for (int32_t i = 0; i < kLength; ++i) MStoreShared(table_[i], static_cast<float>(scratch_[i] * gain));
  MStoreShared(table_[kLength], table_[0]);
  samplesPerPeriod_ = sampleRate_ / frequencyHz_;
  tableStep_ = frequencyHz_ / sampleRate_ * kLength;
}

// The part of a phase behind its floor.
double MSignalGenerator::Fraction(double phase) noexcept {
  return std::isfinite(phase) ? phase - std::floor(phase) : 0;
}

void MSignalGenerator::Read(double* values, double phase, double step, int32_t count) const noexcept {
  using namespace MWaveReading;
  static const Path wide = GetWidePath();
  const Path read = wide ? wide : ReadPairs;
  const bool isFinite = std::isfinite(phase) && std::isfinite(step);
  const double wrappedStep = isFinite ? Fraction(step) * kLength : 0;
  double start = isFinite ? Fraction(phase) * kLength : 0;
  for (; count > kMaximum; count -= kMaximum) {
    read(table_, values, start, wrappedStep, kMaximum);
    start = Fraction((start + kMaximum * wrappedStep) / kLength) * kLength;
    values += kMaximum;
  }
  read(table_, values, start, wrappedStep, count);
}

void MSignalGenerator::Save(MXMLItem& item) const {
  item.SetAttribute("value", MString::FromDouble(shape_, kDecimals));
  item.SetAttribute("EnvelopeDepth", MString::FromDouble(customDepth_, kDecimals));
  curve_.Save(item.AddSubItem("Envelope"));
}

void MSignalGenerator::Load(const MXMLItem& item) {
  MEnvelopeData curve = DefaultCurve();
  if (item.HasSubItem("Envelope")) curve.Load(item.CachedSubItem());
  computer_.Build(curve);
  curve_ = std::move(curve);
  SetShape(NumberOr(item, "value", MWaveShapes::kSine));
  SetCustomDepth(NumberOr(item, "EnvelopeDepth", 0));
  Rebuild();
}
