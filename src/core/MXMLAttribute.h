#pragma once
#include "core/MList.h"

// One attribute of an element.
struct MAttribute {
  MString name;
  MString value;
};
template <>
inline constexpr bool MIsRelocatable<MAttribute> = true;
