#pragma once
#include "hosts/bridge/DawPlugin.h"

namespace bridge {

// Of a plug-in whose host wants to hear nothing.
class NoClient final : public DawPlugin::Client {
  void OnValuesChanged() noexcept override {}
  void OnWorkWaiting() noexcept override {}
  void OnLatencyChanged() noexcept override {}
};

}  // namespace bridge
