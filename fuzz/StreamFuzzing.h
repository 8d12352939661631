#pragma once
// Calls on an instrument out of a fuzzer's bytes.

#include "fuzz/FuzzedFiles.h"
#include "fuzz/StateFuzzing.h"
#include "tests/common/StreamUnderTest.h"

class StreamFuzzing {
 public:
  StreamFuzzing(FuzzedDataProvider& data, const PluginEntry& entry) : data_(data), instrument_(entry) {
    static const FuzzedFiles kFiles;
  }
  ~StreamFuzzing() {
    for (MWord& note : notes_) instrument_.Close(note);
  }

  void CallOne() {
    MWord& note = notes_[data_.ConsumeIntegralInRange<std::size_t>(0, std::size(notes_) - 1)];
    switch (data_.ConsumeIntegralInRange(0, 10)) {
      case 0:
        instrument_.Prepare(channels_ = ConsumeChannels(data_), data_.ConsumeIntegral<int32_t>());
        return;
      case 1:
        return CallAny(data_, instrument_);
      case 2:
        return SetRowToBits(data_, instrument_);
      case 3:
        return SetRow(data_, instrument_);
      case 4:
        instrument_.Close(note);
        note = instrument_.Create(ConsumeReal(data_), ConsumeReal(data_), ConsumeDelay(data_));
        return;
      case 5:
        return LoadState(data_, instrument_, data_.PickValueInArray(kFuzzedFiles));
      case 6:
        return Command(data_, instrument_);
      case 7:
        return Collect();
      default:
        return Compute(note);
    }
  }

 private:
  void Compute(MWord& note) {
    if (channels_ > kMostChannels) return;
    AudioBlock out(channels_, data_.ConsumeIntegralInRange(0, 5000));
    instrument_.Compute(out.From(), out.GetLength(), note);
    if (!out.IsFinite() || !out.GuardsHold()) __builtin_trap();
  }
  void Collect() {
    MCollectedFiles files;
    instrument_.Call(MService::kCollectFiles, MAsWord(&files));
  }

  FuzzedDataProvider& data_;
  StreamUnderTest instrument_;
  MWord notes_[6] = {};
  int32_t channels_ = 0;
};
