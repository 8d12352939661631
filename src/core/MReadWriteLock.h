#pragma once
// Many readers or one writer, counted per thread. A thread that holds the lock takes it again for reading,
// and a writer for writing too, without waiting. The only reader becomes the writer at once; with other
// readers it waits for them, and while it does, a second reader that wants to write is refused, since neither
// could ever get it. A writer that has read before, or reads meanwhile, is a reader again when its last write
// ends. Readers are not held back for a waiting writer, because one that is already inside may wait for them.

#include "core/MEmulatedLock.h"
#include "core/MList.h"

class MReadWriteLock final : public MEmulatedLock {
 public:
  M_LIBRARY_MEMORY

  static constexpr uint32_t kRead = 0;
  static constexpr uint32_t kWrite = 1;

  // How often the calling thread holds a mode.
  int32_t GetTakes(uint32_t mode) const;

 private:
  struct Holder {
    std::thread::id thread;
    int32_t takes[2];  // by mode
  };

  Outcome TryAcquire(uint32_t mode) override;
  // Does nothing when the thread does not hold the mode.
  void ReleaseMode(uint32_t mode) override;

  // Index of the thread's entry, or -1.
  int32_t Find(std::thread::id thread) const noexcept;
  bool IsWritten() const noexcept;
  bool IsUpgrading(std::thread::id exceptFor) const noexcept;

  MList<Holder> holders_;
};
