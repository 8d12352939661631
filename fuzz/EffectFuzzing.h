#pragma once
// Calls on an effect out of a fuzzer's bytes.

#include "fuzz/StateFuzzing.h"
#include "plugin/MPlugin.h"

class EffectFuzzing {
 public:
  EffectFuzzing(FuzzedDataProvider& data, const PluginEntry& entry) : data_(data), effect_(entry) {}

  void CallOne() {
    switch (data_.ConsumeIntegralInRange(0, 8)) {
      case 0:
        return Prepare();
      case 1:
        return CallAny(data_, effect_);
      case 2:
        return SetRowToBits(data_, effect_);
      case 3:
        return SetRow(data_, effect_);
      case 6:
        return LoadState(data_, effect_);
      case 7:
        return Command(data_, effect_);
      case 8:
        return GetPlugin().SetEditorOpen(data_.ConsumeBool());
      default:
        return Process();
    }
  }

 private:
  MPlugin& GetPlugin() { return *MAsAddress<MPlugin>(effect_.Call(MService::kAttach)); }
  void Prepare() {
    channels_ = ConsumeChannels(data_);
    // A minute of a memory of eight channels stays below 50 MB.
    const int32_t highestRate = 200000 / std::clamp(channels_, 1, 8);
    effect_.Prepare(channels_, std::min(data_.ConsumeIntegral<int32_t>(), highestRate));
  }
  void Process() {
    if (channels_ > kMostChannels) return;
    TestRandom random(data_.ConsumeIntegral<uint8_t>());
    const double peak = data_.PickValueInArray({0.0, 1e-40, 1.0, 1048576.0});
    AudioBlock in = AudioBlock::Noise(channels_, data_.ConsumeIntegralInRange(0, 5000), random, peak);
    AudioBlock out(channels_, in.GetLength());
    const bool inPlace = data_.ConsumeBool();
    effect_.Process(in.From(), inPlace ? in.From() : out.From(), in.GetLength());
    if (!in.IsFinite() || !out.IsFinite() || !in.GuardsHold() || !out.GuardsHold()) __builtin_trap();
  }

  FuzzedDataProvider& data_;
  EffectUnderTest effect_;
  int32_t channels_ = 0;
};
