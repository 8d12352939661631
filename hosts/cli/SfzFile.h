#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace cli {

// A sound of an SFZ file for a range of velocities.
struct SfzRegion {
  std::string sample;  // path, seen from the current folder
  int32_t lowest = 0;  // velocity, 0..127
  int32_t highest = 127;
};

// The regions of an SFZ file, one sound for all keys: what headers above a region (global, master, group) say
// holds for it, default_path (control) stands in front of its sample, "\" in paths is "/", and of all
// opcodes sample, lovel, hivel, key, lokey and hikey are read. Velocities of different regions are the same
// or do not overlap. Raises Failure with kFile, with file and line: a sample that is not there, regions
// without one, of several keys or with velocities that overlap, #include and #define.
std::vector<SfzRegion> ReadSfz(const std::string& path);

}  // namespace cli
