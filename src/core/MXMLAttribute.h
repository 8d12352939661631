#pragma once
#include "core/MList.h"

// One attribute of an element.
struct MAttribute {
  M_LIBRARY_MEMORY

  MString name;
  MString value;
};
template <>
inline constexpr bool MIsRelocatable<MAttribute> = true;
