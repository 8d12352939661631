// The texts of the bundle.

#include "hosts/lv2/Turtle.h"

#include <cstring>
#include <optional>

#include "hosts/lv2/TurtleText.h"
#include "tests/hosts/lv2/Lv2Test.h"

namespace {

using testing::HasSubstr;
using testing::Not;

class Lv2Turtle : public Lv2Test {
 protected:
  static std::string Describe(std::string_view name) { return lv2::MakePluginTurtle(GetType(name), "1.2.3"); }
  // What is said of the port with this symbol.
  static std::string DescribePort(std::string_view name, const std::string& symbol) {
    const std::string text = Describe(name);
    const std::size_t start = text.find("lv2:symbol \"" + symbol + "\"");
    return start == std::string::npos ? "" : text.substr(start, text.find("\n\t]", start) - start);
  }
};

TEST(TurtleText, TextsMayHoldAnything) {
  EXPECT_EQ(lv2::Quote("a \"b\" \\ c\n\t\r\xc3\xa4"), "\"a \\\"b\\\" \\\\ c\\n\\t\\r\xc3\xa4\"");
}

TEST(TurtleText, NumbersAreShortAndExact) {
  EXPECT_EQ(lv2::FloatText(0.1f), "0.1");
  EXPECT_EQ(lv2::FloatText(20000), "20000.0");
  EXPECT_EQ(lv2::FloatText(-80), "-80.0");
  EXPECT_EQ(lv2::FloatText(1e-8f), "0.00000001");
  EXPECT_EQ(lv2::WholeText(-3), "-3");
}

TEST_F(Lv2Turtle, FrequenciesAreLogarithmicAndInHertz) {
  const std::string port = DescribePort("Slotter", "highfreq");
  EXPECT_THAT(port, HasSubstr("lv2:minimum 20.0 ;"));
  EXPECT_THAT(port, HasSubstr("lv2:maximum 20000.0 ;"));
  EXPECT_THAT(port, HasSubstr("lv2:default 1000.0 ;"));
  EXPECT_THAT(port, HasSubstr("units:unit units:hz ;"));
  EXPECT_THAT(port, HasSubstr("lv2:portProperty pprops:logarithmic ;"));
  EXPECT_THAT(port, HasSubstr("Slotter#High_pass_filter>"));
  EXPECT_THAT(port, HasSubstr("lv2:name \"High-pass filter Frequency\" ;"));
}

TEST_F(Lv2Turtle, ListsNameTheirChoices) {
  const std::string port = DescribePort("Squeezel", "kneemode");
  EXPECT_THAT(port, HasSubstr("lv2:portProperty lv2:integer , lv2:enumeration ;"));
  EXPECT_THAT(port, HasSubstr("rdfs:label \"Soft\" ;\n\t\t\trdf:value 2\n"));
  EXPECT_THAT(DescribePort("Lumascope", "fftsize"),
              HasSubstr("rdfs:label \"16384\" ;\n\t\t\trdf:value 14\n"));
  EXPECT_THAT(DescribePort("Swirlo", "delays"), Not(HasSubstr("scalePoint")));
}

TEST_F(Lv2Turtle, UnitsThatLv2DoesNotKnowAreDescribed) {
  EXPECT_THAT(DescribePort("Squeezel", "ratio"), HasSubstr("units:render \"%.2f : 1\""));
  EXPECT_THAT(DescribePort("Imprinta", "length"), HasSubstr("units:unit units:frame ;"));
}

TEST_F(Lv2Turtle, TheBypassIsTheEnabledPort) {
  const std::string port = DescribePort("Echolan", "enabled");
  EXPECT_THAT(port, HasSubstr("lv2:designation lv2:enabled ;"));
  EXPECT_THAT(port, HasSubstr("lv2:minimum 0 ;\n\t\tlv2:maximum 1 ;\n\t\tlv2:default 1 ;"));
  EXPECT_THAT(port, HasSubstr("lv2:portProperty lv2:toggled ;"));
}

TEST_F(Lv2Turtle, InstrumentsHearNotesAndSayWhichFileTheyPlay) {
  EXPECT_THAT(DescribePort("Playbox", "events_in"),
              HasSubstr("atom:supports midi:MidiEvent , patch:Message ;"));
  EXPECT_THAT(DescribePort("Toneloom4NN", "events_in"), HasSubstr("atom:supports midi:MidiEvent ;"));
  EXPECT_THAT(DescribePort("Playbox", "freewheel"), HasSubstr("lv2:designation lv2:freeWheeling ;"));
  EXPECT_THAT(Describe("Playbox"),
              HasSubstr("patch:writable <https://sonvelle.example/plugins/Playbox#sample> ;"));
  EXPECT_THAT(Describe("Toneloom4NN"), Not(HasSubstr("patch:writable")));
}

TEST_F(Lv2Turtle, AWorkerIsAskedForWhereThereIsWork) {
  for (const char* const name : {"Playbox", "Toneloom4NN", "Lumascope"}) {
    EXPECT_THAT(Describe(name), HasSubstr(" , work:schedule"));
    EXPECT_THAT(Describe(name), HasSubstr("lv2:extensionData state:interface , work:interface ;"));
  }
  EXPECT_THAT(Describe("Echolan"), Not(HasSubstr("work:schedule")));
}

TEST_F(Lv2Turtle, FilesThatStatesNameAreMappedByTheHostAndCanBeWritten) {
  const std::map<std::string_view, std::string> files = {
      {"Playbox", "sample"}, {"Vinylrake", "sample"}, {"Layerbox", "multisample"}, {"Grainloom", "library"}};
  for (const bridge::PluginType& type : builtin::GetPlugins()) {
    const std::string text = Describe(type.name);
    const auto found = files.find(type.name);
    EXPECT_EQ(text.find("state:mapPath") != std::string::npos, found != files.end()) << type.name;
    if (found == files.end()) continue;
    const std::string uri = "<" + lv2::GetUri(type) + "#" + found->second + ">";
    EXPECT_THAT(text, HasSubstr("\tpatch:writable " + uri));
    EXPECT_THAT(text, HasSubstr(uri + "\n\ta lv2:Parameter ;"));
    EXPECT_THAT(text, HasSubstr("rdfs:range atom:Path"));
  }
}

TEST_F(Lv2Turtle, HardRealTimeIsSaidOfThoseThatAre) {
  for (const bridge::PluginType& type : builtin::GetPlugins())
    EXPECT_EQ(Describe(type.name).find("lv2:hardRTCapable") != std::string::npos, lv2::IsHardRealTime(type));
}

TEST_F(Lv2Turtle, DefaultsAndPointsLieInTheRangesOfTheirPorts) {
  int count = 0;
  for (const bridge::PluginType& type : builtin::GetPlugins()) {
    const std::string text = Describe(type.name);
    const auto read = [&](const char* what, std::size_t place, std::size_t end) {
      place = text.find(what, place);
      return place < end ? std::optional(std::strtod(text.c_str() + place + std::strlen(what), nullptr))
                         : std::nullopt;
    };
    for (std::size_t port = text.find("lv2:index"); port != std::string::npos;
         port = text.find("lv2:index", port + 1)) {
      const std::size_t end = text.find("\n\t]", port);
      const auto low = read("lv2:minimum ", port, end), high = read("lv2:maximum ", port, end);
      const auto usual = read("lv2:default ", port, end);
      if (!low || !high) continue;
      ++count;
      ASSERT_TRUE(usual && *low < *high && *low <= *usual && *usual <= *high)
          << text.substr(port, end - port);
      for (std::size_t place = text.find("rdf:value ", port); place < end;
           place = text.find("rdf:value ", place + 1)) {
        const double point = *read("rdf:value ", place, end);
        EXPECT_TRUE(*low <= point && point <= *high) << text.substr(port, end - port);
      }
    }
  }
  EXPECT_GT(count, 90);
}

TEST_F(Lv2Turtle, VersionsOfReleasesAreEven) {
  EXPECT_THAT(Describe("Echolan"), HasSubstr("lv2:minorVersion 204 ;\n\tlv2:microVersion 6 ;"));
}

TEST_F(Lv2Turtle, PresetsHoldTheStateAndItsPorts) {
  const std::string state = "<state plugin=\"Playbox\" filename=\"A.wav\" parameterdelay=\"0.05\"/>";
  const lv2::Described plugin = {GetType("Playbox"), {{"Big \"A\"", state}}};
  const std::string text = lv2::MakePresetsTurtle(plugin);
  EXPECT_THAT(text, HasSubstr("<https://sonvelle.example/plugins/Playbox/presets/Big__A_>"));
  EXPECT_THAT(text, HasSubstr("rdfs:label \"Big \\\"A\\\"\" ;"));
  EXPECT_THAT(text, HasSubstr(lv2::Quote(state)));
  EXPECT_THAT(text, HasSubstr("lv2:symbol \"delay\" ;\n\t\tpset:value 50.0\n"));
  EXPECT_THAT(lv2::MakeManifest({plugin}), HasSubstr("rdfs:seeAlso <Playbox-presets.ttl>"));
}

}  // namespace
