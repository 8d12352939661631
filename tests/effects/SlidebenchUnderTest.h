#pragma once
// Slidebench as its tests use it: through its entry point like any effect, with curves that are drawn by
// hand.

#include "core/MXMLItem.h"
#include "effects/Slidebench.h"
#include "tests/common/EffectUnderTest.h"
#include "tests/dsp/Curves.h"

extern "C" MPluginEntryPoint SlidebenchAudioEffectPluginInterface;

class SlidebenchUnderTest : public EffectUnderTest {
 public:
  static constexpr int32_t kSize = 4096;
  static constexpr int32_t kHalf = kSize / 2;
  static constexpr int32_t kLatency = kSize + kHalf;
  static constexpr double kLowest = 3.010299956639812;  // of the drawn axis

  SlidebenchUnderTest()
      : EffectUnderTest({"Slidebench", "AudioEffect", SlidebenchAudioEffectPluginInterface}) {}
  // Prepared; without points the curve is that of a new effect.
  explicit SlidebenchUnderTest(std::initializer_list<MEnvelopePoint> points, double depth = 1,
                               int32_t channels = 1, int32_t sampleRate = 48000)
      : SlidebenchUnderTest() {
    if (points.size() > 0) SetCurve(points);
    Set("depth", depth);
    Prepare(channels, sampleRate);
  }

  void SetCurve(std::initializer_list<MEnvelopePoint> points) {
    const double depth = Get(0);
    MXMLItem item("state");
    Curve(points).Save(item.AddSubItem("graph"));
    Call(MService::kLoadState, MAsWord(&item));
    Set("depth", depth);
  }
  std::vector<double> GetGains() {
    const auto gains = static_cast<SlidebenchAudioEffectPlugin*>(
                           static_cast<MPlugin*>(MAsAddress<void>(Call(MService::kAttach))))
                           ->GetGains();
    return {gains.begin(), gains.end()};
  }
};

// The signal as it comes out when nothing but time happens to it.
inline AudioBlock Delayed(const AudioBlock& in, int32_t samples) {
  AudioBlock out = in;
  for (int32_t c = 0; c < in.GetChannelCount(); ++c)
    for (int32_t i = 0; i < in.GetLength(); ++i) out[c][i] = i < samples ? 0 : in[c][i - samples];
  return out;
}
