#include "plugin/MPluginSystem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/plugin/LibraryLife.h"

namespace {

using testing::ElementsAre;

constexpr char kEffects[] = "MAudioEffects.mps";
constexpr char kStreams[] = "MAudioStreams.mps";

std::vector<std::string> Names(const MPluginSystem& system) {
  std::vector<std::string> names;
  for (const MString& name : system.GetNames()) names.push_back(Utf8(name));
  return names;
}

// One attribute of every row.
std::vector<std::string> Column(const MPluginSystem& system, const char* key) {
  std::vector<std::string> column;
  for (const MXMLItem* row : system.GetRoot().GetChildren())
    column.push_back(Utf8(row->GetAttribute(MString::Literal(key))));
  return column;
}

TEST(MPluginSystem, NamesAndFilesOfTheTwoKinds) {
  const DataFolder data;
  const MAudioEffectPluginSystem effects;
  const MAudioStreamPluginSystem streams;
  EXPECT_EQ(effects.GetName(), "MAudioEffects");
  EXPECT_EQ(streams.GetName(), "MAudioStreams");
  EXPECT_EQ(Utf8(effects.GetFile()), data.Path(kEffects));
  EXPECT_EQ(Utf8(streams.GetFile()), data.Path(kStreams));
  EXPECT_FALSE(data.Has(kEffects)) << "nothing is written before the first row";
}

TEST(MPluginSystem, WritesARowAtOnceInTheFormThatHostsRead) {
  const DataFolder data;
  MAudioEffectPluginSystem effects;
  effects.Register("Echolan", "/opt/Sonvelle.so", "EcholanAudioEffectPluginInterface", "A \"delay\".");
  EXPECT_EQ(
      data.Read(kEffects),
      "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
      "<pluginsystem>\n"
      "  <plugin description=\"A &quot;delay&quot;.\" interfacefname=\"EcholanAudioEffectPluginInterface\" "
      "library=\"/opt/Sonvelle.so\" name=\"Echolan\"/>\n"
      "</pluginsystem>\n");
  EXPECT_THAT(Names(effects), ElementsAre()) << "names are those that the file had";
  EXPECT_THAT(Names(MAudioEffectPluginSystem()), ElementsAre("Echolan"));
}

TEST(MPluginSystem, RefreshesTheRowOfTheSameNameWhateverItsCase) {
  const DataFolder data;
  MAudioEffectPluginSystem().Register("Echolan", "/old.so", "OldInterface", "old");
  MAudioEffectPluginSystem effects;
  effects.Register("ECHOLAN", "/new.so", "NewInterface", "new");
  effects.Register("Tonebench", "/new.so", "ToneInterface", "tone");
  const MAudioEffectPluginSystem again;
  EXPECT_THAT(Column(again, "name"), ElementsAre("ECHOLAN", "Tonebench"));
  EXPECT_THAT(Column(again, "library"), ElementsAre("/new.so", "/new.so"));
  EXPECT_THAT(Column(again, "interfacefname"), ElementsAre("NewInterface", "ToneInterface"));
}

TEST(MPluginSystem, KeepsWhatElseIsInTheFile) {
  const DataFolder data;
  data.Write(
      kEffects,
      "<PluginSystem version=\"3\"><other a=\"1\"/><PLUGIN name=\"Foreign\" since=\"1999\"/></PluginSystem>");
  MAudioEffectPluginSystem effects;
  effects.Register("foreign", "/new.so", "ForeignInterface", "");
  const std::string text = data.Read(kEffects);
  EXPECT_THAT(text, testing::HasSubstr("<other a=\"1\"/>"));
  EXPECT_THAT(text, testing::HasSubstr("since=\"1999\""));
  EXPECT_THAT(text, testing::HasSubstr("<PluginSystem version=\"3\">"));
  EXPECT_THAT(Column(effects, "name"), ElementsAre("", "foreign"));
}

TEST(MPluginSystem, AFileThatCannotBeReadIsAnEmptyRegistry) {
  const DataFolder data;
  for (const std::string text : {"", "<pluginsystem><plugin name=\"x\"", "no XML", "\0\0\0\0"}) {
    data.Write(kEffects, text);
    MAudioEffectPluginSystem effects;
    EXPECT_EQ(effects.GetRoot().GetName(), "pluginsystem") << text;
    EXPECT_EQ(effects.GetRoot().GetChildren().GetCount(), 0) << text;
    effects.Register("Echolan", "", "", "");
    EXPECT_THAT(Names(MAudioEffectPluginSystem()), ElementsAre("Echolan")) << text;
  }
}

TEST(MPluginSystem, RowsWithoutANameCollapseIntoOne) {
  const DataFolder data;
  data.Write(kEffects,
             "<pluginsystem><plugin library=\"a\"/><plugin library=\"b\"/><Plugin name=\"Tonebench\"/>"
             "<plugin name=\"echolan\"/><plugin name=\"Echolan\"/></pluginsystem>");
  MAudioEffectPluginSystem effects;
  EXPECT_THAT(Names(effects), ElementsAre("echolan", "Invalid plugin", "Tonebench"));
  effects.Register("invalid PLUGIN", "c", "", "");
  EXPECT_THAT(Column(effects, "library"), ElementsAre("c", "b", "", "", ""));
}

void ExpectUnwritable(const DataFolder& data) {
  MAudioEffectPluginSystem effects;
  try {
    effects.Register("Echolan", "", "", "");
    FAIL() << "raised nothing";
  } catch (const MException& raised) {
    EXPECT_THAT(Utf8(raised.message),
                testing::StartsWith("File \"" + data.Path(kEffects) + "\" could not be created."));
    EXPECT_EQ(raised.code, MErrorCode::kNotOpened);
  }
}

TEST(MPluginSystem, AFolderInPlaceOfTheFileRaisesAndStays) {
  const DataFolder data;
  std::filesystem::create_directories(data.Path(kEffects));
  ExpectUnwritable(data);
  EXPECT_TRUE(std::filesystem::is_directory(data.Path(kEffects)));
}

TEST(MPluginSystem, WithoutItsFolderRegisteringRaises) {
  const DataFolder data;
  data.GetFolder().WriteFile("Tessaron", "a file");
  ExpectUnwritable(data);
  EXPECT_EQ(data.GetFolder().ReadFile("Tessaron"), "a file");
}

TEST(MPluginSystem, AFileThatMustNotBeWrittenRaisesAndStays) {
  const DataFolder data;
  const OrdinaryUser user(data.GetFolder());
  data.Write(kEffects, "<pluginsystem/>");
  std::filesystem::permissions(data.Path(kEffects), std::filesystem::perms::owner_read);
  ExpectUnwritable(data);
  EXPECT_EQ(data.Read(kEffects), "<pluginsystem/>");
}

TEST(MPluginSystem, LibraryWritesItsNineteenRows) {
  const LibraryLife life;
  LibraryLife::LeaveOutParts();
  MServiceArguments arguments(MAsWord("/opt/Sonvelle.so"));
  EXPECT_EQ(MInvokeService(LibraryLife::Start(), "MRegisterAllPlugins", &arguments), 0);
  const MAudioStreamPluginSystem streams;
  EXPECT_THAT(Column(streams, "name"),
              ElementsAre("Playbox", "Layerbox", "Grainloom", "Vinylrake", "Toneloom 4NN"));
  EXPECT_THAT(
      Column(streams, "description"),
      ElementsAre("Tessaron standard sampler plugin.", "Tessaron multisampler plugin.",
                  "Tessaron subsample synthesizer.", "Tessaron scratching plugin.",
                  "Tessaron standard synthesizer plugin containing 4 oscillators and 2 noise generators."));
  EXPECT_THAT(Column(streams, "interfacefname"),
              ElementsAre("PlayboxAudioStreamPluginInterface", "LayerboxAudioStreamPluginInterface",
                          "GrainloomAudioStreamPluginInterface", "VinylrakeAudioStreamPluginInterface",
                          "Toneloom4NNAudioStreamPluginInterface"));
  const MAudioEffectPluginSystem effects;
  EXPECT_THAT(Column(effects, "name"),
              ElementsAre("Pulsetta", "Echolan", "Tonebench", "Slotter", "Roamplex", "Swirlo", "Quaverly",
                          "Bendform", "Widenor", "Bellwarp", "Squeezel", "Imprinta", "Clampet", "Lumascope"));
  EXPECT_THAT(Column(effects, "description"),
              ElementsAre("Tessaron tremolo effect plugin.", "Tessaron delay effect plugin.",
                          "Tessaron equalizer effect plugin.", "Tessaron band pass plugin.",
                          "Tessaron autopan effect plugin.", "Tessaron phaser effect plugin.",
                          "Tessaron vibrato effect plugin.", "Tessaron wave shaper effect plugin.",
                          "Tessaron stereo expander effect plugin.", "Tessaron ring modulator effect plugin.",
                          "Tessaron compressor effect plugin.", "Tessaron convolver effect plugin.",
                          "Tessaron limiter effect plugin.", "Tessaron audio analyzer plugin."));
  std::vector<std::string> interfaces = Column(effects, "name");
  for (std::string& name : interfaces) name += "AudioEffectPluginInterface";
  EXPECT_EQ(Column(effects, "interfacefname"), interfaces);
  for (const std::string& library : Column(effects, "library")) EXPECT_EQ(library, "/opt/Sonvelle.so");
}

TEST(MPluginSystem, RegisteringStartsTheLibraryWhereNobodyHas) {
  const LibraryLife life;
  LibraryLife::LeaveOutParts();
  {
    SonvelleDLL early;
    early.RegisterAllPlugins("/opt/Sonvelle.so");
    EXPECT_EQ(MGetLibraryFunctions().allocate, MGetDefaultLibraryFunctions().allocate);
    ASSERT_NE(MModule::instance, nullptr);
    EXPECT_EQ(MModule::instance->serviceCount, 3);
    EXPECT_EQ(MModule::instance->resources.GetResources().GetCount(), 7);
  }
  EXPECT_THAT(Names(MAudioStreamPluginSystem()), testing::SizeIs(5));
  EXPECT_THAT(Names(MAudioEffectPluginSystem()), testing::SizeIs(14));
}

}  // namespace
