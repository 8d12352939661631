// Notes, pedals and velocities of instruments; bypass and reset of effects.

#include <cmath>

#include "hosts/bridge/DawPlugin.h"
#include "hosts/builtin/BuiltInPlugins.h"
#include "tests/hosts/vst3/AllPlugins.h"

namespace {

using host::Changes;
using host::Events;
using host::HostedPlugin;
using host::Planes;

constexpr int32_t kFrames = 8192;

void SetProgram(HostedPlugin& plugin, const std::string& name) {
  const v3_param_id id = host::FindId(plugin, "Program");
  for (double program = 1; plugin.GetText(id, plugin.Get(id)) != name && program < 20; ++program)
    plugin.Set(id, plugin.ToNormalized(id, program));
}

class Vst3Notes : public testing::Test {
 protected:
  Vst3Notes() {
    SetProgram(plugin_, "Warm pad");
    plugin_.Start({2, 48000, kFrames});
    mapping_ = plugin_.Query<v3_midi_mapping>(v3_midi_mapping_iid);
  }

  v3_param_id GetController(int16_t channel, int16_t controller) {
    v3_param_id id = 0;
    v3_cpp_obj(mapping_)->get_midi_controller_assignment(mapping_, 0, channel, controller, &id);
    return id;
  }
  Planes Render(Events& events, Changes* changes = nullptr) {
    Planes samples(2, std::vector<float>(kFrames));
    plugin_.Process(samples, 0, kFrames, changes, &events);
    return samples;
  }
  static bool IsSilent(const Planes& samples, int32_t from, int32_t to = kFrames) {
    return std::all_of(samples[0].begin() + from, samples[0].begin() + to, [](float x) { return x == 0; });
  }

