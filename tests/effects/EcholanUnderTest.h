#pragma once
// Echolan as its tests use it.

#include "tests/common/EffectUnderTest.h"

class EcholanUnderTest : public EffectUnderTest {
 public:
  EcholanUnderTest() : EffectUnderTest(FindEffect("Echolan")) {}

  void SetFeedback(double feedback) { Set("feedback", feedback); }
  void SetDelay(double seconds) { Set("delay", seconds); }

 private:
  static PluginEntry FindEffect(std::string_view name) {
    for (const PluginEntry& entry : GetAllEffects())
      if (entry.name == name) return entry;
    throw std::invalid_argument("no such effect");
  }
};
