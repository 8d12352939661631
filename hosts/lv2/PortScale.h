#pragma once
#include <string>

#include "hosts/bridge/DawParameters.h"
#include "hosts/bridge/Parameters.h"

namespace lv2 {

// How a control port counts a parameter: in what people read on the panel, since hosts show the number
// itself. A row whose text is a number of its value's multiple, power of ten (frequencies) or decibels of its
// square (thresholds) becomes a port of that number; any other row stays in table units. The way back is
// exact: the float of a value that has four decimals, or is an end of the range or the default, gives that
// value.
class PortScale {
 public:
  // The parameter outlives it. May raise MException.
  explicit PortScale(const bridge::DawParameter& parameter);

  float ToPort(double value) const noexcept;  // [any]
  // In the parameter's range; `port` is a number. [any]
  double FromPort(float port) const noexcept;

  // What stands behind the number on the panel: "Hz", "dB", ": 1", or nothing.
  const std::string& GetUnit() const noexcept { return unit_; }
  // Whether the port's number is the one on the panel.
  bool IsShown() const noexcept { return isShown_; }
  bool IsLogarithmic() const noexcept { return law_ == Law::kPowerOfTen; }

 private:
  enum class Law { kLinear, kPowerOfTen, kSquaredDecibels, kOpposite };
  struct Candidate {
    const char* unit;
    Law law;
    double factor;
  };

  void Choose();
  bool Agrees() const;
  double Scale(double value) const noexcept;
  double Unscale(double port) const noexcept;

  const bridge::DawParameter& parameter_;
  const bridge::ParameterRange range_;
  Law law_ = Law::kLinear;
  double factor_ = 1;
  std::string unit_;
  bool isShown_ = false;
};

}  // namespace lv2
