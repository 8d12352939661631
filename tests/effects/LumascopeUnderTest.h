#pragma once
// Lumascope as its tests use it, with an open editor.

#include <numbers>

#include "effects/Lumascope.h"
#include "tests/effects/NamedEffect.h"

class LumascopeUnderTest : public NamedEffect {
 public:
  using Mode = LumascopeDisplay::Mode;
  using Values = std::vector<std::pair<const char*, double>>;

  static constexpr int32_t kPoints = LumascopeSpectrum::kPoints;

  explicit LumascopeUnderTest(const Values& values = {}, int32_t channels = 2, int32_t sampleRate = 44100)
      : NamedEffect("Lumascope") {
    for (const auto& [key, value] : values) Set(key, value);
    Prepare(channels, sampleRate);
    GetPlugin().SetEditorOpen(true);
  }
  LumascopeAudioEffectPlugin& GetPlugin() {
    return *static_cast<LumascopeAudioEffectPlugin*>(
        static_cast<MPlugin*>(MAsAddress<void>(Call(MService::kAttach))));
  }
  // The current points, linear.
  LumascopeDisplay::Points GetCurve() { return LumascopeDisplay::Unpack(GetPlugin().CopyCurve().data()); }
  bool IsCurveZero() { return GetCurve() == LumascopeDisplay::Points{}; }

  static double Linear(double decibels) { return std::pow(10, decibels * 0.05); }
};

// A sine of this many periods in `size` samples, over and over.
inline AudioBlock SineBlock(int32_t channels, int32_t samples, double amplitude, int32_t periods,
                            int32_t size) {
  AudioBlock block(channels, samples);
  return block.Fill([=](int32_t i) {
    const int64_t turn = int64_t{i} * periods % size;
    return amplitude * std::sin(2 * std::numbers::pi * static_cast<double>(turn) / size);
  });
}
