// One block.

#include <algorithm>

#include "hosts/bridge/BlockCheck.h"
#include "hosts/vst3/Instance.h"

namespace vst3 {

namespace {

constexpr int32_t kFlags = 64;  // of silent channels that a bus has room for
constexpr uint8_t kControlStatus = 0xB0;

// The buffer of a channel, null if the bus has none.
float* GetChannel(const v3_audio_bus_buffers* bus, int32_t channel) noexcept {
  return bus && bus->channel_buffers_32 && channel < bus->num_channels ? bus->channel_buffers_32[channel]
                                                                       : nullptr;
}

}  // namespace

// Without frames it is parameters alone that a host wants to get rid of, which may happen in any state.
v3_result Instance::Process(v3_process_data* data) {
  if (!data || data->nframes < 0 || (data->nframes > 0 && data->symbolic_sample_size != V3_SAMPLE_32))
    return V3_INVALID_ARG;
  const int32_t frames = plugin_.IsActive() ? data->nframes : 0;
  if (!ConnectBuffers(*data, frames)) return V3_INVALID_ARG;
  plugin_.Begin(in_.data(), out_.data(), frames);
  EnterBlocks();
  changes_.Begin(data->input_params, areBusesActive_[V3_EVENT][V3_INPUT] ? data->input_events : nullptr,
                 frames);
  PlayChanges();
  plugin_.End();
  FinishBuffers(*data, frames);
  return V3_OK;
}

// Values that were set while no blocks came and that no queue brought.
void Instance::EnterBlocks() noexcept {
  blocks_.store(blocks_ + 1, std::memory_order_relaxed);
  audioThread_.store(std::this_thread::get_id(), std::memory_order_relaxed);
  if (!plugin_.IsActive() || areBlocksComing_.load(std::memory_order_relaxed)) return;
  for (std::size_t i = 0; i < shown_.GetCount(); ++i)
    if (shown_.Take(i))
      plugin_.Change(static_cast<int32_t>(i), bridge::Denormalize(plugin_.GetParameters()[i], shown_.Get(i)));
  areBlocksComing_ = true;
}

// False if a channel is missing and the block is longer than what there is in its place.
bool Instance::ConnectBuffers(const v3_process_data& data, int32_t frames) noexcept {
  if (frames == 0) return true;
  const bool hasIn = data.inputs && data.num_input_buses > 0 && areBusesActive_[V3_AUDIO][V3_INPUT];
  const v3_audio_bus_buffers* const in = hasIn ? data.inputs : nullptr;
  const v3_audio_bus_buffers* const out = data.num_output_buses > 0 ? data.outputs : nullptr;
  for (std::size_t c = 0; c < out_.size(); ++c) {
    in_[c] = GetChannel(in, static_cast<int32_t>(c));
    out_[c] = GetChannel(out, static_cast<int32_t>(c));
    if (!out_[c] && frames > planeSize_) return false;
    if (!out_[c]) out_[c] = scratch_.data() + c * static_cast<std::size_t>(planeSize_);
  }
  return true;
}

void Instance::PlayChanges() noexcept {
  for (BlockChanges::Change change; changes_.Next(change);) {
    plugin_.RunTo(change.frame);
    if (change.target.kind != Target::Kind::kNone)
      PlayPoint(change.target, change.value);
    else
      PlayEvent(change.event);
  }
}

// A release by id ends that note, one without, or with an unknown one, the oldest of its key.
void Instance::PlayEvent(const v3_event& event) noexcept {
  const std::optional<bridge::NoteEvent> note = ReadEvent(event);
  if (!note) return;
  const bool isOff = event.type == V3_EVENT_NOTE_OFF;
  const int64_t ended = isOff ? noteIds_.End(event.note_off.note_id, note->channel, note->key) : -1;
  if (ended >= 0) return plugin_.ReleaseNote(ended);
  const int64_t begun = plugin_.Play(*note);
  if (begun >= 0 && event.note_on.note_id >= 0)
    noteIds_.Keep(event.note_on.note_id, note->channel, note->key, begun);
}

void Instance::PlayPoint(Target target, double value) noexcept {
  const double plain = list_.ToPlain(target, value);
  if (target.kind == Target::Kind::kParameter) {
    shown_.Show(static_cast<std::size_t>(target.place), list_.ToNormalized(target, plain));
    plugin_.Change(target.place, plain);
  } else if (target.kind == Target::Kind::kProgram) {
    nextProgram_.store(static_cast<int32_t>(plain), std::memory_order_relaxed);
  } else {
    const auto status = static_cast<uint8_t>(kControlStatus | ParameterList::GetChannel(target));
    const std::optional<bridge::NoteEvent> event =
        bridge::ReadMidiMessage(status, ParameterList::GetController(target), static_cast<uint8_t>(plain));
    if (event) plugin_.Play(*event);
  }
}

// Buffers that nothing was written to are silent; the host is told of all that are.
void Instance::FinishBuffers(const v3_process_data& data, int32_t frames) noexcept {
  if (data.nframes == 0 || !data.outputs) return;
  for (int32_t b = 0; b < data.num_output_buses; ++b) {
    v3_audio_bus_buffers& bus = data.outputs[b];
    bus.channel_silence_bitset = 0;
    for (int32_t c = 0; c < bus.num_channels; ++c) {
      float* const samples = GetChannel(&bus, c);
      const bool isWritten = frames > 0 && b == 0 && static_cast<std::size_t>(c) < out_.size();
      if (samples && !isWritten) std::fill_n(samples, data.nframes, 0.0f);
      if (c < kFlags && (!samples || bridge::IsSilent(samples, data.nframes)))
        bus.channel_silence_bitset |= uint64_t{1} << c;
    }
  }
}

}  // namespace vst3
