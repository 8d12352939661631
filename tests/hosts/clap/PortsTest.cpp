#include "tests/hosts/clap/TestHost.h"

namespace {

TEST_P(ClapSuite, AudioPortsAreOneStereoPairThatMayShareItsBuffers) {
  const auto* const ports = plugin_.Find<clap_plugin_audio_ports_t>(CLAP_EXT_AUDIO_PORTS);
  EXPECT_EQ(ports->count(plugin_.Get(), false), 1u);
  EXPECT_EQ(ports->count(plugin_.Get(), true), plugin_.IsInstrument() ? 0u : 1u);
  for (const bool isInput : {false, true}) {
    clap_audio_port_info_t info;
    EXPECT_FALSE(ports->get(plugin_.Get(), 1, isInput, &info));
    EXPECT_FALSE(ports->get(plugin_.Get(), 0, isInput, nullptr));
    if (!ports->get(plugin_.Get(), 0, isInput, &info)) continue;
    EXPECT_EQ(info.channel_count, 2u);
    EXPECT_STREQ(info.port_type, CLAP_PORT_STEREO);
    EXPECT_EQ(info.flags, uint32_t{CLAP_AUDIO_PORT_IS_MAIN});
    EXPECT_EQ(info.in_place_pair, plugin_.IsInstrument() ? CLAP_INVALID_ID : info.id);
    EXPECT_STREQ(info.name, isInput ? "Input" : "Output");
  }
}

TEST_P(ClapSuite, MonoIsChosenWhileThePluginIsNotActive) {
  const auto* const ports = plugin_.Find<clap_plugin_audio_ports_t>(CLAP_EXT_AUDIO_PORTS);
  const auto* const choices =
      plugin_.Find<sonvelle_clap_plugin_audio_ports_config_t>(SONVELLE_CLAP_EXT_AUDIO_PORTS_CONFIG);
  ASSERT_EQ(choices->count(plugin_.Get()), 2u);
  sonvelle_clap_audio_ports_config_t stereo, mono;
  ASSERT_TRUE(choices->get(plugin_.Get(), 0, &stereo) && choices->get(plugin_.Get(), 1, &mono));
  EXPECT_FALSE(choices->get(plugin_.Get(), 2, &mono));
  EXPECT_EQ(stereo.main_output_channel_count, 2u);
  EXPECT_EQ(mono.main_output_channel_count, 1u);
  EXPECT_EQ(mono.output_port_count, 1u);
  EXPECT_EQ(mono.has_main_input, !plugin_.IsInstrument());
  EXPECT_STREQ(mono.main_output_port_type, CLAP_PORT_MONO);
  EXPECT_FALSE(choices->select(plugin_.Get(), 99));
  ASSERT_TRUE(choices->select(plugin_.Get(), mono.id));
  clap_audio_port_info_t info;
  ASSERT_TRUE(ports->get(plugin_.Get(), 0, false, &info));
  EXPECT_EQ(info.channel_count, 1u);
  TestRandom random;
  EXPECT_TRUE(plugin_.Activate());
  EXPECT_FALSE(choices->select(plugin_.Get(), stereo.id));
  const AudioBlock out = plugin_.Run(AudioBlock::Noise(1, 2000, random));
  EXPECT_NE(plugin_.status_, CLAP_PROCESS_ERROR);
  EXPECT_TRUE(out.IsFinite() && out.GuardsHold());
}

TEST_P(ClapSuite, InstrumentsHaveOneInputOfNotes) {
  const auto* const ports = plugin_.Find<clap_plugin_note_ports_t>(CLAP_EXT_NOTE_PORTS);
  const std::string word = plugin_.IsInstrument() ? "instrument" : "audio-effect";
  EXPECT_EQ(plugin_->desc->features[0], word);
  if (!ports) return;
  clap_note_port_info_t info;
  EXPECT_EQ(ports->count(plugin_.Get(), true), 1u);
  EXPECT_EQ(ports->count(plugin_.Get(), false), 0u);
  EXPECT_FALSE(ports->get(plugin_.Get(), 0, false, &info));
  ASSERT_TRUE(ports->get(plugin_.Get(), 0, true, &info));
  EXPECT_EQ(info.supported_dialects, uint32_t{CLAP_NOTE_DIALECT_CLAP | CLAP_NOTE_DIALECT_MIDI});
  EXPECT_EQ(info.preferred_dialect, uint32_t{CLAP_NOTE_DIALECT_CLAP});
}

}  // namespace