  HostedPlugin plugin_{"Toneloom4NN"};
  v3_midi_mapping** mapping_ = nullptr;
};

struct NoClient : bridge::DawPlugin::Client {
  void OnValuesChanged() noexcept override {}
  void OnWorkWaiting() noexcept override {}
  void OnLatencyChanged() noexcept override {}
};

TEST_F(Vst3Notes, HaveTheVolumesOfTheirMidiVelocitiesToTheBit) {
  for (int32_t velocity = 1; velocity <= 127; velocity += velocity < 10 ? 1 : 13) {
    HostedPlugin plugin("Toneloom4NN");
    plugin.Start({2, 48000, 256});
    Events events;
    events.Press(100, 64, static_cast<float>(velocity / 127.0));
    Planes hosted(2, std::vector<float>(256)), bare = hosted;
    plugin.Process(hosted, 0, 256, nullptr, &events);
    NoClient client;
    bridge::DawPlugin daw(*bridge::FindPlugin(builtin::GetPlugins(), "Toneloom4NN"), client);
    daw.Activate(2, 48000, 256);
    float* const out[] = {bare[0].data(), bare[1].data()};
    daw.Begin(nullptr, out, 256);
    daw.RunTo(100);
    daw.Play(*bridge::ReadMidiMessage(0x90, 64, static_cast<uint8_t>(velocity)));
    daw.End();
    EXPECT_EQ(hosted, bare) << velocity;
    EXPECT_NE(hosted[0], std::vector<float>(256));
  }
}

TEST_F(Vst3Notes, BeginAndEndAtTheirFrames) {
  Events events;
  events.Press(1000, 60, 1, 3, 17);
  events.Release(3000, 60, 3, 17);
  const Planes samples = Render(events);
  EXPECT_TRUE(IsSilent(samples, 0, 1000));
  EXPECT_FALSE(IsSilent(samples, 1000, 1100));
  EXPECT_FALSE(IsSilent(samples, 3000, 3100));
  EXPECT_TRUE(IsSilent(samples, 3000 + 960));  // the release: 20 ms
  EXPECT_EQ(plugin_.silence, 0u);
}

// Two notes of one key: the ends of the second by its id, by an unknown one, and the oldest one's.
TEST_F(Vst3Notes, EndByTheIdOfTheHostOrElseByTheKey) {
  const auto render = [](int32_t id) {
    HostedPlugin plugin("Toneloom4NN");
    SetProgram(plugin, "Warm pad");
    plugin.Start({2, 48000, kFrames});
    Events events;
    events.Press(0, 60, 1, 0, 7);
    events.Press(500, 60, 0.3f, 0, 8);
    events.Release(2000, 60, 0, id);
    Planes samples(2, std::vector<float>(kFrames));
    plugin.Process(samples, 0, kFrames, nullptr, &events);
    return samples;
  };
  EXPECT_EQ(render(-1), render(7));
  EXPECT_EQ(render(99), render(7));
  EXPECT_NE(render(8), render(7));
}

// Some hosts give all notes the same id.
TEST_F(Vst3Notes, OfOneIdEndByTheirKeysAndTheNewerOfOneKeyFirst) {
  Events events;
  events.Press(0, 60, 1, 0, 0);
  events.Press(100, 64, 1, 0, 0);
  events.Press(200, 64, 1, 1, 0);
  events.Press(300, 60, 1, 0, 0);
  const auto isSilentBehind = [&](int32_t channel, int32_t key) {
    Events release;
    release.Release(0, key, channel, 0);
    return IsSilent(Render(release), 960);
  };
  Render(events);
  EXPECT_FALSE(isSilentBehind(0, 64));
  EXPECT_FALSE(isSilentBehind(0, 60));
  EXPECT_FALSE(isSilentBehind(1, 64));
  EXPECT_FALSE(isSilentBehind(0, 64)) << "nothing is left to end";
  EXPECT_TRUE(isSilentBehind(0, 60));
}

TEST_F(Vst3Notes, WithoutAVelocityEndTheKey) {
  Events events;
  events.Press(0, 60, 1);
  events.Press(2000, 60, 0);
  EXPECT_TRUE(IsSilent(Render(events), 2960));
}

TEST_F(Vst3Notes, ThatNoInstrumentHasAreLeftOut) {
  Events events;
  events.Press(0, -1, 1);
  events.Press(0, 128, 1);
  events.Press(0, 60, 1, 16);
  events.Press(0, 60, 1, -1);
  events.Press(0, 60, NAN);
  events.Add(0, V3_EVENT_DATA);
  events.Add(0, 12345);
  events.Add(0, V3_EVENT_NOTE_ON).bus_index = 1;
  EXPECT_TRUE(IsSilent(Render(events), 0));
  EXPECT_EQ(plugin_.silence, 3u);
}

TEST_F(Vst3Notes, OutsideOfTheBlockAreMovedToItsEnds) {
  Events events;
  events.Press(-50, 60, 1);
  events.Release(900000, 60);
  const Planes samples = Render(events);
  EXPECT_FALSE(IsSilent(samples, 0, 10));
  EXPECT_FALSE(IsSilent(samples, kFrames - 10));
  Events none;
  EXPECT_TRUE(IsSilent(Render(none), 960));
}

TEST_F(Vst3Notes, SoundOnWhileThePedalIsDown) {
  Events events, none;
  events.Press(0, 60, 1, 2);
  events.Release(1000, 60, 2);
  Changes down, up;
  down.Add(GetController(2, 64), {{500, 1}});
  down.Add(GetController(1, 64), {{500, 0}});
  up.Add(GetController(2, 64), {{2000, 0.2}});
  EXPECT_FALSE(IsSilent(Render(events, &down), kFrames - 100));
  EXPECT_TRUE(IsSilent(Render(none, &up), 2960));
}

TEST_F(Vst3Notes, EndTogetherWithAllNotesOffAndAllSoundOff) {
  for (const int16_t controller : std::initializer_list<int16_t>{120, 123}) {
    Events events;
    events.Press(0, 60, 1, 5);
    events.Press(0, 67, 1, 5);
    Changes changes;
    changes.Add(GetController(5, controller), {{2000, 0}});
    const Planes samples = Render(events, &changes);
    EXPECT_FALSE(IsSilent(samples, 1900, 2000));
    EXPECT_TRUE(IsSilent(samples, 2960));
  }
}

TEST_F(Vst3Notes, AreCutWhenTheHostStopsProcessing) {
  Events events, none;
  events.Press(0, 60, 1);
  Render(events);
  v3_cpp_obj(plugin_.processor)->set_processing(plugin_.processor, false);
  EXPECT_TRUE(IsSilent(Render(none), 0));
}

TEST_F(Vst3Notes, AreNotHeardOnABusThatIsSwitchedOff) {
  v3_cpp_obj(plugin_.component)->activate_bus(plugin_.component, V3_EVENT, V3_INPUT, 0, false);
  Events events;
  events.Press(0, 60, 1);
  EXPECT_TRUE(IsSilent(Render(events), 0));
}

TEST_F(Vst3Notes, SoundTheSameInOfflineRendersOfAnyBlockSize) {
  Planes sounds[2];
  for (const bool isSmall : {false, true}) {
    HostedPlugin plugin("Toneloom4NN");
    plugin.Start({2, 44100, isSmall ? 64 : kFrames, true});
    sounds[isSmall] = Planes(2, std::vector<float>(kFrames));
    for (int32_t start = 0; start < kFrames; start += isSmall ? 64 : kFrames) {
      Events events;
      for (const int32_t frame : {64, 700, 3000})
        if (frame >= start && (!isSmall || frame < start + 64))
          events.Press(frame - start, 50 + frame / 100, 0.7f);
      plugin.Process(sounds[isSmall], start, isSmall ? 64 : kFrames, nullptr, &events);
    }
  }
  for (std::size_t i = 0; i < static_cast<std::size_t>(kFrames); ++i)
    ASSERT_NEAR(sounds[0][0][i], sounds[1][0][i], 1e-5) << i;
}

class Vst3Bypass : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Effects, Vst3Bypass, testing::ValuesIn(host::GetEffects()), host::NameTest);

