// What songs know the plug-ins by.

#include <fstream>

#include "hosts/lv2/Turtle.h"
#include "tests/hosts/lv2/Lv2Test.h"

namespace {

using Lv2Ports = Lv2Test;

std::string GetWord(lv2::PortRole role) {
  static constexpr const char* kWords[] = {"events in", "events out", "audio in", "audio out",
                                           "latency",   "freewheel",  "control"};
  return kWords[static_cast<std::size_t>(role)];
}

TEST_F(Lv2Ports, UrisAndSymbolsStayTheSame) {
  std::string ports = "# plug-in\tindex\tsymbol\twhat\n";
  for (const bridge::PluginType& type : builtin::GetPlugins()) {
    const auto host = Make(type.name);
    for (std::size_t i = 0; i < host->GetPorts().size(); ++i)
      ports += lv2::GetUri(type) + "\t" + std::to_string(i) + "\t" + host->GetPorts()[i].symbol + "\t" +
               GetWord(host->GetPorts()[i].role) + "\n";
  }
  std::ifstream file(SONVELLE_LV2_PORTS);
  const std::string golden{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(ports, golden);
}

TEST_F(Lv2Ports, SymbolsAreValidWhateverTheKeys) {
  EXPECT_EQ(lv2::MakeSymbol("Depth 1"), "Depth_1");
  EXPECT_EQ(lv2::MakeSymbol("4nn"), "_4nn");
  EXPECT_EQ(lv2::MakeSymbol(""), "_");
  EXPECT_EQ(lv2::MakeSymbol("\xc3\xa4"), "__");
}

TEST_F(Lv2Ports, SymbolsThatAreTakenGetANumber) {
  MPluginParameter row;
  row.kind = MParameterKind::kSwitch;
  std::vector<bridge::DawParameter> parameters;
  for (const char* const key : {"latency", "a b", "a_b"})
    parameters.push_back({0, key, key, "", &row, 0, bridge::HostControl::kNone});
  std::vector<std::string> symbols;
  for (const lv2::Port& port : lv2::MakePorts(GetType("Echolan"), parameters)) symbols.push_back(port.symbol);
  EXPECT_THAT(symbols, testing::ElementsAre("in_left", "in_right", "out_left", "out_right", "latency",
                                            "latency_2", "a_b", "a_b_2"));
}

TEST_F(Lv2Ports, EveryPluginHasTheClassOfWhatItDoes) {
  const std::map<std::string_view, std::string> classes = {
      {"Echolan", "DelayPlugin"},       {"Clampet", "LimiterPlugin"},    {"Slotter", "BandpassPlugin"},
      {"Widenor", "SpatialPlugin"},     {"Tonebench", "ParaEQPlugin"},   {"Imprinta", "FilterPlugin"},
      {"Bendform", "WaveshaperPlugin"}, {"Pulsetta", "ModulatorPlugin"}, {"Roamplex", "ModulatorPlugin"},
      {"Bellwarp", "ModulatorPlugin"},  {"Quaverly", "ModulatorPlugin"}, {"Squeezel", "CompressorPlugin"},
      {"Lumascope", "AnalyserPlugin"},  {"Swirlo", "PhaserPlugin"},      {"Slidebench", "EQPlugin"}};
  for (const bridge::PluginType& type : builtin::GetPlugins()) {
    const auto found = classes.find(type.name);
    EXPECT_EQ(lv2::GetClass(type), found == classes.end() ? "InstrumentPlugin" : found->second) << type.name;
  }
}

TEST_F(Lv2Ports, DescriptorsEndWithNull) {
  EXPECT_EQ(builtin::GetPlugins().size(), 20u);
  EXPECT_NE(lv2_descriptor(19), nullptr);
  EXPECT_EQ(lv2_descriptor(20), nullptr);
  EXPECT_EQ(lv2_descriptor(~0u), nullptr);
  EXPECT_EQ(lv2_descriptor(3), lv2_descriptor(3));
}

TEST_F(Lv2Ports, HostsThatCannotNumberUrisGetNoInstrument) {
  const LV2_Descriptor& descriptor = GetDescriptor("Playbox");
  const LV2_Feature* const none[] = {nullptr};
  EXPECT_EQ(descriptor.instantiate(&descriptor, 48000, "/nowhere", none), nullptr);
  EXPECT_EQ(descriptor.instantiate(&descriptor, 48000, nullptr, nullptr), nullptr);
}

TEST_F(Lv2Ports, HostsThatCannotNumberUrisGetEffectsWithoutStates) {
  const LV2_Descriptor& descriptor = GetDescriptor("Echolan");
  const LV2_Handle handle = descriptor.instantiate(&descriptor, 48000, nullptr, nullptr);
  ASSERT_NE(handle, nullptr);
  std::vector<float> in(512), out(512);
  float delay = 2;
  in[0] = 1;
  descriptor.connect_port(handle, 0, in.data());
  descriptor.connect_port(handle, 2, out.data());
  descriptor.connect_port(handle, 6, &delay);
  descriptor.activate(handle);
  descriptor.run(handle, 512);
  EXPECT_NE(out[96], 0.0f);
  const auto* const state =
      static_cast<const LV2_State_Interface*>(descriptor.extension_data(LV2_STATE__interface));
  const auto store = [](LV2_State_Handle, uint32_t, const void*, size_t, uint32_t, uint32_t) {
    return LV2_STATE_SUCCESS;
  };
  EXPECT_EQ(state->save(handle, store, nullptr, 0, nullptr), LV2_STATE_ERR_NO_FEATURE);
  descriptor.cleanup(handle);
}

TEST_F(Lv2Ports, RatesThatAreNoneGiveNoInstance) {
  for (const double rate : {0.0, -48000.0, 1e300, static_cast<double>(NAN), static_cast<double>(INFINITY)})
    EXPECT_THROW(Make("Echolan", {.rate = rate}), std::runtime_error) << rate;
}

TEST_F(Lv2Ports, ExtensionsThatAreUnknownAreNull) {
  const LV2_Descriptor& descriptor = GetDescriptor("Playbox");
  EXPECT_EQ(descriptor.extension_data("http://example.org/none"), nullptr);
  EXPECT_EQ(descriptor.extension_data(nullptr), nullptr);
}

}  // namespace
