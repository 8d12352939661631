#pragma once
#include "core/MMemory.h"

// Root of the class tree. Its memory comes from the allocator table, so an object may be destroyed in another
// library than the one that made it. The destructor may throw: the compressing streams report an unfinished
// output there.
class MObject {
 public:
  M_LIBRARY_MEMORY

  MObject() = default;
  MObject(const MObject&) = default;
  MObject& operator=(const MObject&) = default;
  virtual ~MObject() noexcept(false);
};
