#pragma once
#include "core/MStream.h"

// Base of the filters that pass their data on to a target stream, which they do not own.
class MDispatchStream : public MStream {
 public:
  explicit MDispatchStream(MStream* target) noexcept : target_(target) {}

 protected:
  MStream* target_;
};
