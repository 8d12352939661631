#pragma once
#include <lv2/core/lv2.h>
#include <lv2/log/log.h>
#include <lv2/worker/worker.h>

#include "hosts/lv2/Uris.h"

namespace lv2 {

// What a host offers of the feature, null without it.
template <typename Feature>
Feature* FindFeature(const LV2_Feature* const* features, std::string_view uri) {
  for (; features && *features; ++features)
    if ((*features)->URI && uri == (*features)->URI) return static_cast<Feature*>((*features)->data);
  return nullptr;
}

// The host of one instance.
class Host {
 public:
  // An instrument needs numbers of URIs: raises MException when its host has none.
  Host(const LV2_Feature* const* features, const bridge::PluginType& type);

  const Urids& GetUrids() const noexcept { return urids_; }
  LV2_URID_Map& GetMap() const noexcept { return map_; }
  // Whether URIs have numbers; without them there are no states.
  bool HasNumbers() const noexcept { return urids_.stateText != 0; }
  // Blocks are said to have at most so many frames.
  int32_t GetMostFrames() const noexcept { return mostFrames_; }
  // Whether Schedule has somebody to ask.
  bool HasWorker() const noexcept { return worker_ != nullptr; }
  // Asks for work with this message; false if the host has no place for it. [audio]
  bool Schedule(const void* message, uint32_t size) const noexcept;
  // Writes an error to the host's log, or to the standard one. [host]
  void Log(const std::string& text) const noexcept;

 private:
  void ReadOptions(const LV2_Feature* const* features);

  LV2_URID_Map& map_;
  const Urids urids_;
  LV2_Worker_Schedule* const worker_;
  LV2_Log_Log* const log_;
  int32_t mostFrames_ = 0;
};

}  // namespace lv2
