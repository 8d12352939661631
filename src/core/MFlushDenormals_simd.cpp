#include "core/MFlushDenormals.h"

// Writing the register waits for all arithmetic before it, so it is left alone where nothing changes: hosts
// often flush already, and these nest.

#if defined(__SSE2__)
#include <xmmintrin.h>

namespace {

constexpr unsigned kFlush = 0x8000 | 0x0040;  // to zero, and denormals are zeros

}  // namespace

MFlushDenormals::MFlushDenormals() noexcept : before_(_mm_getcsr()) {
  if ((before_ & kFlush) != kFlush) _mm_setcsr(static_cast<unsigned>(before_) | kFlush);
}

MFlushDenormals::~MFlushDenormals() {
  if ((before_ & kFlush) != kFlush) _mm_setcsr(static_cast<unsigned>(before_));
}

#elif defined(__aarch64__)

namespace {

constexpr uint64_t kFlush = uint64_t{1} << 24;

}  // namespace

MFlushDenormals::MFlushDenormals() noexcept {
  asm volatile("mrs %0, fpcr" : "=r"(before_));
  if ((before_ & kFlush) == 0) asm volatile("msr fpcr, %0" : : "r"(before_ | kFlush));
}

MFlushDenormals::~MFlushDenormals() {
  if ((before_ & kFlush) == 0) asm volatile("msr fpcr, %0" : : "r"(before_));
}

#else

MFlushDenormals::MFlushDenormals() noexcept : before_(0) {}

MFlushDenormals::~MFlushDenormals() = default;

#endif
