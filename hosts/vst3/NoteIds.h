#pragma once
#include <array>
#include <cstdint>

namespace vst3 {

// The last notes that a host has begun under ids of its own. Some hosts give all notes the same one, so the
// channel and the key count as well. [audio]
class NoteIds {
 public:
  void Keep(int32_t id, int32_t channel, int32_t key, int64_t number) noexcept {
    notes_[next_++ % kMost] = {id, channel, key, number, false};
  }

  // The number of the newest note of these that is not ended, or else of the newest at all; -1 for none. It
  // counts as ended.
  int64_t End(int32_t id, int32_t channel, int32_t key) noexcept {
    Note* best = nullptr;
    for (Note& note : notes_)
      if (id >= 0 && note.id == id && note.channel == channel && note.key == key &&
          (!best || note.isEnded < best->isEnded ||
           (note.isEnded == best->isEnded && note.number > best->number)))
        best = &note;
    if (!best) return -1;
    best->isEnded = true;
    return best->number;
  }

 private:
  static constexpr std::size_t kMost = 256;  // more than can sound

  struct Note {
    int32_t id = -1;
    int32_t channel = 0;
    int32_t key = 0;
    int64_t number = -1;
    bool isEnded = false;
  };
  std::array<Note, kMost> notes_ = {};
  std::size_t next_ = 0;
};

}  // namespace vst3
