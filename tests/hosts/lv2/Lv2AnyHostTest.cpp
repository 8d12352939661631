// All plug-ins in a host that does what it may, in any order: sizes of blocks, buffers, values, states,
// events.

#include <random>
#include <thread>

#include "tests/hosts/lv2/Lv2Test.h"

namespace {

class Lv2AnyHost : public Lv2Test {
 protected:
  static constexpr int kBlocks = 120;

  Lv2AnyHost() {
    content_.WriteSample("Samples/A.wav", {std::vector<float>(4800, 0.5f), std::vector<float>(4800, 0.2f)});
    content_.WriteSample("elsewhere/B.wav", {std::vector<float>(48, -0.5f)});
  }

  int Pick(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }

  void ConnectAudio(Lv2Host& host, const bridge::PluginType& type) {
    const std::array<void*, 5> buffers = {host.inLeft.data(), host.inRight.data(), host.outLeft.data(),
                                          host.outRight.data(), nullptr};
    const bool isEffect = type.kind == bridge::PluginKind::kEffect;
    for (const char* const symbol : {"in_left", "in_right", "out_left", "out_right"})
      if (isEffect || symbol[0] == 'o') host.Connect(symbol, buffers[static_cast<std::size_t>(Pick(5))]);
  }

  void SetControls(Lv2Host& host) {
    static constexpr float kOdd[] = {NAN, INFINITY, -INFINITY, -1e30f, 1e30f, 1e-40f, -0.0f, 0.5f, 77};
    for (const lv2::Port& port : host.GetPorts())
      if (host.HasControl(port.symbol) && Pick(3) == 0) {
        const float part = static_cast<float>(Pick(1000)) / 1000;
        host.Control(port.symbol) = Pick(4) == 0 ? kOdd[Pick(9)] : part * (Pick(2) == 0 ? 1.0f : 1000.0f);
      }
  }

  void AddEvents(Lv2Host& host, const bridge::PluginType& type) {
    for (int i = Pick(6); i > 0; --i) {
      std::vector<uint8_t> bytes(static_cast<std::size_t>(Pick(6)));
      for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random_());
      if (!bytes.empty() && Pick(2) == 0) bytes[0] = 0x90;
      host.AddMidi(Pick(3000) - 100, bytes);
    }
    host.AddMidi(5, {0xF0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0xF7});
    if (type.name == "Playbox" && Pick(4) == 0)
      host.AddSet("https://sonvelle.example/plugins/Playbox#sample",
                  content_.Path(Pick(2) == 0   ? "Samples/A.wav"
                                : Pick(2) == 0 ? "elsewhere/B.wav"
                                               : "no.wav"));
  }

  // What else a host may do between two blocks.
  void DoSomething(Lv2Host& host, const bridge::PluginType& type, SavedState& saved) {
    const LV2_Descriptor& descriptor = GetDescriptor(type.name);
    switch (Pick(8)) {
      case 0:
        host.Save(saved);
        break;
      case 1:
        host.Restore(saved);
        break;
      case 2:
        descriptor.deactivate(host.GetHandle());
        if (Pick(2) == 0) host.Restore(saved);
        host.Activate();
        break;
      case 3:
        host.DoWork();
        break;
      default:
        break;
    }
  }

  std::mt19937 random_{1};
};

TEST_F(Lv2AnyHost, GetsFiniteSoundWhateverItDoes) {
  for (const bridge::PluginType& type : builtin::GetPlugins()) {
    SCOPED_TRACE(type.name);
    const Work works[] = {Work::kNone, Work::kLater, Work::kAtOnce, Work::kRefused};
    const auto host = Make(type.name, {.mostFrames = Pick(3) * 64, .work = works[Pick(4)]});
    SavedState saved;
    for (int i = 0; i < kBlocks; ++i) {
      if (Pick(10) == 0) ConnectAudio(*host, type);
      Fill(host->inLeft, 0.1f);
      Fill(host->inRight, 0.23f);
      SetControls(*host);
      if (type.kind == bridge::PluginKind::kInstrument) AddEvents(*host, type);
      const auto frames = static_cast<uint32_t>(Pick(4) == 0 ? Pick(4000) : Pick(300));
      host->Run(frames);
      for (uint32_t k = 0; k < frames; ++k)
        ASSERT_TRUE(std::isfinite(host->outLeft[k]) && std::isfinite(host->outRight[k])) << i << " " << k;
      DoSomething(*host, type, saved);
    }
  }
}

TEST_F(Lv2AnyHost, MaySaveRestoreAndWorkOnOtherThreadsWhileItRuns) {
  for (const bridge::PluginType& type : builtin::GetPlugins()) {
    SCOPED_TRACE(type.name);
    const auto host = Make(type.name, {.work = Work::kAtOnce});
    host->Activate();
    std::atomic<bool> isOver = false;
    std::thread other([&] {
      SavedState saved;
      host->Save(saved);
      while (!isOver) {
        host->Restore(saved);
        host->Save(saved);
      }
    });
    for (int i = 0; i < kBlocks; ++i) {
      SetControls(*host);
      if (type.kind == bridge::PluginKind::kInstrument) AddEvents(*host, type);
      host->Run(static_cast<uint32_t>(Pick(300)));
    }
    isOver = true;
    other.join();
  }
}

}  // namespace
