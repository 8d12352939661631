#pragma once
// The arguments of a service, of a plug-in or of a module.

#include <exception>
#include <utility>

#include "core/MException.h"
#include "core/MObject.h"

// The arguments of a service: four slots, empty, plain, or owning an object.
struct MServiceArguments {
  static constexpr uint32_t kEmpty = 0;
  static constexpr uint32_t kPlain = 1;   // a number, or an address that is not owned
  static constexpr uint32_t kObject = 2;  // the address of an MObject, destroyed with the slot

  struct Slot {
    uint32_t kind = kEmpty;
    MWord value = 0;
  };

  MServiceArguments() noexcept = default;
  // Plain values for all four slots; addresses go through MAsWord.
  explicit MServiceArguments(MWord a, MWord b = 0, MWord c = 0, MWord d = 0) noexcept
      : slot{{kPlain, a}, {kPlain, b}, {kPlain, c}, {kPlain, d}} {}
  MServiceArguments(const MServiceArguments&) = delete;
  MServiceArguments& operator=(const MServiceArguments&) = delete;
  // Destroys the objects of the slots, the last slot first. An object's destructor may throw; the other
  // objects are destroyed all the same.
  ~MServiceArguments() noexcept(false) {
    int32_t i = 4;
    try {
      while (i > 0) Clear(--i);
    } catch (...) {
      ClearQuietly(i);
      if (std::uncaught_exceptions() == 0) throw;
    }
  }

  // These destroy the object that the slot had. An index outside of 0 to 3 raises "Index out of range."
  void Set(int32_t index, MWord value) { Replace(index, {kPlain, value}); }
  // Takes the object over.
  void SetObject(int32_t index, MObject* object) {
    Replace(index, {kObject, reinterpret_cast<MWord>(object)});
  }
  void Clear(int32_t index) { Replace(index, Slot()); }

  Slot slot[4];

 private:
  void Replace(int32_t index, Slot next) {
    if (index < 0 || index > 3) MThrowIndexOutOfRange();
    const Slot before = std::exchange(slot[index], next);
    if (before.kind == kObject) delete reinterpret_cast<MObject*>(before.value);
  }
  void ClearQuietly(int32_t end) noexcept {
    while (end > 0) {
      try {
        Clear(--end);
      } catch (...) {  // the first failure is the one that is reported
      }
    }
  }
};

// An address as a word, and a word as an address.
template <typename T>
inline MWord MAsWord(T* address) noexcept {
  return reinterpret_cast<MWord>(address);
}
template <typename T>
inline T* MAsAddress(MWord word) noexcept {
  return reinterpret_cast<T*>(word);
}
