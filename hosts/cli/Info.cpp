#include "hosts/cli/Info.h"

#include <algorithm>
#include <filesystem>

#include "core/MException.h"
#include "hosts/bridge/Parameters.h"
#include "hosts/cli/Failure.h"
#include "hosts/cli/Listing.h"
#include "hosts/cli/Paths.h"
#include "hosts/cli/System.h"
#include "resources/MResourceLibrary.h"

namespace cli {

namespace {

std::string LowerExtension(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return extension;
}

std::string KindOf(const std::string& path) {
  const std::string extension = LowerExtension(path);
  if (extension == ".mrf") return "resources";
  if (extension == ".qxmultisample") return "multisamples";
  if (extension == ".qxsubsamplelib") return "subsample libraries";
  return "samples";
}

}  // namespace

std::string DescribeFile(const std::string& path) {
  const std::string kind = KindOf(path);
  const std::string why = kind == "resources" ? "" : WhyUnreadable(path);
  if (!why.empty()) throw Failure(ExitCode::kFile, path + ": " + why);
  if (kind != "resources") throw Failure(ExitCode::kFile, path + ": " + kind + " cannot be read yet");
  const MString file = ToLibraryPath(path);
  try {
    MResourceLibrary library;
    library.LoadFile(file);
    return ResourcesAsJson(library);
  } catch (const MException& raised) {
    throw Failure(ExitCode::kFile, path + ": it cannot be read as a resource library",
                  bridge::ToUtf8(raised.message));
  }
}

}  // namespace cli
