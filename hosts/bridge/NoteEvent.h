#pragma once
#include <cstdint>
#include <optional>

namespace bridge {

// What notes and controllers do to an instrument.
struct NoteEvent {
  enum class Kind { kPress, kRelease, kPedal, kReleaseAll, kSilence };

  Kind kind = Kind::kRelease;
  int32_t channel = 0;  // 0 to 15
  int32_t key = 0;      // of a note, 0 to 127
  double volume = 0;    // of kPress: velocity / 127
  bool isDown = false;  // of kPedal
};

// The volume of a velocity of 0 to 1; what lies outside counts as the nearer end, no number as 0. Hosts
// compute n / 127, some as floats: what is the float of that is that to the bit. [any]
double GetVolume(double velocity) noexcept;

// What a MIDI channel message means; nothing for those that an instrument does not hear. A note with the
// velocity 0 is released, the resetting of controllers lifts the pedal. [any]
std::optional<NoteEvent> ReadMidiMessage(uint8_t status, uint8_t first, uint8_t second) noexcept;

}  // namespace bridge
