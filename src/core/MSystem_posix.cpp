#include <cerrno>
#include <cstring>

#include "core/MString.h"

MString OSErrorText() {
  const int code = errno;
  char buffer[256];
#if defined(__GLIBC__) && defined(_GNU_SOURCE)
  return MString::FromNarrow(strerror_r(code, buffer, sizeof buffer));
#else
  return strerror_r(code, buffer, sizeof buffer) == 0 ? MString::FromNarrow(buffer) : MString();
#endif
}
