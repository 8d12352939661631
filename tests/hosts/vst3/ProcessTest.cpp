// Blocks, formats and buffers of all plug-ins.

#include <cmath>

#include "hosts/bridge/Plugin.h"
#include "hosts/builtin/BuiltInPlugins.h"
#include "tests/common/AudioThreadWatch.h"
#include "tests/hosts/vst3/AllPlugins.h"

namespace {

using host::Changes;
using host::HostedPlugin;
using host::Planes;

class Vst3Blocks : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Plugins, Vst3Blocks, testing::ValuesIn(host::GetAll()), host::NameTest);
class Vst3EffectBlocks : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Effects, Vst3EffectBlocks, testing::ValuesIn(host::GetEffects()), host::NameTest);

bool IsFinite(const Planes& samples) {
  for (const std::vector<float>& plane : samples)
    for (const float sample : plane)
      if (!std::isfinite(sample)) return false;
  return true;
}

bridge::Plugin MakeBare(const std::string& name) {
  return bridge::Plugin(bridge::FindPlugin(builtin::GetPlugins(), name)->entryPoint);
}

TEST_P(Vst3EffectBlocks, OfAnySizesSoundAsThoseOfTheBareEffect) {
  constexpr int32_t kMost = 8192, kFrames = 30000;
  Planes hosted = host::MakeNoise(2, kFrames), bare = hosted;
  HostedPlugin plugin(GetParam());
  plugin.Start({2, 48000, kMost});
  bridge::Plugin effect = MakeBare(GetParam());
  effect.Prepare(2, 48000);
  constexpr int32_t kSizes[] = {1,   64, 5,           kMost,
                                333, 2,  kMost + 1000};  // the last one is more than announced
  for (int32_t start = 0, i = 0; start < kFrames; ++i) {
    const int32_t frames = std::min(kSizes[i % 7], kFrames - start);
    plugin.Process(hosted, start, frames);
    for (int32_t done = 0; done < frames; done += kMost) {
      float* const channels[] = {bare[0].data() + start + done, bare[1].data() + start + done};
      effect.Process(channels, channels, std::min(frames - done, kMost));
    }
    start += frames;
  }
  EXPECT_EQ(hosted, bare);
}

TEST_P(Vst3Blocks, WorkAtAllRatesAndWithOneToEightChannels) {
  HostedPlugin plugin(GetParam());
  for (const double rate : {22050.0, 44100.0, 48000.0, 96000.0, 192000.0})
    for (const int32_t channels : {1, 2, 8}) {
      plugin.Start({channels, rate, 256});
      Planes samples = host::MakeNoise(channels, 1000);
      plugin.Process(samples);
      EXPECT_TRUE(IsFinite(samples)) << rate;
      plugin.Stop();
    }
}

TEST_P(Vst3Blocks, RefuseOtherFormatsAndKeepTheirs) {
  HostedPlugin plugin(GetParam());
  v3_audio_processor** const p = plugin.processor;
  const v3_audio_processor& processor = *v3_cpp_obj(p);
  v3_speaker_arrangement three = 7, nine = 0x1FF, none = 0, got = 0;
  const int32_t inputs = plugin.IsInstrument() ? 0 : 1;
  EXPECT_EQ(processor.set_bus_arrangements(p, &three, inputs, &three, 1), V3_OK);
  EXPECT_EQ(processor.set_bus_arrangements(p, &nine, inputs, &nine, 1), V3_FALSE);
  EXPECT_EQ(processor.set_bus_arrangements(p, &none, inputs, &none, 1), V3_FALSE);
  EXPECT_EQ(processor.set_bus_arrangements(p, &three, 1 - inputs, &three, 1), V3_FALSE);
  EXPECT_EQ(processor.set_bus_arrangements(p, &three, inputs, &three, 2), V3_FALSE);
  v3_speaker_arrangement stereo = V3_SPEAKER_L | V3_SPEAKER_R;
  if (inputs == 1) {
    EXPECT_EQ(processor.set_bus_arrangements(p, &stereo, 1, &three, 1), V3_FALSE);
    EXPECT_EQ(processor.get_bus_arrangement(p, V3_INPUT, 0, &got), V3_OK);
    EXPECT_EQ(got, three);
  }
  EXPECT_EQ(processor.get_bus_arrangement(p, V3_OUTPUT, 0, &got), V3_OK);
  EXPECT_EQ(got, three);
  v3_bus_info bus = {};
  v3_cpp_obj(plugin.component)->get_bus_info(plugin.component, V3_AUDIO, V3_OUTPUT, 0, &bus);
  EXPECT_EQ(bus.channel_count, 3);
  EXPECT_EQ(processor.can_process_sample_size(p, V3_SAMPLE_32), V3_OK);
  EXPECT_EQ(processor.can_process_sample_size(p, V3_SAMPLE_64), V3_FALSE);
  v3_process_setup setup = {V3_REALTIME, V3_SAMPLE_64, 512, 48000};
  EXPECT_NE(processor.setup_processing(p, &setup), V3_OK);
  for (const double rate : {0.0, -1.0, std::nan(""), 1e30}) {
    setup = {V3_REALTIME, V3_SAMPLE_32, 512, rate};
    EXPECT_NE(processor.setup_processing(p, &setup), V3_OK);
  }
  setup = {V3_REALTIME, V3_SAMPLE_32, 0, 48000};
  EXPECT_NE(processor.setup_processing(p, &setup), V3_OK);
  plugin.Start({});
  EXPECT_NE(processor.set_bus_arrangements(p, &three, inputs, &three, 1), V3_OK);
}

