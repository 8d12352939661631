#pragma once
#include <travesty/base.h>
#include <travesty/edit_controller.h>

#include <array>

#include "hosts/bridge/Content.h"
#include "hosts/bridge/DawParameters.h"

namespace vst3 {

// What a parameter's id stands for.
struct Target {
  enum class Kind { kNone, kParameter, kProgram, kController };

  Kind kind = Kind::kNone;
  int32_t place = 0;  // of a parameter in the plug-in's list, of a controller in that of all channels
};

// The parameters that a host sees: those of the plug-in; "Program", which loads a state that comes with it;
// and, of instruments, the MIDI controllers of each channel, hidden.
class ParameterList {
 public:
  static constexpr std::array<uint8_t, 4> kControllers = {64, 120, 121, 123};  // as bridge::ReadMidiMessage
  static constexpr int32_t kChannels = 16;
  static constexpr int32_t kControllerCount = kChannels * static_cast<int32_t>(kControllers.size());

  // What it is made of outlives it.
  ParameterList(const bridge::DawParameters& parameters, const std::vector<bridge::Preset>& presets,
                bool isInstrument);

  int32_t GetCount() const noexcept { return static_cast<int32_t>(targets_.size()); }
  // Target::kNone for an id that is none. Neither allocates nor locks. [any]
  Target Find(v3_param_id id) const noexcept;
  // The id of a controller, if it is one of those.
  static bool FindController(int32_t channel, int32_t controller, v3_param_id& id) noexcept;
  static int32_t GetChannel(Target controller) noexcept;
  static uint8_t GetController(Target controller) noexcept;
  // The index lies in the list.
  v3_param_info Describe(int32_t index) const;

  // Table units of a parameter, the number of a program, the value of a controller, and back.
  double ToPlain(Target target, double normalized) const noexcept;
  double ToNormalized(Target target, double plain) const noexcept;
  // The text without the unit that Describe gives; both ways.
  std::string GetText(Target target, double normalized) const;
  std::optional<double> ReadText(Target target, std::string_view text) const;

  // The programs: 0 is the plug-in as it is made, then its presets. Without presets there are none.
  int32_t GetProgramCount() const noexcept;
  const char* GetProgramName(int32_t program) const noexcept;
  // The panels, which are units of the host's, from 1 on.
  const std::vector<std::string>& GetGroups() const noexcept { return groups_; }

 private:
  v3_param_id GetId(Target target) const noexcept;
  int32_t GetStepCount(Target target) const noexcept;
  const bridge::DawParameter& At(Target target) const noexcept {
    return parameters_.GetAll()[static_cast<std::size_t>(target.place)];
  }
  void DescribeParameter(Target target, v3_param_info& info) const;

  const bridge::DawParameters& parameters_;
  const std::vector<bridge::Preset>& presets_;
  const bool isInstrument_;
  std::vector<Target> targets_;
  std::vector<std::string> groups_;
  std::vector<std::string> units_;  // of the plug-in's parameters
};

}  // namespace vst3
