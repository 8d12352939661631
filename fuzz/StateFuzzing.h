#pragma once
// States and commands for an effect out of a fuzzer's bytes.

#include <fuzzer/FuzzedDataProvider.h>

#include "core/MMemoryStream.h"
#include "core/MXMLItem.h"
#include "tests/common/EffectUnderTest.h"

// A number as states have them, or any text.
inline MString ConsumeValue(FuzzedDataProvider& data) {
  if (data.ConsumeBool()) {
    static constexpr const char* kValues[] = {"nan",    "inf", "-inf", "1e308",
                                              "-1e308", "",    "-1",   "2147483648"};
    return MString::Literal(data.PickValueInArray(kValues));
  }
  const std::string text = data.ConsumeRandomLengthString(24);
  return MString::FromNarrow(text.c_str());
}

// The item of the effect's own state with some attributes changed, in it and in the items below.
inline void Mutate(FuzzedDataProvider& data, MXMLItem& item) {
  for (int32_t changes = data.ConsumeIntegralInRange(0, 4); changes > 0; --changes) {
    const int32_t count = item.GetAttributes().GetCount();
    if (count == 0) break;
    const MString name = item.GetAttributes()[data.ConsumeIntegralInRange(0, count - 1)].name;
    if (data.ConsumeBool()) {
      item.SetAttribute(name, ConsumeValue(data));
    } else {
      item.RemoveAttribute(name);
    }
  }
  for (MXMLItem* child : item.GetChildren()) Mutate(data, *child);
}

inline void LoadState(FuzzedDataProvider& data, EffectUnderTest& effect) {
  MXMLItem item("state");
  if (data.ConsumeBool()) {
    effect.Call(MService::kSaveState, MAsWord(&item));
    Mutate(data, item);
  } else {
    const std::string text = data.ConsumeRandomLengthString(400);
    MMemoryStream stream(text.data(), static_cast<int32_t>(text.size()));
    item.Load(stream);
  }
  effect.Call(MService::kLoadState, MAsWord(&item));
  effect.Call(MService::kStateLoaded);
  MXMLItem saved("state");
  effect.Call(MService::kSaveState, MAsWord(&saved));
}

inline void Command(FuzzedDataProvider& data, EffectUnderTest& effect) {
  const std::string name = data.ConsumeRandomLengthString(16);
  if (name == "ImportSample") return;  // its argument is a record
  effect.Call(MService::kCommand, MAsWord(name.c_str()));
}
