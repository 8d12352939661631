// Effects that hold the lock for a block and compile a drawn curve.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>

#include "core/MMemory.h"
#include "core/MXMLItem.h"
#include "tests/effects/NamedEffect.h"

namespace {

// An allocator table that runs something as often as a large block of memory is asked for.
class LargeBlocks {
 public:
  explicit LargeBlocks(std::function<void()> work) : before_(MGetLibraryFunctions()) {
    work_ = std::move(work);
    MSetLibraryFunctions({Allocate, Release, Reallocate, Hook, Hook});
  }
  LargeBlocks(const LargeBlocks&) = delete;
  LargeBlocks& operator=(const LargeBlocks&) = delete;
  ~LargeBlocks() {
    MSetLibraryFunctions(before_);
    work_ = nullptr;
  }

 private:
  static void* M_CALL Allocate(std::size_t size) {
    if (size >= 4096) work_();
    return std::malloc(size > 0 ? size : 1);
  }
  static void M_CALL Release(void* block) { std::free(block); }
  static void* M_CALL Reallocate(void* block, std::size_t size) {
    if (size > 0) return std::realloc(block, size);
    std::free(block);
    return nullptr;
  }
  static void M_CALL Hook() {}

  static inline std::function<void()> work_;
  MLibraryFunctions before_;
};

class CurveUpdate : public testing::TestWithParam<const char*> {};

TEST_P(CurveUpdate, NoBlockWaitsForACurveThatIsBeingCompiled) {
  NamedEffect effect(GetParam());
  effect.Prepare(1, 48000);
  AudioBlock in = AudioBlock::Constant(1, 64, 0.25), out = AudioBlock::Constant(1, 64, NAN);
  float **const from = in.From(), **const to = out.From();
  MXMLItem state("state");
  effect.Call(MService::kSaveState, MAsWord(&state));
  std::vector<std::future<void>> blocks;
  bool isWaiting = false;
  {
    const LargeBlocks table([&] {
      blocks.push_back(std::async(std::launch::async, [&] { effect.Process(from, to, 64); }));
      isWaiting |= blocks.back().wait_for(std::chrono::seconds(20)) != std::future_status::ready;
    });
    effect.Call(MService::kLoadState, MAsWord(&state));
  }
  EXPECT_FALSE(blocks.empty()) << "nothing was compiled";
  EXPECT_FALSE(isWaiting);
  blocks.clear();
  EXPECT_TRUE(out.IsFinite());
}

// A value that changes compiles nothing; a state does.
INSTANTIATE_TEST_SUITE_P(Effects, CurveUpdate, testing::Values("Bendform", "Squeezel"),
                         [](const auto& name) { return std::string(name.param); });

}  // namespace
