#include "tests/common/AudioThreadWatch.h"

#include <pthread.h>
#include <semaphore.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <new>

namespace {

thread_local bool watching = false;
thread_local int64_t allocations = 0;
thread_local int64_t waits = 0;

}  // namespace

AudioThreadWatch::AudioThreadWatch() {
  allocations = waits = 0;
  watching = true;
}

AudioThreadWatch::~AudioThreadWatch() {
  watching = false;
}

int64_t AudioThreadWatch::GetAllocations() const {
  return allocations;
}

int64_t AudioThreadWatch::GetWaits() const {
  return waits;
}

// Counts a call and hands it on. A name without its option of the linker, or the reverse, does not link.
#define WATCH(counter, Result, name, parameters, arguments) \
  extern "C" Result __real_##name parameters;               \
  extern "C" Result __wrap_##name parameters;               \
  extern "C" Result __wrap_##name parameters {              \
    if (watching) ++counter;                                \
    return __real_##name arguments;                         \
  }

using Size = std::size_t;
using Align = std::align_val_t;

WATCH(allocations, void*, malloc, (Size size), (size))
WATCH(allocations, void*, calloc, (Size count, Size size), (count, size))
WATCH(allocations, void*, realloc, (void* block, Size size), (block, size))
WATCH(allocations, void*, aligned_alloc, (Size align, Size size), (align, size))
WATCH(allocations, int, posix_memalign, (void** block, Size align, Size size), (block, align, size))
WATCH(allocations, void, free, (void* block), (block))
// The operators new and delete, plain and for arrays, sized and aligned.
WATCH(allocations, void*, _Znwm, (Size size), (size))
WATCH(allocations, void*, _Znam, (Size size), (size))
WATCH(allocations, void*, _ZnwmSt11align_val_t, (Size size, Align align), (size, align))
WATCH(allocations, void, _ZdlPv, (void* block), (block))
WATCH(allocations, void, _ZdaPv, (void* block), (block))
WATCH(allocations, void, _ZdlPvm, (void* block, Size size), (block, size))
WATCH(allocations, void, _ZdaPvm, (void* block, Size size), (block, size))
WATCH(allocations, void, _ZdlPvmSt11align_val_t, (void* block, Size size, Align align), (block, size, align))

WATCH(waits, int, pthread_mutex_lock, (pthread_mutex_t * mutex), (mutex))
WATCH(waits, int, pthread_mutex_trylock, (pthread_mutex_t * mutex), (mutex))
WATCH(waits, int, pthread_rwlock_rdlock, (pthread_rwlock_t * lock), (lock))
WATCH(waits, int, pthread_rwlock_wrlock, (pthread_rwlock_t * lock), (lock))
WATCH(waits, int, pthread_cond_wait, (pthread_cond_t * condition, pthread_mutex_t* mutex), (condition, mutex))
WATCH(waits, int, sem_wait, (sem_t * semaphore), (semaphore))
WATCH(waits, int, nanosleep, (const timespec* time, timespec* left), (time, left))
WATCH(waits, int, sched_yield, (), ())
WATCH(waits, std::FILE*, fopen, (const char* path, const char* mode), (path, mode))
