// Buses, activation, states.

#include <algorithm>
#include <bit>
#include <cmath>

#include "hosts/bridge/TailProbe.h"
#include "hosts/vst3/Instance.h"
#include "hosts/vst3/Stream.h"
#include "hosts/vst3/Text.h"

namespace vst3 {

namespace {

constexpr int32_t kMostChannels = 8;
constexpr double kHighestRate = 1 << 20;
constexpr uint32_t kInfiniteTail = 0xFFFFFFFF;

bool IsPossible(v3_speaker_arrangement arrangement) {
  return arrangement != 0 && std::popcount(arrangement) <= kMostChannels;
}

}  // namespace

v3_result Instance::GetControllerClassId(uint8_t*) {
  return V3_NOT_IMPLEMENTED;  // the controller is this object
}

v3_result Instance::SetIoMode(int32_t) {
  return V3_NOT_IMPLEMENTED;
}

// Effects have an input and an output, instruments notes and an output.
int32_t Instance::GetBusCount(int32_t media, int32_t direction) {
  const bool isInput = direction == V3_INPUT;
  if (!isInput && direction != V3_OUTPUT) return 0;
  if (media == V3_EVENT) return plugin_.IsInstrument() && isInput ? 1 : 0;
  if (media != V3_AUDIO) return 0;
  return plugin_.IsInstrument() && isInput ? 0 : 1;
}

bool Instance::HasBus(int32_t media, int32_t direction, int32_t index) noexcept {
  return index >= 0 && index < GetBusCount(media, direction);
}

v3_speaker_arrangement& Instance::GetArrangement(int32_t direction) noexcept {
  return arrangements_[direction == V3_INPUT ? 0 : 1];
}

v3_result Instance::GetBusInfo(int32_t media, int32_t direction, int32_t index, v3_bus_info* info) {
  if (!info || !HasBus(media, direction, index)) return V3_INVALID_ARG;
  *info = {};
  info->media_type = media;
  info->direction = direction;
  info->bus_type = V3_MAIN;
  info->flags = V3_DEFAULT_ACTIVE;
  info->channel_count =
      media == V3_EVENT ? ParameterList::kChannels : std::popcount(GetArrangement(direction));
  WriteText(media == V3_EVENT ? "Notes" : direction == V3_INPUT ? "Input" : "Output", info->bus_name);
  return V3_OK;
}

v3_result Instance::GetRoutingInfo(v3_routing_info*, v3_routing_info*) {
  return V3_NOT_IMPLEMENTED;
}

v3_result Instance::ActivateBus(int32_t media, int32_t direction, int32_t index, v3_bool state) {
  if (!HasBus(media, direction, index)) return V3_INVALID_ARG;
  areBusesActive_[media][direction] = state != 0;
  return V3_OK;
}

v3_result Instance::SetBusArrangements(v3_speaker_arrangement* inputs, int32_t inputCount,
                                       v3_speaker_arrangement* outputs, int32_t outputCount) {
  if (plugin_.IsActive() || inputCount != GetBusCount(V3_AUDIO, V3_INPUT) || outputCount != 1 || !outputs)
    return V3_FALSE;
  if (!IsPossible(outputs[0])) return V3_FALSE;
  if (inputCount == 1) {
    if (!inputs || std::popcount(inputs[0]) != std::popcount(outputs[0])) return V3_FALSE;
    GetArrangement(V3_INPUT) = inputs[0];
  }
  GetArrangement(V3_OUTPUT) = outputs[0];
  return V3_OK;
}

v3_result Instance::GetBusArrangement(int32_t direction, int32_t index, v3_speaker_arrangement* arrangement) {
  if (!arrangement || !HasBus(V3_AUDIO, direction, index)) return V3_INVALID_ARG;
  *arrangement = GetArrangement(direction);
  return V3_OK;
}

v3_result Instance::CanProcessSampleSize(int32_t size) {
  return size == V3_SAMPLE_32 ? V3_OK : V3_FALSE;
}

v3_result Instance::SetupProcessing(v3_process_setup* setup) {
  if (!setup || setup->symbolic_sample_size != V3_SAMPLE_32 || setup->max_block_size < 1 ||
      !(setup->sample_rate >= 1 && setup->sample_rate <= kHighestRate))
    return V3_INVALID_ARG;
  if (plugin_.IsActive()) return V3_FALSE;
  setup_ = *setup;
  return V3_OK;
}

v3_result Instance::SetActive(v3_bool state) {
  const bool isActive = state != 0;
  hostThread_ = std::this_thread::get_id();
  areBlocksComing_ = false;
  Settle();
  if (isActive == plugin_.IsActive()) return V3_OK;
  if (isActive)
    Activate();
  else
    plugin_.Deactivate();
  return V3_OK;
}

void Instance::Activate() {
  const auto channels = static_cast<std::size_t>(std::popcount(GetArrangement(V3_OUTPUT)));
  in_.assign(channels, nullptr);
  out_.assign(channels, nullptr);
  planeSize_ = std::min(setup_.max_block_size, bridge::DawPlugin::kMostFrames);
  scratch_.assign(channels * static_cast<std::size_t>(planeSize_), 0.0f);
  plugin_.SetOffline(setup_.process_mode == V3_OFFLINE);
  plugin_.Activate(static_cast<int32_t>(channels), static_cast<int32_t>(std::lround(setup_.sample_rate)),
                   setup_.max_block_size);
}

v3_result Instance::SetProcessing(v3_bool state) {
  if (state) return V3_OK;
  areBlocksComing_ = false;
  plugin_.Reset();
  return V3_OK;
}

uint32_t Instance::GetLatencySamples() {
  return static_cast<uint32_t>(std::max(plugin_.GetLatency(), 0));
}

// Some hosts ask on their audio thread, where nothing can be measured.
uint32_t Instance::GetTailSamples() {
  if (IsAudioThread() && !plugin_.IsInstrument()) return tail_;
  const int64_t tail = plugin_.GetTail();
  tail_ = tail == bridge::kEndlessTail
              ? kInfiniteTail
              : static_cast<uint32_t>(std::clamp<int64_t>(tail, 0, kInfiniteTail - 1));
  return tail_;
}

uint32_t Instance::GetProcessContextRequirements() {
  return 0;
}

// A text that is no state leaves everything as it is.
v3_result Instance::SetState(v3_bstream** stream) {
  if (!stream) return V3_INVALID_ARG;
  const std::optional<std::string> text = ReadAll(stream);
  if (!text) return V3_INTERNAL_ERR;
  plugin_.LoadState(*text);
  program_ = 0;
  nextProgram_ = -1;
  ShowAll();
  return V3_OK;
}

// What a host has set is in the state, also if it has stopped before the blocks that would have brought it.
v3_result Instance::GetState(v3_bstream** stream) {
  if (!stream) return V3_INVALID_ARG;
  if (!areBlocksComing_ || blocks_ == blocksAtWait_) Settle();
  return WriteAll(stream, plugin_.SaveState()) ? V3_OK : V3_INTERNAL_ERR;
}

}  // namespace vst3
