#pragma once
// States for a plug-in out of a fuzzer's bytes.

#include <fuzzer/FuzzedDataProvider.h>

#include "core/MMemoryStream.h"
#include "core/MXMLItem.h"
#include "fuzz/CallFuzzing.h"

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

// `file` is what the state names if it is the plug-in's own.
template <typename Plugin>
void LoadState(FuzzedDataProvider& data, Plugin& plugin, const char* file = "") {
  MXMLItem item("state");
  if (data.ConsumeBool()) {
    plugin.Call(MService::kSaveState, MAsWord(&item));
    if (*file != 0) {
      item.SetAttribute("subpath", MString());
      item.SetAttribute("filename", MString::Literal(file));
    }
    Mutate(data, item);
  } else {
    const std::string text = data.ConsumeRandomLengthString(400);
    MMemoryStream stream(text.data(), static_cast<int32_t>(text.size()));
    item.Load(stream);
  }
  plugin.Call(MService::kLoadState, MAsWord(&item));
  plugin.Call(MService::kStateLoaded);
  MXMLItem saved("state");
  plugin.Call(MService::kSaveState, MAsWord(&saved));
}
