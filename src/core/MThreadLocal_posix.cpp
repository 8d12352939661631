#include <pthread.h>

#include "core/MException.h"
#include "core/MThreadLocal.h"
#include "core/MTranslate.h"

static_assert(sizeof(pthread_key_t) <= sizeof(MUWord));

MThreadLocal::MThreadLocal() {
  pthread_key_t key;
  if (pthread_key_create(&key, nullptr) != 0)
    throw MException(Translate("Could not create thread local storage."));
  slot_ = key;
}

MThreadLocal::~MThreadLocal() {
  pthread_key_delete(static_cast<pthread_key_t>(slot_));
}

void* MThreadLocal::Get() const noexcept {
  return pthread_getspecific(static_cast<pthread_key_t>(slot_));
}

void MThreadLocal::Set(void* value) {
  if (pthread_setspecific(static_cast<pthread_key_t>(slot_), value) != 0) MThrowOutOfMemory();
}
