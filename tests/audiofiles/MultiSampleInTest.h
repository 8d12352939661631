#pragma once
// Multisample files, made by a test.

#include <cstring>
#include <string>
#include <vector>

#include "tests/resources/ResourceFiles.h"

// One track of a take, as interleaved bytes.
struct TrackInTest {
  int32_t channels = 1;
  int32_t bits = 32;
  int32_t length = 0;
  std::string bytes;

  // One channel of floats.
  static TrackInTest Of(const std::vector<float>& samples) {
    TrackInTest track;
    track.length = static_cast<int32_t>(samples.size());
    track.bytes.assign(reinterpret_cast<const char*>(samples.data()), samples.size() * sizeof(float));
    return track;
  }
  static TrackInTest Constant(float value, int32_t length) {
    return Of(std::vector<float>(static_cast<std::size_t>(length), value));
  }
};

struct TakeInTest {
  double loudness;
  int32_t group;
  std::vector<TrackInTest> tracks;
  int32_t loudest = 0;
};

struct MultiSampleInTest {
  int32_t rate = 1000;
  std::vector<std::string> tracks = {"<track name=\"main\" volume=\"1\" pan=\"0\"/>"};
  std::vector<TakeInTest> takes;

  // As a file with these flags of a large resource library.
  std::string Make(uint32_t flags = 0) const {
    std::string index = "<multisample samplerate=\"" + std::to_string(rate) + "\">", items;
    for (const std::string& track : tracks) index += track;
    for (const TakeInTest& take : takes) {
      int32_t length = 0;
      for (const TrackInTest& track : take.tracks) length = std::max(length, track.length);
      index += "<sample length=\"" + std::to_string(length) + "\" rms=\"" + std::to_string(take.loudness) +
               "\" maxrmsindex=\"" + std::to_string(take.loudest) + "\" group=\"" +
               std::to_string(take.group) + "\">";
      for (const TrackInTest& track : take.tracks) {
        index += "<file channels=\"" + std::to_string(track.channels) + "\" length=\"" +
                 std::to_string(track.length) + "\" bps=\"" + std::to_string(track.bits) + "\" filestart=\"" +
                 std::to_string(items.size()) + "\" filesize=\"" + std::to_string(track.bytes.size()) +
                 "\"/>";
        items += flags & MLargeResourceFile::kItemsCompressed ? PackedAs(flags, track.bytes) : track.bytes;
      }
      index += "</sample>";
    }
    return LargeFile(index + "</multisample>", items, flags);
  }
};
