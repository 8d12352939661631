#include <lv2/core/lv2.h>

#include <cstdio>
#include <memory>

#include "core/MException.h"
#include "hosts/builtin/BuiltInPlugins.h"
#include "hosts/lv2/Lv2Plugin.h"

namespace lv2 {

namespace {

Lv2Plugin& Get(LV2_Handle handle) {
  return *static_cast<Lv2Plugin*>(handle);
}

const void* GetExtension(const char* uri) {
  static constexpr LV2_State_Interface kState = {
      [](LV2_Handle handle, LV2_State_Store_Function store, LV2_State_Handle state, uint32_t,
         const LV2_Feature* const* features) {
        return handle ? Get(handle).Save(store, state, features) : LV2_STATE_ERR_UNKNOWN;
      },
      [](LV2_Handle handle, LV2_State_Retrieve_Function retrieve, LV2_State_Handle state, uint32_t,
         const LV2_Feature* const* features) {
        return handle ? Get(handle).Restore(retrieve, state, features) : LV2_STATE_ERR_UNKNOWN;
      }};
  static constexpr LV2_Worker_Interface kWorker = {
      [](LV2_Handle handle, LV2_Worker_Respond_Function, LV2_Worker_Respond_Handle, uint32_t size,
         const void* message) { return handle ? Get(handle).Work(size, message) : LV2_WORKER_ERR_UNKNOWN; },
      [](LV2_Handle, uint32_t, const void*) { return LV2_WORKER_SUCCESS; }, nullptr};
  const std::string_view wanted = uri ? uri : "";
  if (wanted == LV2_STATE__interface) return &kState;
  if (wanted == LV2_WORKER__interface) return &kWorker;
  return nullptr;
}

LV2_Handle Instantiate(const LV2_Descriptor* descriptor, double sampleRate, const char*,
                       const LV2_Feature* const* features);

// The plug-ins with their descriptors, whose addresses stay.
struct Entries {
  Entries() {
    for (const bridge::PluginType& type : builtin::GetPlugins()) {
      const std::string& uri = uris.emplace_back(GetUri(type));
      descriptors.push_back({uri.c_str(), Instantiate,
                             [](LV2_Handle handle, uint32_t port, void* data) {
                               if (handle) Get(handle).Connect(port, data);
                             },
                             [](LV2_Handle handle) {
                               if (handle) Get(handle).Activate();
                             },
                             [](LV2_Handle handle, uint32_t frames) {
                               if (handle) Get(handle).Run(frames);
                             },
                             [](LV2_Handle handle) {
                               if (handle) Get(handle).Deactivate();
                             },
                             [](LV2_Handle handle) { delete static_cast<Lv2Plugin*>(handle); },
                             GetExtension});
    }
  }

  std::deque<std::string> uris;
  std::deque<LV2_Descriptor> descriptors;
};

const Entries& GetEntries() {
  static const Entries entries;
  return entries;
}

LV2_Handle Instantiate(const LV2_Descriptor* descriptor, double sampleRate, const char*,
                       const LV2_Feature* const* features) try {
  const Entries& entries = GetEntries();
  for (std::size_t i = 0; i < entries.descriptors.size(); ++i)
    if (descriptor && entries.uris[i] == descriptor->URI)
      return std::make_unique<Lv2Plugin>(builtin::GetPlugins()[i], sampleRate, features).release();
  return nullptr;
} catch (const MException& raised) {
  std::fprintf(stderr, "Sonvelle: %s\n", bridge::ToUtf8(raised.message).c_str());
  return nullptr;
} catch (...) {
  return nullptr;
}

}  // namespace

}  // namespace lv2

LV2_SYMBOL_EXPORT const LV2_Descriptor* lv2_descriptor(uint32_t index) try {
  const auto& descriptors = lv2::GetEntries().descriptors;
  return index < descriptors.size() ? &descriptors[index] : nullptr;
} catch (...) {
  return nullptr;
}
