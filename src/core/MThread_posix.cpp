#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>

#include "core/MThreadState.h"

namespace {

// Nice values by priority. Those below 0 are refused to ordinary users.
constexpr int kNice[] = {19, 10, 5, 0, -5, -10, -20};

}  // namespace

static_assert(sizeof(pthread_t) <= sizeof(MWord));

bool MThreadState::StartNative() noexcept {
  const auto entry = [](void* state) -> void* {
    static_cast<MThreadState*>(state)->Main();
    return nullptr;
  };
  pthread_t native;
  if (pthread_create(&native, nullptr, entry, this) != 0) return false;
  handle_ = static_cast<MWord>(native);
  return true;
}

void MThreadState::JoinNative() noexcept {
  pthread_join(static_cast<pthread_t>(handle_), nullptr);
}

int32_t MThreadState::GetNativeId() noexcept {
  return gettid();
}

// On Linux nice values belong to threads. The number of an ended thread may be another's by now.
bool MThreadState::ApplyPriority() const noexcept {
  if (phase != Phase::kStarted || nativeId_ == 0 || priority < 0) return true;
  if (setpriority(PRIO_PROCESS, static_cast<id_t>(nativeId_), kNice[priority]) == 0) return true;
  return errno == EPERM || errno == EACCES;
}
