#pragma once
#include <array>
#include <vector>

#include "core/MString.h"
#include "effects/LumascopeSpectrum.h"

// From the points of a running spectrum to what Lumascope's editor draws: points are smoothed along the axis,
// tilted, grouped and turned into decibels. Also curves outside of the program.
class LumascopeDisplay {
 public:
  using Levels = std::vector<double, MAllocator<double>>;
  using Points = std::array<double, LumascopeSpectrum::kPoints>;  // linear
  using Packed = std::array<uint8_t, 4 * LumascopeSpectrum::kPoints>;

  // Levels are shown from here up.
  static constexpr double kSilenceDecibels = -200;

  struct Mode {
    enum : int32_t { kMeter, kCurve, kThirdOctaves, kCount };
  };

  // Smooths over up to half the axis on either side, 0 to 1 of 1024 points: with w = round(1024 smooth),
  //   kernel[k] = exp(-(2 k / w)^2) for k = -w to w,  or e^-4, 1, e^-4 for w below 3,
  // divided by its sum. Tilts by a slope in decibels per octave, from the lowest point up. [any]
  void Set(double smooth, double slopeDecibels);

  // Smooths and tilts. Beyond both ends the outermost point goes on. [ui]
  Points Shape(const double* points) const;

  // What a mode shows of linear points, in decibels: 64 bands of 16 points each, all the points, or the third
  // octaves of which GetThirdOctave tells, each the mean of its points. [any]
  static Levels GetLevels(int32_t mode, const Points& points);

  // Third octaves run from 20 Hz to 20 kHz; the middle of one, in hertz. [any]
  static constexpr int32_t kThirdOctaves = 31;
  static double GetThirdOctave(int32_t index) noexcept;

  // Points as little-endian floats, and those as hexadecimal digits. A float that is not finite is read as 0.
  // A text of another length or with other characters is not read: false, and no change. [any]
  static Packed Pack(const Points& points) noexcept;
  static Points Unpack(const uint8_t* data) noexcept;
  static MString GetText(const Points& points);
  static bool ReadText(const MString& text, Points& points);

 private:
  std::array<double, LumascopeSpectrum::kPoints + 1> kernel_ = {1};  // from the middle on
  int32_t halfWidth_ = 0;
  double slope_ = 1;  // from a point to the next
};
