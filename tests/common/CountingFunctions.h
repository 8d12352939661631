#pragma once
// An allocator table that counts, for tests of who allocates what. One at a time; it is in force for its
// lifetime.

#include <atomic>
#include <cstdlib>

#include "core/MMemory.h"

class CountingFunctions {
 public:
  CountingFunctions() : before_(MGetLibraryFunctions()) {
    for (Count* count : {&counts.allocated, &counts.released, &counts.reallocated, &counts.hooks,
                         &counts.balance, &counts.largest})
      *count = 0;
    counts.failAfter = -1;
    MSetLibraryFunctions({Allocate, Release, Reallocate, Hook, Hook});
  }
  CountingFunctions(const CountingFunctions&) = delete;
  CountingFunctions& operator=(const CountingFunctions&) = delete;
  ~CountingFunctions() { MSetLibraryFunctions(before_); }

  // Calls of the table since it was put in force.
  static int64_t GetCalls() { return counts.allocated + counts.released + counts.reallocated; }
  static int64_t GetAllocated() { return counts.allocated; }
  static int64_t GetReallocated() { return counts.reallocated; }
  static int64_t GetReleased() { return counts.released; }
  static int64_t GetHookCalls() { return counts.hooks; }
  // Blocks that were made and not yet released.
  static int64_t GetBalance() { return counts.balance; }
  // The size of the largest block that was asked for, in bytes.
  static int64_t GetLargest() { return counts.largest; }
  // From now on the n-th request for memory fails once, 0 being the next; -1 for never.
  static void FailAfter(int64_t requests) { counts.failAfter = requests; }

 private:
  using Count = std::atomic<int64_t>;
  struct Counts {
    Count allocated, released, reallocated, hooks, balance, largest, failAfter;
  };
  static inline Counts counts;

  static void Note(std::size_t size) {
    int64_t before = counts.largest;
    while (before < static_cast<int64_t>(size) &&
           !counts.largest.compare_exchange_weak(before, static_cast<int64_t>(size))) {
    }
  }
  static bool Fails() { return counts.failAfter >= 0 && counts.failAfter-- == 0; }
  static void* M_CALL Allocate(std::size_t size) {
    ++counts.allocated;
    Note(size);
    if (Fails()) return nullptr;
    ++counts.balance;
    return std::malloc(size > 0 ? size : 1);
  }
  static void M_CALL Release(void* block) {
    ++counts.released;
    --counts.balance;
    std::free(block);
  }
  static void* M_CALL Reallocate(void* block, std::size_t size) {
    ++counts.reallocated;
    if (size == 0) {
      if (block) --counts.balance;
      std::free(block);
      return nullptr;
    }
    Note(size);
    if (Fails()) return nullptr;
    if (!block) ++counts.balance;
    return std::realloc(block, size);
  }
  static void M_CALL Hook() { ++counts.hooks; }

  MLibraryFunctions before_;
};
