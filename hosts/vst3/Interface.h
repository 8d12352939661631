#pragma once
// How an object of ours offers the interfaces of the format. What a host holds is a pointer to a pointer to a
// table of functions, each of which gets the host's pointer first.

#include <travesty/base.h>

#include <cstdio>

#include "core/MException.h"
#include "hosts/bridge/Parameters.h"

namespace vst3 {

// What the host's pointer points to.
struct Face {
  const void* table;
  void* object;
};

// The format has no log of its own.
inline void Report(const MException& raised) {
  std::fprintf(stderr, "Sonvelle: %s\n", bridge::ToUtf8(raised.message).c_str());
}

template <class Result>
constexpr Result GetFailure() noexcept {
  if constexpr (std::is_same_v<Result, v3_result>) return V3_INTERNAL_ERR;
  return Result();
}

template <auto kMethod, class Type = decltype(kMethod)>
struct Method;

template <auto kMethod, class Object, class Result, class... Arguments>
struct Method<kMethod, Result (Object::*)(Arguments...)> {
  static Result V3_API Call(void* self, Arguments... arguments) noexcept {
    try {
      return (static_cast<Object*>(static_cast<Face*>(self)->object)->*kMethod)(arguments...);
    } catch (const MException& raised) {
      Report(raised);
    } catch (...) {
      // Out of memory, most likely. The host hears of it.
    }
    return GetFailure<Result>();
  }
};

// A method of an object as an entry of a table. No exception leaves it: a result says that it failed, a
// number is 0.
template <auto kMethod>
constexpr auto kCall = &Method<kMethod>::Call;

}  // namespace vst3
