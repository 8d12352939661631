#pragma once
#include <travesty/base.h>

#include <vector>

#include "hosts/bridge/PluginTable.h"

namespace vst3 {

// A plug-in as the factory offers it.
struct Class {
  const bridge::PluginType* type;
  v3_tuid id;
  const char* subcategories;
};

// All plug-ins of this binary; starts the library the first time.
const std::vector<Class>& GetClasses();
// Null for an id that is none of ours.
const Class* FindClass(const uint8_t* id);

}  // namespace vst3
