#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/MMemoryStream.h"
#include "dsp/MRandomSequence.h"
#include "tests/common/TestRandom.h"
#include "tests/common/Texts.h"
#include "tests/instruments/GrainloomUnderTest.h"

namespace {

using testing::HasSubstr;

// The state of a plug-in as a text.
std::string StateOf(GrainloomUnderTest& grainloom) {
  MXMLItem item("state");
  grainloom.Save(item);
  MMemoryStream stream;
  item.Save(stream);
  return std::string(reinterpret_cast<const char*>(stream.GetData()),
                     static_cast<std::size_t>(stream.GetSize()));
}

TEST(GrainloomState, HoldsRowsFileEnvelopeAndTenBands) {
  GrainloomUnderTest grainloom;
  grainloom.WriteLibrary(SmallLibrary());
  grainloom.LoadEmptyState();
  grainloom->SetBand(1, {1.1f, 7, -3, 0.123456789f});
  grainloom.Set(0, 0.3);
  MXMLItem item("state");
  grainloom.Save(item);
  EXPECT_EQ(item.GetAttribute("parametercoloroffset"), "0.3000");
  EXPECT_EQ(item.GetAttribute("parametervolumedeviance"), "0.1000");
  EXPECT_EQ(item.GetAttribute("parameteroffsetdeviance"), "0.0000");
  EXPECT_EQ(item.GetAttribute("coloroffset"), "0.3000");
  EXPECT_EQ(item.GetAttribute("subpath"), "Natural");
  EXPECT_EQ(item.GetAttribute("filename"), "Natural Bass.qxSubSampleLib");
  EXPECT_EQ(item.SubItem("envelope").GetChildren().GetCount(), 2);
  const MXMLItem& generator = item.SubItem("generator");
  ASSERT_EQ(generator.GetChildren().GetCount(), 10);
  const MXMLItem& second = *generator.GetChildren()[1];
  EXPECT_EQ(second.GetName(), "item");
  EXPECT_EQ(second.GetAttribute("Index"), "1.10000002");
  EXPECT_EQ(second.GetAttribute("Offset"), "7");
  EXPECT_EQ(second.GetAttribute("OffsetModif"), "-3");
  EXPECT_EQ(second.GetAttribute("Volume"), "0.123456791");
  EXPECT_EQ(generator.GetChildren()[2]->GetAttribute("Offset"), "100") << "the library's first bin";
}

TEST(GrainloomState, ComesBackWithTheSameTextAndSound) {
  GrainloomUnderTest grainloom;
  grainloom.WriteLibrary(SmallLibrary(), "Mine/b.qxSubSampleLib");
  grainloom.Set(0, 0.37);
  grainloom->SelectLibrary("Mine", "b.qxSubSampleLib");
  grainloom->GetEnvelope().Add(1.0, 0.25);
  const auto left = grainloom.GetSample(0), right = grainloom.GetSample(1);
  ASSERT_EQ(left.size(), 9000u);
  MXMLItem item("state");
  grainloom.Save(item);
  const std::string text = StateOf(grainloom);
  grainloom.LoadEmptyState();
  EXPECT_THAT(StateOf(grainloom), testing::Ne(text));
  grainloom.Load(item);
  EXPECT_EQ(StateOf(grainloom), text);
  EXPECT_EQ(grainloom.GetSample(0), left);
  EXPECT_EQ(grainloom.GetSample(1), right);
  grainloom.Save(item);
  MXMLItem& generator = item.SubItem("generator");
  EXPECT_EQ(generator.GetChildren().GetCount(), 10) << "saved again into the same item";
}

TEST(GrainloomState, LoadedBandsAreNotRandomizedAndSelectedOnesAre) {
  GrainloomUnderTest grainloom;
  grainloom.WriteLibrary(SmallLibrary());
  const uint32_t before = MRandomSequence::Get();
  grainloom.LoadEmptyState();
  EXPECT_EQ(MRandomSequence::Get(), before);
  for (int32_t b = 0; b < 9; ++b)
    EXPECT_EQ(grainloom->GetBand(b), (MSubSampleBand{0, 20 + 40 * b, 0, 1})) << b;
  grainloom->SelectLibrary("Natural", "Natural Bass.qxSubSampleLib");
  EXPECT_NE(MRandomSequence::Get(), before);
  EXPECT_NE(grainloom->GetBand(0).volume, 1);
}

TEST(GrainloomState, FewerItemsLeaveTheOtherBandsAtTheirStartAndFurtherOnesAreNotRead) {
  GrainloomUnderTest grainloom;
  grainloom.WriteLibrary(SmallLibrary());
  MXMLItem item("state");
  MXMLItem& generator = item.AddSubItem("generator");
  generator.AddSubItem("other");
  for (int i = 0; i < 2; ++i) {
    MXMLItem& band = generator.AddSubItem("item");
    band.SetAttribute("Index", "1.5");
    if (i == 0) band.SetAttribute("Offset", "77");
  }
  grainloom.Load(item);
  EXPECT_EQ(grainloom->GetBand(0), (MSubSampleBand{1.5f, 77, 0, 1}));
  EXPECT_EQ(grainloom->GetBand(1), (MSubSampleBand{1.5f, 60, 0, 1}));
  EXPECT_EQ(grainloom->GetBand(2), (MSubSampleBand{0, 100, 0, 1}));
  for (int i = 0; i < 20; ++i) generator.AddSubItem("item").SetAttribute("Index", "2");
  grainloom.Load(item);
  EXPECT_EQ(grainloom->GetBand(8).index, 2);
  EXPECT_EQ(grainloom->GetBand(9).index, 0) << "an empty band";
}

TEST(GrainloomState, PlainColorOffsetWinsOverTheRow) {
  GrainloomUnderTest grainloom;
  MXMLItem item("state");
  item.SetAttribute("parametercoloroffset", "0.9");
  grainloom.Load(item);
  MXMLItem saved("state");
  grainloom.Save(saved);
  EXPECT_EQ(saved.GetAttribute("coloroffset"), "0.9000");
  item.SetAttribute("coloroffset", "0.4");
  grainloom.Load(item);
  grainloom.Save(saved);
  EXPECT_EQ(saved.GetAttribute("coloroffset"), "0.4000");
  EXPECT_EQ(saved.GetAttribute("parametercoloroffset"), "0.4000");
}

TEST(GrainloomState, EndOfLoadingRendersOnlyWhatHasChanged) {
  GrainloomUnderTest grainloom;
  grainloom.WriteLibrary(SmallLibrary());
  grainloom.LoadEmptyState();
  const MAudioBuffer* const sample = grainloom->GetSample();
  ASSERT_NE(sample, nullptr);
  grainloom.Call(MService::kStateLoaded);
  EXPECT_EQ(grainloom->GetSample(), sample);
  grainloom.Set(1, 0.9);
  grainloom.Set(2, 0.9);
  EXPECT_EQ(grainloom->GetSample(), sample) << "deviances are for the next randomizing";
  auto* const block = MAsAddress<MPluginPublicBlock>(grainloom.Call(MService::kPublicBlock));
  const auto before = grainloom.GetSample(1);
  MStoreShared(block->parameters[0].real.value, 0.7);
  grainloom.Call(MService::kStateLoaded);
  EXPECT_NE(grainloom.GetSample(1), before);
}

TEST(GrainloomState, FileThatCannotBeLoadedLeavesSilenceAndItsName) {
  GrainloomUnderTest grainloom;
  grainloom.WriteLibrary(SmallLibrary());
  grainloom.LoadEmptyState();
  EXPECT_FALSE(grainloom.GetSample(0).empty());
  EXPECT_TRUE(grainloom.reported.Get().empty());
  for (const char* const name : {"missing", "broken", "empty"}) {
    if (name != std::string("missing"))
      grainloom.WriteBytes(name == std::string("broken") ? std::string(500, 'x') : "", name);
    MXMLItem item("state");
    item.SetAttribute("subpath", "");
    item.SetAttribute("filename", MString::FromNarrow(name));
    MXMLItem& band = item.AddSubItem("generator").AddSubItem("item");
    band.SetAttribute("Index", "2.5");
    grainloom.reported.Clear();
    grainloom.Load(item);
    EXPECT_EQ(grainloom->GetSample(), nullptr);
    ASSERT_EQ(grainloom.reported.Get().size(), 1u);
    EXPECT_THAT(grainloom.reported.Get()[0], HasSubstr("GrainloomAudioStreamPlugin::LoadLibrary"));
    EXPECT_EQ(grainloom.Create(), 0) << "no stream";
    MXMLItem saved("state");
    grainloom.Save(saved);
    EXPECT_EQ(Utf8(saved.GetAttribute("filename")), name);
    EXPECT_EQ(saved.SubItem("generator").GetChildren()[0]->GetAttribute("Index"), "2.50000000");
  }
}

TEST(GrainloomState, SoundsThatCannotBeReadLeaveSilence) {
  GrainloomUnderTest grainloom;
  SubSampleFile file = SmallLibrary();
  file.bands[8].sounds[1].offset = 1 << 30;
  grainloom.WriteLibrary(file);
  grainloom.LoadEmptyState();
  EXPECT_FALSE(grainloom.GetSample(0).empty());
  grainloom->SetBand(8, {1, 0, 0, 1});
  EXPECT_EQ(grainloom->GetSample(), nullptr);
  ASSERT_EQ(grainloom.reported.Get().size(), 1u);
  EXPECT_THAT(grainloom.reported.Get()[0], HasSubstr("Could not read required data from stream."));
  grainloom->SetBand(8, {0, 0, 0, 1});
  EXPECT_FALSE(grainloom.GetSample(0).empty());
}

TEST(GrainloomState, FileThatNobodyElseUsesIsReadAnew) {
  GrainloomUnderTest grainloom;
  grainloom.WriteLibrary(SmallLibrary(3, 9000));
  grainloom.LoadEmptyState();
  grainloom.WriteLibrary(SmallLibrary(3, 7000));
  grainloom.LoadEmptyState();
  EXPECT_EQ(grainloom.GetSample(0).size(), 7000u);
  EXPECT_EQ(SonvelleConfiguration::Get()->subSampleCache.GetCount(), 1);
}

TEST(GrainloomState, NumbersBeyondAllMeasureAreHarmless) {
  GrainloomUnderTest grainloom;
  grainloom.WriteLibrary(SmallLibrary());
  for (const char* const number : {"1e300", "-1e300", "nan", "inf", "9999999999999", "-0", "x", ""}) {
    MXMLItem item("state");
    for (const char* const key : {"coloroffset", "parametervolumedeviance", "parameteroffsetdeviance"})
      item.SetAttribute(MString::Literal(key), MString::FromNarrow(number));
    MXMLItem& generator = item.AddSubItem("generator");
    for (int i = 0; i < 10; ++i)
      for (const char* const key : {"Index", "Offset", "OffsetModif", "Volume"})
        (i < generator.GetChildren().GetCount() ? *generator.GetChildren()[i] : generator.AddSubItem("item"))
            .SetAttribute(MString::Literal(key), MString::FromNarrow(number));
    grainloom.Load(item);
    grainloom->Randomize();
    for (const float sample : grainloom.GetSample(0)) ASSERT_TRUE(std::isfinite(sample)) << number;
    MXMLItem saved("state");
    grainloom.Save(saved);
  }
}

TEST(GrainloomState, WithoutAConfigurationNothingSoundsAndNothingFails) {
  const ReportedTexts reported;
  GrainloomAudioStreamPlugin plugin;
  MXMLItem item("state");
  MServiceArguments arguments(MAsWord(&item));
  plugin.Service(MService::kLoadState, &arguments);
  plugin.SelectLibrary("Natural", "x");
  plugin.Randomize();
  EXPECT_EQ(plugin.GetSample(), nullptr);
}

}  // namespace
