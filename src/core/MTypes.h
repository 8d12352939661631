#pragma once
// Words of the interface, the character type, and access to values that two threads share.

#include <atomic>
#include <cstddef>
#include <cstdint>

// A word of the binary interface: wide enough for an address. Integers travel in it sign-extended.
using MWord = std::intptr_t;
using MUWord = std::uintptr_t;

// A UTF-16 code unit, the character of every text.
using MChar = char16_t;

// Calling convention of function addresses that cross the boundary between host and library.
#if defined(_WIN32) && !defined(_WIN64)
#define M_CALL __cdecl
#else
#define M_CALL
#endif

// For the few types that must be known under one identity on both sides of the boundary.
#if defined(_WIN32)
#define M_VISIBLE
#else
#define M_VISIBLE __attribute__((visibility("default")))
#endif

// Reads a value that another thread may write at the same time: whole, in no order with anything else. [any]
template <typename T>
inline T MLoadShared(const T& shared) noexcept {
  return std::atomic_ref<T>(const_cast<T&>(shared)).load(std::memory_order_relaxed);
}

// Writes a value that another thread may read at the same time: whole, in no order with anything else. [any]
template <typename T>
inline void MStoreShared(T& shared, T value) noexcept {
  std::atomic_ref<T>(shared).store(value, std::memory_order_relaxed);
}
