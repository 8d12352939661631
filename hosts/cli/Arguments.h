#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace cli {

struct ListArguments {
  bool json = false;
};

struct ParamsArguments {
  std::string plugin;
  bool json = false;
};

struct StateArguments {
  std::string plugin;
  std::optional<std::string> state;   // file to start from
  std::vector<std::string> settings;  // "key=value", as typed
};

struct InfoArguments {
  std::string file;
};

struct RegisterArguments {};

struct RenderArguments {
  std::string effect;
  std::string input;
  std::string output;
  std::optional<std::string> state;   // file
  std::vector<std::string> settings;  // "key=value", as typed
  int32_t blockFrames = 512;
  std::optional<double> tailSeconds = 0;  // none: until the effect is silent
};

// Text to print instead of working, of --help, --version and help.
struct PrintArguments {
  std::string text;
};

using Arguments = std::variant<PrintArguments, ListArguments, ParamsArguments, RenderArguments,
                               StateArguments, InfoArguments, RegisterArguments>;

constexpr int32_t kMaximumBlockFrames = 1 << 20;
constexpr double kMaximumTailSeconds = 86400;
constexpr int32_t kMaximumAutomaticTailSeconds = 60;

// Reads the command line. Raises Failure with kUsage.
Arguments ParseArguments(int argc, char** argv);

// What `sonvelle help` prints.
std::string GetUsage();

}  // namespace cli
