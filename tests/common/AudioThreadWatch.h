#pragma once
// Counts what an audio thread must not do: allocations, locks and waits of the thread that made the watch,
// while it lives. The linker leads the calls of all static libraries of the program here (CMakeLists.txt), so
// that the sanitizers' own functions still do the work.

#include <cstdint>

class AudioThreadWatch {
 public:
  AudioThreadWatch();
  AudioThreadWatch(const AudioThreadWatch&) = delete;
  AudioThreadWatch& operator=(const AudioThreadWatch&) = delete;
  ~AudioThreadWatch();

  // Calls that allocate, resize or release memory.
  int64_t GetAllocations() const;
  // Calls that take a lock, wait, or open a file.
  int64_t GetWaits() const;
};
