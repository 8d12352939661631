#include "hosts/bridge/NoteEvent.h"

#include <algorithm>
#include <cmath>

namespace bridge {

namespace {

constexpr uint8_t kReleaseStatus = 0x80, kPressStatus = 0x90, kControlStatus = 0xB0;
constexpr uint8_t kPedal = 64, kAllSoundOff = 120, kResetControllers = 121, kAllNotesOff = 123;
constexpr uint8_t kPedalDown = 64, kMostData = 0x7F;

std::optional<NoteEvent> ReadController(NoteEvent event, uint8_t controller, uint8_t value) noexcept {
  if (controller == kPedal || controller == kResetControllers) {
    event.kind = NoteEvent::Kind::kPedal;
    event.isDown = controller == kPedal && value >= kPedalDown;
    return event;
  }
  if (controller != kAllSoundOff && controller < kAllNotesOff) return std::nullopt;
  event.kind = controller == kAllSoundOff ? NoteEvent::Kind::kSilence : NoteEvent::Kind::kReleaseAll;
  return event;
}

}  // namespace

double GetVolume(double velocity) noexcept {
  if (!(velocity > 0)) return 0;
  const double volume = std::min(velocity, 1.0);
  const double ofMidi = std::round(volume * kMostData) / kMostData;
  return static_cast<float>(ofMidi) == static_cast<float>(volume) ? ofMidi : volume;
}

std::optional<NoteEvent> ReadMidiMessage(uint8_t status, uint8_t first, uint8_t second) noexcept {
  NoteEvent event;
  event.channel = status & 0x0F;
  first &= kMostData;
  second &= kMostData;
  switch (status & 0xF0) {
    case kControlStatus:
      return ReadController(event, first, second);
    case kPressStatus:
      if (second > 0) {
        event.kind = NoteEvent::Kind::kPress;
        event.volume = second / 127.0;
      }
      [[fallthrough]];
    case kReleaseStatus:
      event.key = first;
      return event;
    default:
      return std::nullopt;
  }
}

}  // namespace bridge