// Channels and whole buses may be missing, and there may be more than was agreed upon.
TEST_P(Vst3Blocks, GetAlongWithoutBuffers) {
  HostedPlugin plugin(GetParam());
  v3_audio_processor** const p = plugin.processor;
  const auto process = v3_cpp_obj(p)->process;
  Planes samples = host::MakeNoise(3, 256);
  float* channels[] = {samples[0].data(), nullptr, samples[2].data()};
  v3_audio_bus_buffers buses[2] = {{3, 0, {channels}}, {2, 0, {nullptr}}};
  v3_process_data data = {};
  data.nframes = 256;
  data.inputs = data.outputs = buses;
  data.num_input_buses = data.num_output_buses = 2;
  EXPECT_EQ(process(p, &data), V3_OK);  // not active: silence
  for (const float sample : samples[0]) ASSERT_EQ(sample, 0);
  EXPECT_EQ(buses[0].channel_silence_bitset, 7u);
  plugin.Start({2, 48000, 256});
  samples[2].assign(256, 1.0f);
  EXPECT_EQ(process(p, &data), V3_OK);
  for (const float sample : samples[2]) ASSERT_EQ(sample, 0);  // a third channel is none of ours
  buses[0].num_channels = 0;
  EXPECT_EQ(process(p, &data), V3_OK);
  buses[0] = {-5, 0, {channels}};
  EXPECT_EQ(process(p, &data), V3_OK);
  data.nframes = 257;  // longer than what stands in for the buffers
  EXPECT_EQ(process(p, &data), V3_INVALID_ARG);
  data.nframes = -1;
  EXPECT_EQ(process(p, &data), V3_INVALID_ARG);
  data.nframes = 256;
  data.inputs = data.outputs = nullptr;
  EXPECT_EQ(process(p, &data), V3_OK);
  data.num_input_buses = data.num_output_buses = 0;
  EXPECT_EQ(process(p, &data), V3_OK);
  data.symbolic_sample_size = V3_SAMPLE_64;
  EXPECT_EQ(process(p, &data), V3_INVALID_ARG);
}

TEST(Vst3Silence, IsToldOfOutputsThatAreSilentAlone) {
  HostedPlugin plugin("Slotter");
  plugin.Start({});
  Planes samples(2, std::vector<float>(512));
  float* channels[] = {samples[0].data(), samples[1].data()};
  v3_audio_bus_buffers in = {2, 3, {channels}}, out = {2, 0, {channels}};
  v3_process_data data = {};
  data.nframes = 512;
  data.inputs = &in;
  data.outputs = &out;
  data.num_input_buses = data.num_output_buses = 1;
  const auto process = v3_cpp_obj(plugin.processor)->process;
  process(plugin.processor, &data);
  EXPECT_EQ(out.channel_silence_bitset, 3u);
  samples[1][500] = 1;
  in.channel_silence_bitset = 0;
  process(plugin.processor, &data);
  EXPECT_EQ(out.channel_silence_bitset, 1u);
}

TEST(Vst3Buses, ThatAreSwitchedOffBringNothing) {
  HostedPlugin plugin("Slotter");
  const auto activate = v3_cpp_obj(plugin.component)->activate_bus;
  EXPECT_EQ(activate(plugin.component, V3_AUDIO, V3_INPUT, 0, false), V3_OK);
  plugin.Start({});
  Planes samples = host::MakeNoise(2, 512);
  plugin.Process(samples, 0, 512);
  EXPECT_EQ(samples, Planes(2, std::vector<float>(512)));
  EXPECT_EQ(activate(plugin.component, V3_AUDIO, V3_INPUT, 0, true), V3_OK);
  samples = host::MakeNoise(2, 512);
  plugin.Process(samples, 0, 512);
  EXPECT_NE(samples, Planes(2, std::vector<float>(512)));
}

