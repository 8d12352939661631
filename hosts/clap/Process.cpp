// What an instance does on the audio thread.

#include <algorithm>

#include "hosts/clap/Instance.h"
#include "hosts/clap/Parameters.h"

namespace clap {

namespace {

constexpr uint32_t kMostFrames = 0x7FFFFFFF;

void Clear(const clap_audio_buffer_t& buffer, uint32_t firstChannel, uint32_t frames) noexcept {
  for (uint32_t c = firstChannel; c < buffer.channel_count; ++c) {
    if (buffer.data32 && buffer.data32[c]) std::fill_n(buffer.data32[c], frames, 0.0f);
    if (!buffer.data32 && buffer.data64 && buffer.data64[c]) std::fill_n(buffer.data64[c], frames, 0.0);
  }
}

template <typename Event>
const Event* As(const clap_event_header_t& header) noexcept {
  return header.size >= sizeof(Event) ? reinterpret_cast<const Event*>(&header) : nullptr;
}

}  // namespace

clap_process_status Instance::Process(const clap_process_t& block) noexcept {
  host_.ExpectAudio();
  const bool hasBuffers = TakeBuffers(block);
  const uint32_t frames = hasBuffers && IsActive() ? block.frames_count : 0;
  if (isOffline_ != wantsOffline_.load(std::memory_order_relaxed)) {
    isOffline_ = !isOffline_;
    plugin_.SetOffline(isOffline_);
  }
  hasChanged_ = false;
  plugin_.Begin(in_.data(), out_.data(), static_cast<int32_t>(frames));
  RunEvents(block.in_events, frames, IsActive());
  plugin_.End();
  notes_.TellEnds(block.out_events, block.frames_count);
  FollowTail();
  if (!hasBuffers || !IsActive()) return CLAP_PROCESS_ERROR;
  return plugin_.IsQuiet() ? CLAP_PROCESS_SLEEP : CLAP_PROCESS_CONTINUE;
}

// Clears what is not written otherwise; false, with silence, where the block is not one of these ports.
bool Instance::TakeBuffers(const clap_process_t& block) noexcept {
  const auto channels = static_cast<uint32_t>(channels_);
  in_ = {};
  if (!block.audio_outputs || block.audio_outputs_count == 0 || block.frames_count > kMostFrames)
    return false;
  bool isRight = IsActive();
  for (uint32_t port = 0; port < block.audio_outputs_count; ++port)
    block.audio_outputs[port].constant_mask = 0;
  const clap_audio_buffer_t& out = block.audio_outputs[0];
  for (uint32_t c = 0; c < channels; ++c) {
    out_[c] = out.data32 && c < out.channel_count ? out.data32[c] : nullptr;
    isRight = isRight && out_[c];
  }
  if (block.audio_inputs && block.audio_inputs_count > 0 && !IsInstrument()) {
    const clap_audio_buffer_t& in = block.audio_inputs[0];
    isRight = isRight && in.data32;
    for (uint32_t c = 0; in.data32 && c < std::min(channels, in.channel_count); ++c) in_[c] = in.data32[c];
  }
  Clear(out, isRight ? channels : 0, block.frames_count);
  for (uint32_t port = 1; port < block.audio_outputs_count; ++port)
    Clear(block.audio_outputs[port], 0, block.frames_count);
  return isRight;
}

void Instance::RunEvents(const clap_input_events_t* events, uint32_t frames, bool areNotesHeard) noexcept {
  const uint32_t count = events && events->size && events->get ? events->size(events) : 0;
  for (uint32_t i = 0; i < count; ++i) {
    const clap_event_header_t* const header = events->get(events, i);
    if (!header || header->space_id != CLAP_CORE_EVENT_SPACE_ID) continue;
    RunEvent(*header, static_cast<int32_t>(std::min(header->time, frames)), areNotesHeard);
  }
}

void Instance::RunEvent(const clap_event_header_t& header, int32_t frame, bool areNotesHeard) noexcept {
  if (header.type == CLAP_EVENT_PARAM_VALUE) {
    if (const auto* const event = As<clap_event_param_value_t>(header)) Change(*event, frame);
    return;
  }
  if (!areNotesHeard || !IsInstrument()) return;
  if (header.type == CLAP_EVENT_MIDI) {
    const auto* const event = As<clap_event_midi_t>(header);
    if (!event) return;
    plugin_.RunTo(frame);
    return notes_.Play(*event);
  }
  const auto* const event = header.type <= CLAP_EVENT_NOTE_CHOKE ? As<clap_event_note_t>(header) : nullptr;
  if (!event) return;
  plugin_.RunTo(frame);
  if (header.type == CLAP_EVENT_NOTE_ON) notes_.Begin(*event);
  if (header.type == CLAP_EVENT_NOTE_OFF) notes_.Release(*event);
  if (header.type == CLAP_EVENT_NOTE_CHOKE) notes_.Choke(*event);
}

void Instance::Change(const clap_event_param_value_t& event, int32_t frame) noexcept {
  const int32_t place = FindPlace(event);
  if (place < 0) return;
  plugin_.RunTo(frame);
  plugin_.Change(place, ReadValue(plugin_.GetParameters()[static_cast<std::size_t>(place)], event.value));
  hasChanged_ = true;
  isTailOld_.store(true, std::memory_order_relaxed);
}

// The cookie is the parameter's address, but it comes from outside.
int32_t Instance::FindPlace(const clap_event_param_value_t& event) const noexcept {
  const std::span<const bridge::DawParameter> all = plugin_.GetParameters();
  const auto offset =
      reinterpret_cast<std::uintptr_t>(event.cookie) - reinterpret_cast<std::uintptr_t>(all.data());
  const std::size_t place = offset / sizeof(bridge::DawParameter);
  if (event.cookie && place < all.size() && all[place].id == event.param_id)
    return static_cast<int32_t>(place);
  return plugin_.GetParameterList().Find(event.param_id);
}

void Instance::Reset() noexcept {
  host_.ExpectAudio();
  plugin_.Reset();
}

void Instance::Flush(const clap_input_events_t* events) noexcept {
  if (IsActive())
    host_.ExpectAudio();
  else
    host_.ExpectMain();
  plugin_.Begin(nullptr, nullptr, 0);
  RunEvents(events, 0, false);
  plugin_.End();
}

}  // namespace clap
