#pragma once
#include "core/MList.h"

// A fixed table of at most N named integers that a class carries as a second base. Names are compared without
// regard to case. One name too many raises "Index out of range."
template <int32_t N>
class MFlagManager {
 public:
  void SetFlag(const MString& name, int32_t value) {
    for (Flag& flag : flags_) {
      if (flag.name.Compare(name) == 0) {
        flag.value = value;
        return;
      }
    }
    flags_.Add({name, value});
  }

  int32_t GetFlag(const MString& name, int32_t defaultValue) const noexcept {
    for (const Flag& flag : flags_)
      if (flag.name.Compare(name) == 0) return flag.value;
    return defaultValue;
  }

 private:
  struct Flag {
    MString name;
    int32_t value;
  };

  MStaticList<Flag, N> flags_;
};
