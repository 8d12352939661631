#pragma once
// Curves in tests: points in a line each, and the formulas of the segments as they are written, in double and
// in the units of the axis. Nothing here calls what is tested.

#include <cmath>
#include <initializer_list>

#include "dsp/MEnvelopeComputer.h"

inline MEnvelopePoint Point(double x, double y, int32_t type = MEnvelopeType::kMode1, double tension = 0,
                            double tensionX = 0) {
  MEnvelopePoint point;
  point.x = x;
  point.y = y;
  point.type = type;
  point.tension = tension;
  point.tensionX = tensionX;
  return point;
}

inline MEnvelopePoint Rounded(MEnvelopePoint point, uint8_t flags, double smooth1, double smooth2,
                              int32_t smoothingType = MEnvelopeSmoothing::kMode1) {
  point.flags = flags;
  point.smooth1 = smooth1;
  point.smooth2 = smooth2;
  point.smoothingType = smoothingType;
  return point;
}

inline MEnvelopeData Curve(std::initializer_list<MEnvelopePoint> points) {
  MEnvelopeData data;
  for (const MEnvelopePoint& point : points) data.Add(point);
  return data;
}

inline double ValueOf(const MEnvelopeData& data, double x) {
  return MEnvelopeComputer::Evaluate(data, x);
}

namespace Oracle {

struct End {
  double x, y;
};

inline double Line(End p, End q, double x) {
  return p.y + (q.y - p.y) * (x - p.x) / (q.x - p.x);
}

inline double Quadratic(End p, End q, double t, double x) {
  const double dx = q.x - p.x, dy = q.y - p.y;
  const double s = dy / dx * (1 - t);
  const double bend = (dy - dx * s) / (dx * dx);
  return p.y + s * (x - p.x) + bend * (x - p.x) * (x - p.x);
}

inline double FourthOrder(End p, End q, double t, double x) {
  const double u = (x - p.x) / (q.x - p.x);
  const double f = t > 0 ? t * std::pow(u, 4) + (1 - t) * u
                         : t * std::pow(u, 4) - 4 * t * std::pow(u, 3) + 6 * t * u * u + (1 - 3 * t) * u;
  return p.y + (q.y - p.y) * f;
}

inline double Exponential(End p, End q, double t, double x) {
  const double k = std::exp(3 * t);
  const double u = (x - p.x) / (q.x - p.x);
  const double v = std::fmax(0, 1 - std::pow(u, k));
  return p.y + (q.y - p.y) * (1 - std::pow(v, 1 / k));
}

// The point of the drawn curve that has this x, found by halving: x(p) grows with p.
inline double Bezier(End p, End control, End q, double x) {
  const auto at = [](double a, double b, double c, double t) {
    return (1 - t) * (1 - t) * a + 2 * t * (1 - t) * b + t * t * c;
  };
  double low = 0, high = 1;
  for (int i = 0; i < 100; ++i) {
    const double middle = 0.5 * (low + high);
    (at(p.x, control.x, q.x, middle) < x ? low : high) = middle;
  }
  return at(p.y, control.y, q.y, low);
}

inline End ControlPoint(End p, End q, double tensionX, double tension) {
  return {p.x + (1 + tensionX) * (q.x - p.x) / 2, p.y + (1 + tension) * (q.y - p.y) / 2};
}

// The basis functions of Hermite.
inline double Hermite(End p, double s1, End q, double s2, double x) {
  const double dx = q.x - p.x, u = (x - p.x) / dx;
  return (1 + 2 * u) * (1 - u) * (1 - u) * p.y + u * (1 - u) * (1 - u) * dx * s1 + u * u * (3 - 2 * u) * q.y +
         u * u * (u - 1) * dx * s2;
}

}  // namespace Oracle
