// Changes in a block take effect at their frames.

#include <cmath>

#include "tests/hosts/vst3/AllPlugins.h"

namespace {

using host::Changes;
using host::HostedPlugin;
using host::Planes;

constexpr int32_t kFrames = 512;
constexpr int32_t kFrame = 173;  // of the change

class Vst3Automation : public testing::TestWithParam<std::string> {
 protected:
  // What comes out when `first` happens in one block; `second`, if it is there, in a second one from kFrame
  // on.
  Planes Render(Changes* first, Changes* second = nullptr) {
    HostedPlugin plugin(GetParam());
    plugin.Start({2, 48000, kFrames});
    Planes samples = host::MakeNoise(2, 3 * kFrames);
    plugin.Process(samples, 0, kFrames);
    if (second) {
      plugin.Process(samples, kFrames, kFrame, first);
      plugin.Process(samples, kFrames + kFrame, kFrames - kFrame, second);
    } else {
      plugin.Process(samples, kFrames, kFrames, first);
    }
    plugin.Process(samples, 2 * kFrames, kFrames);
    return samples;
  }
};
INSTANTIATE_TEST_SUITE_P(Effects, Vst3Automation, testing::ValuesIn(host::GetEffects()), host::NameTest);

double Other(const v3_param_info& info) {
  return info.default_normalised_value > 0.5 ? 0.2 : 0.9;
}

TEST_P(Vst3Automation, AtAFrameEqualsABlockThatBeginsThere) {
  for (const v3_param_info& info : HostedPlugin(GetParam()).GetParameters()) {
    Changes within, none, behind;
    within.Add(info.param_id, {{kFrame, Other(info)}});
    behind.Add(info.param_id, {{0, Other(info)}});
    EXPECT_EQ(Render(&within), Render(&none, &behind)) << host::ToText(info.title);
  }
}

TEST_P(Vst3Automation, OfManyParametersAtOneFrameIsOneChange) {
  Changes within, none, behind;
  for (const v3_param_info& info : host::GetAutomatable(HostedPlugin(GetParam()))) {
    within.Add(info.param_id, {{kFrame, Other(info)}});
    behind.Add(info.param_id, {{0, Other(info)}});
  }
  EXPECT_EQ(Render(&within), Render(&none, &behind));
}

TEST_P(Vst3Automation, TakesAllPointsOfAllQueuesInTheOrderOfTheirFrames) {
  Changes within, before, behind;
  for (const v3_param_info& info : host::GetAutomatable(HostedPlugin(GetParam()))) {
    within.Add(info.param_id, {{10, 0.3}, {10, 0.4}, {kFrame, 1}, {kFrame, 0.6}, {500, 0.7}});
    before.Add(info.param_id, {{10, 0.4}});
    behind.Add(info.param_id, {{0, 0.6}, {500 - kFrame, 0.7}});
  }
  EXPECT_EQ(Render(&within), Render(&before, &behind));
}

TEST_P(Vst3Automation, MovesPointsOutsideOfTheBlockToItsEnds) {
  Changes outside, inside;
  for (const v3_param_info& info : host::GetAutomatable(HostedPlugin(GetParam()))) {
    outside.Add(info.param_id, {{-20, 0.3}, {5000, 0.7}});
    inside.Add(info.param_id, {{0, 0.3}, {kFrames - 1, 0.7}});
  }
  EXPECT_EQ(Render(&outside), Render(&inside));
}

TEST_P(Vst3Automation, TakesUnsortedAndUselessPointsWithoutHarm) {
  Changes wild;
  wild.Add(12345, {{0, 0.5}});
  for (const v3_param_info& info : host::GetAutomatable(HostedPlugin(GetParam())))
    for (int32_t i = 0; i < 3; ++i)
      wild.Add(info.param_id, {{400, 7}, {3, -5}, {100, NAN}, {60, INFINITY}, {2000000000, 0.5}});
  wild.Add(wild.queues.empty() ? 0 : wild.queues.back().id, {});
  for (const std::vector<float>& plane : Render(&wild))
    for (const float sample : plane) ASSERT_TRUE(std::isfinite(sample));
}

TEST_P(Vst3Automation, ShowsTheLastPointInItsController) {
  HostedPlugin plugin(GetParam());
  plugin.Start({});
  Planes samples = host::MakeNoise(2, 64);
  for (const v3_param_info& info : plugin.GetParameters()) {
    Changes changes;
    changes.Add(info.param_id, {{3, 0}, {30, 1}});
    plugin.Process(samples, 0, 64, &changes);
    EXPECT_EQ(plugin.Get(info.param_id), 1);
  }
}

// A block without frames is the host's way to get rid of changes.
TEST_P(Vst3Automation, ComesWithoutFramesToo) {
  Changes changes;
  for (const v3_param_info& info : host::GetAutomatable(HostedPlugin(GetParam())))
    changes.Add(info.param_id, {{0, Other(info)}});
  for (const bool isActive : {false, true}) {
    HostedPlugin flushed(GetParam()), set(GetParam());
    if (isActive) flushed.Start({});
    flushed.Flush(changes);
    for (const v3_param_info& info : host::GetAutomatable(set)) set.Set(info.param_id, Other(info));
    EXPECT_EQ(flushed.SaveState(), set.SaveState());
    for (const v3_param_info& info : host::GetAutomatable(set))
      EXPECT_EQ(flushed.Get(info.param_id), set.Get(info.param_id));
  }
}

// What a host sets on its own side while it plays is old by then: the queues alone make the sound.
TEST_P(Vst3Automation, IsNotDisturbedByWhatTheHostShows) {
  const std::vector<v3_param_info> list = host::GetAutomatable(HostedPlugin(GetParam()));
  Planes sounds[2];
  std::string states[2];
  for (const bool isShown : {false, true}) {
    HostedPlugin plugin(GetParam());
    plugin.Start({});
    Planes samples = host::MakeNoise(2, 4 * kFrames);
    plugin.Process(samples, 0, kFrames);
    for (int32_t i = 1; i < 4; ++i) {
      Changes changes;
      for (const v3_param_info& info : list) changes.Add(info.param_id, {{kFrame, 0.2 * i}});
      plugin.Process(samples, i * kFrames, kFrames, &changes);
      for (const v3_param_info& info : list)
        if (isShown) plugin.Set(info.param_id, 0.2 * (i < 3 ? i - 1 : i));
    }
    sounds[isShown] = samples;
    plugin.Stop();
    states[isShown] = plugin.SaveState();
  }
  EXPECT_EQ(sounds[0], sounds[1]);
  EXPECT_EQ(states[0], states[1]);
}

TEST_P(Vst3Automation, EndsTheSameWhicheverOfQueueAndControllerComesFirst) {
  const std::vector<v3_param_info> list = host::GetAutomatable(HostedPlugin(GetParam()));
  for (const bool isQueueFirst : {false, true}) {
    HostedPlugin plugin(GetParam()), set(GetParam());
    plugin.Start({});
    Planes samples = host::MakeNoise(2, kFrames);
    plugin.Process(samples, 0, kFrames);
    Changes changes;
    for (const v3_param_info& info : list) {
      changes.Add(info.param_id, {{5, Other(info)}});
      set.Set(info.param_id, Other(info));
      if (!isQueueFirst) plugin.Set(info.param_id, Other(info));
    }
    plugin.Process(samples, 0, kFrames, &changes);
    if (isQueueFirst)
      for (const v3_param_info& info : list) plugin.Set(info.param_id, Other(info));
    EXPECT_EQ(plugin.SaveState(), set.SaveState());
  }
}

// A host that has stopped its blocks without a word still saves what was set.
TEST_P(Vst3Automation, OfAHostThatSendsNoMoreBlocksIsInTheState) {
  HostedPlugin plugin(GetParam()), set(GetParam());
  plugin.Start({});
  Planes samples = host::MakeNoise(2, kFrames);
  plugin.Process(samples, 0, kFrames);
  for (const v3_param_info& info : host::GetAutomatable(plugin)) {
    plugin.Set(info.param_id, Other(info));
    set.Set(info.param_id, Other(info));
  }
  EXPECT_EQ(plugin.SaveState(), set.SaveState());
}

}  // namespace
