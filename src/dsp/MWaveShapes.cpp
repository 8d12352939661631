#include "dsp/MWaveShapes.h"

#include <cmath>
#include <mutex>
#include <numbers>

#include "core/MException.h"
#include "core/MFormat.h"
#include "core/MTranslate.h"
#include "dsp/MEnvelopePoint.h"

namespace {

constexpr int32_t kLength = MWaveShapes::kLength;
constexpr int32_t kQuarter = kLength / 4;
constexpr int32_t kFade = 1024;

constexpr MString kNames[MWaveShapes::kCount] = {
    "Exponencial",    "Triangle",     "Sine power 8",     "Sine power 4", "Sine square", "Sine", "Harmonics",
    "More harmonics", "Disharmonics", "Sine square root", "Sine 4-root",  "Rectangle",   "Saw",  "Full saw",
    "Noise",          "Mess",
};

float tables[MWaveShapes::kCount][kLength];
std::once_flag made;

double Angle(int32_t i) noexcept {
  return 2 * std::numbers::pi * i / kLength;
}

// T[i] = f(i) for the whole period.
template <typename F>
void FillPeriod(float (&table)[kLength], F&& f) {
  for (int32_t i = 0; i < kLength; ++i) table[i] = static_cast<float>(f(i));
}

// The first quarter is f(i), the others mirror it.
template <typename F>
void FillQuarters(float (&table)[kLength], F&& f) {
  for (int32_t i = 0; i < kQuarter; ++i) {
    const auto value = static_cast<float>(f(i));
    table[i] = table[2 * kQuarter - 1 - i] = value;
    table[2 * kQuarter + i] = table[kLength - 1 - i] = -value;
  }
}

double Harmonics(int32_t i) {
  const double angle = Angle(i);
  return 0.5 * std::sin(angle) + 0.3 * std::sin(2 * angle) + 0.1 * std::sin(4 * angle);
}

double MoreHarmonics(int32_t i) {
  const double angle = Angle(i);
  return Harmonics(i) + 0.02 * std::sin(16 * angle) + 0.05 * std::sin(8 * angle);
}

// Faded at both ends, since its partials do not meet there.
double Disharmonics(int32_t i) {
  const double angle = Angle(i);
  const double sum = 0.2 * (std::sin(1.1 * angle) + std::sin(1.2 * angle) + std::sin(1.3 * angle)) +
                     0.1 * std::sin(1.4 * angle) + 0.3 * std::sin(angle);
  const int32_t fromEnd = std::min(i, kLength - 1 - i);
  return fromEnd < kFade ? sum * fromEnd / (kFade - 1) : sum;
}

void FillNoise(float (&table)[kLength]) {
  uint32_t x = 0;
  FillPeriod(table, [&x](int32_t) {
    x = x * 214013u + 2531011u;
    return ((x >> 16) & 0x7FFF) / 32767.0;
  });
}

void FillMess(float (&table)[kLength]) {
  FillPeriod(table, [](int32_t i) {
    const uint32_t c = static_cast<uint32_t>(i) * 1111917978u;
    return ((c ^ 0xCCDD1122u) % 1000000u) * 0.000001;
  });
}

void MakeTables() {
  const auto sinePower = [](double power) {
    return [power](int32_t i) { return std::pow(std::sin(Angle(i)), power); };
  };
  FillQuarters(tables[0], [](int32_t i) { return std::pow(double{1} * i / kQuarter, 4); });
  FillQuarters(tables[1], [](int32_t i) { return double{1} * i / kQuarter; });
  FillQuarters(tables[2], sinePower(8));
  FillQuarters(tables[3], sinePower(4));
  FillQuarters(tables[4], sinePower(2));
  FillQuarters(tables[5], sinePower(1));
  FillPeriod(tables[6], Harmonics);
  FillPeriod(tables[7], MoreHarmonics);
  FillPeriod(tables[8], Disharmonics);
  FillQuarters(tables[9], sinePower(0.5));
  FillQuarters(tables[10], sinePower(0.2));
  FillQuarters(tables[11], [](int32_t i) { return i < 31 ? i / 31.0 : 1.0; });
  FillPeriod(tables[12], [](int32_t i) { return 1 - double{1} * i / kLength; });
  FillPeriod(tables[13], [](int32_t i) { return 1 - double{2} * i / kLength; });
  FillNoise(tables[14]);
  FillMess(tables[15]);
}

}  // namespace

MWaveShapes::Position MWaveShapes::Locate(double value) noexcept {
  const double limited = std::isfinite(value) ? std::clamp<double>(value, 0, kCount - 1) : kSine;
  const auto index = static_cast<int32_t>(limited);
  return {index, limited - index};
}

const float* MWaveShapes::GetTable(int32_t index) {
  if (index < 0 || index >= kCount) MThrowIndexOutOfRange();
  std::call_once(made, MakeTables);
  return tables[index];
}

MString MWaveShapes::GetName(int32_t index) {
  if (index < 0 || index >= kCount) MThrowIndexOutOfRange();
  return Translate(kNames[index]);
}

MString MWaveShapes::GetText(double value) {
  const auto [index, fraction] = Locate(value);
  const auto percent = static_cast<int32_t>(std::floor(fraction * 100 + 0.5));
  if (percent == 0) return GetName(index);
  if (percent == 100) return GetName(index + 1);
  return Format(Translate("{0}% {1}, {2}% {3}"))
      .Arg(100 - percent)
      .Arg(GetName(index))
      .Arg(percent)
      .Arg(GetName(index + 1))
      .Text();
}
