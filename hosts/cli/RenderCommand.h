#pragma once
#include "hosts/bridge/PluginTable.h"
#include "hosts/cli/Arguments.h"

namespace cli {

// Renders a sound file with an effect. Says on standard error what is odd about the output: values that are
// not finite, beyond full scale, or nothing but silence. Raises Failure.
void Render(const bridge::PluginType& type, const RenderArguments& arguments);

}  // namespace cli
