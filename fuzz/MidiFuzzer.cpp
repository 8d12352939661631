// The bytes are a MIDI file: it is refused with a place, or its events are in order, within the limits that
// an instrument's host relies on.

#include <string>

#include "hosts/cli/Failure.h"
#include "hosts/cli/MidiFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* input, std::size_t size) {
  std::vector<cli::MidiEvent> events;
  try {
    events = cli::ParseMidi({input, size}, "fuzzed");
  } catch (const cli::Failure& failure) {
    if (failure.code != cli::ExitCode::kFile || !std::string(failure.what()).starts_with("fuzzed, byte "))
      __builtin_trap();
  }
  double last = 0;
  for (const cli::MidiEvent& event : events) {
    if (!(event.seconds >= last && event.seconds <= cli::kMaximumMidiSeconds)) __builtin_trap();
    if (event.channel < 0 || event.channel > 15 || event.key < 0 || event.key > 127) __builtin_trap();
    if (event.kind == cli::MidiEvent::Kind::kPress && !(event.volume > 0 && event.volume <= 1))
      __builtin_trap();
    last = event.seconds;
  }
  return 0;
}
