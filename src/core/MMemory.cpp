#include "core/MMemory.h"

#include <cstdlib>

#include "core/MException.h"
#include "core/MTranslate.h"

namespace {

void* M_CALL DefaultAllocate(std::size_t size) {
  void* const block = std::malloc(size > 0 ? size : 1);
  if (!block) MThrowOutOfMemory();
  return block;
}

void M_CALL DefaultRelease(void* block) {
  if (!block) throw MException("NULL cannot be released.");
  std::free(block);
}

void* M_CALL DefaultReallocate(void* block, std::size_t size) {
  if (size == 0) {
    if (block) DefaultRelease(block);
    return nullptr;
  }
  void* const resized = std::realloc(block, size);
  if (!resized) MThrowOutOfMemory();
  return resized;
}

void M_CALL NoHook() {}

constexpr MLibraryFunctions kDefaultFunctions = {DefaultAllocate, DefaultRelease, DefaultReallocate, NoHook,
                                                 NoHook};
constinit MLibraryFunctions functionsInForce = kDefaultFunctions;

}  // namespace

void MSetLibraryFunctions(const MLibraryFunctions& functions) noexcept {
  const MLibraryFunctions& d = kDefaultFunctions;
  functionsInForce = {functions.allocate ? functions.allocate : d.allocate,
                      functions.release ? functions.release : d.release,
                      functions.reallocate ? functions.reallocate : d.reallocate,
                      functions.reservedHook1 ? functions.reservedHook1 : d.reservedHook1,
                      functions.reservedHook2 ? functions.reservedHook2 : d.reservedHook2};
}

const MLibraryFunctions& MGetLibraryFunctions() noexcept {
  return functionsInForce;
}

const MLibraryFunctions& MGetDefaultLibraryFunctions() noexcept {
  return kDefaultFunctions;
}

void* MAllocate(std::size_t size) {
  void* const block = functionsInForce.allocate(size);
  if (!block && size > 0) MThrowOutOfMemory();
  return block;
}

void MRelease(void* block) {
  functionsInForce.release(block);
}

void* MReallocate(void* block, std::size_t size) {
  void* const resized = functionsInForce.reallocate(block, size);
  if (!resized && size > 0) MThrowOutOfMemory();
  return resized;
}

void MThrowOutOfMemory() {
  throw MException(Translate("Out of memory."));
}
