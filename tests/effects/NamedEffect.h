#pragma once
// One effect of the library by its name, as a host sees it.

#include "tests/common/EffectUnderTest.h"

class NamedEffect : public EffectUnderTest {
 public:
  explicit NamedEffect(std::string_view name) : EffectUnderTest(Find(name)) {}

 private:
  static PluginEntry Find(std::string_view name) {
    for (const PluginEntry& entry : GetAllEffects())
      if (entry.name == name) return entry;
    throw std::invalid_argument("no such effect");
  }
};