TEST_P(Vst3Blocks, MayBeAnnouncedAsLongAsANumberCanSay) {
  HostedPlugin plugin(GetParam());
  plugin.Start({2, 48000, 0x7FFFFFFF});
  Planes samples = host::MakeNoise(2, 512);
  plugin.Process(samples, 0, 512);
  EXPECT_TRUE(IsFinite(samples));
  v3_process_data data = {};
  data.nframes = 0x7FFFFFFF;  // without a buffer
  EXPECT_EQ(v3_cpp_obj(plugin.processor)->process(plugin.processor, &data), V3_INVALID_ARG);
}

TEST_P(Vst3EffectBlocks, NeverGiveOutWhatIsNotFinite) {
  HostedPlugin plugin(GetParam());
  plugin.Start({});
  Planes samples = host::MakeNoise(2, 4096);
  samples[0][100] = NAN;
  samples[1][200] = INFINITY;
  samples[1][201] = -INFINITY;
  plugin.Process(samples);
  EXPECT_TRUE(IsFinite(samples));
}

struct Calls {
  int64_t allocations, waits;
};

constexpr int32_t kBlocks = 60;

// What is counted in the blocks of a plug-in in a host, with changes of these parameters.
Calls CountHosted(const std::string& name, const std::vector<v3_param_info>& changed) {
  HostedPlugin plugin(name);
  plugin.Start({2, 48000, 64});
  Planes samples = host::MakeNoise(2, 64);
  float* channels[] = {samples[0].data(), samples[1].data()};
  v3_audio_bus_buffers bus = {2, 0, {channels}};
  Changes changes;
  for (const v3_param_info& info : changed) changes.Add(info.param_id, {{0, 0.3}, {40, 0.6}});
  v3_process_data data = {};
  data.num_input_buses = data.num_output_buses = 1;
  data.inputs = data.outputs = &bus;
  data.nframes = 64;
  data.input_params = changed.empty() ? nullptr : changes.Get();
  const AudioThreadWatch watch;
  for (int32_t i = 0; i < kBlocks; ++i) v3_cpp_obj(plugin.processor)->process(plugin.processor, &data);
  return {watch.GetAllocations(), watch.GetWaits()};
}

// The same for the bare effect: two updates in each block.
Calls CountBare(const std::string& name, const std::vector<int32_t>& rows) {
  bridge::Plugin effect = MakeBare(name);
  effect.Prepare(2, 48000);
  Planes samples = host::MakeNoise(2, 64);
  float* const channels[] = {samples[0].data(), samples[1].data()};
  const AudioThreadWatch watch;
  for (int32_t i = 0; i < kBlocks; ++i) {
    for (const int32_t frames : {40, 24}) {
      for (const int32_t row : rows) {
        const bridge::ParameterRange range =
            bridge::GetRange(effect.GetParameters()[static_cast<std::size_t>(row)]);
        effect.StoreValue(row, range.minimum + (frames == 40 ? 0.3 : 0.6) * (range.maximum - range.minimum));
      }
      if (!rows.empty()) effect.TellChanged(rows.back());
      if (!rows.empty() || frames == 40) effect.Process(channels, channels, rows.empty() ? 64 : frames);
    }
  }
  return {watch.GetAllocations(), watch.GetWaits()};
}

TEST_P(Vst3EffectBlocks, AddNeitherAllocationsNorLocksToThoseOfTheEffect) {
  const Calls steady = CountHosted(GetParam(), {});
  EXPECT_EQ(steady.allocations, 0);
  EXPECT_LE(steady.waits, CountBare(GetParam(), {}).waits);
  std::vector<int32_t> rows;
  const bridge::Plugin effect = MakeBare(GetParam());
  for (std::size_t i = 0; i < effect.GetParameters().size(); ++i)
    if (bridge::HasValue(effect.GetParameters()[i])) rows.push_back(static_cast<int32_t>(i));
  const Calls changing = CountHosted(GetParam(), host::GetAutomatable(HostedPlugin(GetParam())));
  EXPECT_EQ(changing.allocations, 0);
  EXPECT_LE(changing.waits, CountBare(GetParam(), rows).waits);
}

TEST_P(Vst3EffectBlocks, BypassWithoutAllocation) {
  std::vector<v3_param_info> bypass = HostedPlugin(GetParam()).GetParameters();
  std::erase_if(bypass, [](const v3_param_info& info) { return !(info.flags & V3_PARAM_IS_BYPASS); });
  EXPECT_EQ(CountHosted(GetParam(), bypass).allocations, 0);
}

}  // namespace
