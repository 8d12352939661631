#include "core/MUnitText.h"

#include <cmath>

#include "core/MFormat.h"
#include "core/MNumberScanner.h"

namespace {

constexpr double kSilence = 1e-50;

double RoundHalfUp(double value) {
  const double floor = std::floor(value);
  return value - floor >= 0.5 ? floor + 1 : floor;
}

MString WholeText(const MString& format, double whole) {
  return Format(format).Arg(MString::FromDouble(whole + 0.0, 0)).Text();  // no negative zero
}

std::optional<double> IfFinite(double value) {
  return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

struct Unit {
  const char* name;
  double factor;
};

// A number with one of these units; the first one may be left out.
template <std::size_t N>
std::optional<double> ReadWithUnit(const MString& text, const Unit (&units)[N]) {
  const std::optional<MQuantity> quantity = MReadQuantity(text);
  if (!quantity) return std::nullopt;
  if (quantity->unit.IsEmpty()) return IfFinite(quantity->number * units[0].factor);
  for (const Unit& unit : units)
    if (quantity->unit.Compare(MString::Literal(unit.name)) == 0)
      return IfFinite(quantity->number * unit.factor);
  return std::nullopt;
}

constexpr Unit kPercentUnits[] = {{"%", 0.01}, {"percent", 0.01}};
constexpr Unit kDecibelUnits[] = {{"dB", 0.05}};
constexpr Unit kTimeUnits[] = {{"ms", 0.001}, {"s", 1}, {"us", 1e-6}};
constexpr Unit kFrequencyUnits[] = {{"Hz", 1}, {"kHz", 1000}, {"k", 1000}};
constexpr Unit kPanUnits[] = {{"%", 0.01},      {"% right", 0.01}, {"right", 0.01},
                              {"%right", 0.01}, {"r", 0.01},       {"% left", -0.01},
                              {"left", -0.01},  {"%left", -0.01},  {"l", -0.01}};

std::optional<double> ReadPercent(const MString& text) {
  return ReadWithUnit(text, kPercentUnits);
}

MString ShowPercent(double value) {
  return Format("{0.02}%").Arg(value * 100).Text();
}

MString ShowWholePercent(double value) {
  return WholeText("{0}%", std::nearbyint(value * 100));
}

MString ShowVolume(double value) {
  const double gain = std::abs(value);
  if (gain < kSilence) return "silence";
  const double decibels = 20 * std::log10(gain);
  return Format(decibels <= -10 ? MString("{0;.1} dB") : MString("{0;.2} dB")).Arg(decibels).Text();
}

std::optional<double> ReadVolume(const MString& text) {
  const MString trimmed = MTrimmed(text);
  for (const char* const silence : {"silence", "-inf", "-inf dB", "-infdB"})
    if (trimmed.Compare(MString::Literal(silence)) == 0) return 0;
  const std::optional<double> exponent = ReadWithUnit(text, kDecibelUnits);
  return exponent ? IfFinite(std::pow(10, *exponent)) : std::nullopt;
}

MString ShowSquaredDecibels(double value) {
  const double gain = value * value;
  if (gain < kSilence) return "silence";
  return Format("{0;.1} dB").Arg(20 * std::log10(gain)).Text();
}

std::optional<double> ReadSquaredDecibels(const MString& text) {
  const std::optional<double> gain = ReadVolume(text);
  return gain ? std::optional(std::sqrt(*gain)) : std::nullopt;
}

MString ShowPan(double value) {
  if (std::abs(value) < kSilence) return "center";
  if (value > 0) return WholeText("{0}% right", std::nearbyint(value * 100));
  return WholeText("{0}% left", std::nearbyint(value * -100));
}

std::optional<double> ReadPan(const MString& text) {
  const MString trimmed = MTrimmed(text);
  if (trimmed.Compare("center") == 0 || trimmed.Compare("c") == 0) return 0;
  return ReadWithUnit(text, kPanUnits);
}

MString ShowWholeMilliseconds(double seconds) {
  return WholeText("{0} ms", RoundHalfUp(seconds * 1000));
}

MString ShowMilliseconds(double seconds) {
  if (std::abs(seconds) <= 0.01) return Format("{0;.1} ms").Arg(seconds * 1000).Text();
  return ShowWholeMilliseconds(seconds);
}

std::optional<double> ReadSeconds(const MString& text) {
  return ReadWithUnit(text, kTimeUnits);
}

MString ShowFrequency(double hertz) {
  if (hertz < 1) return Format("{0;.4}Hz").Arg(hertz).Text();
  if (hertz < 10) return Format("{0;.2}Hz").Arg(hertz).Text();
  if (hertz < 100) return Format("{0;.1}Hz").Arg(hertz).Text();
  if (hertz < 10000) return WholeText("{0}Hz", RoundHalfUp(hertz));
  return Format("{0;.1}kHz").Arg(hertz * 0.001).Text();
}

std::optional<double> ReadFrequency(const MString& text) {
  return ReadWithUnit(text, kFrequencyUnits);
}

MString ShowFrequencyLog10(double log10Hertz) {
  return ShowFrequency(std::pow(10, log10Hertz));
}

std::optional<double> ReadFrequencyLog10(const MString& text) {
  const std::optional<double> hertz = ReadFrequency(text);
  return hertz && *hertz > 0 ? std::optional(std::log10(*hertz)) : std::nullopt;
}

}  // namespace

namespace MUnits {
constinit const MUnitText kPercent = {ShowPercent, ReadPercent};
constinit const MUnitText kWholePercent = {ShowWholePercent, ReadPercent};
constinit const MUnitText kVolume = {ShowVolume, ReadVolume};
constinit const MUnitText kSquaredDecibels = {ShowSquaredDecibels, ReadSquaredDecibels};
constinit const MUnitText kPan = {ShowPan, ReadPan};
constinit const MUnitText kMilliseconds = {ShowMilliseconds, ReadSeconds};
constinit const MUnitText kWholeMilliseconds = {ShowWholeMilliseconds, ReadSeconds};
constinit const MUnitText kFrequency = {ShowFrequency, ReadFrequency};
constinit const MUnitText kFrequencyLog10 = {ShowFrequencyLog10, ReadFrequencyLog10};
}  // namespace MUnits
