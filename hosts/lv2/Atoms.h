#pragma once
// Events between a host and an instrument, as atoms in buffers of the host. Nothing outside of a buffer is
// read, whatever sizes it holds.

#include <lv2/atom/atom.h>
#include <lv2/atom/forge.h>

#include "hosts/lv2/Uris.h"

namespace lv2 {

// The events of a sequence, one after the other. [audio]
class EventReader {
 public:
  // What is null or no sequence has no events.
  EventReader(const LV2_Atom_Sequence* sequence, const Urids& urids) noexcept;

  // Null behind the last event, or the last that is whole.
  const LV2_Atom_Event* Get() const noexcept { return event_; }
  void GoOn() noexcept;

 private:
  void Look() noexcept;

  const uint8_t* next_ = nullptr;
  const uint8_t* end_ = nullptr;
  const LV2_Atom_Event* event_ = nullptr;
};

// The type of an object, 0 for another atom. [audio]
LV2_URID GetObjectType(const LV2_Atom& atom, const Urids& urids) noexcept;
// The value of an object's property; null if it has none. [audio]
const LV2_Atom* FindProperty(const LV2_Atom& object, LV2_URID key) noexcept;

// Writes a sequence of messages to a buffer. What finds no room there is left out. [audio]
class EventWriter {
 public:
  EventWriter(LV2_URID_Map& map, const Urids& urids);

  // `buffer` is empty and says its room. Null: nothing is written.
  void Begin(LV2_Atom_Sequence* buffer) noexcept;
  // Messages at the frame 0: the property has this path; the state has changed.
  void WritePath(LV2_URID property, std::string_view path) noexcept;
  void WriteStateChanged() noexcept;
  void End() noexcept;

 private:
  bool HasRoom(std::size_t size) const noexcept;

  const Urids& urids_;
  LV2_Atom_Forge forge_;
  LV2_Atom_Forge_Frame sequence_ = {};
  bool isOpen_ = false;
};

}  // namespace lv2
