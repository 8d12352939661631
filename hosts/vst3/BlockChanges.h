#pragma once
#include <travesty/audio_processor.h>
#include <travesty/base.h>
#include <travesty/events.h>

#include <vector>

#include "hosts/bridge/NoteEvent.h"
#include "hosts/vst3/ParameterList.h"

namespace vst3 {

// What a host wants to have changed in a block: the points of its queues, of which there is one per
// parameter, and its events, in the order of their frames. Those outside of the block are moved to its ends;
// at one frame points come first. All of it is [audio] but the constructor.
class BlockChanges {
 public:
  struct Change {
    int32_t frame;
    Target target;  // of a point; kNone for an event
    double value;   // normalized
    v3_event event;
  };

  // The list outlives it.
  explicit BlockChanges(const ParameterList& list);

  // Both may be null.
  void Begin(v3_param_changes** points, v3_event_list** events, int32_t frames) noexcept;
  // The next one; false behind the last.
  bool Next(Change& change) noexcept;

 private:
  struct Queue {
    v3_param_value_queue** points;
    Target target;
    int32_t count;
    int32_t next;  // the point behind the one here
    int32_t frame;
    double value;
  };

  // Goes on to a queue's next point; false behind the last.
  bool ReadPoint(Queue& queue) const noexcept;
  void ReadEvent() noexcept;
  int32_t Limit(int32_t frame) const noexcept;

  const ParameterList& list_;
  int32_t frames_ = 0;
  std::vector<Queue> queues_;  // those that have a point left
  v3_event_list** events_ = nullptr;
  int32_t eventCount_ = 0;
  int32_t nextEvent_ = 0;
  bool hasEvent_ = false;
  v3_event event_ = {};
};

// What an event means to an instrument. A velocity that is the float of n/127 counts as that to the bit.
std::optional<bridge::NoteEvent> ReadEvent(const v3_event& event) noexcept;

}  // namespace vst3