TEST_P(Vst3Bypass, LeadsTheInputThroughWithTheLatencyKept) {
  HostedPlugin plugin(GetParam());
  plugin.Start({2, 48000, 512});
  Planes samples = host::MakeNoise(2, 8192);
  const Planes in = samples;
  const uint32_t latency = v3_cpp_obj(plugin.processor)->get_latency_samples(plugin.processor);
  Changes changes;
  for (const v3_param_info& info : plugin.GetParameters())
    if (info.flags & V3_PARAM_IS_BYPASS) changes.Add(info.param_id, {{100, 1}});
  plugin.Process(samples, 0, 512, &changes);
  for (int32_t start = 512; start < 8192; start += 512) plugin.Process(samples, start, 512);
  EXPECT_EQ(v3_cpp_obj(plugin.processor)->get_latency_samples(plugin.processor), latency);
  for (std::size_t i = 100 + 480; i < 8192; ++i) {
    const float expected = i < latency ? 0 : in[1][i - latency];
    ASSERT_EQ(samples[1][i], expected) << i;
  }
}

// A narrow filter of low frequencies may go on for a while, far below what sounded.
TEST_P(Vst3Bypass, IsNotNeededToForgetWhatSoundedBeforeAStop) {
  HostedPlugin plugin(GetParam());
  plugin.Start({2, 48000, 512});
  Planes samples = host::MakeNoise(2, 8192), silence(2, std::vector<float>(8192));
  plugin.Process(samples);
  v3_cpp_obj(plugin.processor)->set_processing(plugin.processor, false);
  v3_cpp_obj(plugin.processor)->set_processing(plugin.processor, true);
  plugin.Process(silence);
  for (const std::vector<float>& plane : silence)
    for (const float sample : plane) ASSERT_LT(std::abs(sample), 2e-3f);  // of 0.5
}

}  // namespace
