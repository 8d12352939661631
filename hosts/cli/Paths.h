#pragma once
#include <string>

#include "core/MString.h"

namespace cli {

// A path of the command line as the library's texts hold it. Raises Failure with kFile when it is no UTF-8,
// for such a file cannot be named there.
MString ToLibraryPath(const std::string& path);

}  // namespace cli
