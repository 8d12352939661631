#include "hosts/vst3/BlockChanges.h"

#include <algorithm>
#include <cmath>

namespace vst3 {

namespace {

constexpr int32_t kLastChannel = 15;
constexpr int32_t kLastKey = 127;

}  // namespace

// One queue more than there are parameters would be one of a parameter that has another.
BlockChanges::BlockChanges(const ParameterList& list) : list_(list) {
  queues_.reserve(static_cast<std::size_t>(list.GetCount()));
}

void BlockChanges::Begin(v3_param_changes** points, v3_event_list** events, int32_t frames) noexcept {
  frames_ = frames;
  queues_.clear();
  const int32_t count = points ? v3_cpp_obj(points)->get_param_count(points) : 0;
  for (int32_t i = 0; i < count && queues_.size() < queues_.capacity(); ++i) {
    v3_param_value_queue** const queue = v3_cpp_obj(points)->get_param_data(points, i);
    if (!queue) continue;
    const Target target = list_.Find(v3_cpp_obj(queue)->get_param_id(queue));
    Queue read = {queue, target, v3_cpp_obj(queue)->get_point_count(queue), 0, 0, 0};
    if (target.kind != Target::Kind::kNone && ReadPoint(read)) queues_.push_back(read);
  }
  events_ = events;
  eventCount_ = events ? static_cast<int32_t>(v3_cpp_obj(events)->get_event_count(events)) : 0;
  nextEvent_ = 0;
  ReadEvent();
}

int32_t BlockChanges::Limit(int32_t frame) const noexcept {
  return std::max(std::min(frame, frames_ - 1), 0);
}

bool BlockChanges::ReadPoint(Queue& queue) const noexcept {
  while (queue.next < queue.count) {
    int32_t frame = 0;
    double value = 0;
    if (v3_cpp_obj(queue.points)->get_point(queue.points, queue.next++, &frame, &value) != V3_OK) continue;
    if (std::isnan(value)) continue;
    queue.frame = Limit(frame);
    queue.value = value;
    return true;
  }
  return false;
}

void BlockChanges::ReadEvent() noexcept {
  hasEvent_ = false;
  while (!hasEvent_ && nextEvent_ < eventCount_) {
    hasEvent_ = v3_cpp_obj(events_)->get_event(events_, nextEvent_++, &event_) == V3_OK;
    event_.sample_offset = Limit(event_.sample_offset);
  }
}

bool BlockChanges::Next(Change& change) noexcept {
  const auto first = std::min_element(queues_.begin(), queues_.end(),
                                      [](const Queue& a, const Queue& b) { return a.frame < b.frame; });
  if (first != queues_.end() && !(hasEvent_ && event_.sample_offset < first->frame)) {
    change.frame = first->frame;
    change.target = first->target;
    change.value = first->value;
    if (!ReadPoint(*first)) queues_.erase(first);
    return true;
  }
  if (!hasEvent_) return false;
  change.frame = event_.sample_offset;
  change.target = {};
  change.event = event_;
  ReadEvent();
  return true;
}

std::optional<bridge::NoteEvent> ReadEvent(const v3_event& event) noexcept {
  const bool isOn = event.type == V3_EVENT_NOTE_ON;
  if (event.bus_index != 0 || (!isOn && event.type != V3_EVENT_NOTE_OFF)) return std::nullopt;
  bridge::NoteEvent note;
  note.channel = isOn ? event.note_on.channel : event.note_off.channel;
  note.key = isOn ? event.note_on.pitch : event.note_off.pitch;
  if (note.channel < 0 || note.channel > kLastChannel || note.key < 0 || note.key > kLastKey)
    return std::nullopt;
  if (!isOn || !(event.note_on.velocity > 0)) return note;
  note.kind = bridge::NoteEvent::Kind::kPress;
  note.volume = bridge::GetVolume(event.note_on.velocity);
  return note;
}

}  // namespace vst3
