#include "hosts/cli/State.h"

#include "core/MException.h"
#include "core/MMemoryStream.h"
#include "hosts/cli/Failure.h"
#include "hosts/cli/Paths.h"

namespace cli {

void ReadState(const std::string& path, const std::string& pluginName, MXMLItem& state) {
  const MString file = ToLibraryPath(path);
  try {
    state.LoadFile(file);
  } catch (const MException& raised) {
    const std::string place = raised.source.IsEmpty() ? path : bridge::ToUtf8(raised.source);
    throw Failure(ExitCode::kFile, place + ": it cannot be read as a state", bridge::ToUtf8(raised.message));
  }
  if (!state.HasAttribute("plugin")) return;
  const MString plugin = state.CachedAttribute();
  if (plugin.Compare(bridge::FromUtf8(pluginName)) != 0)
    throw Failure(ExitCode::kFile,
                  path + ": it is a state of " + bridge::ToUtf8(plugin) + " and not of " + pluginName);
}

std::string GetStateText(bridge::Plugin& plugin, const std::string& pluginName) {
  MXMLItem state("state");
  plugin.SaveState(state);
  state.SetAttribute("plugin", bridge::FromUtf8(pluginName));
  MMemoryStream stream;
  state.Save(stream);
  return std::string(reinterpret_cast<const char*>(stream.GetData()),
                     static_cast<std::size_t>(stream.GetSize()));
}

}  // namespace cli
