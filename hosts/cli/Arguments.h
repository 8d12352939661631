#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace cli {

// A note that an instrument plays.
struct NoteRequest {
  int32_t key;    // 60 is the sound's own pitch
  double volume;  // linear
  double startSeconds;
  double lengthSeconds;
};

struct ListArguments {
  bool json = false;
};

struct ParamsArguments {
  std::string plugin;
  bool json = false;
};

struct StateArguments {
  std::string plugin;
  std::optional<std::string> sample;  // file to import
  std::optional<std::string> state;   // file to start from
  std::vector<std::string> settings;  // "key=value", as typed
};

struct InfoArguments {
  std::string file;
};

struct MultisampleArguments {
  std::string source;  // folder or SFZ file
  std::string output;
  std::string compression = "none";  // or "zlib" or "bzip2"
};

struct SubsamplesArguments {
  std::vector<std::string> sources;  // folders and files
  std::string output;
};

struct RegisterArguments {};

struct RenderArguments {
  std::string plugin;
  std::vector<std::string> files;     // of an effect input and output, of an instrument the output
  std::optional<std::string> state;   // file
  std::vector<std::string> settings;  // "key=value", as typed
  int32_t blockFrames = 512;
  std::optional<double> tailSeconds = 0;  // none: until the effect is silent

  // Of instruments.
  std::optional<std::string> sample;  // file to import
  std::vector<NoteRequest> notes;
  std::optional<std::string> midi;  // file
  bool isOneShot = false;
  std::optional<int32_t> sampleRate;
  std::optional<int32_t> channels;
};

// Text to print instead of working, of --help, --version and help.
struct PrintArguments {
  std::string text;
};

using Arguments =
    std::variant<PrintArguments, ListArguments, ParamsArguments, RenderArguments, StateArguments,
                 InfoArguments, RegisterArguments, MultisampleArguments, SubsamplesArguments>;

constexpr int32_t kMaximumBlockFrames = 1 << 20;
constexpr int32_t kMaximumSampleRate = 768000;
constexpr int32_t kMaximumChannels = 64;
constexpr int32_t kMaximumKey = 240;
constexpr double kMaximumNoteSeconds = 2400;  // of starts and of lengths; at any rate 31 bits of frames
constexpr double kMaximumTailSeconds = 86400;
constexpr int32_t kMaximumAutomaticTailSeconds = 60;

// Reads the command line. Raises Failure with kUsage.
Arguments ParseArguments(int argc, char** argv);

// What `sonvelle help` prints.
std::string GetUsage();

}  // namespace cli
