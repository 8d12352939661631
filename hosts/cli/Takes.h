#pragma once
#include <vector>

#include "hosts/cli/TakeFiles.h"

namespace cli {

// One track of a take, as its file tells.
struct TakeTrack {
  std::string path;
  int32_t channels = 0;
  int32_t length = 0;
  int32_t bits = 0;   // AudioReader::GetBits
  double energy = 0;  // sum of the squares of all samples, mean of the channels
};

struct Take {
  std::string name;
  std::optional<int32_t> named;  // layer that the source tells, and
  double level = 0;              // the loudness of that layer, 0 for none
  int32_t layer = 0;             // from 1
  int32_t length = 0;            // of the longest track
  double rms = 0;                // the powers of the tracks summed
  int32_t loudestTrack = 0;
  std::vector<TakeTrack> tracks;  // in the order of the names
};

struct TakeSet {
  int32_t sampleRate = 0;
  std::vector<std::string> tracks;  // names
  std::vector<Take> takes;          // layer by layer, from soft to loud
  int64_t frames = 0;               // of all files
  bool areLevelsReplaced = false;   // layers are not louder one by one: `rms` is that of their order
};

// Reads all files and puts them in order. Layers are those that the source tells; where it tells none, a take
// that is more than kLayerDecibels above the softest of the layer begins the next one. Raises Failure with
// kFile for files that do not fit: other tracks, another rate, layers that only some have, too many tracks or
// channels, samples that are no numbers.
constexpr double kLayerDecibels = 1.5;
TakeSet ReadTakes(const std::vector<TakeFile>& files);

}  // namespace cli
