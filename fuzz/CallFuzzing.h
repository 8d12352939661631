#pragma once
// Calls on a plug-in of either kind, and numbers for them, out of a fuzzer's bytes.

#include <fuzzer/FuzzedDataProvider.h>

#include <bit>

#include "tests/common/EffectUnderTest.h"

constexpr int32_t kMostChannels = 16;  // of a block

inline int32_t ConsumeChannels(FuzzedDataProvider& data) {
  return data.ConsumeBool() ? data.ConsumeIntegralInRange(-1, kMostChannels)
                            : data.ConsumeIntegral<int32_t>();
}

// A number of a usual size, or any bits.
inline double ConsumeReal(FuzzedDataProvider& data) {
  return data.ConsumeBool() ? data.ConsumeFloatingPointInRange(-1.0, 4.0)
                            : std::bit_cast<double>(data.ConsumeIntegral<uint64_t>());
}

// Short ones are as likely as long ones.
inline int32_t ConsumeDelay(FuzzedDataProvider& data) {
  return data.ConsumeIntegral<int32_t>() >> data.ConsumeIntegralInRange(0, 31);
}

template <typename Plugin>
void SetRow(FuzzedDataProvider& data, Plugin& plugin) {
  if (plugin.GetRowCount() == 0) return;
  const int32_t row = data.ConsumeIntegral<uint8_t>() % plugin.GetRowCount();
  plugin.Set(row, data.ConsumeFloatingPointInRange(-1.0, 2.0));
}

template <typename Plugin>
void SetRowToBits(FuzzedDataProvider& data, Plugin& plugin) {
  if (plugin.GetRowCount() == 0) return;
  const int32_t row = data.ConsumeIntegral<uint8_t>() % plugin.GetRowCount();
  plugin.SetBits(row, data.ConsumeIntegral<uint64_t>());
}

// Any service but the one that ends the plug-in, without anything to work on.
template <typename Plugin>
void CallAny(FuzzedDataProvider& data, Plugin& plugin) {
  const auto service = data.ConsumeBool() ? data.ConsumeIntegral<uint8_t>() : data.ConsumeIntegral<int32_t>();
  if (service == MService::kDestroy) return;
  const bool takesNumbers = service == MService::kParameterChanged || service == MService::kSkip;
  plugin.Call(service, takesNumbers ? data.ConsumeIntegral<int64_t>() : 0);
}

template <typename Plugin>
void Command(FuzzedDataProvider& data, Plugin& plugin) {
  const std::string name = data.ConsumeRandomLengthString(16);
  if (name == "ImportSample") return;  // its argument is a record
  plugin.Call(MService::kCommand, MAsWord(name.c_str()));
}
