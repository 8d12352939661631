#include "effects/ClampetCurve.h"

#include <algorithm>
#include <cmath>

namespace {

struct KneeScales {
  double scale, height;
};

constexpr KneeScales kKneeScales[ClampetCurve::kModeCount] = {
    {1.5707963267948966, 0.6366197723675814},   // pi/2, 2/pi
    {1.1941918983186133, 0.837386354243376},    //
    {1, 0.5},                                   //
    {1, 1},                                     //
    {3.141592653589793, 0.3183098861837907},    // pi, 1/pi
    {3, 1.0 / 3},                               //
    {6.283185307179586, 0.15915494309189535}};  // 2 pi, 1/(2 pi)

}  // namespace

ClampetCurve::ClampetCurve(int32_t curveMode, double curveThreshold, double curveGain,
                           double evenHarmonics) noexcept
    : mode(std::clamp<int32_t>(curveMode, 0, kModeCount - 1)),
      threshold(curveThreshold),
      gain(curveGain),
      range(1 - curveThreshold),
      harmonics(evenHarmonics),
      hasHarmonics(evenHarmonics > 1e-5),
      isReady(true) {
  const KneeScales& scales = kKneeScales[mode];
  scale = (threshold == 1 ? 1 : 1 / range) * scales.scale;
  inverseScale = 1 / scale;
  height = mode == kSoft4 ? 1 : range * scales.height;
  outputGain = 1 / (GetKnee(range) + threshold);
}

double ClampetCurve::GetKnee(double x) const noexcept {
  const double u = scale * x;
  switch (mode) {
    case kSoft1:
      return std::sin(u) * height;
    case kSoft2:
      return (u + (u + 1) * u * u * -0.15) * height;
    case kSoft3:
      return u * (2 - u) * height;  // 1 - (u - 1)^2
    case kSoft4:
      return x / (u * u + 1);
    case kClip1:
      return std::tanh(u) * height;
    case kClip2:
      return (u * u + 27) * u / (9 * u * u + 27) * height;
    default:
      return std::atan(u) * height;
  }
}

double ClampetCurve::GetOutput(double input) const noexcept {
  const double x = input * gain;
  const double a = std::abs(x);
  double y = a < threshold ? a * outputGain : a >= 1 ? 1 : (GetKnee(a - threshold) + threshold) * outputGain;
  if (x < 0) y = -y;
  if (hasHarmonics) y = std::min((y - x) * (y - x) * harmonics + y, 1.0);
  return y;
}
