#include <gtest/gtest.h>

#include <barrier>
#include <thread>
#include <vector>

#include "core/MMemoryStream.h"
#include "tests/core/StreamDoubles.h"

namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 500;

// Runs `use(thread)` on all threads at once.
template <typename Use>
void RunOnThreads(Use use) {
  std::barrier start(kThreads);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread)
    threads.emplace_back([&, thread] {
      start.arrive_and_wait();
      use(thread);
    });
  for (std::thread& thread : threads) thread.join();
}

TEST(MMemoryStreamThreads, CopiesTakenAndWrittenOnManyThreadsKeepApart) {
  MMemoryStream original;
  Put(original, Pattern(1000));
  int wrong[kThreads] = {};
  RunOnThreads([&](int thread) {
    const std::string mine(8, static_cast<char>('A' + thread));
    for (int round = 0; round < kRounds; ++round) {
      MMemoryStream copy(original);
      copy.Seek(thread * 100, MSeekOrigin::kStart);
      Put(copy, mine);
      std::string expected = Pattern(1000);
      expected.replace(static_cast<std::size_t>(thread) * 100, mine.size(), mine);
      wrong[thread] += All(copy) != expected;
    }
  });
  for (const int count : wrong) EXPECT_EQ(count, 0);
  EXPECT_EQ(All(original), Pattern(1000));
}

TEST(MMemoryStreamThreads, HoldersThatAllWriteAtOnceEachGetBytesOfTheirOwn) {
  for (int round = 0; round < kRounds / 10; ++round) {
    std::vector<MMemoryStream> copies;
    {
      MMemoryStream first;
      Put(first, Pattern(1000));
      copies.assign(kThreads, first);
    }
    RunOnThreads([&](int thread) {
      MMemoryStream& copy = copies[static_cast<std::size_t>(thread)];
      copy.Seek(0, MSeekOrigin::kStart);
      Put(copy, std::string(1, static_cast<char>('A' + thread)));
    });
    for (int thread = 0; thread < kThreads; ++thread)
      EXPECT_EQ(All(copies[static_cast<std::size_t>(thread)]),
                static_cast<char>('A' + thread) + Pattern(1000).substr(1));
  }
}

}  // namespace
