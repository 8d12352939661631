// What the objects write into items and read out of them.

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "instruments/generators/MEnvelopeAudioFilter.h"
#include "instruments/generators/MNoiseGeneratorAudioSource.h"
#include "instruments/generators/MOscillatorAudioSource.h"
#include "instruments/generators/SlotterAudioFilter.h"
#include "tests/common/Texts.h"
#include "tests/instruments/generators/MixerInTest.h"

namespace {

std::map<std::string, std::string> GetAttributes(const MXMLItem& item) {
  std::map<std::string, std::string> attributes;
  for (const MAttribute& attribute : item.GetAttributes())
    attributes[Utf8(attribute.name)] = Utf8(attribute.value);
  return attributes;
}

std::vector<std::string> GetChildren(const MXMLItem& item) {
  std::vector<std::string> names;
  for (const MXMLItem* const child : item.GetChildren()) names.push_back(Utf8(child->GetName()));
  return names;
}

using Attributes = std::map<std::string, std::string>;
using Names = std::vector<std::string>;

TEST(GeneratorState, OscillatorKeepsLengthPhaseShapeAndFrequency) {
  MOscillatorAudioSource oscillator;
  MXMLItem fresh;
  oscillator.Save(fresh);
  EXPECT_EQ(GetAttributes(fresh), (Attributes{{"length", "0.1000"}, {"phase", "0.0000"}}));
  EXPECT_EQ(GetChildren(fresh), (Names{"shape", "frequency"}));
  EXPECT_EQ(GetAttributes(fresh.SubItem("shape")),
            (Attributes{{"value", "5.0000"}, {"EnvelopeDepth", "0.0000"}}));
  EXPECT_EQ(GetChildren(fresh.SubItem("shape")), Names{"Envelope"});
  EXPECT_EQ(GetChildren(fresh.SubItem("frequency")), (Names{"Point", "Point"}));

  oscillator.lengthSeconds = 1.25;
  oscillator.phase = -0.5;
  oscillator.signal.SetShape(7.5);
  oscillator.frequencyLog10Hz[0].y = 2;
  MXMLItem item;
  oscillator.Save(item);
  MOscillatorAudioSource loaded;
  loaded.Load(item);
  EXPECT_EQ(loaded.lengthSeconds, 1.25);
  EXPECT_EQ(loaded.phase, -0.5);
  EXPECT_EQ(loaded.signal.GetShape(), 7.5);
  EXPECT_EQ(loaded.frequencyLog10Hz[0].y, 2);

  loaded.Load(MXMLItem());
  MXMLItem again;
  loaded.Save(again);
  EXPECT_EQ(GetAttributes(again), GetAttributes(fresh));
  EXPECT_EQ(loaded.signal.GetShape(), MWaveShapes::kSine);
  ASSERT_EQ(loaded.frequencyLog10Hz.GetCount(), 2);
  EXPECT_EQ(loaded.frequencyLog10Hz[0].y, std::log10(300.0));
}

TEST(GeneratorState, NoiseKeepsItsLength) {
  MNoiseGeneratorAudioSource noise;
  noise.lengthSeconds = 2.5;
  MXMLItem item;
  noise.Save(item);
  EXPECT_EQ(GetAttributes(item), (Attributes{{"length", "2.5000"}}));
  EXPECT_TRUE(GetChildren(item).empty());
  MNoiseGeneratorAudioSource loaded;
  loaded.Load(item);
  EXPECT_EQ(loaded.lengthSeconds, 2.5);
  loaded.Load(MXMLItem());
  EXPECT_EQ(loaded.lengthSeconds, 0.1);
}

TEST(GeneratorState, BandPassKeepsItsSwitchesAndCutOffsBesideTheInnerKeys) {
  MNoiseGeneratorAudioSource noise;
  SlotterAudioFilter filter(noise);
  filter.hasHighPass = true;
  filter.highPassHz = 123.5;
  MXMLItem item;
  filter.Save(item);
  EXPECT_EQ(GetAttributes(item), (Attributes{{"length", "0.1000"},
                                             {"lpenable", "0"},
                                             {"lpcutoff", "2000.0000"},
                                             {"hpenable", "1"},
                                             {"hpcutoff", "123.5000"}}));
  noise.lengthSeconds = 9;
  filter.hasLowPass = true;
  filter.lowPassHz = 50;
  filter.Load(item);
  EXPECT_EQ(noise.lengthSeconds, 0.1);
  EXPECT_FALSE(filter.hasLowPass);
  EXPECT_EQ(filter.lowPassHz, 2000);
  EXPECT_EQ(filter.highPassHz, 123.5);
  filter.Load(MXMLItem());
  EXPECT_FALSE(filter.hasHighPass);
  EXPECT_EQ(filter.highPassHz, 1000);
}

TEST(GeneratorState, EnvelopeIsAChildAndAFlatLineWithoutIt) {
  Written written(Signal(4, 1));
  MEnvelopeAudioFilter envelope(written);
  MXMLItem item;
  envelope.Save(item);
  EXPECT_EQ(GetChildren(item), Names{"volume"});
  EXPECT_EQ(item.GetAttribute("written"), MString("1"));
  envelope.Load(MXMLItem());
  ASSERT_EQ(envelope.gains.GetCount(), 2);
  EXPECT_EQ(envelope.gains[0].y, 1);
  EXPECT_EQ(envelope.gains[1].y, 1);
  EXPECT_EQ(envelope.gains[1].x, 1);
  envelope.Load(item);
  EXPECT_EQ(envelope.gains[1].y, 0);
  EXPECT_TRUE(written.isLoaded);
  envelope.Load(MXMLItem());
  envelope.Reset();
  EXPECT_EQ(envelope.gains[1].y, 0);
}

TEST(GeneratorState, MixerKeepsAChildPerObject) {
  MixerInTest both({{}, {.isEnabled = false, .mode = 2, .volume = 0.5, .pan = -0.25}});
  both.objects[0].itemName = "first";
  both.objects[1].itemName = "second";
  MXMLItem item;
  both.mixer.Save(item);
  EXPECT_EQ(GetChildren(item), (Names{"first", "second"}));
  EXPECT_EQ(
      GetAttributes(item.SubItem("first")),
      (Attributes{
          {"written", "1"}, {"enabled", "1"}, {"volume", "1.0000"}, {"pan", "0.0000"}, {"mixermode", "0"}}));
  EXPECT_EQ(
      GetAttributes(item.SubItem("second")),
      (Attributes{
          {"written", "1"}, {"enabled", "0"}, {"volume", "0.5000"}, {"pan", "-0.2500"}, {"mixermode", "2"}}));
  item.RemoveSubItem(item.SubItem("first"));
  both.objects[0].isEnabled = false;
  both.objects[0].volume = both.objects[0].pan = 7;
  both.objects[1].volume = 3;
  both.mixer.Load(item);
  EXPECT_TRUE(both.objects[0].isEnabled);
  EXPECT_EQ(both.objects[0].volume, 1);
  EXPECT_EQ(both.objects[0].pan, 0);
  EXPECT_EQ(both.objects[1].volume, 0.5);
  EXPECT_EQ(both.objects[1].pan, -0.25);
  EXPECT_EQ(both.objects[1].GetFlag("IHTM", -1), 2);
  EXPECT_TRUE(both.objects[1].isLoaded);
}

TEST(GeneratorState, MixerGivesAMissingKeyWhatANewInstrumentHas) {
  MixerInTest both({{.mode = 1, .volume = 0.5, .pan = 1}, {.isEnabled = false}});
  both.objects[1].isEnabled = true;
  both.objects[1].itemName = "other";
  MXMLItem item;
  item.AddSubItem("written");
  item.AddSubItem("other").SetAttribute("mixermode", "3");
  both.mixer.Load(item);
  EXPECT_TRUE(both.objects[0].isEnabled);
  EXPECT_EQ(both.objects[0].volume, 1);
  EXPECT_EQ(both.objects[0].pan, 0);
  EXPECT_EQ(both.objects[0].GetFlag("IHTM", -1), 0);
  EXPECT_FALSE(both.objects[1].isEnabled);
  EXPECT_EQ(both.objects[1].GetFlag("IHTM", -1), 0);
  for (const char* const mode : {"-1", "99999999999", "x", ""}) {
    item.SubItem("other").SetAttribute("mixermode", MString::Literal(mode));
    both.mixer.Load(item);
    EXPECT_EQ(both.objects[1].GetFlag("IHTM", -1), 0) << mode;
  }
}

TEST(GeneratorState, CopyTakesEnabledVolumeAndPropertiesButNotThePan) {
  Written from, to;
  from.isEnabled = false;
  from.volume = 0.5;
  from.pan = 0.25;
  from.SetFlag("IHTI", 0);
  from.SetFlag("IHTM", 2);
  to.CopyFrom(from);
  EXPECT_FALSE(to.isEnabled);
  EXPECT_EQ(to.volume, 0.5);
  EXPECT_EQ(to.pan, 0);
  EXPECT_EQ(to.GetFlag("IHTI", -1), 0);
  EXPECT_EQ(to.GetFlag("IHTM", -1), 2);
}

}  // namespace
