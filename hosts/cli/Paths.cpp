#include "hosts/cli/Paths.h"

#include "core/MPath.h"
#include "hosts/cli/Failure.h"

namespace cli {

MString ToLibraryPath(const std::string& path) {
  MString text;
  if (!MDecodePath(path.c_str(), text)) throw Failure(ExitCode::kFile, path + ": the name is no UTF-8");
  return text;
}

}  // namespace cli
