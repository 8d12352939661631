#pragma once
#include "hosts/bridge/DawPlugin.h"

namespace lv2 {

// Of a plug-in that is only asked.
class NoClient final : public bridge::DawPlugin::Client {
  void OnValuesChanged() noexcept override {}
  void OnWorkWaiting() noexcept override {}
  void OnLatencyChanged() noexcept override {}
};

}  // namespace lv2
