#include <set>

#include "tests/hosts/clap/TestHost.h"

namespace {

constexpr int32_t kFadeFrames = 480;

// What some plug-ins add against denormals.
constexpr double kDither = 1e-20;

// Plug-ins of which another split into blocks changes the last bits, and effects that hear blocks.
const std::set<std::string> kRounds = {"Bellwarp", "Pulsetta", "Roamplex", "Toneloom4NN"};
const std::set<std::string> kHearsBlocks = {"Imprinta", "Quaverly", "Swirlo"};
// Those whose filters no service clears: a little is left of what silence has let die away.
const std::set<std::string> kKeepsALittle = {"Tonebench", "Widenor"};
// Those that no parameter changes as long as their curve is the first one; samplers without a sample.
const std::set<std::string> kHearsNoChange = {"Bendform",  "Lumascope", "Slidebench",
                                              "Tonebench", "Grainloom", "Playbox",
                                              "Vinylrake", "Layerbox",  "Toneloom4NN"};

// Notes for instruments; effects do not hear them.
std::vector<TestEvent> MakeNotes() {
  return {NoteAt(0, CLAP_EVENT_NOTE_ON, 1, 0, 60, 0.5), NoteAt(700, CLAP_EVENT_NOTE_ON, 2, 0, 64, 1),
          NoteAt(3001, CLAP_EVENT_NOTE_OFF, 1, -1, -1)};
}

void PlayATone(const ClapPlugin& plugin) {
  if (std::string(plugin->desc->name) != "Toneloom4NN") return;
  EXPECT_TRUE(plugin.LoadState(R"(<state><envelope1 length="0.3" enabled="1" volume="0.8"/></state>)"));
}

TEST_P(ClapSuite, AnySplitIntoBlocksSoundsTheSame) {
  const std::string name = plugin_->desc->name;
  if (kHearsBlocks.count(name)) GTEST_SKIP() << "the effect's own tests say what blocks do";
  TestRandom random;
  AudioBlock in(2, 12000);
  in.Fill([&](int32_t i) { return i < 7000 ? random.Real(-1, 1) : 0; });
  PlayATone(plugin_);
  plugin_.Activate();
  const AudioBlock expected = plugin_.Run(in, MakeNotes(), {512});
  std::vector<int32_t> changing;
  for (int32_t i = 0; i < 100; ++i) changing.push_back(random.Integer(1, 300));
  for (const std::vector<int32_t>& sizes : {std::vector<int32_t>{1}, {8192}, {63}, changing}) {
    ClapPlugin other(GetParam(), host_);
    PlayATone(other);
    other.Activate();
    const AudioBlock out = other.Run(in, MakeNotes(), sizes);
    EXPECT_LE(out.GetDistance(expected), kRounds.count(name) ? 1e-6 * expected.GetPeak() : 0) << sizes[0];
  }
  EXPECT_EQ(expected.IsZero(), plugin_.IsInstrument() && name != "Toneloom4NN");
}

TEST_P(ClapSuite, AChangeAtAFrameIsAChangeBetweenTwoBlocks) {
  constexpr int32_t kFrame = 8234, kLength = 12000;
  TestRandom random;
  const AudioBlock in = AudioBlock::Noise(2, kLength, random);
  std::vector<TestEvent> events = {NoteAt(0, CLAP_EVENT_NOTE_ON, 1, 0, 60, 0.5)};
  for (const clap_param_info_t& each : plugin_.GetParameters())
    if (!(each.flags & CLAP_PARAM_IS_BYPASS)) {
      const bool isSwitch = (each.flags & CLAP_PARAM_IS_STEPPED) && each.max_value == 1;
      events.push_back(SetAt(kFrame, each, isSwitch ? 1 - each.default_value : ChooseValue(each, random)));
    }
  AudioBlock runs[] = {in, in, in};
  for (int32_t i = 0; i < 3; ++i) {
    ClapPlugin each(GetParam(), host_);
    each.Find<sonvelle_clap_plugin_render_t>(SONVELLE_CLAP_EXT_RENDER)
        ->set(each.Get(), SONVELLE_CLAP_RENDER_OFFLINE);
    PlayATone(each);
    each.Activate();
    runs[i] =
        each.Run(in, i == 2 ? std::vector{events[0]} : events, {i == 0 ? kLength : kFrame, kLength - kFrame});
  }
  EXPECT_TRUE(runs[0] == runs[1]);
  const auto isSame = [&](int32_t from, int32_t to) {
    return std::equal(runs[0][0] + from, runs[0][0] + to, runs[2][0] + from);
  };
  const std::string name = plugin_->desc->name;
  if (!kRounds.count(name) && !kHearsBlocks.count(name)) {
    EXPECT_TRUE(isSame(0, kFrame));
  }
  EXPECT_EQ(isSame(kFrame, kLength), kHearsNoChange.count(name) > 0);
}

TEST_P(ClapSuite, EveryRateThatIsOneWorks) {
  TestRandom random;
  for (const double rate : {22050.0, 44100.0, 48000.0, 88200.0, 96000.0, 176400.0, 192000.0}) {
    ASSERT_TRUE(plugin_.Activate(rate, 256)) << rate;
    EXPECT_FALSE(plugin_->activate(plugin_.Get(), rate, 1, 256));                         // twice
    const AudioBlock out = plugin_.Run(AudioBlock::Noise(2, 3000, random), MakeNotes());  // in one block
    EXPECT_TRUE(out.IsFinite() && out.GuardsHold()) << rate;
    EXPECT_NE(plugin_.status_, CLAP_PROCESS_ERROR);
    plugin_.Deactivate();
  }
  for (const double rate : {0.0, -48000.0, 1e9, double{NAN}, double{INFINITY}})
    EXPECT_FALSE(plugin_->activate(plugin_.Get(), rate, 1, 256)) << rate;
  EXPECT_FALSE(plugin_->activate(plugin_.Get(), 48000, 1, 0));
  EXPECT_TRUE(plugin_->activate(plugin_.Get(), 48000, 1, 0x7FFFFFFF));
}

TEST_P(ClapSuite, BypassFadesToTheInputAndKeepsTheLatency) {
  if (plugin_.IsInstrument()) return;
  constexpr int32_t kFrame = 8000;
  TestRandom random;
  plugin_.Activate();
  const AudioBlock in = AudioBlock::Noise(2, 12000, random);
  const AudioBlock out = plugin_.Run(in, {SetAt(kFrame, plugin_.GetParameters().back(), 1)}, {500});
  const auto latency =
      static_cast<int32_t>(plugin_.Find<clap_plugin_latency_t>(CLAP_EXT_LATENCY)->get(plugin_.Get()));
  for (int32_t i = kFrame + kFadeFrames; i < 12000; ++i) ASSERT_EQ(out[1][i], in[1][i - latency]) << i;
}

TEST_P(ClapSuite, WhatIsNoNumberStaysInFrontAndSilenceLetsThePluginSleep) {
  TestRandom random;
  plugin_.Activate();
  AudioBlock in = AudioBlock::Noise(2, 2000, random);
  in[0][3] = NAN;
  in[1][400] = INFINITY;
  in[0][900] = -3e38f;
  EXPECT_TRUE(plugin_.Run(in, {}, {64}).IsFinite());
  if (!plugin_.IsInstrument()) {
    EXPECT_EQ(plugin_.status_, CLAP_PROCESS_CONTINUE);
  }
  for (int32_t i = 0; i < 200 && plugin_.status_ != CLAP_PROCESS_SLEEP; ++i)
    EXPECT_TRUE(plugin_.Run(AudioBlock(2, 24000)).IsFinite());
  EXPECT_EQ(plugin_.status_, CLAP_PROCESS_SLEEP);
  const AudioBlock after = plugin_.Run(AudioBlock::Noise(2, 24000, random));
  EXPECT_EQ(plugin_.status_ == CLAP_PROCESS_CONTINUE, !plugin_.IsInstrument());
  EXPECT_EQ(after.IsZero(), plugin_.IsInstrument());
}

TEST_P(ClapSuite, ResetForgetsTheSound) {
  TestRandom random;
  plugin_.Activate();
  const AudioBlock in = AudioBlock::Noise(2, 9000, random);
  plugin_.Run(in, MakeNotes());
  plugin_->reset(plugin_.Get());
  const AudioBlock out = plugin_.Run(AudioBlock(2, 9000));
  EXPECT_LE(out.GetPeak(), kKeepsALittle.count(plugin_->desc->name) ? 0.1 : kDither);
}

TEST_P(ClapSuite, BuffersThatAreNotThoseOfThePortsAreSilentAndAnError) {
  plugin_.Activate();
  AudioBlock signal = AudioBlock::Constant(4, 64, 1);
  double wide[2][64];
  std::fill_n(wide[0], 128, 1.0);
  double* const wides[] = {wide[0], wide[1]};
  clap_audio_buffer_t in = {signal.From(), nullptr, 2, 0, 0}, out[2] = {in, in};
  const clap_process_t block = {0, 64,      nullptr, &in, out, plugin_.IsInstrument() ? 0u : 1u,
                                2, nullptr, nullptr};
  out[0] = {nullptr, const_cast<double**>(wides), 2, 0, 3};
  out[1] = {signal.From() + 2, nullptr, 2, 0, 3};
  EXPECT_EQ(plugin_->process(plugin_.Get(), &block), CLAP_PROCESS_ERROR);
  EXPECT_TRUE(std::all_of(wide[0], wide[0] + 128, [](double each) { return each == 0; }));
  EXPECT_EQ(out[0].constant_mask | out[1].constant_mask, 0u);
  EXPECT_TRUE(signal[0][63] == 1 && signal[2][0] == 0 && signal[3][63] == 0);
  out[0] = {signal.From(), nullptr, 1, 0, 0};  // too few channels
  EXPECT_EQ(plugin_->process(plugin_.Get(), &block), CLAP_PROCESS_ERROR);
  EXPECT_TRUE(signal[0][63] == 0 && signal[1][63] == 1);
  in.data32 = nullptr;
  out[0] = {signal.From(), nullptr, 2, 0, 0};
  EXPECT_EQ(plugin_->process(plugin_.Get(), &block) == CLAP_PROCESS_ERROR, !plugin_.IsInstrument());
  EXPECT_EQ(signal[1][63], 0);
}

TEST_P(ClapSuite, EventsOutOfOrderAndBehindTheBlockAreHeard) {
  plugin_.Activate();
  const clap_param_info_t first = plugin_.GetParameters()[0];
  EventList list({SetAt(50, first, first.max_value), SetAt(20, first, first.min_value),
                  NoteAt(0x80000000, CLAP_EVENT_NOTE_ON, 1, 0, 60),
                  SetAt(0xFFFFFFFF, first, first.max_value)});
  AudioBlock signal(2, 64);
  const clap_audio_buffer_t in = {signal.From(), nullptr, 2, 0, 0};
  clap_audio_buffer_t out = in;
  for (const uint32_t frames : {64u, 0u}) {
    const clap_process_t block = {0, frames,          nullptr, &in, &out, plugin_.IsInstrument() ? 0u : 1u,
                                  1, list.GetInput(), nullptr};
    EXPECT_NE(plugin_->process(plugin_.Get(), &block), CLAP_PROCESS_ERROR);
  }
  EXPECT_EQ(plugin_.GetValue(first), first.max_value);
  EXPECT_TRUE(signal.GuardsHold());
}

}  // namespace
