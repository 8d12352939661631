#pragma once
#include <stdexcept>
#include <string>

namespace cli {

enum class ExitCode {
  kDone = 0,
  kFile = 1,    // a file or its contents
  kUsage = 2,   // the command line
  kPlugin = 3,  // the library cannot be opened, or a plug-in raised an exception
  kOutput = 4,  // the output could not be written
};

// What each code means, by its number.
constexpr const char* kExitTexts[] = {"done", "a file or its contents", "usage", "a plug-in",
                                      "the output could not be written"};

// Ends the command. `what` is one line for the user; `detail`, if not empty, the exact text of the library.
struct Failure : std::runtime_error {
  Failure(ExitCode exitCode, const std::string& line, std::string libraryText = {})
      : std::runtime_error(line), code(exitCode), detail(std::move(libraryText)) {}

  ExitCode code;
  std::string detail;
};

}  // namespace cli
