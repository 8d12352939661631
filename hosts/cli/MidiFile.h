#pragma once
#include <span>
#include <string>
#include <vector>

#include "hosts/bridge/NoteEvent.h"

namespace cli {

// What a MIDI file does to an instrument, and when.
struct MidiEvent : bridge::NoteEvent {
  double seconds = 0;
};

constexpr double kMaximumMidiSeconds = 86400;

// The events of all tracks of a Standard MIDI File (format 0 or 1, any division) in order of time, by the
// file's tempo map; of one time in the order of the tracks. Chunks of other kinds are passed over. Raises
// Failure with kFile for what is broken or cut off, which begins with `name` and the place, and for events
// behind kMaximumMidiSeconds.
std::vector<MidiEvent> ParseMidi(std::span<const uint8_t> bytes, const std::string& name);

// As ParseMidi for the contents of a file. Raises Failure with kFile.
std::vector<MidiEvent> ReadMidiFile(const std::string& path);

}  // namespace cli
