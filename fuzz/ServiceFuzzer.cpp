// The bytes are a sequence of calls on one effect: all that a host may do, in any order and with any numbers.

#include <fuzzer/FuzzedDataProvider.h>

#include "core/MException.h"
#include "core/MMemoryStream.h"
#include "core/MXMLItem.h"
#include "tests/common/EffectUnderTest.h"

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

std::string ToText(const MXMLItem& item) {
  MMemoryStream stream;
  item.Save(stream);
  return std::string(reinterpret_cast<const char*>(stream.GetData()),
                     static_cast<std::size_t>(stream.GetSize()));
}

std::string SaveState(EffectUnderTest& effect) {
  MXMLItem item("state");
  effect.Call(MService::kSaveState, MAsWord(&item));
  return ToText(item);
}

// A number as states have them, or any text.
MString ConsumeValue(FuzzedDataProvider& data) {
  if (data.ConsumeBool()) {
    static constexpr const char* kValues[] = {"nan",    "inf", "-inf", "1e308",
                                              "-1e308", "",    "-1",   "2147483648"};
    return MString::Literal(data.PickValueInArray(kValues));
  }
  const std::string text = data.ConsumeRandomLengthString(24);
  return MString::FromNarrow(text.c_str());
}

// The item of the effect's own state with some attributes changed, in it and in the items below.
void Mutate(FuzzedDataProvider& data, MXMLItem& item) {
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

void LoadState(FuzzedDataProvider& data, EffectUnderTest& effect) {
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
  // What was loaded is saved as a text that stays the same, unless a number was none.
  const std::string saved = SaveState(effect);
  if (saved.find("nan") == std::string::npos && saved != SaveState(effect)) __builtin_trap();
}

void Command(FuzzedDataProvider& data, EffectUnderTest& effect) {
  const std::string name = data.ConsumeRandomLengthString(16);
  if (name == "ImportSample") return;  // its argument is a record
  effect.Call(MService::kCommand, MAsWord(name.c_str()));
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
      if (what == 2) effect.SetBits(row, data.ConsumeIntegral<uint64_t>());
      if (what == 3) effect.Set(row, data.ConsumeFloatingPointInRange(-1.0, 2.0));
      if (what == 4 || what == 5) Process(data, effect, channels);
      if (what == 6) LoadState(data, effect);
      if (what == 7) Command(data, effect);
    } catch (const MException&) {
    }
  }
  return 0;
}
