#pragma once
#include "effects/BendformCurve.h"

// What Squeezel's curve is made from, limited.
struct SqueezelSettings {
  enum Knee : int32_t { kHard, kLinear, kSoft, kKneeCount };

  double inputGain = 1;  // linear
  double outputGain = 1;
  double threshold = 0.25;  // T, linear, above 0
  double ratio = 1.8;       // at least 1
  double kneeSize = 0.25;
  int32_t knee = kHard;
  bool maximizes = true;
  bool isDrawn = false;
};

// Squeezel's static curve, the level that comes out for the level x that goes in, and its gain. With T the
// threshold, top = T^(1/ratio), m = 1/top (1 unless it maximizes) and G = input gain * output gain * m:
//   L(x) = s x + T - T s,  s = (top - T)/(1 - T),       the line from (T, T) to (1, top)
//   C(x) = m x up to T, m L(x) above,                   g(x) = G, or G L(x)/x: a hard knee.
// The other knees reach from a = T - 0.25 sqrt(1/2) size (1e-20 at the least) to b = T + (T - a) sqrt(2/(s^2
// + 1)), as far along either line:
//   linear: the chord from (a, C(a)) to (b, C(b)); its gain is chord(x)/x * input gain, without output gain;
//   soft:   the arc that touches both lines, cy + sqrt(r^2 - (x - cx)^2).
// A drawn curve v, whose axes are both square roots of levels, has m = 1 and g(x) = v(sqrt x)^2/x G.
struct SqueezelCurve {
  // How gains are found: by a knee, or the drawn curve.
  enum { kDrawnWay = SqueezelSettings::kKneeCount, kWayCount };
  // Gains of `count` levels. [audio]
  using GainFunction = void(const SqueezelCurve& curve, const double* levels, double* gains, int32_t count);

  SqueezelCurve() = default;
  explicit SqueezelCurve(const SqueezelSettings& settings);

  // C(x), as the editor draws it; of a drawn curve v(sqrt x)^2. [any]
  double GetOutput(double x) const noexcept;
  // g(x). [any]
  double GetGain(double x) const noexcept;

  SqueezelSettings settings;
  int32_t knee = SqueezelSettings::kHard;            // that it has: hard where there is no room for another
  double top = 1, slope = 1, offset = 0;             // L(x) = slope x + offset
  double makeUp = 1;                                 // m
  double gain = 1, inverseGain = 1;                  // G, 1/G
  double kneeStart = 0, kneeEnd = 0, kneeScale = 0;  // a, b, 1/(b - a)
  double startOutput = 0, endOutput = 0;             // C(a), C(b)
  double minusCentreX = 0, centreY = 0, squaredRadius = 0;
  BendformCurve::View drawn;
  int32_t way = SqueezelSettings::kHard;

 private:
  void AddKnee();
};

// At most as many samples are worked on at a time; so far apart lie two channels of levels, powers and gains.
inline constexpr int32_t kSqueezelPart = 64;

struct SqueezelDetector {
  static constexpr double kBias = double{1e-25f};
  double power = 0, envelope = 0;
  bool operator==(const SqueezelDetector& other) const = default;
};
// exp(-1/(rate * time)) of each time, 0 for a time of 0.
struct SqueezelTimes {
  double attack = 0, release = 0, rms = 0;
};

// The loops of a part; levels, powers and gains in double. They read and write these up to the next whole
// register, four at the most. [audio]
struct SqueezelKernel {
  SqueezelCurve::GainFunction* gains[SqueezelCurve::kWayCount];
  // powers[i] += (in[i] gain)^2.
  void (*addPowers)(const float* in, double gain, double* powers, int32_t count) noexcept;
  // P = (1 - R) power scale + R P + bias, l = sqrt P, E = c E + (1 - c) l + bias with c the release where l
  // is at or below E, else the attack; levels[i] = E. One channel, and two of them.
  using Detect = void(SqueezelDetector* detectors, const SqueezelTimes& times, const double* powers,
                      double scale, double* levels, int32_t count) noexcept;
  Detect* detect;
  Detect* detectTwo;
  // out[i] = in[i] gains[i], limited to the range of float; `in` and `out` may be the same.
  void (*scale)(const float* in, const double* gains, float* out, int32_t count) noexcept;
};

extern const SqueezelKernel kSqueezelBaseline;
extern const SqueezelKernel kSqueezelWide;  // AVX2 and FMA; of nulls where it was not compiled
// The one that this processor runs best. [any]
const SqueezelKernel& GetSqueezelKernel() noexcept;
