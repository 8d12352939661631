// The library in a process with little memory, and the memory that it leaves behind.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "tests/common/Texts.h"
#include "tests/exports/LoadedLibrary.h"

namespace {

constexpr char kEcholan[] = "EcholanAudioEffectPluginInterface";

struct Pages {
  int64_t total = 0, resident = 0;
};
Pages CountPages() {
  Pages pages;
  std::ifstream("/proc/self/statm") >> pages.total >> pages.resident;
  return pages;
}

void LimitFreeMemory(rlim_t bytes) {
  const rlim_t limit = static_cast<rlim_t>(CountPages().total * sysconf(_SC_PAGESIZE)) + bytes;
  const rlimit limits = {limit, limit};
  if (setrlimit(RLIMIT_AS, &limits) != 0) _exit(100);
}

// In a child process: the exit code says how far it came.
[[noreturn]] void PrepareWithLittleMemory() {
  const LoadedLibrary library;
  LoadedPlugin echolan(library, kEcholan);
  echolan.Call(MService::kPrepare, 1, 40);
  LimitFreeMemory(16 << 20);
  try {
    echolan.Call(MService::kPrepare, 8, INT32_MAX);  // eight lines of 32 MB
    _exit(1);
  } catch (const MException& raised) {
    if (!(raised.message == "Out of memory.") || raised.code != MErrorCode::kOrdinary) _exit(2);
  } catch (...) {
    _exit(3);
  }
  // The plug-in is as usable as before.
  std::vector<float> block = {0.5f, 0};
  float* channels[8];
  std::fill_n(channels, 8, block.data());
  echolan.Call(MService::kProcess, MAsWord(channels), MAsWord(channels), 2);
  if (block[0] != 0.5f) _exit(4);
  echolan.Call(MService::kPrepare, 1, 40);
  echolan.Process(block);
  _exit(echolan.Call(MService::kIsSilent) == 0 ? 0 : 5);
}

TEST(LibraryMemory, PrepareThatCannotHaveItsMemoryRaisesAnExceptionThatTheHostCatchesByType) {
  EXPECT_EXIT(PrepareWithLittleMemory(), testing::ExitedWithCode(0), "");
}

TEST(LibraryMemory, LoadingRunningAndUnloadingAHundredTimesLeavesNothingBehind) {
  const auto use = [](int32_t times) {
    for (int32_t i = 0; i < times; ++i) {
      const LoadedLibrary library;
      LoadedPlugin echolan(library, kEcholan);
      echolan.Call(MService::kPrepare, 1, 44100);
      std::vector<float> block(1000, 0.5f);
      echolan.Process(block);
    }
  };
  use(20);  // the loader and the C library keep what they need once
  const Pages before = CountPages();
  use(100);
  const Pages after = CountPages();
  // Less than a page for each time.
  EXPECT_LT(after.resident - before.resident, 50);
  EXPECT_LT(after.total - before.total, 50);
}

}  // namespace
