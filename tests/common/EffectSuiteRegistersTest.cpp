#include "dsp/MProcessor.h"
#include "tests/common/EffectSuite.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>

// Code that leaves something in the upper halves of the wide registers makes instructions of the narrow kind
// wait for one another, those of the host and of other plug-ins as well: a compressor behind it took four
// times as long.

namespace {

// Whether the processor tells which registers are in use, and the compiler clears them, which it does where
// it optimizes.
bool CanTell() {
#if !defined(NDEBUG)
  return false;
#endif
  unsigned a, b, c, d;
  return MHasAVX2() && __get_cpuid_count(13, 1, &a, &b, &c, &d) && (a & 4) != 0;
}

bool AreUpperHalvesInUse() {
  unsigned low, high;
  asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(1));
  return (low & 4) != 0;
}

void UseUpperHalves() {
  asm volatile("vpcmpeqd %%ymm7, %%ymm7, %%ymm7" ::: "xmm7");
}

void ClearUpperHalves() {
  asm volatile("vzeroupper" :::);
}

TEST(UpperHalvesOfRegisters, AreSeenWhenTheyAreInUse) {
  if (!CanTell()) GTEST_SKIP() << "this processor does not tell, or nothing is cleared";
  UseUpperHalves();
  EXPECT_TRUE(AreUpperHalvesInUse());
  ClearUpperHalves();
  EXPECT_FALSE(AreUpperHalvesInUse());
}

TEST_P(EffectSuite, LeavesNothingInTheUpperHalvesOfTheRegisters) {
  if (!CanTell()) GTEST_SKIP() << "this processor does not tell, or nothing is cleared";
  TestRandom random;
  for (int32_t setting = 0; setting < kSettings; ++setting) {
    EffectUnderTest effect(GetParam());
    PrepareWithSetting(effect, setting, random.GetSeed());
    AudioBlock block = AudioBlock::Noise(2, 1000, random);
    float** const addresses = block.From();
    for (const int32_t samples : {1, 3, 64, 255, 256, 999}) {
      ClearUpperHalves();
      effect.Process(addresses, addresses, samples);
      EXPECT_FALSE(AreUpperHalvesInUse()) << "setting " << setting << ", " << samples << " samples";
      effect.Skip(samples);
      EXPECT_FALSE(AreUpperHalvesInUse()) << "skipped";
    }
  }
}

}  // namespace

#endif
