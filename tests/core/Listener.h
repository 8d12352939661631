#pragma once
// A target that notes what it hears.

#include <functional>
#include <vector>

#include "core/MEvent.h"

using NotifyEvent = MEvent<MOnNotifyParams>;
using NotifyCallback = MCallback<MOnNotifyParams>;

class Listener : public MEventTarget {
 public:
  struct Call {
    MEventTarget* sender;
    MWord argument, extra;
    bool operator==(const Call&) const = default;
  };

  Listener() = default;
  explicit Listener(std::function<void(const MOnNotifyParams&)> handler) : onCall(std::move(handler)) {}

  static void Hear(MEventTarget* subscriber, MWord extra, const MOnNotifyParams& parameters) {
    Listener& self = *static_cast<Listener*>(subscriber);
    self.calls.push_back({parameters.sender, parameters.argument, extra});
    const auto handler = self.onCall;  // it may destroy this object
    if (handler) handler(parameters);
  }

  void SubscribeTo(NotifyEvent& event, MWord extra = 0) { event.Subscribe(this, Hear, extra); }
  void UnsubscribeFrom(NotifyEvent& event, MWord extra = 0) { event.Unsubscribe(this, Hear, extra); }

  // The arguments of the calls so far.
  std::vector<MWord> Heard() const {
    std::vector<MWord> arguments;
    for (const Call& call : calls) arguments.push_back(call.argument);
    return arguments;
  }

  std::function<void(const MOnNotifyParams&)> onCall;
  std::vector<Call> calls;
};
