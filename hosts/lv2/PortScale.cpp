#include "hosts/lv2/PortScale.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace lv2 {

namespace {

using bridge::DawParameter;

constexpr double kDecimals = 1e4;         // of states, and of what people type
constexpr double kLowestDecibels = -120;  // of a range in decibels
constexpr double kNothing = 1e-30;

// A number as a panel shows it.
struct Shown {
  double number;
  double accuracy;
  std::string unit;
};

std::optional<Shown> ReadShown(const std::string& text) {
  Shown shown = {};
  const char* const end = text.data() + text.size();
  const std::from_chars_result read =
      std::from_chars(text.data(), end, shown.number, std::chars_format::fixed);
  if (read.ec != std::errc()) return std::nullopt;
  const char* const point = std::find(text.data(), read.ptr, '.');
  const auto decimals = point == read.ptr ? 0 : read.ptr - point - 1;
  shown.accuracy = 0.5000001 * std::pow(10.0, -static_cast<double>(decimals));
  shown.unit.assign(std::find_if(read.ptr, end, [](char c) { return c != ' '; }), end);
  if (shown.unit != "kHz") return shown;
  return Shown{shown.number * 1000, shown.accuracy * 1000, "Hz"};
}

double RoundTo(double value, double decimals) {
  return std::round(value * decimals) / decimals;
}

}  // namespace

PortScale::PortScale(const DawParameter& parameter)
    : parameter_(parameter), range_(bridge::GetRange(*parameter.row)) {
  if (parameter.control == bridge::HostControl::kBypass)
    law_ = Law::kOpposite;  // of lv2:enabled
  else if (const auto kind = parameter.row->kind;
           kind == MParameterKind::kReal || kind == MParameterKind::kInteger)
    Choose();
}

void PortScale::Choose() {
  static constexpr Candidate kCandidates[] = {
      {"Hz", Law::kPowerOfTen, 1}, {"%", Law::kLinear, 100},         {"ms", Law::kLinear, 1000},
      {"s", Law::kLinear, 1},      {"dB", Law::kSquaredDecibels, 1},
  };
  const double middle = bridge::Denormalize(parameter_, 0.5);
  const std::optional<Shown> shown = ReadShown(bridge::GetDawText(parameter_, middle));
  if (!shown) return;
  unit_ = shown->unit;
  isShown_ = Agrees();
  for (const Candidate& candidate : kCandidates) {
    if (isShown_ || unit_ != candidate.unit) continue;
    law_ = candidate.law;
    factor_ = candidate.factor;
    isShown_ = Agrees();
  }
  if (isShown_) return;
  law_ = Law::kLinear;
  factor_ = 1;
  unit_.clear();
}

// Whether the texts of some values are the port's numbers. At the ends there may be words.
bool PortScale::Agrees() const {
  if (law_ == Law::kSquaredDecibels && !(Scale(range_.minimum) >= kLowestDecibels)) return false;
  for (const double place : {0.0, 0.1, 0.25, 0.4, 0.5, 0.65, 0.8, 0.9, 1.0}) {
    const double value = bridge::Denormalize(parameter_, place);
    const std::optional<Shown> shown = ReadShown(bridge::GetDawText(parameter_, value));
    if (!shown && (place == 0 || place == 1)) continue;
    if (!shown || shown->unit != unit_ || !(std::abs(Scale(value) - shown->number) <= shown->accuracy))
      return false;
  }
  return true;
}

double PortScale::Scale(double value) const noexcept {
  if (law_ == Law::kPowerOfTen) return std::pow(10.0, value);
  if (law_ == Law::kSquaredDecibels) return 40 * std::log10(value);
  if (law_ == Law::kOpposite) return 1 - value;
  return value * factor_;
}

double PortScale::Unscale(double port) const noexcept {
  if (law_ == Law::kPowerOfTen) return std::log10(port);
  if (law_ == Law::kSquaredDecibels) return std::pow(10.0, port / 40);
  if (law_ == Law::kOpposite) return 1 - port;
  return port / factor_;
}

float PortScale::ToPort(double value) const noexcept {
  const double port = Scale(value);
  return std::abs(port) < kNothing ? 0.0f : static_cast<float>(port);
}

double PortScale::FromPort(float port) const noexcept {
  if (parameter_.row->kind == MParameterKind::kSwitch) return Unscale(port > 0 ? 1 : 0);
  if (!(port > ToPort(range_.minimum))) return range_.minimum;
  if (port >= ToPort(range_.maximum)) return range_.maximum;
  if (bridge::IsWhole(*parameter_.row)) return std::round(Unscale(port));
  if (port == ToPort(range_.defaultValue)) return range_.defaultValue;
  const double typed = RoundTo(port, kDecimals);
  const double value = Unscale(static_cast<float>(typed) == port ? typed : double(port));
  const double saved = RoundTo(value, kDecimals);
  return std::clamp(ToPort(saved) == port ? saved : value, range_.minimum, range_.maximum);
}

}  // namespace lv2
