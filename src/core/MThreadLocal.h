#pragma once
#include "core/MMemory.h"

// One word per thread, null until the thread sets it. The slot belongs to the object; what a thread leaves in
// it is not destroyed with the thread.
class MThreadLocal final {
 public:
  M_LIBRARY_MEMORY

  // Raises "Could not create thread local storage." when the system has no slot left.
  MThreadLocal();
  MThreadLocal(const MThreadLocal&) = delete;
  MThreadLocal& operator=(const MThreadLocal&) = delete;
  ~MThreadLocal();

  // The value of the calling thread.
  void* Get() const noexcept;
  void Set(void* value);

 private:
  MUWord slot_;
};
