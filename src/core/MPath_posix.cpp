#include <errno.h>
#include <limits.h>
#include <unistd.h>

#include "core/MPath.h"

MString GetCurrentFolder() {
  char bytes[PATH_MAX];
  if (!getcwd(bytes, sizeof bytes)) MThrowNoSystemPath(OSErrorText());
  MString path;
  if (!MDecodePath(bytes, path)) {
    errno = EILSEQ;
    MThrowNoSystemPath(OSErrorText());
  }
  return path;
}

MString NormalizePath(const MString& path) {
  if (path.IsEmpty()) return path;
  MString normal;
  for (int32_t i = 0; i < path.GetLength(); ++i)
    normal.Append(path.At(i) == u'\\' ? MChar(u'/') : path.At(i));
  if (normal.At(0) != u'/') normal = JoinPath(GetCurrentFolder(), normal);
  const int32_t last = normal.GetLength() - 1;
  return last > 0 && normal.At(last) == u'/' ? normal.Substring(0, last) : normal;
}
