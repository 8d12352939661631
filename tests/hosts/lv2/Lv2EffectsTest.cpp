// Effects in blocks, with their controls.

#include "hosts/lv2/Turtle.h"
#include "tests/common/AudioThreadWatch.h"
#include "tests/hosts/lv2/Lv2Test.h"

namespace {

class Lv2Effects : public Lv2Test {
 protected:
  static std::vector<float> Head(const std::vector<float>& samples, std::size_t count) {
    return {samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(count)};
  }
  // What blocks allocate and wait for while their controls are multiplied with this.
  static std::pair<int64_t, int64_t> Watch(const bridge::PluginType& type, float factor) {
    const auto host = Make(type.name);
    Fill(host->inLeft, 0.1f);
    host->Run(512);
    const AudioThreadWatch watch;
    for (int i = 0; i < 20; ++i) {
      for (const lv2::Port& port : host->GetPorts())
        if (host->HasControl(port.symbol)) host->Control(port.symbol) *= factor;
      host->Run(256);
    }
    return {watch.GetAllocations(), watch.GetWaits()};
  }
  // Bellwarp's output of one block of 512 frames, both channels, under some treatment of the buffers.
  template <typename Prepare>
  static std::vector<float> Ring(Prepare prepare) {
    const auto host = Make("Bellwarp");
    Fill(host->inLeft, 0.1f);
    Fill(host->inRight, 0.23f);
    prepare(*host);
    host->Run(512);
    std::vector<float> both = Head(host->outLeft, 512);
    both.insert(both.end(), host->outRight.begin(), host->outRight.begin() + 512);
    return both;
  }
};

TEST_F(Lv2Effects, ADelayIsAsLongAsItsPortSays) {
  const auto host = Make("Echolan");
  host->Control("delay") = 2;  // milliseconds
  host->inLeft[0] = 1;
  host->Run(512);
  EXPECT_EQ(host->outLeft[95], 0.0f);
  EXPECT_NE(host->outLeft[96], 0.0f);
  EXPECT_EQ(GetAttribute(*host, "parameterdelay"), "0.0020");
}

TEST_F(Lv2Effects, DisabledTheySoundDryAndTheStateSaysSo) {
  const auto host = Make("Bellwarp");
  host->Control("enabled") = 0;
  Fill(host->inLeft, 0.1f);
  host->Run(4096);
  host->Run(512);
  EXPECT_EQ(Head(host->outLeft, 512), Head(host->inLeft, 512));
  EXPECT_EQ(GetAttribute(*host, "hostBypass"), "1");
}

TEST_F(Lv2Effects, ABlockWithoutFramesTakesTheControlsOver) {
  const auto host = Make("Echolan");
  host->Control("delay") = 250;
  host->Run(0);
  EXPECT_EQ(GetAttribute(*host, "parameterdelay"), "0.2500");
}

TEST_F(Lv2Effects, PortsThatAreNoNumbersChangeNothing) {
  const auto host = Make("Echolan");
  host->Control("delay") = 250;
  host->Run(64);
  host->Control("delay") = NAN;
  host->Run(64);
  EXPECT_EQ(GetAttribute(*host, "parameterdelay"), "0.2500");
  host->Control("delay") = 1e9f;
  host->Run(64);
  EXPECT_EQ(GetAttribute(*host, "parameterdelay"), "0.5000");
}

TEST_F(Lv2Effects, BuffersMayBeTheSameForAnyPorts) {
  const std::vector<float> expected = Ring([](Lv2Host&) {});
  EXPECT_EQ(expected, Ring([](Lv2Host& host) {
              host.outLeft = host.inLeft, host.outRight = host.inRight;
              host.Connect("in_left", host.outLeft.data()), host.Connect("out_left", host.outLeft.data());
              host.Connect("in_right", host.outRight.data()), host.Connect("out_right", host.outRight.data());
            }));
  EXPECT_EQ(expected, Ring([](Lv2Host& host) {  // crosswise
              host.outRight = host.inLeft, host.outLeft = host.inRight;
              host.Connect("in_left", host.outRight.data()), host.Connect("out_left", host.outLeft.data());
              host.Connect("in_right", host.outLeft.data()), host.Connect("out_right", host.outRight.data());
            }));
  const std::vector<float> mono = Ring([](Lv2Host& host) { host.inRight = host.inLeft; });
  EXPECT_EQ(mono, Ring([](Lv2Host& host) {
              host.outLeft = host.inLeft;
              host.Connect("in_left", host.outLeft.data()), host.Connect("in_right", host.outLeft.data());
              host.Connect("out_left", host.outLeft.data()), host.Connect("out_right", host.outRight.data());
            }));
}

TEST_F(Lv2Effects, PortsWithoutBuffersAreSilentOrLeadNowhere) {
  const auto host = Make("Echolan");
  for (const lv2::Port& port : host->GetPorts()) host->Connect(port.symbol, nullptr);
  host->Run(4096);
  host->Connect("out_left", host->outLeft.data());
  host->outLeft[0] = 7;
  host->Run(16000);
  EXPECT_EQ(host->outLeft[0], 0.0f);
  const LV2_Descriptor& descriptor = GetDescriptor("Echolan");
  descriptor.connect_port(host->GetHandle(), 8, host->outRight.data());
  descriptor.connect_port(host->GetHandle(), ~0u, host->outRight.data());
  host->Run(64);
}

TEST_F(Lv2Effects, BlocksMayBeLargerThanWasSaidAndOfAnySize) {
  const auto whole = Make("Echolan", {.mostFrames = 8192}), parts = Make("Echolan", {.mostFrames = 64});
  const auto untold = Make("Echolan", {.mostFrames = 0});
  for (Lv2Host* const host : {whole.get(), parts.get(), untold.get()}) {
    Fill(host->inLeft, 0.1f);
    host->Control("delay") = 3;
    host->Run(8000);
  }
  EXPECT_EQ(whole->outLeft, parts->outLeft);
  EXPECT_EQ(whole->outLeft, untold->outLeft);
}

TEST_F(Lv2Effects, EveryPluginRunsAtAnyRate) {
  for (const bridge::PluginType& type : builtin::GetPlugins())
    for (const double rate : {22050.0, 44100.0, 192000.0}) {
      const auto host = Make(type.name, {.rate = rate});
      Fill(host->inLeft, 0.1f);
      for (const uint32_t frames : {1u, 0u, 63u, 8192u, 7u}) host->Run(frames);
      for (const float sample : host->outLeft) EXPECT_TRUE(std::isfinite(sample));
    }
}

TEST_F(Lv2Effects, TheLatencyPortSaysWhatThePluginDoes) {
  const auto host = Make("Slidebench");
  host->Control("latency") = -1;
  host->Run(64);
  NoClient client;
  bridge::DawPlugin plugin(GetType("Slidebench"), client);
  plugin.Activate(2, 48000, 64);
  EXPECT_GT(plugin.GetLatency(), 0);
  EXPECT_EQ(host->Control("latency"), static_cast<float>(plugin.GetLatency()));
}

TEST_F(Lv2Effects, BlocksWithoutChangesDoNotAllocate) {
  for (const bridge::PluginType& type : builtin::GetPlugins()) {
    if (type.kind != bridge::PluginKind::kEffect) continue;
    EXPECT_EQ(Watch(type, 1).first, 0) << type.name;
  }
}

// Most effects take a lock of their own, or rebuild a curve, when a row changes.
TEST_F(Lv2Effects, AreSaidToBeHardRealTimeWhereBlocksWithChangesNeitherAllocateNorWait) {
  for (const bridge::PluginType& type : builtin::GetPlugins()) {
    if (type.kind != bridge::PluginKind::kEffect) continue;
    EXPECT_EQ(lv2::IsHardRealTime(type), Watch(type, 0.99f) == std::pair(int64_t{0}, int64_t{0}))
        << type.name;
  }
}

TEST_F(Lv2Effects, RowsThatMakeMemoryAreWorkForTheWorker) {
  for (const Work work : {Work::kLater, Work::kNone, Work::kAtOnce}) {
    const auto host = Make("Lumascope", {.work = work});
    host->Run(64);
    host->DoWork();
    host->Control("fftsize") = 14;
    host->Run(64);
    EXPECT_EQ(host->DoWork(), work == Work::kLater ? 1 : 0);
    EXPECT_EQ(GetAttribute(*host, "parameterfftsize"), "14");
  }
}

TEST_F(Lv2Effects, MayBeActivatedAgain) {
  const auto host = Make("Echolan");
  host->Control("delay") = 2;
  host->inLeft[0] = 1;
  host->Run(64);
  GetDescriptor("Echolan").deactivate(host->GetHandle());
  host->Activate();
  host->inLeft[0] = 0;
  host->Run(512);
  EXPECT_EQ(Head(host->outLeft, 512), std::vector<float>(512));
}

}  // namespace
