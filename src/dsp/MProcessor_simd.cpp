#include "dsp/MProcessor.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>

namespace {

// The compiler's own test (__builtin_cpu_supports) would run code while the library is loaded.
unsigned GetEnabledStates() {
  unsigned low, high;
  asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
}

bool AskProcessor() noexcept {
  constexpr unsigned kFMA = 1u << 12, kOSXSAVE = 1u << 27, kAVX = 1u << 28;  // leaf 1, ecx
  constexpr unsigned kAVX2 = 1u << 5;                                        // leaf 7, ebx
  constexpr unsigned kBasic = kFMA | kOSXSAVE | kAVX;
  constexpr unsigned kVectorStates = 6;  // the system saves the halves of the wide registers
  unsigned a, b, c, d;
  if (!__get_cpuid(1, &a, &b, &c, &d) || (c & kBasic) != kBasic) return false;
  if ((GetEnabledStates() & kVectorStates) != kVectorStates) return false;
  return __get_cpuid_count(7, 0, &a, &b, &c, &d) && (b & kAVX2) != 0;
}

}  // namespace

bool MHasAVX2() noexcept {
  static const bool has = AskProcessor();
  return has;
}

#else

bool MHasAVX2() noexcept {
  return false;
}

#endif
