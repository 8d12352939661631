#pragma once
// Values of kReal rows as effects compute with them, whatever a state or a host has put there.

#include <cmath>

#include "dsp/MFilter.h"
#include "plugin/MPlugin.h"

// A depth, a resonance or any other amount: limited to a million. [any]
inline double MLimitedAmount(const MPluginParameter& row) noexcept {
  constexpr double kLargest = 1e6;
  return MLimitedValue(row, -kLargest, kLargest);
}

// Of a row that holds the decimal logarithm of hertz: the hertz, 1e-6 to 1e6. [host]
inline double MLimitedFrequency(const MPluginParameter& row) noexcept {
  constexpr double kLargestLog10 = 6;
  return std::pow(10.0, MLimitedValue(row, -kLargestLog10, kLargestLog10));
}

// The same, for which a filter is designed. [host]
inline double MLimitedFilterFrequency(const MPluginParameter& row, double sampleRate) noexcept {
  return MLimitFilterFrequency(MLimitedFrequency(row), sampleRate);
}
