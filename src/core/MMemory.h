#pragma once
// The allocator table. Every block of the library comes from it and goes back to it, so that a block made by
// the host can be released by the library and the reverse. Until a host hands in its own functions the table
// is the C heap; a host's functions must accept blocks of that heap, because the table may change after its
// first use.

#include <cstddef>
#include <limits>
#include <new>

#include "core/MTypes.h"

// Five function addresses, in this order, as a host hands them in.
struct MLibraryFunctions {
  // Returns a block of `size` bytes; raises "Out of memory." (or returns null, and the caller raises it).
  void*(M_CALL* allocate)(std::size_t size);
  // Releases a block; raises "NULL cannot be released." on null.
  void(M_CALL* release)(void* block);
  // Size 0 releases the block, if there is one, and returns null; a null block allocates; else resizes.
  void*(M_CALL* reallocate)(void* block, std::size_t size);
  void(M_CALL* reservedHook1)();  // stored, never called
  void(M_CALL* reservedHook2)();  // stored, never called
};

// Replaces the table; a null entry becomes the built-in one. Not for use while another thread allocates.
// [host]
void MSetLibraryFunctions(const MLibraryFunctions& functions) noexcept;

// The table in force, and the built-in one. [any]
const MLibraryFunctions& MGetLibraryFunctions() noexcept;
const MLibraryFunctions& MGetDefaultLibraryFunctions() noexcept;

// The table's first three entries. A null result for a size above 0 raises "Out of memory." [any, not audio]
[[nodiscard]] void* MAllocate(std::size_t size);
void MRelease(void* block);
[[nodiscard]] void* MReallocate(void* block, std::size_t size);

[[noreturn]] void MThrowOutOfMemory();

// Gives a class or plain record `new` and `delete` on the table. What would go past it or would not get its
// alignment does not compile: arrays (a container with MAllocator holds them) and types aligned to more than
// max_align_t.
#define M_LIBRARY_MEMORY                                                                              \
  static void* operator new(std::size_t size) {                                                       \
    return MAllocate(size);                                                                           \
  }                                                                                                   \
  [[gnu::error("the allocator table has no blocks of such an alignment")]] static void* operator new( \
      std::size_t size, std::align_val_t);                                                            \
  static void* operator new[](std::size_t) = delete;                                                  \
  static void* operator new(std::size_t, void* place) noexcept {                                      \
    return place;                                                                                     \
  }                                                                                                   \
  static void operator delete(void* block) noexcept {                                                 \
    MRelease(block);                                                                                  \
  }

// Puts a standard container on the table. A failure is an MException, never std::bad_alloc.
template <typename T>
struct MAllocator {
  using value_type = T;

  MAllocator() noexcept = default;
  template <typename U>
  MAllocator(const MAllocator<U>&) noexcept {}

  T* allocate(std::size_t count) {
    static_assert(alignof(T) <= alignof(std::max_align_t));
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(T)) MThrowOutOfMemory();
    return static_cast<T*>(MAllocate(count * sizeof(T)));
  }
  void deallocate(T* block, std::size_t) noexcept { MRelease(block); }

  template <typename U>
  bool operator==(const MAllocator<U>&) const noexcept {
    return true;
  }
};
