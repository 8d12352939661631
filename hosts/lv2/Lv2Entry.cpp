#include <lv2/core/lv2.h>

#include "hosts/builtin/BuiltInPlugins.h"

LV2_SYMBOL_EXPORT const LV2_Descriptor* lv2_descriptor(uint32_t) {
  return nullptr;
}
