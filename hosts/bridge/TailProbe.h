#pragma once
#include "hosts/bridge/PluginTable.h"

class MXMLItem;

namespace bridge {

constexpr int64_t kEndlessTail = -1;

// How many samples an effect with this state goes on behind a loud second, by trial on an instance of its
// own: a multiple of a block, kEndlessTail if it still sounds after a minute. Takes some milliseconds. Raises
// MException. [host]
int64_t MeasureTail(const PluginType& type, MXMLItem& state, int32_t channels, int32_t sampleRate);

}  // namespace bridge
