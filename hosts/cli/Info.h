#pragma once
#include <string>

namespace cli {

// What a file holds, as JSON; its kind follows from its extension, whatever the case. Resource libraries
// and samples can be read so far. Raises Failure with kFile.
std::string DescribeFile(const std::string& path);

}  // namespace cli
