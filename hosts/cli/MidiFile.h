#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace cli {

// What a MIDI file does to an instrument.
struct MidiEvent {
  enum class Kind { kPress, kRelease, kPedal, kReleaseAll };

  double seconds;
  Kind kind;
  int32_t channel;  // 0..15
  int32_t key;      // of a note
  double volume;    // of kPress: velocity / 127
  bool isDown;      // of kPedal
};

// The events of all tracks in order of time, by the file's tempo map. Raises Failure with kFile.
std::vector<MidiEvent> ReadMidiFile(const std::string& path);

}  // namespace cli
