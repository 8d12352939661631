#include "hosts/cli/Command.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <vector>

#include "core/MException.h"
#include "hosts/bridge/PluginLibrary.h"
#include "hosts/cli/Arguments.h"
#include "hosts/cli/Content.h"
#include "hosts/cli/Failure.h"
#include "hosts/cli/Info.h"
#include "hosts/cli/InstrumentCommand.h"
#include "hosts/cli/Listing.h"
#include "hosts/cli/MultisampleMaker.h"
#include "hosts/cli/Print.h"
#include "hosts/cli/RenderCommand.h"
#include "hosts/cli/Settings.h"
#include "hosts/cli/State.h"
#include "hosts/cli/SubsampleMaker.h"
#include "hosts/cli/System.h"
#include "hosts/cli/Words.h"

namespace cli {

namespace {

// Beside the program as it is built, else where it is installed.
std::filesystem::path FindLibrary() {
  const std::filesystem::path folder = GetProgramFolder();
  std::vector<std::filesystem::path> files;
  for (const char* const place : {".", SONVELLE_LIBRARY_FOLDER, "../lib/sonvelle"}) {
    const std::filesystem::path file = (folder / place / "Sonvelle.so").lexically_normal();
    if (std::find(files.begin(), files.end(), file) == files.end()) files.push_back(file);
  }
  std::string places;
  for (const std::filesystem::path& file : files) {
    std::error_code error;
    if (std::filesystem::exists(file, error)) return file;
    places += (places.empty() ? "" : ", ") + file.string();
  }
  throw Failure(ExitCode::kPlugin, "the library of plug-ins is not there: " + places);
}

const bridge::PluginType& RequirePlugin(const bridge::PluginTable& plugins, const std::string& name) {
  if (const bridge::PluginType* const found = bridge::FindPlugin(plugins, name)) return *found;
  std::vector<std::string_view> names;
  for (const bridge::PluginType& type : plugins) names.push_back(type.name);
  std::string line = "there is no plug-in \"" + name + "\"";
  if (!names.empty()) line += ", did you mean " + std::string(NearestName(names, name)) + "?";
  throw Failure(ExitCode::kUsage, line + " (see: sonvelle list)");
}

// One command, with the library if it needs one.
struct Run {
  const bridge::PluginLibrary& library;
  const bridge::PluginTable& plugins = library.GetPlugins();

  void operator()(const PrintArguments&) const {}        // needs none
  void operator()(const InfoArguments&) const {}         // needs none
  void operator()(const MultisampleArguments&) const {}  // needs none
  void operator()(const SubsamplesArguments&) const {}   // needs none
  void operator()(const ListArguments& arguments) const {
    Print(arguments.json ? ListAsJson(plugins) : ListAsText(plugins));
  }
  void operator()(const ParamsArguments& arguments) const {
    const bridge::Plugin plugin(RequirePlugin(plugins, arguments.plugin).entryPoint);
    Print(arguments.json ? ParametersAsJson(plugin) : ParametersAsText(plugin));
  }
  void operator()(const RenderArguments& arguments) const {
    Render(RequirePlugin(plugins, arguments.plugin), arguments);
  }
  void operator()(const StateArguments& arguments) const {
    bridge::Plugin plugin(RequirePlugin(plugins, arguments.plugin).entryPoint);
    const std::vector<Setting> settings = ReadSettings(plugin, arguments.plugin, arguments.settings);
    MXMLItem state;
    if (arguments.state) {
      ReadState(*arguments.state, arguments.plugin, state);
      plugin.LoadState(state);
    }
    for (const Setting& setting : settings) plugin.SetValue(setting.index, setting.value);
    if (arguments.sample) ImportSample(plugin, arguments.plugin, *arguments.sample);
    Print(GetStateText(plugin, arguments.plugin));
  }
  void operator()(const RegisterArguments&) const {
    try {
      std::string text;
      for (const std::string& file : library.Register()) text += file + "\n";
      Print(text);
    } catch (const MException& raised) {
      throw Failure(ExitCode::kOutput, "the registry could not be written", bridge::ToUtf8(raised.message));
    }
  }
};

// An exception of the library points into it, so it becomes a Failure while the library is there.
void RunWithLibrary(const Arguments& arguments) {
  const std::filesystem::path file = FindLibrary();
  if (std::holds_alternative<RegisterArguments>(arguments)) ChooseContent();
  const bridge::PluginLibrary library(file);
  try {
    std::visit(Run{library}, arguments);
  } catch (const MException& raised) {
    throw Failure(ExitCode::kPlugin, "the plug-in raised an exception", bridge::ToUtf8(raised.message));
  }
}

int Report(ExitCode code, const std::string& line, const std::string& detail) {
  std::fputs(("sonvelle: " + OneLine(line) + "\n" + (detail.empty() ? "" : detail + "\n")).c_str(), stderr);
  return static_cast<int>(code);
}

int RunOrThrow(int argc, char** argv) {
  if (argc < 2) {
    std::fputs(GetUsage().c_str(), stderr);
    return static_cast<int>(ExitCode::kUsage);
  }
  const Arguments arguments = ParseArguments(argc, argv);
  if (const auto* const print = std::get_if<PrintArguments>(&arguments))
    Print(print->text);
  else if (const auto* const info = std::get_if<InfoArguments>(&arguments))
    Print(DescribeFile(info->file));
  else if (const auto* const multisample = std::get_if<MultisampleArguments>(&arguments))
    MakeMultisample(*multisample);
  else if (const auto* const subsamples = std::get_if<SubsamplesArguments>(&arguments))
    MakeSubsamples(*subsamples);
  else
    RunWithLibrary(arguments);
  return static_cast<int>(ExitCode::kDone);
}

}  // namespace

int RunCommand(int argc, char** argv) noexcept {
  PrepareProcess();
  try {
    return RunOrThrow(argc, argv);
  } catch (const Failure& failure) {
    return Report(failure.code, failure.what(), failure.detail);
  } catch (const std::bad_alloc&) {
    return Report(ExitCode::kPlugin, "there is not enough memory", {});
  } catch (const std::exception& error) {
    return Report(ExitCode::kPlugin, error.what(), {});
  }
}

}  // namespace cli
