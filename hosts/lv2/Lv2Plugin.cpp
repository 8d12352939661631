#include "hosts/lv2/Lv2Plugin.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "core/MException.h"

namespace lv2 {

namespace {

constexpr double kHighestRate = 1e7;

int32_t CheckRate(double rate) {
  if (!(rate >= 1 && rate <= kHighestRate)) throw MException("The sample rate is none.");
  return static_cast<int32_t>(std::lround(rate));
}

// The port of an index, as a pointer to what lies there.
template <typename Data>
void Point(Data*& place, void* data) {
  place = static_cast<Data*>(data);
}

}  // namespace

Lv2Plugin::Lv2Plugin(const bridge::PluginType& type, double sampleRate, const LV2_Feature* const* features)
    : type_(type),
      kind_(FindFileKind(type)),
      host_(features, type),
      sampleRate_(CheckRate(sampleRate)),
      plugin_(type, *this),
      ports_(MakePorts(type, plugin_.GetParameters())),
      writer_(host_.GetMap(), host_.GetUrids()) {
  for (const bridge::DawParameter& parameter : plugin_.GetParameters()) controls_.emplace_back(parameter);
  for (std::vector<float>& sink : outSink_) sink.resize(static_cast<std::size_t>(host_.GetMostFrames()));
  KeepValues();
}

Lv2Plugin::~Lv2Plugin() = default;

void Lv2Plugin::KeepValues() noexcept {
  for (std::size_t i = 0; i < controls_.size(); ++i)
    controls_[i].kept.store(plugin_.GetValue(static_cast<int32_t>(i)), std::memory_order_relaxed);
  mustCompare_ = true;
}

void Lv2Plugin::Connect(uint32_t index, void* data) noexcept {
  if (index >= ports_.size()) return;
  const Port& port = ports_[index];
  const auto place = static_cast<std::size_t>(port.place);
  switch (port.role) {
    case PortRole::kEventsIn:
      return Point(eventsIn_, data);
    case PortRole::kEventsOut:
      return Point(eventsOut_, data);
    case PortRole::kIn:
      return Point(in_[place], data);
    case PortRole::kOut:
      return Point(out_[place], data);
    case PortRole::kLatency:
      return Point(latency_, data);
    case PortRole::kFreeWheel:
      return Point(freeWheel_, data);
    case PortRole::kControl:
      return Point(controls_[place].port, data);
  }
}

void Lv2Plugin::Activate() noexcept try {
  plugin_.Activate(kChannels, sampleRate_, host_.GetMostFrames());
} catch (const MException& raised) {
  host_.Log(bridge::ToUtf8(raised.message));
} catch (...) {
  host_.Log("the plug-in could not be made ready");
}

void Lv2Plugin::Deactivate() noexcept try { plugin_.Deactivate(); } catch (...) {
  host_.Log("the plug-in could not be stopped");
}

void Lv2Plugin::Run(uint32_t frames) noexcept {
  ReadFreeWheel();
  EventReader events(eventsIn_, host_.GetUrids());
  const auto most = static_cast<uint32_t>(host_.GetMostFrames());
  uint32_t done = 0;
  do {
    const uint32_t piece = std::min(frames - done, most);
    RunPiece(done, static_cast<int32_t>(piece), done + piece == frames, events);
    done += piece;
  } while (done < frames);
  AskForWork();
  WriteMessages();
  if (latency_) *latency_ = static_cast<float>(plugin_.GetLatency());
}

// Events of a later time than the block has are heard at its end.
void Lv2Plugin::RunPiece(uint32_t start, int32_t frames, bool isLast, EventReader& events) noexcept {
  PointChannels(start);
  plugin_.Begin(inAt_.data(), outAt_.data(), frames);
  if (start == 0) ReadControls();
  for (; events.Get(); events.GoOn()) {
    const int64_t time = events.Get()->time.frames;
    const int64_t frame = time < start ? 0 : time - start;
    if (frame >= frames && !isLast) break;
    plugin_.RunTo(static_cast<int32_t>(std::min<int64_t>(frame, frames)));
    Hear(events.Get()->body);
  }
  plugin_.End();
}

// A port without a buffer is silent, or leads nowhere.
void Lv2Plugin::PointChannels(uint32_t start) noexcept {
  for (std::size_t c = 0; c < kCount; ++c) {
    outAt_[c] = out_[c] ? out_[c] + start : outSink_[c].data();
    inAt_[c] = in_[c] ? in_[c] + start : nullptr;
  }
}

void Lv2Plugin::ReadFreeWheel() noexcept {
  const bool isOffline = freeWheel_ && *freeWheel_ > 0;
  if (isOffline == isOffline_) return;
  isOffline_ = isOffline;
  plugin_.SetOffline(isOffline);
}

void Lv2Plugin::ReadControls() noexcept {
  const bool mustCompare = mustCompare_.load(std::memory_order_relaxed) && mustCompare_.exchange(false);
  int32_t place = -1;
  for (Control& control : controls_) {
    ++place;
    const float now = control.port ? *control.port : std::numeric_limits<float>::quiet_NaN();
    if (std::isnan(now) || (now == control.seen && !mustCompare)) continue;
    control.seen = now;
    const double kept = control.kept.load(std::memory_order_relaxed);
    const double value = now == control.scale.ToPort(kept) ? kept : control.scale.FromPort(now);
    if (value != plugin_.GetValue(place)) plugin_.Change(place, value);
  }
}

void Lv2Plugin::Hear(const LV2_Atom& atom) noexcept {
  if (atom.type != host_.GetUrids().midiEvent) return HearObject(atom);
  if (atom.size < 2) return;
  const auto* const bytes = reinterpret_cast<const uint8_t*>(&atom + 1);
  const auto event = bridge::ReadMidiMessage(bytes[0], bytes[1], atom.size > 2 ? bytes[2] : uint8_t{0});
  if (event) plugin_.Play(*event);
}

void Lv2Plugin::HearObject(const LV2_Atom& object) noexcept {
  if (!kind_) return;
  const Urids& urids = host_.GetUrids();
  const LV2_URID type = GetObjectType(object, urids);
  if (type == 0 || (type != urids.patchGet && type != urids.patchSet)) return;
  const LV2_Atom* const property = FindProperty(object, urids.patchProperty);
  const bool isUrid = property && property->type == urids.atomUrid && property->size == sizeof(LV2_URID);
  const bool isFile = isUrid && reinterpret_cast<const LV2_Atom_URID*>(property)->body == urids.file;
  if (type == urids.patchGet && (!property || isFile)) file_.Ask();
  if (type == urids.patchSet && isFile) HearFile(FindProperty(object, urids.patchValue));
}

// Without a worker the file is read at once. What is refused is answered with the file that is played.
void Lv2Plugin::HearFile(const LV2_Atom* path) noexcept {
  const Urids& urids = host_.GetUrids();
  if (!path || (path->type != urids.atomPath && path->type != urids.atomString)) return file_.Ask();
  const auto* const text = reinterpret_cast<const char*>(path + 1);
  const std::size_t size = strnlen(text, path->size);
  if (size == 0 || size > PathBox::kMost || text[0] != '/') return file_.Ask();
  message_[0] = 'f';
  std::copy_n(text, size, message_.begin() + 1);
  const auto length = static_cast<uint32_t>(size + 1);
  if (!host_.HasWorker())
    Work(length, message_.data());
  else if (!host_.Schedule(message_.data(), length))
    file_.Ask();  // the host hears that it is the old file still
}

// A worker without room is asked again.
void Lv2Plugin::AskForWork() noexcept {
  if (!isWorkWaiting_) return;
  isWorkWaiting_ = false;
  if (!host_.HasWorker())
    Work(0, nullptr);
  else if (!host_.Schedule("w", 1))
    isWorkWaiting_ = true;
}

void Lv2Plugin::WriteMessages() noexcept {
  writer_.Begin(eventsOut_);
  if (eventsOut_) {
    file_.TellIfAsked([&](std::string_view path) { writer_.WritePath(host_.GetUrids().file, path); });
    if (isStateNew_.load(std::memory_order_relaxed) && isStateNew_.exchange(false))
      writer_.WriteStateChanged();
  }
  writer_.End();
}

}  // namespace lv2
