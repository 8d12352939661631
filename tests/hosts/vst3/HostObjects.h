#pragma once
// What a host hands to a plug-in: queues of points, lists of events, streams, a handler.

#include <travesty/audio_processor.h>
#include <travesty/bstream.h>
#include <travesty/edit_controller.h>
#include <travesty/events.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <vector>

#include "hosts/vst3/Interface.h"

namespace host {

using vst3::Face;
using vst3::kCall;

// References are counted, and that is all.
class Unknown {
 public:
  v3_result QueryInterface(const uint8_t*, void** object) {
    *object = nullptr;
    return V3_NO_INTERFACE;
  }
  uint32_t Ref() { return ++references; }
  uint32_t Unref() { return --references; }

  std::atomic<uint32_t> references = 1;

 protected:
  static constexpr v3_funknown kUnknown = {kCall<&Unknown::QueryInterface>, kCall<&Unknown::Ref>,
                                           kCall<&Unknown::Unref>};
};

struct Point {
  int32_t frame;
  double value;
};

// The points of one parameter.
class Queue : public Unknown {
 public:
  Queue(v3_param_id parameter, std::vector<Point> list) : id(parameter), points(std::move(list)) {}
  Queue(Queue&& other) noexcept : id(other.id), points(std::move(other.points)) {}

  v3_param_id GetId() { return id; }
  int32_t GetCount() { return static_cast<int32_t>(points.size()); }
  v3_result GetPoint(int32_t index, int32_t* frame, double* value) {
    if (index < 0 || index >= GetCount()) return V3_INVALID_ARG;
    *frame = points[static_cast<std::size_t>(index)].frame;
    *value = points[static_cast<std::size_t>(index)].value;
    return V3_OK;
  }
  v3_result AddPoint(int32_t, double, int32_t*) { return V3_NOT_IMPLEMENTED; }
  v3_param_value_queue** Get() { return reinterpret_cast<v3_param_value_queue**>(&face_); }

  const v3_param_id id;
  std::vector<Point> points;

 private:
  static constexpr v3_param_value_queue_cpp kTable = {
      kUnknown,
      {kCall<&Queue::GetId>, kCall<&Queue::GetCount>, kCall<&Queue::GetPoint>, kCall<&Queue::AddPoint>}};
  Face face_ = {&kTable, this};
};

// The queues of a block.
class Changes : public Unknown {
 public:
  void Add(v3_param_id id, std::vector<Point> points) { queues.emplace_back(id, std::move(points)); }
  int32_t GetCount() { return static_cast<int32_t>(queues.size()); }
  v3_param_value_queue** GetQueue(int32_t index) {
    return index < 0 || index >= GetCount() ? nullptr : queues[static_cast<std::size_t>(index)].Get();
  }
  v3_param_value_queue** AddQueue(v3_param_id*, int32_t*) { return nullptr; }
  v3_param_changes** Get() { return reinterpret_cast<v3_param_changes**>(&face_); }

  std::vector<Queue> queues;

 private:
  static constexpr v3_param_changes_cpp kTable = {
      kUnknown, {kCall<&Changes::GetCount>, kCall<&Changes::GetQueue>, kCall<&Changes::AddQueue>}};
  Face face_ = {&kTable, this};
};

// The notes of a block.
class Events : public Unknown {
 public:
  void Press(int32_t frame, int32_t key, float velocity, int32_t channel = 0, int32_t id = -1) {
    v3_event& event = Add(frame, V3_EVENT_NOTE_ON);
    event.note_on = {static_cast<int16_t>(channel), static_cast<int16_t>(key), 0, velocity, 0, id};
  }
  void Release(int32_t frame, int32_t key, int32_t channel = 0, int32_t id = -1) {
    v3_event& event = Add(frame, V3_EVENT_NOTE_OFF);
    event.note_off = {static_cast<int16_t>(channel), static_cast<int16_t>(key), 0, id, 0};
  }
  v3_event& Add(int32_t frame, uint16_t type) {
    v3_event& event = events.emplace_back();
    event.sample_offset = frame;
    event.type = type;
    return event;
  }
  uint32_t GetCount() { return static_cast<uint32_t>(events.size()); }
  v3_result GetEvent(int32_t index, v3_event* event) {
    if (index < 0 || index >= static_cast<int32_t>(events.size())) return V3_INVALID_ARG;
    *event = events[static_cast<std::size_t>(index)];
    return V3_OK;
  }
  v3_result AddEvent(v3_event*) { return V3_NOT_IMPLEMENTED; }
  v3_event_list** Get() { return reinterpret_cast<v3_event_list**>(&face_); }

  std::vector<v3_event> events;

 private:
  static constexpr v3_event_list_cpp kTable = {
      kUnknown, {kCall<&Events::GetCount>, kCall<&Events::GetEvent>, kCall<&Events::AddEvent>}};
  Face face_ = {&kTable, this};
};

// A stream that gives and takes at most `portion` bytes at a time, and nothing behind `limit`.
class Stream : public Unknown {
 public:
  explicit Stream(std::string content = {}, int32_t most = 1 << 30)
      : text(std::move(content)), portion(most) {}

  v3_result Read(void* buffer, int32_t count, int32_t* read) {
    *read = static_cast<int32_t>(
        text.copy(static_cast<char*>(buffer), static_cast<std::size_t>(std::min(count, portion)), position));
    position += static_cast<std::size_t>(*read);
    return V3_OK;
  }
  v3_result Write(void* buffer, int32_t count, int32_t* written) {
    if (text.size() >= limit) return V3_INTERNAL_ERR;
    *written = std::min(count, portion);
    text.append(static_cast<const char*>(buffer), static_cast<std::size_t>(*written));
    return V3_OK;
  }
  v3_result Seek(int64_t, int32_t, int64_t*) { return V3_NOT_IMPLEMENTED; }
  v3_result Tell(int64_t*) { return V3_NOT_IMPLEMENTED; }
  v3_bstream** Get() { return reinterpret_cast<v3_bstream**>(&face_); }

  std::string text;
  std::size_t position = 0;
  std::size_t limit = std::string::npos;
  int32_t portion;

 private:
  struct Table {
    v3_funknown unknown;
    v3_bstream stream;
  };
  static constexpr Table kTable = {
      kUnknown, {kCall<&Stream::Read>, kCall<&Stream::Write>, kCall<&Stream::Seek>, kCall<&Stream::Tell>}};
  Face face_ = {&kTable, this};
};

// Notes what the plug-in asks for.
class Handler : public Unknown {
 public:
  v3_result Edit(v3_param_id) { return V3_OK; }
  v3_result Perform(v3_param_id, double) { return V3_OK; }
  v3_result Restart(int32_t asked) {
    flags |= asked;
    ++restarts;
    return V3_OK;
  }
  v3_component_handler** Get() { return reinterpret_cast<v3_component_handler**>(&face_); }

  std::atomic<int32_t> flags = 0;
  std::atomic<int32_t> restarts = 0;

 private:
  struct Table {
    v3_funknown unknown;
    v3_component_handler handler;
  };
  static constexpr Table kTable = {
      kUnknown,
      {kCall<&Handler::Edit>, kCall<&Handler::Perform>, kCall<&Handler::Edit>, kCall<&Handler::Restart>}};
  Face face_ = {&kTable, this};
};

}  // namespace host
