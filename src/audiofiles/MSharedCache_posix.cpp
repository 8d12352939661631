#include <sys/stat.h>

#include "audiofiles/MSharedCache.h"
#include "core/MPath.h"

bool MSharedCache::AreDifferentFiles(const MString& left, const MString& right) {
  struct stat a, b;
  return stat(MEncodePath(left).GetText(), &a) == 0 && stat(MEncodePath(right).GetText(), &b) == 0 &&
         (a.st_dev != b.st_dev || a.st_ino != b.st_ino);
}
