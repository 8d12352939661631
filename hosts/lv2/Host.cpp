#include "hosts/lv2/Host.h"

#include <lv2/atom/atom.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/midi/midi.h>
#include <lv2/options/options.h>
#include <lv2/patch/patch.h>
#include <lv2/state/state.h>

#include <algorithm>
#include <cstdio>

#include "core/MException.h"

namespace lv2 {

namespace {

constexpr int32_t kUsualFrames = 4096;
constexpr int32_t kMostFrames = 1 << 16;  // larger blocks are worked on in parts

LV2_URID_Map& GetMap(const LV2_Feature* const* features, const bridge::PluginType& type) {
  static LV2_URID_Map noMap = {nullptr, [](LV2_URID_Map_Handle, const char*) { return LV2_URID{0}; }};
  auto* const map = FindFeature<LV2_URID_Map>(features, LV2_URID__map);
  if (map && map->map) return *map;
  if (type.kind == bridge::PluginKind::kInstrument) throw MException("The host has no urid:map.");
  return noMap;
}

}  // namespace

Urids::Urids(LV2_URID_Map& map, const FileKind* kind) {
  const auto number = [&](const char* uri) { return map.map(map.handle, uri); };
  atomBlank = number(LV2_ATOM__Blank);
  atomInt = number(LV2_ATOM__Int);
  atomObject = number(LV2_ATOM__Object);
  atomPath = number(LV2_ATOM__Path);
  atomSequence = number(LV2_ATOM__Sequence);
  atomString = number(LV2_ATOM__String);
  atomUrid = number(LV2_ATOM__URID);
  mostFrames = number(LV2_BUF_SIZE__maxBlockLength);
  nominalFrames = number(LV2_BUF_SIZE__nominalBlockLength);
  logError = number(LV2_LOG__Error);
  midiEvent = number(LV2_MIDI__MidiEvent);
  patchGet = number(LV2_PATCH__Get);
  patchProperty = number(LV2_PATCH__property);
  patchSet = number(LV2_PATCH__Set);
  patchValue = number(LV2_PATCH__value);
  stateChanged = number(LV2_STATE__StateChanged);
  stateText = number(kStateUri);
  file = kind ? number(GetFileUri(*kind).c_str()) : 0;
}

Host::Host(const LV2_Feature* const* features, const bridge::PluginType& type)
    : map_(lv2::GetMap(features, type)),
      urids_(map_, FindFileKind(type)),
      worker_(FindFeature<LV2_Worker_Schedule>(features, LV2_WORKER__schedule)),
      log_(FindFeature<LV2_Log_Log>(features, LV2_LOG__log)) {
  ReadOptions(features);
}

void Host::ReadOptions(const LV2_Feature* const* features) {
  int32_t most = 0, nominal = 0;
  const auto* option = FindFeature<const LV2_Options_Option>(features, LV2_OPTIONS__options);
  for (; option && option->key != 0; ++option) {
    if (option->type != urids_.atomInt || option->size != sizeof(int32_t) || !option->value) continue;
    const int32_t value = *static_cast<const int32_t*>(option->value);
    if (option->key == urids_.mostFrames) most = value;
    if (option->key == urids_.nominalFrames) nominal = value;
  }
  mostFrames_ = most > 0 ? most : std::max(nominal, kUsualFrames);
  mostFrames_ = std::min(mostFrames_, kMostFrames);
}

bool Host::Schedule(const void* message, uint32_t size) const noexcept {
  return worker_ && worker_->schedule_work &&
         worker_->schedule_work(worker_->handle, size, message) == LV2_WORKER_SUCCESS;
}

void Host::Log(const std::string& text) const noexcept {
  if (log_ && log_->printf)
    log_->printf(log_->handle, urids_.logError, "Sonvelle: %s\n", text.c_str());
  else
    std::fprintf(stderr, "Sonvelle: %s\n", text.c_str());
}

}  // namespace lv2
