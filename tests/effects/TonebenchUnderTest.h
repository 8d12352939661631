#pragma once
// Tonebench as its tests use it: through its entry point like any effect, and its bands directly, as an
// editor has them.

#include "effects/Tonebench.h"
#include "tests/common/EffectUnderTest.h"

extern "C" MPluginEntryPoint TonebenchAudioEffectPluginInterface;

class TonebenchUnderTest : public EffectUnderTest {
 public:
  TonebenchUnderTest() : EffectUnderTest({"Tonebench", "AudioEffect", TonebenchAudioEffectPluginInterface}) {}

  TonebenchAudioEffectPlugin& GetPlugin() {
    return *static_cast<TonebenchAudioEffectPlugin*>(
        static_cast<MPlugin*>(MAsAddress<void>(Call(MService::kAttach))));
  }
  BandPoint GetBand(int32_t index) { return GetPlugin().GetBand(index); }
  void SetBand(int32_t index, const BandPoint& point) { GetPlugin().SetBand(index, point); }
  void SetBand(int32_t index, double hertz, double decibels, double quality, int32_t type, bool isOn = true) {
    BandPoint point;
    point.x = std::log10(hertz);
    point.y = decibels;
    point.enabled = isOn;
    point.width = std::pow((20 - quality) / 19.95, 4);
    point.type = type;
    SetBand(index, point);
  }
  void Enable(int32_t index, bool isOn) {
    BandPoint point = GetBand(index);
    point.enabled = isOn;
    SetBand(index, point);
  }
};
