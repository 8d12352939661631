#pragma once
// Tests of every plug-in, in a data folder of their own with the states that come with Sonvelle.

#include <gtest/gtest.h>

#include "tests/hosts/vst3/HostedPlugin.h"

namespace host {

inline constexpr const char* kEffects[] = {
#define M_PLUGIN(name, kind, summary) #kind[5] == 'E' ? #name : nullptr,
#include "exports/plugins.def"
#undef M_PLUGIN
};
inline constexpr const char* kAll[] = {
#define M_PLUGIN(name, kind, summary) #name,
#include "exports/plugins.def"
#undef M_PLUGIN
};

inline std::vector<std::string> GetAll() {
  return {std::begin(kAll), std::end(kAll)};
}

inline std::vector<std::string> GetEffects() {
  std::vector<std::string> names;
  for (const char* const name : kEffects)
    if (name) names.emplace_back(name);
  return names;
}

inline std::string NameTest(const testing::TestParamInfo<std::string>& info) {
  return info.param;
}

// The parameters that a host may automate, without the bypass.
inline std::vector<v3_param_info> GetAutomatable(const HostedPlugin& plugin) {
  std::vector<v3_param_info> list = plugin.GetParameters();
  std::erase_if(list, [](const v3_param_info& info) {
    return !(info.flags & V3_PARAM_CAN_AUTOMATE) || (info.flags & V3_PARAM_IS_BYPASS);
  });
  return list;
}

inline v3_param_id FindId(const HostedPlugin& plugin, const std::string& title) {
  for (const v3_param_info& info : plugin.GetParameters())
    if (ToText(info.title) == title) return info.param_id;
  ADD_FAILURE() << "no parameter " << title;
  return 0;
}

}  // namespace host
