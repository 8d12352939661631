// What a plug-in asks its host for.

#include <thread>

#include "tests/hosts/clap/TestHost.h"

namespace {

uint32_t GetLatency(const ClapPlugin& plugin) {
  return plugin.Find<clap_plugin_latency_t>(CLAP_EXT_LATENCY)->get(plugin.Get());
}
uint32_t GetTail(const ClapPlugin& plugin) {
  return plugin.Find<sonvelle_clap_plugin_tail_t>(SONVELLE_CLAP_EXT_TAIL)->get(plugin.Get());
}

TEST_P(ClapSuite, LatencyIsThatOfTheSoundAndToldInTheActivation) {
  plugin_.Activate();
  EXPECT_EQ(host_.latencies, GetLatency(plugin_) > 0 ? 1 : 0);
  plugin_.Deactivate();
  plugin_.Activate();
  EXPECT_EQ(host_.latencies, GetLatency(plugin_) > 0 ? 1 : 0);
  EXPECT_EQ(host_.restarts, 0);
}

TEST(ClapLatency, StaysWhileThePluginIsActiveAndARestartIsAskedForOnce) {
  TestHost host;
  ClapPlugin plugin("com.sonvelle.quaverly", host);
  plugin.Activate();
  const uint32_t before = GetLatency(plugin);
  const int32_t told = host.latencies;
  for (const double depth : {1.0, 0.7, 0.5})
    plugin.Run(AudioBlock(2, 64), {SetAt(9, plugin.GetParameter("Depth"), depth)});
  EXPECT_EQ(GetLatency(plugin), before);
  EXPECT_EQ(host.latencies, told);
  EXPECT_EQ(host.restarts, 1);
  plugin.Deactivate();
  EXPECT_NE(GetLatency(plugin), before);
  plugin.Activate();
  EXPECT_EQ(host.latencies, told + 1);
  EXPECT_NE(GetLatency(plugin), before);
  plugin.Run(AudioBlock(2, 64), {SetAt(9, plugin.GetParameter("Depth"), 0)});
  EXPECT_EQ(host.restarts, 2);
}

TEST(ClapTail, FollowsTheParametersWhenTheyRest) {
  TestHost host;
  ClapPlugin plugin("com.sonvelle.echolan", host);
  plugin.Activate();
  const uint32_t before = GetTail(plugin);
  EXPECT_GT(before, 4800u);
  const clap_param_info_t feedback = plugin.GetParameter("Feedback");
  plugin.Run(AudioBlock(2, 64));
  host.callbacks = host.tails = 0;
  plugin.Run(AudioBlock(2, 64), {SetAt(0, feedback, 0)});
  plugin.Run(AudioBlock(2, 64), {SetAt(0, feedback, 0.1)});
  EXPECT_EQ(host.callbacks, 0);
  plugin.Run(AudioBlock(2, 64));
  EXPECT_EQ(host.callbacks, 1);
  plugin->on_main_thread(plugin.Get());
  EXPECT_EQ(host.tails, 0);
  plugin.Run(AudioBlock(2, 64));
  EXPECT_EQ(host.tails, 1);
  EXPECT_LT(GetTail(plugin), before);
}

TEST(ClapTail, IsNotMeasuredOnTheAudioThread) {
  TestHost host;
  const ClapPlugin plugin("com.sonvelle.echolan", host);
  plugin.Activate();
  uint32_t tail = 1;
  std::thread([&] { tail = GetTail(plugin); }).join();
  EXPECT_EQ(tail, 0u);
  const uint32_t measured = GetTail(plugin);
  std::thread([&] { tail = GetTail(plugin); }).join();
  EXPECT_EQ(tail, measured);
}

TEST_P(ClapSuite, TailsAreMeasuredBeforeAndWhileThePluginIsActive) {
  EXPECT_EQ(GetTail(plugin_), 0u);
  plugin_.Activate(22050);
  if (plugin_.IsInstrument()) {
    EXPECT_EQ(GetTail(plugin_), 441u) << "the release";
  }
  EXPECT_GE(GetTail(plugin_), GetLatency(plugin_));
}

TEST(ClapTail, OfAnInstrumentIsToldWithoutTheMainThread) {
  TestHost host;
  ClapPlugin plugin("com.sonvelle.toneloom4nn", host);
  plugin.Activate();
  plugin.Run(AudioBlock(2, 64));
  host.callbacks = host.tails = 0;
  plugin.Run(AudioBlock(2, 64), {SetAt(0, plugin.GetParameter("Release"), 10)});
  plugin.Run(AudioBlock(2, 64));
  EXPECT_EQ(host.tails, 1);
  uint32_t tail = 0;
  std::thread([&] { tail = GetTail(plugin); }).join();
  EXPECT_EQ(tail, 480000u);
}

TEST(ClapTail, ThatNeverEndsIsTheMost) {
  TestHost host;
  ClapPlugin plugin("com.sonvelle.echolan", host);
  EXPECT_TRUE(plugin.LoadState(R"(<state parameterfeedback="1.0000"/>)"));
  plugin.Activate(8000);
  EXPECT_GE(GetTail(plugin), 0x7FFFFFFFu);
}

TEST_P(ClapSuite, LoadedValuesAreToldOnceOnTheMainThread) {
  const std::string text = plugin_.SaveState();
  const int32_t before = host_.callbacks;
  EXPECT_TRUE(plugin_.LoadState(text) && plugin_.LoadState(text));
  EXPECT_EQ(host_.callbacks, before + 1);
  EXPECT_EQ(host_.rescans, 0);
  plugin_->on_main_thread(plugin_.Get());
  EXPECT_EQ(host_.rescans, 1);
  plugin_->on_main_thread(plugin_.Get());
  EXPECT_EQ(host_.rescans, 1);
}

TEST(ClapWork, OfAnInstrumentWaitsForTheMainThread) {
  TestHost host;
  ClapPlugin plugin("com.sonvelle.playbox", host);
  plugin.Activate();
  plugin.Run(AudioBlock(2, 64), {SetAt(5, plugin.GetParameter("Delay"), 0.1)});
  EXPECT_EQ(host.callbacks, 1);
  plugin->on_main_thread(plugin.Get());
  plugin.Run(AudioBlock(2, 64));
  EXPECT_EQ(host.callbacks, 1);
}

TEST(ClapWork, IsDoneAtOnceOffline) {
  TestHost host;
  ClapPlugin plugin("com.sonvelle.playbox", host);
  plugin.Activate();
  const auto* const render = plugin.Find<sonvelle_clap_plugin_render_t>(SONVELLE_CLAP_EXT_RENDER);
  EXPECT_TRUE(render->set(plugin.Get(), SONVELLE_CLAP_RENDER_OFFLINE));
  plugin.Run(AudioBlock(2, 64), {SetAt(5, plugin.GetParameter("Delay"), 0.1)});
  EXPECT_EQ(host.callbacks, 0);
  EXPECT_TRUE(render->set(plugin.Get(), SONVELLE_CLAP_RENDER_REALTIME));
  plugin.Run(AudioBlock(2, 64), {SetAt(5, plugin.GetParameter("Delay"), 0.2)});
  EXPECT_EQ(host.callbacks, 1);
}

// A release build has no time for that.
#ifndef NDEBUG
TEST(ClapThreadsDeathTest, DebugBuildsEndWhenTheMainThreadIsAnother) {
  TestHost host;
  const ClapPlugin plugin("com.sonvelle.echolan", host);
  EXPECT_DEATH(std::thread([&] { plugin->activate(plugin.Get(), 48000, 1, 64); }).join(), "is_main_thread");
}

TEST(ClapThreadsDeathTest, DebugBuildsEndWhenTheAudioThreadIsAnother) {
  TestHost host;
  const ClapPlugin plugin("com.sonvelle.echolan", host);
  plugin.Activate();
  host.isAudioAnywhere = false;
  const clap_process_t block = {};
  EXPECT_DEATH(plugin->process(plugin.Get(), &block), "is_audio_thread");
  EXPECT_DEATH(plugin->reset(plugin.Get()), "is_audio_thread");
  EXPECT_DEATH(plugin.Flush({}), "is_audio_thread");
}
#endif

}  // namespace
