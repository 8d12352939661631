#include "hosts/cli/MidiFile.h"

#include <smf.h>

#include <memory>
#include <optional>

#include "hosts/cli/Failure.h"
#include "hosts/cli/System.h"

namespace cli {

namespace {

constexpr int kRelease = 0x80, kPress = 0x90, kControl = 0xB0;
constexpr int kPedal = 64, kAllSoundOff = 120, kResetControllers = 121, kAllNotesOff = 123;

std::optional<MidiEvent> ReadControl(MidiEvent event, int controller, int value) {
  event.kind = MidiEvent::Kind::kPedal;
  if (controller == kPedal) {
    event.isDown = value >= 64;
    return event;
  }
  if (controller == kResetControllers) return event;  // the pedal goes up
  if (controller != kAllSoundOff && controller < kAllNotesOff) return std::nullopt;
  event.kind = MidiEvent::Kind::kReleaseAll;
  return event;
}

std::optional<MidiEvent> ReadEvent(double seconds, const unsigned char* bytes, int count) {
  if (count < 3) return std::nullopt;
  MidiEvent event{seconds, MidiEvent::Kind::kRelease, bytes[0] & 0x0F, bytes[1], 0, false};
  switch (bytes[0] & 0xF0) {
    case kPress:
      if (bytes[2] == 0) return event;
      event.kind = MidiEvent::Kind::kPress;
      event.volume = bytes[2] / 127.0;
      return event;
    case kRelease:
      return event;
    case kControl:
      return ReadControl(event, bytes[1], bytes[2]);
    default:
      return std::nullopt;
  }
}

// Where an event lies, also in a file that counts frames of film instead of quarter notes.
double GetSeconds(const smf_t& file, const smf_event_t& event) {
  if (file.frames_per_second == 0) return event.time_seconds;
  return double(event.time_pulses) / (double(file.frames_per_second) * file.resolution);
}

}  // namespace

std::vector<MidiEvent> ReadMidiFile(const std::string& path) {
  if (const std::string why = WhyUnreadable(path); !why.empty())
    throw Failure(ExitCode::kFile, path + ": " + why);
  g_log_set_default_handler([](const char*, GLogLevelFlags, const char*, void*) {}, nullptr);
  const std::unique_ptr<smf_t, void (*)(smf_t*)> file(smf_load(path.c_str()), smf_delete);
  if (!file) throw Failure(ExitCode::kFile, path + ": it cannot be read as a MIDI file");
  std::vector<MidiEvent> events;
  while (const smf_event_t* const event = smf_get_next_event(file.get()))
    if (const auto read = ReadEvent(GetSeconds(*file, *event), event->midi_buffer, event->midi_buffer_length))
      events.push_back(*read);
  return events;
}

}  // namespace cli
