#include "hosts/bridge/DawPlugin.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "core/MException.h"
#include "core/MXMLItem.h"
#include "hosts/bridge/PluginState.h"
#include "hosts/bridge/TailProbe.h"

namespace bridge {

namespace {

// Its sound is its input, whatever its rows say; they size the memory of its spectrum.
constexpr std::string_view kAnalyzer = "Lumascope";

}  // namespace

DawPlugin::DawPlugin(const PluginType& type, Client& client)
    : type_(type),
      client_(client),
      plugin_(type.entryPoint, HearPlugin, this),
      areRowsWork_(IsInstrument() || type.name == kAnalyzer),
      parameters_(plugin_.GetParameters(), type.kind),
      effect_(plugin_, turn_, !areRowsWork_),
      voices_(plugin_) {
  if (!IsInstrument()) latency_ = plugin_.GetLatency();
}

DawPlugin::~DawPlugin() = default;

MWord M_CALL DawPlugin::HearPlugin(void* context, int32_t code, MServiceArguments*) {
  auto& self = *static_cast<DawPlugin*>(context);
  if (code == MHostCode::kParametersChanged) self.client_.OnValuesChanged();
  return 0;
}

double DawPlugin::GetValue(int32_t place) const noexcept {
  return LoadValue(*At(place).row);
}

void DawPlugin::SetValue(int32_t place, double value) {
  const std::lock_guard lock(hostLock_);
  const DawParameter& parameter = At(place);
  if (parameter.control != HostControl::kNone) {
    parameters_.StoreHostValue(parameter, value);
    areHostControlsNew_ = true;
    return;
  }
  const TurnTaker turn(turn_);
  plugin_.SetValue(parameter.index, value);
  NoteChange();
}

// Behind a change by the host, whose turn it is.
void DawPlugin::NoteChange() noexcept {
  isTailKnown_ = false;
  isOtherSound_ = true;
  if (isActive_)
    isLatencyOld_ = true;
  else
    UpdateLatency();
}

std::string DawPlugin::SaveState() {
  MXMLItem item("state");
  SaveState(item);
  return GetStateText(item);
}

void DawPlugin::SaveState(MXMLItem& item) {
  const std::lock_guard lock(hostLock_);
  SaveDawState(plugin_, type_, parameters_, item);
}

void DawPlugin::LoadState(std::string_view text) {
  MXMLItem item("state");
  ReadStateText(text, item);
  LoadState(item);
}

void DawPlugin::LoadState(MXMLItem& item) {
  const std::lock_guard lock(hostLock_);
  {
    const TurnTaker turn(turn_);
    pendingRows_ = 0;
    LoadDawState(plugin_, type_, parameters_, item);
    NoteChange();
  }
  areHostControlsNew_ = true;
}

MWord DawPlugin::Command(const char* name, MWord argument) {
  const std::lock_guard lock(hostLock_);
  const TurnTaker turn(turn_);
  const MWord result = plugin_.Command(name, argument);
  isOtherSound_ = true;
  return result;
}

void DawPlugin::Activate(int32_t channels, int32_t sampleRate, int32_t mostFrames) {
  const std::lock_guard lock(hostLock_);
  channels_ = channels;
  sampleRate_ = sampleRate;
  mostFrames_ = std::clamp(mostFrames, 1, kMostFrames);
  outAt_.assign(static_cast<std::size_t>(channels), nullptr);
  ApplyHostControls();
  changedRow_ = -1;
  if (IsInstrument()) {
    voices_.Prepare(channels, sampleRate, mostFrames_);
    voices_.SetPatient(isOffline_);
  } else {
    effect_.Prepare(channels, sampleRate, mostFrames_);
  }
  isTailKnown_ = false;
  isActive_ = true;
  UpdateLatency();
}

void DawPlugin::Deactivate() {
  const std::lock_guard lock(hostLock_);
  isActive_ = false;
  Cut();
}

void DawPlugin::SetOffline(bool isOffline) {
  isOffline_ = isOffline;
  voices_.SetPatient(isOffline);
}

int64_t DawPlugin::GetTail() {
  if (IsInstrument()) return GetReleaseTail();
  const std::lock_guard lock(hostLock_);
  if (sampleRate_ == 0) return 0;  // no format yet
  if (isTailKnown_.exchange(true)) return tail_;
  try {
    MXMLItem item("state");
    SaveDawState(plugin_, type_, parameters_, item);
    const int64_t tail = MeasureTail(type_, item, channels_, sampleRate_);
    tail_ = tail == kEndlessTail ? tail : tail + GetLatency();
  } catch (...) {
    isTailKnown_ = false;
    throw;
  }
  return tail_;
}

// Of notes that ring out nobody knows the end.
int64_t DawPlugin::GetReleaseTail() const noexcept {
  double frames = 0;
  for (const DawParameter& parameter : GetParameters()) {
    const double value = LoadValue(*parameter.row);
    if (parameter.control == HostControl::kRelease) frames = std::ceil(value * sampleRate_);
    if (parameter.control == HostControl::kOneShot && value != 0) return kEndlessTail;
  }
  return static_cast<int64_t>(frames);
}

void DawPlugin::DoWork() {
  const std::lock_guard lock(hostLock_);
  const TurnTaker turn(turn_);
  TellPending();
  isOtherSound_ = true;
}

void DawPlugin::TellPending() {
  for (uint64_t rows = pendingRows_.exchange(0); rows != 0; rows &= rows - 1)
    plugin_.TellChanged(std::countr_zero(rows));
}

void DawPlugin::UpdateLatency() noexcept {
  if (IsInstrument()) return;
  if (isActive_) effect_.UpdateLatency();
  const int32_t latency = isActive_ ? effect_.GetLatency() : plugin_.GetLatency();
  if (latency_.exchange(latency) != latency) client_.OnLatencyChanged();
}

void DawPlugin::Reset() noexcept try {
  if (!isActive_) return;
  if (IsInstrument())
    Cut();
  else
    effect_.Reset();
} catch (...) {
  // The next block tries again.
}

void DawPlugin::Begin(const float* const* in, float* const* out, int32_t frames) noexcept {
  in_ = in;
  out_ = out;
  frames_ = frames;
  position_ = 0;
}

void DawPlugin::End() noexcept {
  RunTo(frames_);
  if (frames_ == 0) try {
      ApplyChanges();
    } catch (...) {
      // The plug-in keeps what it had.
    }
  in_ = nullptr;
  out_ = nullptr;
}

void DawPlugin::RunTo(int32_t frame) noexcept {
  frame = std::min(frame, frames_);
  while (position_ < frame) {
    const int32_t piece = std::min(frame - position_, mostFrames_);
    try {
      ApplyChanges();
      Render(piece);
    } catch (...) {
      Silence(piece);
    }
    position_ += piece;
  }
}

void DawPlugin::Render(int32_t frames) {
  if (!isActive_) return Silence(frames);
  if (!IsInstrument()) return effect_.Process(in_, out_, position_, frames);
  for (std::size_t c = 0; c < outAt_.size(); ++c) outAt_[c] = out_[c] + position_;
  voices_.Process(outAt_.data(), frames);
}

void DawPlugin::Silence(int32_t frames) noexcept {
  for (int32_t c = 0; c < channels_; ++c) std::fill_n(out_[c] + position_, frames, 0.0f);
}

void DawPlugin::Change(int32_t place, double value) noexcept {
  const DawParameter& parameter = At(place);
  isTailKnown_.store(false, std::memory_order_relaxed);
  if (parameter.control != HostControl::kNone) {
    parameters_.StoreHostValue(parameter, value);
    areHostControlsNew_.store(true, std::memory_order_relaxed);
    return;
  }
  plugin_.StoreValue(parameter.index, value);
  if (!areRowsWork_) {
    changedRow_ = parameter.index;
    return;
  }
  pendingRows_.fetch_or(uint64_t{1} << parameter.index, std::memory_order_release);
  isWorkNew_ = true;
}

int64_t DawPlugin::Play(const NoteEvent& event) noexcept try {
  if (!IsInstrument() || !isActive_) return -1;
  ApplyChanges();
  return voices_.Play(event);
} catch (...) {
  return -1;
}

void DawPlugin::ReleaseNote(int64_t number) noexcept try {
  ApplyChanges();
  voices_.ReleaseNote(number);
} catch (...) {
  // What could not be closed is closed with the plug-in.
}

void DawPlugin::ChokeNote(int64_t number) noexcept try { voices_.ChokeNote(number); } catch (...) {
  // What could not be closed is closed with the plug-in.
}

void DawPlugin::Cut() noexcept try {
  if (IsInstrument()) voices_.Cut();
} catch (...) {
  // What could not be closed is closed with the plug-in.
}

bool DawPlugin::IsQuiet() const noexcept {
  return IsInstrument() ? voices_.IsSilent() : effect_.IsQuiet();
}

void DawPlugin::ApplyHostControls() noexcept {
  if (!areHostControlsNew_.load(std::memory_order_relaxed)) return;
  areHostControlsNew_.exchange(false);  // before the values are read, lest a newer one be missed
  for (const DawParameter& parameter : GetParameters()) {
    const double value = LoadValue(*parameter.row);
    if (parameter.control == HostControl::kBypass) effect_.SetBypass(value != 0);
    if (parameter.control == HostControl::kRelease) voices_.SetRelease(value);
    if (parameter.control == HostControl::kOneShot) voices_.SetOneShot(value != 0);
  }
}

void DawPlugin::ApplyChanges() {
  ApplyHostControls();
  if (isLatencyOld_.load(std::memory_order_relaxed) && isLatencyOld_.exchange(false)) UpdateLatency();
  if (areRowsWork_)
    ApplyAsWork();
  else if (changedRow_ >= 0)
    ApplyToEffect();
}

// Effects tell their rows apart in nothing but the value, so the last one stands for all. While another
// thread changes the effect the update waits for the next piece.
void DawPlugin::ApplyToEffect() {
  if (!turn_.TryTake()) return;
  {
    const TurnTaker turn(turn_, std::adopt_lock);
    plugin_.TellChanged(std::exchange(changedRow_, -1));
  }
  UpdateLatency();
}

// Rows that may have a file read, or memory made, are work for another thread.
void DawPlugin::ApplyAsWork() {
  if (isOtherSound_.load(std::memory_order_relaxed) && isOtherSound_.exchange(false)) voices_.ForgetRead();
  const bool isNew = std::exchange(isWorkNew_, false);
  if (!isOffline_) return isNew ? client_.OnWorkWaiting() : void();
  if (pendingRows_.load(std::memory_order_relaxed) == 0) return;  // of before, too
  const TurnTaker turn(turn_);
  TellPending();
  voices_.ForgetRead();
}

}  // namespace bridge
