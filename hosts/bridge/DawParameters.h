#pragma once
// The parameters that a DAW sees: the rows of a plug-in that have a value, and behind them those of the host
// side.

#include <deque>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "hosts/bridge/PluginTable.h"

namespace bridge {

// What a parameter of the host side does; kNone: it is a row of the plug-in.
enum class HostControl { kNone, kBypass, kRelease, kOneShot };

struct DawParameter {
  uint32_t id;        // MakeParameterId(key)
  std::string key;    // of the row; of the host side: "hostBypass", "hostRelease", "hostOneShot"
  std::string name;   // unique in the plug-in: that of its panel stands in front
  std::string group;  // the panel's name, empty without one
  const MPluginParameter* row;
  int32_t index;  // of the row in the plug-in's table, -1 on the host side
  HostControl control;
};

// The number under which songs keep a parameter: the 32-bit FNV-1a hash of the key without its top bit. It is
// the same in every format and for ever (tests/golden/parameter_ids.tsv).
uint32_t MakeParameterId(std::string_view key) noexcept;

// The parameters of one plug-in, in the order of its table.
class DawParameters {
 public:
  // The rows outlive it. Effects get a bypass; instruments a release in seconds and a switch "One shot".
  DawParameters(std::span<const MPluginParameter> rows, PluginKind kind);
  DawParameters(const DawParameters&) = delete;
  DawParameters& operator=(const DawParameters&) = delete;

  std::span<const DawParameter> GetAll() const noexcept { return all_; }
  // The place in GetAll, or -1. Neither allocates nor locks. [any]
  int32_t Find(uint32_t id) const noexcept;
  int32_t Find(std::string_view key) const noexcept;
  // Stores the value of a parameter of the host side, as bridge::StoreValue does. [any]
  void StoreHostValue(const DawParameter& parameter, double value) noexcept;

 private:
  void AddHostRow(HostControl control, const char* key, const char* name, const MPluginParameter& row);

  std::vector<DawParameter> all_;
  std::deque<MPluginParameter> hostRows_;  // whose places stay
};

// The number of steps between the ends of the range, 0 for a real one.
int32_t GetStepCount(const DawParameter& parameter) noexcept;
// From table units to 0 to 1, linear, and back. On the way back a value within a ten thousand millionth of
// one with ten decimals becomes that, so that what people type and states hold is met to the bit. [any]
double Normalize(const DawParameter& parameter, double value) noexcept;
double Denormalize(const DawParameter& parameter, double normalized) noexcept;
// The value in the parameter's range that a float stands for: that with four decimals, as states hold it, if
// it gives the same float. [any]
double FromFloat(const DawParameter& parameter, float value) noexcept;

// The panel's text of a value, but for switches, which say "Off" and "On". UTF-8. May raise MException.
std::string GetDawText(const DawParameter& parameter, double value);
// The value within the range that a text stands for; none if it cannot be read or lies outside.
std::optional<double> ReadDawText(const DawParameter& parameter, std::string_view text);

}  // namespace bridge
