#include "instruments/generators/MAudioGeneratorObject.h"

#include <algorithm>

MAudioGeneratorObject::MAudioGeneratorObject(const MString& display, const MString& item)
    : displayName(display), itemName(item) {
  SetFlag(kShown, 1);
  SetFlag(kMode, 1);
}

void MAudioGeneratorObject::SetFormat(int32_t channels, int32_t sampleRate) {
  channels_ = std::max(channels, 0);
  sampleRate_ = std::max(sampleRate, 1);
}

void MAudioGeneratorObject::AddChangeHandler(const Handler& handler) {
  changed_.Subscribe(handler.target, handler.callback, handler.extra);
}

void MAudioGeneratorObject::AddStructureHandler(const Handler& handler) {
  restructured_.Subscribe(handler.target, handler.callback, handler.extra);
}

void MAudioGeneratorObject::CopyFrom(const MAudioGeneratorObject& other) {
  isEnabled = other.isEnabled;
  volume = other.volume;
  for (const MString& name : {kShown, kMode}) SetFlag(name, other.GetFlag(name, 1));
}

bool MAudioGeneratorObject::ReadSwitch(const MXMLItem& item, const MString& name, bool fallback) {
  return item.HasAttribute(name) ? item.CachedAttribute().ToInteger() != 0 : fallback;
}
