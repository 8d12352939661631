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

// Reads "key=value" texts against the plug-in's table. A number alone is in table units, however the row
// shows it; all else is what the row shows, or means the same (bridge::ReadText). Raises Failure with kUsage:
// the form, an unknown key (the keys are listed), a text that cannot be read (what can is told), no whole
// number, out of range (the range is named as the value was written).
std::vector<Setting> ReadSettings(const bridge::Plugin& plugin, const std::string& pluginName,
                                  const std::vector<std::string>& texts);

}  // namespace cli
