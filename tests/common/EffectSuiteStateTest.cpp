// The states of all effects, and tests/golden/states, which keeps the one that each has when it is new: songs
// hold such texts for years. When a state is meant to grow, put the text that the failed test prints into its
// file; what an older file says must go on meaning the same.

#include <fstream>
#include <iterator>

#include "core/MXMLItem.h"
#include "tests/common/EffectSuite.h"
#include "tests/common/Texts.h"

namespace {

std::string Save(EffectUnderTest& effect) {
  MXMLItem item("state");
  EXPECT_EQ(effect.Call(MService::kSaveState, MAsWord(&item)), 0);
  MMemoryStream stream;
  item.Save(stream);
  return std::string(reinterpret_cast<const char*>(stream.GetData()),
                     static_cast<std::size_t>(stream.GetSize()));
}

void Load(EffectUnderTest& effect, MXMLItem& item) {
  effect.Call(MService::kLoadState, MAsWord(&item));
  EXPECT_EQ(effect.Call(MService::kStateLoaded), 0);
}

void Load(EffectUnderTest& effect, const std::string& text) {
  MMemoryStream stream(text.data(), static_cast<int32_t>(text.size()));
  MXMLItem item;
  item.Load(stream);
  Load(effect, item);
}

// The bits of each row's value.
std::vector<double> GetValues(EffectUnderTest& effect) {
  std::vector<double> values;
  for (int32_t i = 0; i < effect.GetRowCount(); ++i) values.push_back(effect.Get(i));
  return values;
}

MString AttributeName(const MPluginParameter& row) {
  MString name("parameter");
  name.Append(row.key);
  return name;
}

// What says that a state is not an old one.
void AddMarks(MXMLItem& item) {
  for (const char* const mark : {"halfgain", "amplituderatio"})
    item.SetAttribute(MString::Literal(mark), "0");
}

TEST_P(EffectSuite, StateOfANewEffectIsTheGoldenOne) {
  const std::string path = std::string(SONVELLE_GOLDEN_STATES) + "/" + GetParam().name + ".xml";
  std::ifstream file(path, std::ios::binary);
  const std::string golden(std::istreambuf_iterator<char>(file), {});
  EffectUnderTest effect(GetParam());
  EXPECT_EQ(Save(effect), golden) << "the file " << path << " is to be\n" << Save(effect);
  effect.Prepare(2, kRate);
  EXPECT_EQ(Save(effect), golden);
}

TEST_P(EffectSuite, SavedStateGivesTheSameRowsTextAndAudio) {
  TestRandom random;
  for (int32_t round = 0; round < 5; ++round) {
    EffectUnderTest first(GetParam());
    first.SetAllAtRandom(random);
    const std::string text = Save(first);
    EXPECT_EQ(Save(first), text);
    EffectUnderTest second(GetParam());
    second.SetAllAtRandom(random);
    Load(second, text);
    for (int32_t i = 0; i < first.GetRowCount(); ++i)
      EXPECT_NEAR(second.Get(i), first.Get(i), 0.50001e-4) << Utf8(first.GetRow(i).key);
    EXPECT_EQ(Save(second), text);
    // The first one now has the same four decimals.
    Load(first, text);
    EXPECT_EQ(GetValues(first), GetValues(second));
    first.Prepare(2, kRate);
    second.Prepare(2, kRate);
    const AudioBlock noise = AudioBlock::Noise(2, 6000, random);
    EXPECT_TRUE(first.Answer(noise, {256}) == second.Answer(noise, {256}));
  }
}

TEST_P(EffectSuite, EmptyStateGivesEveryRowItsDefault) {
  TestRandom random;
  EffectUnderTest effect(GetParam());
  effect.SetAllAtRandom(random);
  MXMLItem item;
  if (IsAllowed(Allowance::kNeedsMarks)) AddMarks(item);
  Load(effect, item);
  EffectUnderTest fresh(GetParam());
  for (int32_t i = 0; i < fresh.GetRowCount(); ++i)
    EXPECT_NEAR(effect.Get(i), fresh.Get(i), 0.50001e-4) << Utf8(fresh.GetRow(i).key);
}

TEST_P(EffectSuite, KeysOfAStateAreFoundWhateverTheirCase) {
  EffectUnderTest effect(GetParam());
  for (int32_t i = 0; i < effect.GetRowCount(); ++i) {
    if (effect.GetRow(i).kind == MParameterKind::kPanel) continue;
    MXMLItem item;
    MString upper = AttributeName(effect.GetRow(i));
    MString name;
    for (int32_t k = 0; k < upper.GetLength(); ++k)
      name.Append(static_cast<MChar>(std::toupper(static_cast<int>(upper.At(k)))));
    item.SetAttribute(name, "1");
    if (IsAllowed(Allowance::kNeedsMarks)) AddMarks(item);
    item.SetAttribute("stranger", "7");
    Load(effect, item);
    EXPECT_EQ(effect.Get(i), 1) << Utf8(name);
  }
}

TEST_P(EffectSuite, StateWorksInEveryEncoding) {
  TestRandom random;
  EffectUnderTest first(GetParam());
  first.SetAllAtRandom(random);
  MXMLItem item("state");
  first.Call(MService::kSaveState, MAsWord(&item));
  Load(first, item);
  for (const char* const encoding : {"utf-8", "utf-16", "ascii", "iso-8859-1", "windows-1250", "koi8-r"}) {
    MMemoryStream stream;
    item.Save(stream, false, MString::Literal(encoding));
    stream.Seek(0, MSeekOrigin::kStart);
    MXMLItem read;
    read.Load(stream);
    EffectUnderTest second(GetParam());
    Load(second, read);
    EXPECT_EQ(GetValues(second), GetValues(first)) << encoding;
  }
}

// Rows keep whatever a state says; what comes out must be sane all the same.
TEST_P(EffectSuite, AnyStateIsSafe) {
  static const char* const kTexts[] = {"nan",        "inf",         "-inf",
                                       "1e308",      "-1e308",      "1e-320",
                                       "2147483647", "-2147483648", "99999999999999999999",
                                       "",           "x",           "0x7fffffff",
                                       "-1",         "0",           "0.0001",
                                       "1000000",    "-0.5",        "3"};
  TestRandom random;
  EffectUnderTest effect(GetParam());
  effect.Prepare(2, kLowRate);
  for (int32_t round = 0; round < 40; ++round) {
    MXMLItem item;
    for (int32_t i = 0; i < effect.GetRowCount(); ++i)
      if (!random.OneIn(4))
        item.SetAttribute(AttributeName(effect.GetRow(i)),
                          MString::Literal(kTexts[random.Below(static_cast<int32_t>(std::size(kTexts)))]));
    Load(effect, item);
    if (random.OneIn(4)) effect.Prepare(2, kLowRate);
    AudioBlock noise = AudioBlock::Noise(2, 300, random);
    const AudioBlock out = effect.Answer(noise, {64});
    EXPECT_TRUE(out.IsFinite());
    EXPECT_TRUE(out.GuardsHold());
  }
}

TEST_P(EffectSuite, StateWithTenThousandStrangersLoads) {
  std::string text = "<state";
  for (int32_t i = 0; i < 10000; ++i) text += " stranger" + std::to_string(i) + "=\"1\"";
  if (IsAllowed(Allowance::kNeedsMarks)) text += " halfgain=\"0\" amplituderatio=\"0\"";
  EffectUnderTest effect(GetParam());
  Load(effect, text + "/>");
  EffectUnderTest fresh(GetParam());
  for (int32_t i = 0; i < fresh.GetRowCount(); ++i) EXPECT_NEAR(effect.Get(i), fresh.Get(i), 0.50001e-4);
}

}  // namespace
