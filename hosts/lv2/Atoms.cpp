#include "hosts/lv2/Atoms.h"

#include <lv2/atom/util.h>

namespace lv2 {

namespace {

constexpr std::size_t kMessageSize = 128;  // of an event with an object, without the path

}  // namespace

EventReader::EventReader(const LV2_Atom_Sequence* sequence, const Urids& urids) noexcept {
  if (!sequence || sequence->atom.type != urids.atomSequence ||
      sequence->atom.size < sizeof(LV2_Atom_Sequence_Body))
    return;
  const auto* const body = reinterpret_cast<const uint8_t*>(&sequence->body);
  next_ = body + sizeof(LV2_Atom_Sequence_Body);
  end_ = body + sequence->atom.size;
  Look();
}

void EventReader::Look() noexcept {
  event_ = nullptr;
  const auto room = static_cast<std::size_t>(end_ - next_);
  if (next_ > end_ || room < sizeof(LV2_Atom_Event)) return;
  const auto* const event = reinterpret_cast<const LV2_Atom_Event*>(next_);
  if (event->body.size <= room - sizeof(LV2_Atom_Event)) event_ = event;
}

void EventReader::GoOn() noexcept {
  const std::size_t size = sizeof(LV2_Atom_Event) + lv2_atom_pad_size(event_->body.size);
  next_ = size < static_cast<std::size_t>(end_ - next_) ? next_ + size : end_;
  Look();
}

LV2_URID GetObjectType(const LV2_Atom& atom, const Urids& urids) noexcept {
  if ((atom.type != urids.atomObject && atom.type != urids.atomBlank) ||
      atom.size < sizeof(LV2_Atom_Object_Body))
    return 0;
  return reinterpret_cast<const LV2_Atom_Object&>(atom).body.otype;
}

const LV2_Atom* FindProperty(const LV2_Atom& object, LV2_URID key) noexcept {
  const auto* const body = reinterpret_cast<const uint8_t*>(&object + 1);
  std::size_t place = sizeof(LV2_Atom_Object_Body);
  while (place <= object.size && object.size - place >= sizeof(LV2_Atom_Property_Body)) {
    const auto* const property = reinterpret_cast<const LV2_Atom_Property_Body*>(body + place);
    const std::size_t room = object.size - place - sizeof(LV2_Atom_Property_Body);
    if (property->value.size > room) return nullptr;
    if (property->key == key) return &property->value;
    place += sizeof(LV2_Atom_Property_Body) + lv2_atom_pad_size(property->value.size);
  }
  return nullptr;
}

EventWriter::EventWriter(LV2_URID_Map& map, const Urids& urids) : urids_(urids) {
  lv2_atom_forge_init(&forge_, &map);
}

void EventWriter::Begin(LV2_Atom_Sequence* buffer) noexcept {
  isOpen_ = false;
  if (!buffer || buffer->atom.size < sizeof(LV2_Atom_Sequence_Body)) return;
  const std::size_t room = buffer->atom.size;
  lv2_atom_forge_set_buffer(&forge_, reinterpret_cast<uint8_t*>(buffer), room);
  isOpen_ = lv2_atom_forge_sequence_head(&forge_, &sequence_, 0) != 0;
}

bool EventWriter::HasRoom(std::size_t size) const noexcept {
  return isOpen_ && forge_.size - forge_.offset >= size;
}

void EventWriter::WritePath(LV2_URID property, std::string_view path) noexcept {
  if (!HasRoom(kMessageSize + path.size())) return;
  LV2_Atom_Forge_Frame object;
  lv2_atom_forge_frame_time(&forge_, 0);
  lv2_atom_forge_object(&forge_, &object, 0, urids_.patchSet);
  lv2_atom_forge_key(&forge_, urids_.patchProperty);
  lv2_atom_forge_urid(&forge_, property);
  lv2_atom_forge_key(&forge_, urids_.patchValue);
  lv2_atom_forge_path(&forge_, path.data(), static_cast<uint32_t>(path.size()));
  lv2_atom_forge_pop(&forge_, &object);
}

void EventWriter::WriteStateChanged() noexcept {
  if (!HasRoom(kMessageSize)) return;
  LV2_Atom_Forge_Frame object;
  lv2_atom_forge_frame_time(&forge_, 0);
  lv2_atom_forge_object(&forge_, &object, 0, urids_.stateChanged);
  lv2_atom_forge_pop(&forge_, &object);
}

void EventWriter::End() noexcept {
  if (isOpen_) lv2_atom_forge_pop(&forge_, &sequence_);
  isOpen_ = false;
}

}  // namespace lv2
