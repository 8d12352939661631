#pragma once
// The suite of every effect: each test of EffectSuite runs once per effect of plugins.def. A test holds for
// what any host does with any effect; what a single effect promises beyond that lies in tests/effects.

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "tests/common/EffectUnderTest.h"
#include "tests/common/TestRandom.h"

inline void PrintTo(const PluginEntry& entry, std::ostream* out) {
  *out << entry.name;
}

inline std::string NameOfEffect(const testing::TestParamInfo<PluginEntry>& effect) {
  return effect.param.name;
}

// What an effect is allowed to do otherwise than the others.
enum class Allowance {
  kBlocksChangeRounding,  // another split into blocks changes the audio, by up to a millionth of the peak
  kBlocksAreHeard,        // where a block begins and ends is a part of what the effect does
  kLocks,                 // a block takes the plug-in's lock
  kPassesNoNumber,        // a sample that is not finite may come out for one that went in, and nowhere else
  kNeedsMarks,            // a state without "halfgain" and "amplituderatio" is an old one, whose rows change
};

class EffectSuite : public testing::TestWithParam<PluginEntry> {
 protected:
  static constexpr int32_t kRate = 44100;
  static constexpr int32_t kLowRate = 8000;  // for long times
  static constexpr int32_t kSettings = 4;    // the defaults, and some at random

  EffectUnderTest Make() const { return EffectUnderTest(GetParam()); }
  bool IsAllowed(Allowance allowance) const;

  // The effect, prepared, with one of the settings 0 to kSettings - 1 of this run; 0 are the defaults.
  static void PrepareWithSetting(EffectUnderTest& effect, int32_t setting, uint32_t seed,
                                 int32_t channels = 2, int32_t sampleRate = kRate) {
    TestRandom random(seed + static_cast<uint32_t>(setting));
    if (setting > 0) effect.SetAllAtRandom(random);
    effect.Prepare(channels, sampleRate);
  }
};
