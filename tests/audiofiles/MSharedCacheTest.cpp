#include "audiofiles/MSharedCache.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "tests/common/CountingFunctions.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/Texts.h"

namespace {

class Item : public MObject {
 public:
  explicit Item(const MString& source) : path(source) { ++made; }
  ~Item() override { ++destroyed; }

  MString path;
  static inline std::atomic<int> made, destroyed;
};

MObject* Load(const MString& path, double) {
  return new Item(path);
}

class MSharedCacheTest : public testing::Test {
 protected:
  MSharedCacheTest() { Item::made = Item::destroyed = 0; }
};

TEST_F(MSharedCacheTest, OnePathIsLoadedOnceAndDestroyedWithItsLastUse) {
  MSharedCache cache;
  MObject* const item = cache.Acquire("/a/kick.wav", Load);
  EXPECT_EQ(cache.Acquire("/a/kick.wav", Load), item);
  cache.Share(item);
  EXPECT_EQ(Item::made, 1);
  cache.Release(item);
  cache.Release(item);
  EXPECT_EQ(Item::destroyed, 0);
  EXPECT_EQ(cache.GetCount(), 1);
  cache.Release(item);
  EXPECT_EQ(Item::destroyed, 1);
  EXPECT_EQ(cache.GetCount(), 0);
  EXPECT_EQ(static_cast<Item*>(cache.Acquire("/b.wav", Load))->path, "/b.wav");
}

TEST_F(MSharedCacheTest, WhatIsNotInUseCannotBeReleasedOrShared) {
  MSharedCache cache;
  Item stranger("");
  EXPECT_RAISES(cache.Release(&stranger), "Invalid sample to release.", 0);
  EXPECT_RAISES(cache.Release(nullptr), "Invalid sample to release.", 0);
  EXPECT_RAISES(cache.Share(&stranger), "Invalid sample to release.", 0);
}

TEST_F(MSharedCacheTest, CaseDoesNotMatterUnlessItIsAnotherFile) {
  const TemporaryFolder folder;
  const auto path = [&folder](const char* name) { return MString::FromNarrow(folder.Path(name).c_str()); };
  folder.WriteFile("kick.wav", "1");
  MSharedCache cache;
  MObject* const item = cache.Acquire(path("kick.wav"), Load);
  EXPECT_EQ(cache.Acquire(path("Kick.wav"), Load), item) << "there is no file of that name";
  folder.WriteFile("Kick.wav", "2");
  EXPECT_NE(cache.Acquire(path("Kick.wav"), Load), item);
  std::filesystem::create_hard_link(folder.Path("kick.wav"), folder.Path("KICK.wav"));
  EXPECT_EQ(cache.Acquire(path("KICK.wav"), Load), item);
}

TEST_F(MSharedCacheTest, TheSameLettersCountBeforeOthersWhenAFileIsGone) {
  const TemporaryFolder folder;
  const auto path = [&folder](const char* name) { return MString::FromNarrow(folder.Path(name).c_str()); };
  for (const char* const name : {"kick.wav", "Kick.wav"}) folder.WriteFile(name, name);
  MSharedCache cache;
  MObject* const lower = cache.Acquire(path("kick.wav"), Load);
  MObject* const upper = cache.Acquire(path("Kick.wav"), Load);
  std::filesystem::remove(folder.Path("kick.wav"));
  EXPECT_EQ(cache.Acquire(path("Kick.wav"), Load), upper);
  EXPECT_EQ(cache.Acquire(path("kick.wav"), Load), lower);
}

TEST_F(MSharedCacheTest, FailureToLoadLeavesNothing) {
  MSharedCache cache;
  EXPECT_RAISES(
      cache.Acquire("/x.wav", [](const MString&, double) -> MObject* { throw MException("broken", 256); }),
      "broken", 256);
  EXPECT_EQ(cache.GetCount(), 0);
  EXPECT_NE(cache.Acquire("/x.wav", Load), nullptr);
}

TEST_F(MSharedCacheTest, NothingIsLeftBehindWhateverAllocationFails) {
  for (int64_t n = 0; n < 8; ++n) {
    const CountingFunctions counting;
    {
      MSharedCache cache;
      CountingFunctions::FailAfter(n);
      try {
        cache.Acquire("/x.wav", Load);
      } catch (const MException& raised) {
        EXPECT_EQ(raised.message, "Out of memory.");
        EXPECT_EQ(cache.GetCount(), 0);
      }
    }
    EXPECT_EQ(CountingFunctions::GetBalance(), 0) << n;
  }
}

TEST_F(MSharedCacheTest, ThreadsShareOneThing) {
  MSharedCache cache;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&cache] {
      for (int k = 0; k < 500; ++k) {
        MObject* const item = cache.Acquire(k % 2 ? "/one.wav" : "/two.wav", Load);
        cache.Share(item);
        cache.Release(item);
        cache.Release(item);
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(cache.GetCount(), 0);
  EXPECT_EQ(Item::made, Item::destroyed);
}

}  // namespace
