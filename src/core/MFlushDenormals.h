#pragma once
#include "core/MTypes.h"

// While it lives, this thread's arithmetic takes denormal numbers as zero and gives zero for them, so that a
// decaying tail costs no more than a loud one. The mode before is restored. Needs no memory and no lock.
// [audio]
class MFlushDenormals {
 public:
  MFlushDenormals() noexcept;
  MFlushDenormals(const MFlushDenormals&) = delete;
  MFlushDenormals& operator=(const MFlushDenormals&) = delete;
  ~MFlushDenormals();

 private:
  uint64_t before_;
};
