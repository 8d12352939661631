#pragma once
#include <string>

namespace cli {

// A line on standard error; the work goes on.
void Warn(const std::string& text);

// Warns of a file whose greatest magnitude is beyond full scale, or not finite.
void WarnOfPeak(float peak, const std::string& path);

}  // namespace cli
