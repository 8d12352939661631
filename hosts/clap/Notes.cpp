#include "hosts/clap/Notes.h"

#include <algorithm>
#include <cmath>

namespace clap {

namespace {

constexpr int32_t kLastChannel = 15, kLastKey = 127;

bool IsIn(int32_t value, int32_t last) noexcept {
  return value >= 0 && value <= last;
}

}  // namespace

void Notes::Begin(const clap_event_note_t& event) noexcept {
  if (event.port_index > 0 || !IsIn(event.channel, kLastChannel) || !IsIn(event.key, kLastKey)) return;
  bridge::NoteEvent note;
  note.kind = bridge::NoteEvent::Kind::kPress;
  note.channel = event.channel;
  note.key = event.key;
  note.volume = bridge::GetVolume(event.velocity);
  Add({plugin_.Play(note), event.note_id, event.channel, event.key, true});
}

void Notes::Release(const clap_event_note_t& event) noexcept {
  for (std::size_t i = 0; i < count_; ++i)
    if (IsMeant(notes_[i], event)) plugin_.ReleaseNote(notes_[i].number);
}

void Notes::Choke(const clap_event_note_t& event) noexcept {
  for (std::size_t i = 0; i < count_; ++i)
    if (IsMeant(notes_[i], event)) plugin_.ChokeNote(notes_[i].number);
}

void Notes::Play(const clap_event_midi_t& event) noexcept {
  if (event.port_index > 0) return;
  const auto note = bridge::ReadMidiMessage(event.data[0], event.data[1], event.data[2]);
  if (!note) return;
  const int64_t number = plugin_.Play(*note);
  if (note->kind == bridge::NoteEvent::Kind::kPress)
    Add({number, -1, static_cast<int16_t>(note->channel), static_cast<int16_t>(note->key), false});
}

bool Notes::IsMeant(const Note& note, const clap_event_note_t& event) noexcept {
  const auto is = [](int32_t name, int32_t asked) { return asked < 0 || asked == name; };
  return event.port_index <= 0 && is(note.id, event.note_id) && is(note.channel, event.channel) &&
         is(note.key, event.key);
}

void Notes::Add(const Note& note) noexcept {
  if (count_ == kMost) Drop();
  if (count_ < kMost) notes_[count_++] = note;
}

void Notes::Drop() noexcept {
  const auto isOver = [this](const Note& note) { return !plugin_.HasNote(note.number); };
  count_ = static_cast<std::size_t>(
      std::remove_if(notes_.begin(), notes_.begin() + static_cast<std::ptrdiff_t>(count_), isOver) -
      notes_.begin());
}

// A note without an id ends in the host together with a newer one of its key, so it has to wait for that.
bool Notes::IsAnotherOfItsName(std::size_t place) const noexcept {
  const Note& note = notes_[place];
  return note.id < 0 && std::any_of(notes_.begin(), notes_.begin() + static_cast<std::ptrdiff_t>(count_),
                                    [&](const Note& other) {
                                      return &other != &note && other.isHosts && other.id < 0 &&
                                             other.channel == note.channel && other.key == note.key &&
                                             plugin_.HasNote(other.number);
                                    });
}

void Notes::TellEnds(const clap_output_events_t* out, uint32_t frames) noexcept {
  if (count_ == 0) return;
  for (std::size_t i = 0; out && out->try_push && i < count_; ++i) {
    const Note& note = notes_[i];
    if (!note.isHosts || plugin_.HasNote(note.number) || IsAnotherOfItsName(i)) continue;
    clap_event_note_t event = {};
    event.header = {sizeof event, frames > 0 ? frames - 1 : 0, CLAP_CORE_EVENT_SPACE_ID, CLAP_EVENT_NOTE_END,
                    0};
    event.note_id = note.id;
    event.channel = note.channel;
    event.key = note.key;
    out->try_push(out, &event.header);
  }
  Drop();
}

}  // namespace clap
