#include "effects/LumascopeDisplay.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <span>

#include "core/MHexaStream.h"
#include "dsp/MFilter.h"

namespace {

constexpr int32_t kPoints = LumascopeSpectrum::kPoints;
constexpr int32_t kBands = 64;
constexpr int32_t kLowestThirdOctave = -17;  // from 1000 Hz
constexpr double kOctavesPerPoint = 0.0097322265625;
constexpr double kLeastSlope = 0.01;

double GetMean(std::span<const double> points) {
  double sum = 0;
  for (const double point : points) sum += point;
  return points.empty() ? 0 : sum / static_cast<double>(points.size());
}

// The first point at a frequency or above.
std::size_t FindPoint(double frequencyHz) {
  constexpr double kLow = LumascopeSpectrum::kLowestFrequency, kHigh = LumascopeSpectrum::kHighestFrequency;
  const double place = kPoints * std::log(frequencyHz / kLow) / std::log(kHigh / kLow) - 0.5;
  return static_cast<std::size_t>(std::clamp(std::ceil(place), 0.0, double{kPoints}));
}

}  // namespace

void LumascopeDisplay::Set(double smooth, double slopeDecibels) {
  slope_ = slopeDecibels < kLeastSlope ? 1 : std::pow(10, slopeDecibels * kOctavesPerPoint * 0.05);
  const auto width = static_cast<int32_t>(std::nearbyint(smooth * kPoints));
  halfWidth_ = width < 3 ? 1 : width;
  double sum = 0;
  const auto tap = [&](int32_t k) -> double& { return kernel_[static_cast<std::size_t>(k)]; };
  for (int32_t k = 0; k <= halfWidth_; ++k) {
    const double x = 2.0 * k / halfWidth_;
    tap(k) = std::exp(-x * x);
    sum += k == 0 ? tap(k) : 2 * tap(k);
  }
  for (int32_t k = 0; k <= halfWidth_; ++k) tap(k) /= sum;
}

LumascopeDisplay::Points LumascopeDisplay::Shape(const double* points) const {
  Levels padded(static_cast<std::size_t>(kPoints + 2 * halfWidth_));
  double* const middle = padded.data() + halfWidth_;
  std::fill(padded.data(), middle, points[0]);
  std::copy_n(points, kPoints, middle);
  std::fill_n(middle + kPoints, halfWidth_, points[kPoints - 1]);
  Points shaped = {};
  for (int32_t k = 0; k <= halfWidth_; ++k) {
    const double tap = kernel_[static_cast<std::size_t>(k)] * (k == 0 ? 0.5 : 1);  // the middle counts once
    for (int32_t i = 0; i < kPoints; ++i)
      shaped[static_cast<std::size_t>(i)] += tap * (middle[i - k] + middle[i + k]);
  }
  double tilt = 1;
  for (double& point : shaped) {
    point *= tilt;
    tilt *= slope_;
  }
  return shaped;
}

LumascopeDisplay::Levels LumascopeDisplay::GetLevels(int32_t mode, const Points& points) {
  static const double kLeast = std::pow(10, kSilenceDecibels * 0.05);
  const std::span<const double> all(points);
  Levels levels;
  const auto add = [&](double linear) { levels.push_back(20 * std::log10(std::max(linear, kLeast))); };
  if (mode == Mode::kCurve) {
    for (const double point : points) add(point);
  } else if (mode == Mode::kMeter) {
    constexpr std::size_t kPerBand = kPoints / kBands;
    for (std::size_t band = 0; band < kBands; ++band) add(GetMean(all.subspan(band * kPerBand, kPerBand)));
  } else {
    const double half = std::exp2(1.0 / 6);
    for (int32_t i = 0; i < kThirdOctaves; ++i) {
      const std::size_t first = FindPoint(GetThirdOctave(i) / half);
      add(GetMean(all.subspan(first, FindPoint(GetThirdOctave(i) * half) - first)));
    }
  }
  return levels;
}

double LumascopeDisplay::GetThirdOctave(int32_t index) noexcept {
  return 1000 * std::exp2((index + kLowestThirdOctave) / 3.0);
}

LumascopeDisplay::Packed LumascopeDisplay::Pack(const Points& points) noexcept {
  Packed data;
  for (std::size_t i = 0; i < data.size(); ++i) {
    const auto bits = std::bit_cast<uint32_t>(MLimitToFloat(points[i / 4]));
    data[i] = static_cast<uint8_t>(bits >> i % 4 * 8);
  }
  return data;
}

LumascopeDisplay::Points LumascopeDisplay::Unpack(const uint8_t* data) noexcept {
  Points points;
  for (std::size_t i = 0; i < points.size(); ++i) {
    uint32_t bits = 0;
    for (std::size_t k = 0; k < 4; ++k) bits |= uint32_t{data[4 * i + k]} << 8 * k;
    points[i] = MCleanSample(std::bit_cast<float>(bits));
  }
  return points;
}

MString LumascopeDisplay::GetText(const Points& points) {
  const Packed data = Pack(points);
  std::array<char, 2 * data.size() + 1> digits = {};
  MHexaStream::Encode(data.data(), static_cast<int32_t>(data.size()), digits.data());
  return MString::FromNarrow(digits.data());
}

bool LumascopeDisplay::ReadText(const MString& text, Points& points) {
  Packed data = {};
  if (text.GetLength() != static_cast<int32_t>(2 * data.size())) return false;
  for (int32_t i = 0; i < text.GetLength(); ++i) {
    const int32_t digit = MDigitValue(text.At(i));
    if (digit < 0 || digit > 15) return false;
    uint8_t& byte = data[static_cast<std::size_t>(i / 2)];
    byte = static_cast<uint8_t>(byte << 4 | digit);
  }
  points = Unpack(data.data());
  return true;
}
