#pragma once
#include <exception>

#include "core/MException.h"
#include "hosts/bridge/Parameters.h"
#include "hosts/clap/Instance.h"

namespace clap {

// Leads a C function to its instance: `call` gets it and returns what the function does. No exception leaves;
// its text goes to the host's log and `otherwise` is the result, as without an instance.
template <typename Result, typename Function>
Result Call(const clap_plugin_t* plugin, Result otherwise, Function call) noexcept {
  if (!plugin || !plugin->plugin_data) return otherwise;
  auto& instance = *static_cast<Instance*>(plugin->plugin_data);
  try {
    return call(instance);
  } catch (const MException& raised) {
    instance.GetHost().Log(bridge::ToUtf8(raised.message).c_str());
  } catch (const std::exception& raised) {
    instance.GetHost().Log(raised.what());
  } catch (...) {
    instance.GetHost().Log("An unknown failure.");
  }
  return otherwise;
}

// The same on the main thread, which a debug build checks.
template <typename Result, typename Function>
Result CallOnMain(const clap_plugin_t* plugin, Result otherwise, Function call) noexcept {
  return Call(plugin, otherwise, [&](Instance& instance) {
    instance.GetHost().ExpectMain();
    return call(instance);
  });
}

}  // namespace clap
