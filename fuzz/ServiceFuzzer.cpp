// The bytes are a sequence of calls on one effect: all that a host may do, in any order and with any numbers.

#include <fuzzer/FuzzedDataProvider.h>

#include "core/MException.h"
#include "fuzz/StateFuzzing.h"

namespace {

constexpr int32_t kMostChannels = 16;

void Prepare(FuzzedDataProvider& data, EffectUnderTest& effect, int32_t& channels) {
  channels =
      data.ConsumeBool() ? data.ConsumeIntegralInRange(-1, kMostChannels) : data.ConsumeIntegral<int32_t>();
  // A minute of a memory of eight channels stays below 50 MB.
  const int32_t highestRate = 200000 / std::clamp(channels, 1, 8);
  effect.Prepare(channels, std::min(data.ConsumeIntegral<int32_t>(), highestRate));
}

void Process(FuzzedDataProvider& data, EffectUnderTest& effect, int32_t channels) {
  if (channels > kMostChannels) return;
  TestRandom random(data.ConsumeIntegral<uint8_t>());
  const double peak = data.PickValueInArray({0.0, 1e-40, 1.0, 1048576.0});
  AudioBlock in = AudioBlock::Noise(channels, data.ConsumeIntegralInRange(0, 5000), random, peak);
  AudioBlock out(channels, in.GetLength());
  const bool inPlace = data.ConsumeBool();
  effect.Process(in.From(), inPlace ? in.From() : out.From(), in.GetLength());
  if (!in.IsFinite() || !out.IsFinite() || !in.GuardsHold() || !out.GuardsHold()) __builtin_trap();
}

void CallAny(FuzzedDataProvider& data, EffectUnderTest& effect) {
  const auto service = data.ConsumeBool() ? data.ConsumeIntegral<uint8_t>() : data.ConsumeIntegral<int32_t>();
  if (service == MService::kDestroy) return;
  const bool takesNumbers = service == MService::kParameterChanged || service == MService::kSkip;
  effect.Call(service, takesNumbers ? data.ConsumeIntegral<int64_t>() : 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size) {
  static const std::vector<PluginEntry> kEffects = GetAllEffects();
  FuzzedDataProvider data(bytes, size);
  EffectUnderTest effect(kEffects[data.ConsumeIntegral<uint8_t>() % kEffects.size()]);
  int32_t channels = 0;
  for (int32_t calls = 0; calls < 60 && data.remaining_bytes() > 0; ++calls) {
    try {
      const auto what = data.ConsumeIntegralInRange(0, 7);
      const int32_t row = data.ConsumeIntegral<uint8_t>() % std::max(effect.GetRowCount(), 1);
      if (what == 0) Prepare(data, effect, channels);
      if (what == 1) CallAny(data, effect);
      if (what == 2 && effect.GetRowCount() > 0) effect.SetBits(row, data.ConsumeIntegral<uint64_t>());
      if (what == 3 && effect.GetRowCount() > 0) effect.Set(row, data.ConsumeFloatingPointInRange(-1.0, 2.0));
      if (what == 4 || what == 5) Process(data, effect, channels);
      if (what == 6) LoadState(data, effect);
      if (what == 7) Command(data, effect);
    } catch (const MException&) {
    }
  }
  return 0;
}
