#include "core/MReadWriteLock.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/common/CountingFunctions.h"
#include "tests/common/Texts.h"
#include "tests/core/ThreadDoubles.h"

namespace {

constexpr uint32_t kRead = MReadWriteLock::kRead;
constexpr uint32_t kWrite = MReadWriteLock::kWrite;

bool OtherGets(MReadWriteLock& lock, uint32_t mode) {
  bool got = false;
  OnAnotherThread([&] {
    got = lock.Acquire(mode, 0) == 0;
    if (got) lock.Release(mode);
  });
  return got;
}

// Another thread that holds the lock for reading until it is told otherwise.
class Reader {
 public:
  explicit Reader(MReadWriteLock& lock)
      : thread_([&] {
          const MEmulatedLocker locker(lock, kRead);
          entered_.Release();
          leave_.Acquire(kWaitForever);
        }) {
    entered_.Acquire(kWaitForever);
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() { Leave(); }
  void Leave() {
    leave_.Release();
    if (thread_.joinable()) thread_.join();
  }

 private:
  MSemaphore entered_{true}, leave_{true};
  std::thread thread_;
};

TEST(MReadWriteLock, ManyReadersOrOneWriter) {
  MReadWriteLock lock;
  {
    Reader first(lock), second(lock);
    EXPECT_TRUE(OtherGets(lock, kRead));
    EXPECT_FALSE(OtherGets(lock, kWrite));
    first.Leave();
    EXPECT_FALSE(OtherGets(lock, kWrite));
  }
  EXPECT_TRUE(OtherGets(lock, kWrite));
  const MEmulatedLocker writer(lock, kWrite);
  EXPECT_FALSE(OtherGets(lock, kRead));
  EXPECT_FALSE(OtherGets(lock, kWrite));
}

TEST(MReadWriteLock, HolderTakesItAgainWithoutWaiting) {
  MReadWriteLock lock;
  {
    const Reader other(lock);
    const MEmulatedLocker outer(lock, kRead, 0);
    const MEmulatedLocker inner(lock, kRead, 0);
    EXPECT_EQ(lock.GetTakes(kRead), 2);
  }
  const MEmulatedLocker outer(lock, kWrite, 0);
  const MEmulatedLocker write(lock, kWrite, 0);
  const MEmulatedLocker read(lock, kRead, 0);
  EXPECT_EQ(lock.GetTakes(kWrite), 2);
  EXPECT_EQ(lock.GetTakes(kRead), 1);
  OnAnotherThread([&] { EXPECT_EQ(lock.GetTakes(kWrite), 0); });
}

TEST(MReadWriteLock, OthersWaitUntilTheLastTakeIsReleased) {
  MReadWriteLock lock;
  for (int i = 0; i < 3; ++i) ASSERT_EQ(lock.Acquire(kWrite, 0), 0);
  for (int i = 0; i < 3; ++i) {
    EXPECT_FALSE(OtherGets(lock, kRead));
    lock.Release(kWrite);
  }
  EXPECT_TRUE(OtherGets(lock, kWrite));
}

TEST(MReadWriteLock, OnlyReaderBecomesTheWriterAndAReaderAgain) {
  MReadWriteLock lock;
  const MEmulatedLocker reader(lock, kRead);
  {
    const MEmulatedLocker writer(lock, kWrite, 0);
    EXPECT_FALSE(OtherGets(lock, kRead));
  }
  EXPECT_TRUE(OtherGets(lock, kRead));
  EXPECT_FALSE(OtherGets(lock, kWrite));
}

TEST(MReadWriteLock, WriterThatReadsMeanwhileStaysAReader) {
  MReadWriteLock lock;
  ASSERT_EQ(lock.Acquire(kWrite, 0), 0);
  ASSERT_EQ(lock.Acquire(kRead, 0), 0);
  lock.Release(kWrite);
  EXPECT_TRUE(OtherGets(lock, kRead));
  EXPECT_FALSE(OtherGets(lock, kWrite));
  lock.Release(kRead);
  EXPECT_TRUE(OtherGets(lock, kWrite));
}

TEST(MReadWriteLock, UpgradeWaitsForTheOtherReaders) {
  MReadWriteLock lock;
  Reader other(lock);
  const MEmulatedLocker reader(lock, kRead);
  EXPECT_NE(lock.Acquire(kWrite, 0), 0);
  EXPECT_NE(lock.Acquire(kWrite, 10), 0);
  EXPECT_EQ(lock.GetTakes(kRead), 1);
  std::thread leaving([&] {
    Sleep(10);
    other.Leave();
  });
  const MEmulatedLocker writer(lock, kWrite);
  EXPECT_FALSE(OtherGets(lock, kRead));
  leaving.join();
}

TEST(MReadWriteLock, SecondOfTwoUpgradersFails) {
  MReadWriteLock lock;
  const YieldCounter yields;
  MSemaphore writes(true);
  std::thread first;
  {
    const MEmulatedLocker reader(lock, kRead);
    first = std::thread([&] {
      const MEmulatedLocker otherReader(lock, kRead);
      const MEmulatedLocker writer(lock, kWrite);
      writes.Release();
    });
    WaitUntil([&] { return yields.Get() > 0; });  // the first has begun to wait
    EXPECT_RAISES(MEmulatedLocker(lock, kWrite), "Could not acquire emulated synchronization object.", 0);
    EXPECT_NE(lock.Acquire(kWrite, 60000), 0);
    EXPECT_NE(writes.Acquire(0), 0);
    EXPECT_EQ(lock.Acquire(kRead, 0), 0);  // still inside, and nested takes are free
    lock.Release(kRead);
  }
  EXPECT_EQ(writes.Acquire(kWaitForever), 0);
  first.join();
}

TEST(MReadWriteLock, UpgraderWhoGaveUpIsNotInTheWayOfTheNext) {
  MReadWriteLock lock;
  Reader other(lock);
  const MEmulatedLocker reader(lock, kRead);
  OnAnotherThread([&] {
    const MEmulatedLocker second(lock, kRead);
    EXPECT_NE(lock.Acquire(kWrite, 5), 0);
  });
  std::thread leaving([&] {
    Sleep(10);
    other.Leave();
  });
  EXPECT_EQ(lock.Acquire(kWrite, kWaitForever), 0);
  lock.Release(kWrite);
  leaving.join();
}

TEST(MReadWriteLock, ReleaseOfWhatIsNotHeldDoesNothing) {
  MReadWriteLock lock;
  lock.Release(kRead);
  const MEmulatedLocker reader(lock, kRead);
  lock.Release(kWrite);
  lock.Release(7);
  OnAnotherThread([&] { lock.Release(kRead); });
  EXPECT_EQ(lock.GetTakes(kRead), 1);
  EXPECT_FALSE(OtherGets(lock, kWrite));
}

TEST(MReadWriteLock, ModesAboveWriteAreRefused) {
  MReadWriteLock lock;
  EXPECT_NE(lock.Acquire(2, kWaitForever), 0);
  EXPECT_EQ(lock.GetTakes(2), 0);
  EXPECT_EQ(lock.Acquire(kWrite | MEmulatedLock::kNoYield, 0), 0);
  lock.Release(kWrite | MEmulatedLock::kNoYield);
  EXPECT_TRUE(OtherGets(lock, kWrite));
}

TEST(MReadWriteLock, FailureForWantOfMemoryLeavesItAsItWas) {
  const CountingFunctions table;
  {
    MReadWriteLock lock;
    CountingFunctions::FailAfter(0);
    EXPECT_RAISES(lock.Acquire(kWrite, kWaitForever), "Out of memory.", 0);
    EXPECT_TRUE(OtherGets(lock, kWrite));
  }
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST(MReadWriteLock, ReadersSeeWholeWrites) {
  MReadWriteLock lock;
  int first = 0, second = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&, t] {
      for (int i = 0; i < 500; ++i) {
        const MEmulatedLocker reader(lock, kRead | (i % 2 ? MEmulatedLock::kNoYield : 0));
        EXPECT_EQ(first, second);
        if ((i + t) % 3 != 0) continue;
        // Of several upgraders one gets through; the others give their read up and try again.
        if (lock.Acquire(kWrite, 1) != 0) continue;
        ++first;
        ++second;
        lock.Release(kWrite);
      }
    });
  threads.emplace_back([&] {
    for (int i = 0; i < 500; ++i) {
      const MEmulatedLocker writer(lock, kWrite);
      ++first;
      ++second;
    }
  });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(first, second);
  EXPECT_GE(first, 500);
}

}  // namespace
