#pragma once
// A plug-in of the library, or a fake one, in a DAW that notes what it is told.

#include <gtest/gtest.h>

#include <stdexcept>

#include "exports/PluginEntries.h"
#include "hosts/bridge/DawPlugin.h"
#include "tests/common/AudioBlock.h"

inline bridge::PluginType FindType(std::string_view name) {
  const bridge::PluginTable table = bridge::MakePluginTable([](const bridge::PluginType& type) {
    for (int32_t i = 0; i < kPluginEntryCount; ++i)
      if (kPluginEntries[i].name == type.name) return kPluginEntries[i].entryPoint;
    return static_cast<MPluginEntryPoint*>(nullptr);
  });
  const bridge::PluginType* const type = bridge::FindPlugin(table, name);
  if (!type) throw std::invalid_argument(std::string(name));
  return *type;
}

inline bridge::PluginType GetFakeType(bridge::PluginKind kind, MPluginEntryPoint* entryPoint) {
  return {"Fake", kind, "", "", entryPoint};
}

class NotingClient : public bridge::DawPlugin::Client {
 public:
  void OnValuesChanged() noexcept override { ++values; }
  void OnWorkWaiting() noexcept override { ++work; }
  void OnLatencyChanged() noexcept override { ++latencies; }

  std::atomic<int32_t> values = 0, work = 0, latencies = 0;
};

class DawPluginUnderTest : public NotingClient, public bridge::DawPlugin {
 public:
  static constexpr int32_t kRate = 48000;
  static constexpr int32_t kMostFrames = 1024;

  explicit DawPluginUnderTest(const bridge::PluginType& type) : DawPlugin(type, *this) {}
  explicit DawPluginUnderTest(std::string_view name) : DawPluginUnderTest(FindType(name)) {}

  int32_t Find(std::string_view key) const { return GetParameterList().Find(key); }
  void Start(int32_t channels = 2, int32_t rate = kRate) { Activate(channels, rate, kMostFrames); }

  // What comes out for the signal in blocks of this size.
  AudioBlock Answer(AudioBlock signal, int32_t size) {
    AudioBlock out = AudioBlock::Constant(signal.GetChannelCount(), signal.GetLength(), NAN);
    for (int32_t done = 0; done < signal.GetLength(); done += size) {
      Begin(signal.From(done), out.From(done), std::min(size, signal.GetLength() - done));
      End();
    }
    return out;
  }
  // The same as one block, with a value that changes at a frame.
  AudioBlock AnswerWithChange(AudioBlock signal, int32_t frame, int32_t place, double value) {
    AudioBlock out = AudioBlock::Constant(signal.GetChannelCount(), signal.GetLength(), NAN);
    Begin(signal.From(), out.From(), signal.GetLength());
    RunTo(frame);
    Change(place, value);
    End();
    return out;
  }
};
