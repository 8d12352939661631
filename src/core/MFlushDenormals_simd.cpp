#include "core/MFlushDenormals.h"

#if defined(__SSE2__)
#include <xmmintrin.h>

MFlushDenormals::MFlushDenormals() noexcept : before_(_mm_getcsr()) {
  constexpr unsigned kFlushToZero = 0x8000;
  constexpr unsigned kDenormalsAreZero = 0x0040;
  _mm_setcsr(static_cast<unsigned>(before_) | kFlushToZero | kDenormalsAreZero);
}

MFlushDenormals::~MFlushDenormals() {
  _mm_setcsr(static_cast<unsigned>(before_));
}

#elif defined(__aarch64__)

MFlushDenormals::MFlushDenormals() noexcept {
  constexpr uint64_t kFlushToZero = uint64_t{1} << 24;
  asm volatile("mrs %0, fpcr" : "=r"(before_));
  asm volatile("msr fpcr, %0" : : "r"(before_ | kFlushToZero));
}

MFlushDenormals::~MFlushDenormals() {
  asm volatile("msr fpcr, %0" : : "r"(before_));
}

#else

MFlushDenormals::MFlushDenormals() noexcept : before_(0) {}

MFlushDenormals::~MFlushDenormals() = default;

#endif
