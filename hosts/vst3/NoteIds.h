#pragma once
#include <array>
#include <cstdint>

namespace vst3 {

// The last notes that a host has begun under ids of its own. [audio]
class NoteIds {
 public:
  void Keep(int32_t id, int64_t number) noexcept { notes_[next_++ % kMost] = {id, number}; }

  // The number of the newest note of that id, -1 for none.
  int64_t Find(int32_t id) const noexcept {
    int64_t newest = -1;
    for (const Note& note : notes_)
      if (id >= 0 && note.id == id && note.number > newest) newest = note.number;
    return newest;
  }

 private:
  static constexpr std::size_t kMost = 256;  // more than can sound

  struct Note {
    int32_t id = -1;
    int64_t number = -1;
  };
  std::array<Note, kMost> notes_ = {};
  std::size_t next_ = 0;
};

}  // namespace vst3
