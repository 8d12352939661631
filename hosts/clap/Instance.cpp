#include "hosts/clap/Instance.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/MException.h"
#include "hosts/bridge/Parameters.h"
#include "hosts/bridge/TailProbe.h"
#include "hosts/builtin/BuiltInPlugins.h"

namespace clap {

namespace {

constexpr double kHighestRate = 1e6;
constexpr uint32_t kMostFrames = 8192;  // at once; larger blocks are worked on in parts
constexpr std::size_t kMostStateBytes = std::size_t{1} << 28;
constexpr std::size_t kReadBytes = 4096;

}  // namespace

Instance::Instance(const bridge::PluginType& type, const clap_plugin_descriptor_t& descriptor,
                   const clap_host_t* host)
    : host_(host), plugin_(type, *this), handle_(MakeHandle(descriptor, *this)), notes_(plugin_) {}

Instance::~Instance() {
  if (IsActive()) plugin_.Deactivate();
}

void Instance::Start() noexcept {
  mainThread_ = std::this_thread::get_id();
  host_.Start();
  if (waiting_ != 0) host_.RequestCallback();
}

bool Instance::Activate(double sampleRate, uint32_t mostFrames) {
  if (IsActive() || !(sampleRate >= 1 && sampleRate <= kHighestRate) || mostFrames == 0) return false;
  isOffline_ = wantsOffline_;
  plugin_.SetOffline(isOffline_);
  plugin_.Activate(channels_, static_cast<int32_t>(std::lround(sampleRate)),
                   static_cast<int32_t>(std::min(mostFrames, kMostFrames)));
  notes_.Forget();
  isTailOld_ = true;
  isRestartAsked_ = false;
  const int32_t before = std::exchange(latency_, plugin_.GetLatency());
  if (latency_ != before) host_.TellLatency();
  isActive_ = true;
  return true;
}

void Instance::Deactivate() {
  if (!isActive_.exchange(false)) return;
  plugin_.Deactivate();
  notes_.Forget();
}

void Instance::Ask(uint32_t waiting) noexcept {
  if ((waiting_.fetch_or(waiting) & waiting) == 0) host_.RequestCallback();
}

void Instance::RunOnMainThread() {
  const uint32_t waiting = waiting_.exchange(0);
  if (waiting & kValues) host_.TellValues();
  if (waiting & kWork) plugin_.DoWork();
  if (waiting & kTail) MeasureTail();
}

uint32_t Instance::GetLatency() const noexcept {
  return static_cast<uint32_t>(std::max(IsActive() ? latency_ : plugin_.GetLatency(), 0));
}

uint32_t Instance::GetTail() {
  if (IsInstrument() || std::this_thread::get_id() == mainThread_) MeasureTail();
  return tail_;
}

void Instance::MeasureTail() {
  constexpr int64_t kEndless = std::numeric_limits<int32_t>::max();
  isTailOld_ = false;
  const int64_t tail = plugin_.GetTail();
  const auto samples =
      static_cast<uint32_t>(tail == bridge::kEndlessTail ? kEndless : std::clamp<int64_t>(tail, 0, kEndless));
  if (tail_.exchange(samples) != samples) isTailNew_ = true;
}

// While a parameter moves nothing is measured; hosts that cannot be told ask when they want to know. What an
// instrument has needs no measuring.
void Instance::FollowTail() noexcept {
  if (!host_.HearsTail()) return;
  if (!hasChanged_ && isTailOld_.load(std::memory_order_relaxed) && isTailOld_.exchange(false)) {
    if (IsInstrument())
      MeasureTail();
    else
      Ask(kTail);
  }
  if (isTailNew_.load(std::memory_order_relaxed) && isTailNew_.exchange(false)) host_.TellTail();
}

void Instance::Save(const clap_ostream_t& stream) {
  const std::string text = plugin_.SaveState();
  for (std::size_t done = 0; done < text.size();) {
    const std::size_t left = text.size() - done;
    const int64_t count = stream.write ? stream.write(&stream, text.data() + done, left) : -1;
    if (count <= 0 || static_cast<uint64_t>(count) > left)
      throw MException("The state could not be written.");
    done += static_cast<std::size_t>(count);
  }
}

void Instance::Load(const clap_istream_t& stream) {
  std::string text;
  char bytes[kReadBytes];
  for (int64_t count = 1; count != 0; text.append(bytes, static_cast<std::size_t>(count))) {
    count = stream.read ? stream.read(&stream, bytes, kReadBytes) : -1;
    if (count < 0 || count > static_cast<int64_t>(kReadBytes))
      throw MException("The state could not be read.");
    if (text.size() > kMostStateBytes) throw MException("The state is too large.");
  }
  LoadText(text);
}

void Instance::LoadPreset(const char* name) {
  const std::vector<bridge::Preset> presets = builtin::GetPresets(plugin_.GetType());
  const auto found = std::find_if(presets.begin(), presets.end(),
                                  [name](const bridge::Preset& preset) { return preset.name == name; });
  if (found == presets.end()) throw MException("There is no such preset.");
  LoadText(found->text);
}

void Instance::LoadText(const std::string& text) {
  plugin_.LoadState(text);
  isTailOld_ = true;
  Ask(kValues);
}

}  // namespace clap
