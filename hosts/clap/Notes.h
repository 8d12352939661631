#pragma once
#include <clap/events.h>

#include <array>

#include "hosts/bridge/DawPlugin.h"

namespace clap {

// The notes that a host plays, by what it calls them: port, channel, key and note_id, of which -1 stands for
// all. There is one port, 0. [audio]
class Notes {
 public:
  explicit Notes(bridge::DawPlugin& plugin) noexcept : plugin_(plugin) {}

  void Begin(const clap_event_note_t& event) noexcept;
  void Release(const clap_event_note_t& event) noexcept;
  void Choke(const clap_event_note_t& event) noexcept;
  void Play(const clap_event_midi_t& event) noexcept;

  // Tells the host which of its notes are over, in the last frame of a block. It may refuse to hear of them.
  void TellEnds(const clap_output_events_t* out, uint32_t frames) noexcept;
  // All are over, and nobody is to be told.
  void Forget() noexcept { count_ = 0; }

 private:
  static constexpr std::size_t kMost = 256;  // more than voices that can sound

  struct Note {
    int64_t number;  // in the plug-in
    int32_t id;
    int16_t channel;
    int16_t key;
    bool isHosts;  // which is to hear of its end
  };

  static bool IsMeant(const Note& note, const clap_event_note_t& event) noexcept;
  bool IsAnotherOfItsName(std::size_t place) const noexcept;
  void Add(const Note& note) noexcept;
  void Drop() noexcept;

  bridge::DawPlugin& plugin_;
  std::size_t count_ = 0;
  std::array<Note, kMost> notes_;  // in the order of their beginnings
};

}  // namespace clap
