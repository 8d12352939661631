#pragma once
// Runs notes of one instrument through its entry point, as a host does: stereo, 48 kHz, one note after the
// other, each made, computed to its end and closed. Reports the time per stereo frame; denormals are flushed.

#include <cstdlib>
#include <string>
#include <vector>

#include "bench/Calibrated.h"
#include "core/MFlushDenormals.h"
#include "core/MXMLItem.h"
#include "exports/PluginEntries.h"

class StreamBench {
 public:
  explicit StreamBench(const char* name) {
    for (int32_t i = 0; i < kPluginEntryCount; ++i)
      if (std::string(kPluginEntries[i].name) == name) entry_ = kPluginEntries[i].entryPoint;
    MServiceArguments none;
    plugin_ = MAsAddress<void>(entry_(nullptr, MService::kAttach, &none));
  }
  StreamBench(const StreamBench&) = delete;
  StreamBench& operator=(const StreamBench&) = delete;
  ~StreamBench() { Call(MService::kDestroy); }

  MWord Call(int32_t service, MWord a = 0, MWord b = 0, MWord c = 0) {
    MServiceArguments arguments(a, b, c);
    return entry_(plugin_, service, &arguments);
  }
  void Load(MXMLItem& state) {
    Call(MService::kLoadState, MAsWord(&state));
    Call(MService::kStateLoaded);
  }

  void Run(benchmark::State& state, double ratio = 1) {
    const auto samples = static_cast<int32_t>(state.range(0));
    Call(MService::kPrepareStreams, 2, 48000);
    std::vector<float> left(static_cast<std::size_t>(samples)), right(left);
    float* out[] = {left.data(), right.data()};
    MWord note = 0;
    MStreamRequest request;
    request.ratio = ratio;
    request.result = &note;
    Calibrate(state);
    const MFlushDenormals flush;
    for (auto _ : state) {
      if (note == 0 && Call(MService::kCreateStream, MAsWord(&request)) != 0) std::abort();
      if (Call(MService::kComputeStream, MAsWord(out), samples, MAsWord(&note)) == MStreamResult::kEnded)
        Call(MService::kCloseStream, MAsWord(&note));
    }
    Call(MService::kCloseStream, MAsWord(&note));
    state.SetItemsProcessed(state.iterations() * samples);
  }

 private:
  MPluginEntryPoint* entry_ = nullptr;
  void* plugin_ = nullptr;
};
