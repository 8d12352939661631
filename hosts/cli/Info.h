#pragma once
#include <string>

namespace cli {

// What a file holds, as JSON; its kind follows from its extension, whatever the case. Raises Failure with
// kFile.
std::string DescribeFile(const std::string& path);

}  // namespace cli
