#include <cerrno>
#include <cstring>

#include "core/MEncoding.h"

namespace {

// A process that has set a language gets texts in it, as UTF-8.
MString Decoded(const char* text) {
  return MEncoding::UTF8Codec::Get().Decode(text, static_cast<int32_t>(std::strlen(text)));
}

}  // namespace

MString OSErrorText() {
  const int code = errno;
  char buffer[256];
#if defined(__GLIBC__) && defined(_GNU_SOURCE)
  return Decoded(strerror_r(code, buffer, sizeof buffer));
#else
  return strerror_r(code, buffer, sizeof buffer) == 0 ? Decoded(buffer) : MString();
#endif
}
