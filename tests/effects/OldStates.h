#pragma once
// States of older versions, kept in tests/effects/states.

#include <string>

#include "core/MXMLItem.h"
#include "tests/common/EffectUnderTest.h"

inline void LoadOldState(EffectUnderTest& effect, const std::string& file) {
  MXMLItem item;
  item.LoadFile(MString::FromNarrow((std::string(SONVELLE_OLD_STATES) + "/" + file).c_str()));
  effect.Call(MService::kLoadState, MAsWord(&item));
  effect.Call(MService::kStateLoaded);
}
