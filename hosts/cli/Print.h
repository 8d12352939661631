#pragma once
#include <string>

namespace cli {

// Writes to standard output. Raises Failure with kOutput.
void Print(const std::string& text);

}  // namespace cli
