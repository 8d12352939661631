#pragma once
// Runs one effect through its entry point, as a host does: stereo, 48 kHz, blocks over 1.4 s of seeded noise.
// Reports the time per stereo frame; denormals are flushed, as the bridge does.

#include <cmath>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "bench/Calibrated.h"
#include "core/MFlushDenormals.h"
#include "core/MXMLItem.h"
#include "exports/PluginEntries.h"
#include "plugin/MPlugin.h"

class EffectBench {
 public:
  explicit EffectBench(const char* name) {
    for (int32_t i = 0; i < kPluginEntryCount; ++i)
      if (std::string(kPluginEntries[i].name) == name) entry_ = kPluginEntries[i].entryPoint;
    MServiceArguments none;
    plugin_ = MAsAddress<void>(entry_(nullptr, MService::kAttach, &none));
    uint32_t seed = 1;
    for (float& sample : input_) {
      seed = seed * 1664525u + 1013904223u;
      sample = static_cast<float>(seed) / 4294967296.0f - 0.5f;
    }
  }
  EffectBench(const EffectBench&) = delete;
  EffectBench& operator=(const EffectBench&) = delete;
  ~EffectBench() { Call(MService::kDestroy); }

  // Of a row of any kind; a number is cut to what the row holds.
  void Set(const char* key, double value) { Set(FindRow(key), value); }

  void Prepare() { Call(MService::kPrepare, 2, 48000); }
  void SetEditorOpen(bool isOpen) { static_cast<MPlugin*>(plugin_)->SetEditorOpen(isOpen); }

  void Load(MXMLItem& state) { Call(MService::kLoadState, MAsWord(&state)); }

  // Noise that decays by 120 dB within half of its length and ends in zeros.
  void RunDecay(benchmark::State& state) {
    for (int32_t i = 0; i < 2 * kFrames; ++i) {
      const int32_t frame = i % kFrames;
      input_[i] =
          frame < kFrames / 2 ? input_[i] * std::pow(10.0f, -12.0f * static_cast<float>(frame) / kFrames) : 0;
    }
    Run(state);
  }

  // The time of an update after a row was changed, forth and back.
  void RunUpdate(benchmark::State& state, const char* key, double value, double other) {
    const int32_t row = FindRow(key);
    Call(MService::kPrepare, 2, 48000);
    Calibrate(state);
    for (auto _ : state) {
      std::swap(value, other);
      Set(row, other);
    }
  }

  // The same of an effect without rows.
  void RunUpdate(benchmark::State& state) {
    Call(MService::kPrepare, 2, 48000);
    Calibrate(state);
    for (auto _ : state) Call(MService::kParameterChanged, -1);
  }

  void Run(benchmark::State& state) {
    const int32_t samples = static_cast<int32_t>(state.range(0));
    Prepare();
    Calibrate(state);
    const MFlushDenormals flush;
    std::vector<float> left(static_cast<std::size_t>(samples)), right(left);
    int32_t position = 0;
    for (auto _ : state) {
      float* in[] = {input_ + position, input_ + kFrames + position};
      float* out[] = {left.data(), right.data()};
      Call(MService::kProcess, MAsWord(in), MAsWord(out), samples);
      position += samples;
      if (position + samples > kFrames) position = 0;
    }
    state.SetItemsProcessed(state.iterations() * samples);
  }

 private:
  static constexpr int32_t kFrames = 65536;

  MWord Call(int32_t service, MWord a = 0, MWord b = 0, MWord c = 0) {
    MServiceArguments arguments(a, b, c);
    return entry_(plugin_, service, &arguments);
  }

  int32_t FindRow(const char* key) {
    const auto* block = MAsAddress<MPluginPublicBlock>(Call(MService::kPublicBlock));
    for (int32_t i = 0; i < block->parameterCount; ++i)
      if (block->parameters[i].key == MString::Literal(key)) return i;
    throw std::invalid_argument(key);
  }

  void Set(int32_t row, double value) {
    MPluginParameter& at = MAsAddress<MPluginPublicBlock>(Call(MService::kPublicBlock))->parameters[row];
    const auto number = static_cast<int32_t>(value);
    if (at.kind == MParameterKind::kReal) MStoreShared(at.real.value, value);
    if (at.kind == MParameterKind::kInteger) MStoreShared(at.integer.value, number);
    if (at.kind == MParameterKind::kEnumeration) MStoreShared(at.enumeration.value, number);
    if (at.kind == MParameterKind::kSwitch) MStoreShared(at.onOff.value, number);
    Call(MService::kParameterChanged, row);
  }

  MPluginEntryPoint* entry_ = nullptr;
  void* plugin_ = nullptr;
  float input_[2 * kFrames];
};
