#include "hosts/cli/Warnings.h"

#include <cmath>
#include <cstdio>

#include "hosts/cli/Words.h"

namespace cli {

void Warn(const std::string& text) {
  std::fputs(("sonvelle: warning: " + OneLine(text) + "\n").c_str(), stderr);
}

void WarnOfPeak(float peak, const std::string& path) {
  char decibels[32];
  std::snprintf(decibels, sizeof decibels, "%+.1f dB", 20 * std::log10(static_cast<double>(peak)));
  if (!std::isfinite(peak))
    Warn(path + ": the output contains values that are not finite");
  else if (peak > 1)
    Warn(path + ": the output exceeds full scale, its peak is at " + decibels);
}

}  // namespace cli
