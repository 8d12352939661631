#include "hosts/cli/Content.h"

#include <filesystem>

#include "core/MException.h"
#include "hosts/bridge/Content.h"
#include "hosts/bridge/FirstSettings.h"
#include "hosts/bridge/Parameters.h"
#include "hosts/cli/Failure.h"
#include "hosts/cli/Paths.h"
#include "hosts/cli/System.h"

namespace cli {

void ChooseContent() {
  for (const char* const place : {"content", SONVELLE_CONTENT_FOLDER, "../share/sonvelle"}) {
    const std::filesystem::path folder = (GetProgramFolder() / place).lexically_normal();
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error)) continue;
    try {
      return bridge::WriteFirstSettings(ToLibraryPath(bridge::MakeWritable(folder).string()));
    } catch (const MException& raised) {
      throw Failure(ExitCode::kOutput, "the settings could not be written", bridge::ToUtf8(raised.message));
    }
  }
}

}  // namespace cli
