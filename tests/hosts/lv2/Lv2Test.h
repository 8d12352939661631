#pragma once
// The plug-ins of this program, as LV2 gives them, with content of the test's own.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "hosts/bridge/NoClient.h"
#include "hosts/bridge/PluginState.h"
#include "hosts/builtin/BuiltInPlugins.h"
#include "tests/hosts/lv2/Lv2Host.h"
#include "tests/instruments/ContentFolder.h"

using bridge::NoClient;

extern "C" const LV2_Descriptor* lv2_descriptor(uint32_t index);

// Starts the library; its settings are not the user's.
struct StartedLibrary {
  StartedLibrary() {
    static const DataFolder data;
    builtin::GetPlugins();
    SonvelleConfiguration::Destroy();  // each test has its own
  }
};

class Lv2Test : public testing::Test {
 protected:
  static const bridge::PluginType& GetType(std::string_view name) {
    return *bridge::FindPlugin(builtin::GetPlugins(), name);
  }
  static const LV2_Descriptor& GetDescriptor(std::string_view name) {
    const LV2_Descriptor* descriptor = lv2_descriptor(0);
    for (uint32_t i = 0; descriptor && descriptor->URI != lv2::GetUri(GetType(name));)
      descriptor = lv2_descriptor(++i);
    return *descriptor;
  }
  static std::unique_ptr<Lv2Host> Make(std::string_view name, HostOptions options = {}) {
    NoClient client;
    const bridge::DawPlugin plugin(GetType(name), client);
    return std::make_unique<Lv2Host>(GetDescriptor(name), GetType(name), plugin.GetParameters(), options);
  }
  // The text of a host's state, and an attribute of it.
  static std::string GetText(Lv2Host& host) {
    SavedState state;
    EXPECT_EQ(host.Save(state), LV2_STATE_SUCCESS);
    return state.values[host.GetNumbers().Get(lv2::kStateUri)].bytes.c_str();
  }
  static std::string GetAttribute(Lv2Host& host, const char* name) {
    MXMLItem item("state");
    bridge::ReadStateText(GetText(host), item);
    return bridge::ToUtf8(item.GetAttribute(MString::Literal(name)));
  }
  static void Fill(std::vector<float>& samples, float rate) {
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = std::sin(rate * static_cast<float>(i));
  }

  const StartedLibrary started_;
  const ContentFolder content_;
};
