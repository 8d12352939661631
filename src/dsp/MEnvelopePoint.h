#pragma once
// The control points of a curve, and what their numbers mean.

#include <algorithm>
#include <cmath>

#include "core/MMemory.h"
#include "core/MString.h"

// How the segment that starts at a point runs.
namespace MEnvelopeType {
constexpr int32_t kMode1 = 0;    // quadratic
constexpr int32_t kMode2 = 1;    // fourth order
constexpr int32_t kMode3 = 2;    // super-ellipse
constexpr int32_t kFree1 = 3;    // quadratic Bezier curve, shaped in both axes
constexpr int32_t kSmooth1 = 4;  // cubic that continues the slopes of its neighbours
constexpr int32_t kCount = 5;

constexpr bool IsKnown(int32_t type) noexcept {
  return type >= 0 && type < kCount;
}
constexpr bool UsesTensionX(int32_t type) noexcept {
  return type == kFree1;
}
constexpr bool UsesTension(int32_t type) noexcept {
  return type >= kMode1 && type <= kFree1;
}
constexpr bool HasSingleTension(int32_t type) noexcept {
  return IsKnown(type) && type != kFree1;
}

// The text of a file, and the help of a menu. Empty for an unknown type.
MString GetName(int32_t type) noexcept;
MString GetHelp(int32_t type) noexcept;
// The type of that very name, kMode1 for another one.
int32_t Find(const MString& name) noexcept;
}  // namespace MEnvelopeType

// How the corner at a point is rounded.
namespace MEnvelopeSmoothing {
constexpr int32_t kMode1 = 0;  // a Bezier curve where the tangents meet, else a cubic
constexpr int32_t kMode2 = 1;  // a cubic
constexpr int32_t kCount = 2;

MString GetName(int32_t type) noexcept;
MString GetHelp(int32_t type) noexcept;
int32_t Find(const MString& name) noexcept;  // kMode1 for an unknown name
}  // namespace MEnvelopeSmoothing

namespace MEnvelopeFlag {
constexpr uint8_t kFixedX = 1;
constexpr uint8_t kFixedY = 2;
constexpr uint8_t kLinked = 4;     // smooth1 serves both sides
constexpr uint8_t kSymmetric = 8;  // the rounded corner reaches equally far to both sides
constexpr uint8_t kSelected = 16;
constexpr uint8_t kDefault = kLinked | kSymmetric;
}  // namespace MEnvelopeFlag

struct MEnvelopePoint {
  M_LIBRARY_MEMORY

  double x = 0;  // in the units of the curve's ranges
  double y = 0;
  uint8_t flags = MEnvelopeFlag::kDefault;
  double tensionX = 0;  // -1..1
  double tension = 0;   // -1..1
  double smooth1 = 0;   // 0..1, share of the left neighbourhood
  double smooth2 = 0;   // 0..1, share of the right neighbourhood
  int32_t type = MEnvelopeType::kMode2;
  int32_t smoothingType = MEnvelopeSmoothing::kMode1;

  bool Has(uint8_t flag) const noexcept { return (flags & flag) != 0; }
  void Set(uint8_t flag, bool on) noexcept {
    flags = static_cast<uint8_t>(on ? flags | flag : flags & ~flag);
  }
};

// A number within limits; one that is not finite counts as 0.
inline double MLimitedNumber(double value, double low, double high) noexcept {
  return std::clamp(std::isfinite(value) ? value : 0.0, low, high);
}
