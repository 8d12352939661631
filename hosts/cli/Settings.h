#pragma once
#include <string>
#include <vector>

#include "hosts/bridge/Plugin.h"

namespace cli {

// A value for a row of a plug-in's table.
struct Setting {
  int32_t index;
  double value;
};

// Reads "key=number" texts against the plug-in's table. Raises Failure with kUsage: the form, an unknown key
// (the keys are listed), no number, no whole number, out of range (the range is named).
std::vector<Setting> ReadSettings(const bridge::Plugin& plugin, const std::string& pluginName,
                                  const std::vector<std::string>& texts);

}  // namespace cli
