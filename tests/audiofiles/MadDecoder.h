#pragma once
// Another decoder to compare with: libmad.

#include <string>
#include <vector>

struct MadSound {
  int rate = 0;
  int frames = 0;
  std::vector<std::vector<double>> channels;  // full scale 1, clipped to what 16 bits hold
};

// All frames from the first byte on, up to the first that is none.
MadSound DecodeWithMad(const std::string& bytes);
