#include "effects/SqueezelCurve.h"

#include <algorithm>
#include <cmath>

#include "dsp/MProcessor.h"

namespace {

constexpr double kNothing = 1e-50;
constexpr double kLowestKnee = 1e-20;
constexpr double kKneeReach = 0.25 * 0.7071067811865476;

}  // namespace

SqueezelCurve::SqueezelCurve(const SqueezelSettings& from) : settings(from) {
  const double t = settings.threshold;
  top = std::pow(t, 1 / settings.ratio);
  slope = std::abs(t - 1) < kNothing ? 1 : (top - t) / (1 - t);
  offset = t - t * slope;
  makeUp = settings.maximizes && !settings.isDrawn ? 1 / top : 1;
  gain = settings.inputGain * settings.outputGain * makeUp;
  inverseGain = 1 / gain;
  const bool hasKnee = std::abs(slope - 1) >= kNothing && std::abs(settings.kneeSize) >= kNothing;
  knee = hasKnee ? settings.knee : SqueezelSettings::kHard;
  if (knee != SqueezelSettings::kHard) AddKnee();
  way = settings.isDrawn ? kDrawnWay : knee;
}

void SqueezelCurve::AddKnee() {
  const double t = settings.threshold;
  const double a = std::max(t - settings.kneeSize * kKneeReach, kLowestKnee);
  const double b = (t - a) * 1.4142135623730951 / std::sqrt(slope * slope + 1) + t;
  const double ya = a > t ? slope * a + offset : a;
  const double yb = b > t ? slope * b + offset : b;
  kneeStart = a;
  kneeEnd = b;
  kneeScale = 1 / (b - a);
  startOutput = makeUp * ya;
  endOutput = makeUp * yb;
  // Where the normals of both lines meet: from A along (1, -1), from B along (slope, -1).
  const double reach = (b - a + yb - ya) / (1 - slope);
  const double centreX = b + reach * slope;
  minusCentreX = -centreX;
  centreY = yb - reach;
  squaredRadius = (a - centreX) * (a - centreX) + (ya - centreY) * (ya - centreY);
}

double SqueezelCurve::GetOutput(double x) const noexcept {
  if (settings.isDrawn) {
    const double v = drawn.GetValue(std::sqrt(x));
    return v * v;
  }
  const double above = makeUp * (slope * x + offset);
  if (knee == SqueezelSettings::kHard) return x > settings.threshold ? above : makeUp * x;
  if (x >= kneeEnd) return above;
  if (x <= kneeStart) return makeUp * x;
  if (knee == SqueezelSettings::kLinear) {
    const double u = (x - kneeStart) * kneeScale;
    return (1 - u) * startOutput + u * endOutput;
  }
  const double d = x + minusCentreX;
  return makeUp * (centreY + std::sqrt(std::max(squaredRadius - d * d, 0.0)));
}

double SqueezelCurve::GetGain(double x) const noexcept {
  const double levels[4] = {x, 1, 1, 1};
  double gains[4];
  GetSqueezelKernel().gains[way](*this, levels, gains, 1);
  return gains[0];
}

const SqueezelKernel& GetSqueezelKernel() noexcept {
  return MHasAVX2() ? kSqueezelWide : kSqueezelBaseline;
}
