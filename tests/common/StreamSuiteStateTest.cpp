// The states of all instruments, and tests/golden/states, which keeps the one that each has when it is new.

#include <fstream>
#include <iterator>

#include "tests/common/StreamSuite.h"

namespace {

const std::vector<const char*> kTexts = {
    "nan",        "inf",         "-inf",   "1e308",   "-1e308",     "1e-320",
    "2147483647", "-2147483648", "",       "x",       "0x7fffffff", "99999999999999999999",
    "-1",         "0",           "0.0001", "1000000", "-0.5",       "3"};

// Gives about one of so many attributes of the item and its children any text. Files keep their names.
void Disturb(MXMLItem& item, TestRandom& random, int32_t oneIn) {
  for (int32_t i = 0; i < item.GetAttributes().GetCount(); ++i) {
    const MString name = item.GetAttributes()[i].name;
    const bool isFile = name.Compare("filename") == 0 || name.Compare("subpath") == 0;
    if (!isFile && random.OneIn(oneIn)) item.SetAttribute(name, MString::Literal(random.OneOf(kTexts)));
  }
  for (MXMLItem* const child : item.GetChildren()) Disturb(*child, random, oneIn);
}

TEST_P(StreamSuite, StateOfANewInstrumentIsTheGoldenOne) {
  std::ifstream file(std::string(SONVELLE_GOLDEN_STATES) + "/" + GetParam().instrument + ".xml",
                     std::ios::binary);
  const std::string golden(std::istreambuf_iterator<char>(file), {});
  StreamUnderTest instrument(GetEntry());
  EXPECT_EQ(instrument.Save(), golden);
  instrument.Prepare(2, kRate);
  EXPECT_EQ(instrument.Save(), golden);
}

TEST_P(StreamSuite, SavedStateGivesTheSameTextAndAudio) {
  TestRandom random;
  StreamUnderTest first(GetEntry());
  PrepareSound(first);
  for (int32_t round = 0; round < 5; ++round) {
    for (int32_t i = 0; i < first.GetRowCount(); ++i) {
      const MPluginParameter& row = first.GetRow(i);
      if (round > 0 && row.kind == MParameterKind::kReal)
        first.Set(i, random.Real(row.real.minimum, row.real.maximum));
    }
    const std::string text = first.Save();
    EXPECT_EQ(first.Save(), text);
    StreamUnderTest second(GetEntry());
    second.Prepare(2, kRate);
    second.Load(text);
    EXPECT_EQ(second.Save(), text);
    first.Load(text);  // now it has the digits of a text as well
    EXPECT_EQ(first.Save(), text);
    EXPECT_TRUE(first.Play(kRate / 2, {512}) == second.Play(kRate / 2, {512}));
  }
}

TEST_P(StreamSuite, WithoutASoundThereIsNoNote) {
  StreamUnderTest instrument(GetEntry());
  instrument.Prepare(2, kRate);
  MWord note = 77;
  MStreamRequest request;
  request.volume = request.ratio = 1;
  request.result = &note;
  EXPECT_EQ(instrument.Call(MService::kCreateStream, MAsWord(&request)), GetParam().soundsWhenNew ? 0 : 1);
  EXPECT_EQ(note != 77, GetParam().soundsWhenNew);
  if (note != 77) instrument.Close(note);
  PrepareSound(instrument);
  note = instrument.Create();
  EXPECT_NE(note, 0);
  instrument.Close(note);
}

TEST_P(StreamSuite, AnyNumberInAnyAttributeIsSafe) {
  TestRandom random;
  StreamUnderTest instrument(GetEntry());
  PrepareSound(instrument, 2, kLowRate);
  const std::string text = instrument.Save();
  for (int32_t round = 0; round < 150; ++round) {
    SCOPED_TRACE(round);
    MXMLItem item;
    StreamUnderTest::Parse(text, item);
    Disturb(item, random, round % 10 + 1);
    instrument.Load(item);
    if (random.OneIn(4)) instrument.Prepare(2, random.Integer(1, 2 * kLowRate));
    const AudioBlock out =
        instrument.Play(1500, {64, 333}, random.Real(0, 1), random.Real(0.3, 3), random.Below(100));
    ASSERT_TRUE(out.IsFinite() && out.GuardsHold());
  }
}

TEST_P(StreamSuite, AnyBitsInAnyRowAreSafe) {
  TestRandom random;
  StreamUnderTest instrument(GetEntry());
  PrepareSound(instrument, 2, kLowRate);
  for (int32_t round = 0; round < 30 && instrument.GetRowCount() > 0; ++round) {
    for (int32_t i = 0; i < instrument.GetRowCount(); ++i)
      if (random.OneIn(2)) instrument.SetBits(i, random.Bits());
    const AudioBlock out = instrument.Play(1500, {64, 333}, 1, random.Real(0.3, 3));
    ASSERT_TRUE(out.IsFinite() && out.GuardsHold());
  }
}

TEST_P(StreamSuite, NoteSurvivesAnotherState) {
  StreamUnderTest instrument(GetEntry());
  PrepareSound(instrument);
  MWord note = instrument.Create();
  instrument.Pull(note, 2000, {512});
  instrument.Load("<state/>");
  EXPECT_TRUE(instrument.Pull(note, 2000, {512}).IsFinite());
  instrument.Load(GetState());
  EXPECT_TRUE(instrument.Pull(note, kRate, {512}).IsFinite());
  instrument.Close(note);
}

}  // namespace
