#include "instruments/MSampleFolders.h"

#include "core/MFileTools.h"
#include "core/MPath.h"
#include "core/MSystemPath.h"

bool MIsBelowFolder(const MString& folder, const MString& root, MString& rest) {
  const int32_t length = root.GetLength();
  if (length == 0 || folder.Substring(0, length).Compare(root) != 0) return false;
  MString behind = folder.Substring(length);
  if (!behind.IsEmpty() && root.At(length - 1) != u'/') {
    if (behind.At(0) != u'/') return false;
    behind = behind.Substring(1);
  }
  rest = behind;
  return true;
}

MString MWithoutParents(const MString& folder) {
  MString path;
  for (int32_t begin = 0; begin < folder.GetLength();) {
    const int32_t slash = folder.Find(u'/', begin);
    const int32_t end = slash < 0 ? folder.GetLength() : slash;
    const MString part = folder.Substring(begin, end - begin);
    if (!(part == "..")) path = JoinPath(path, part);
    begin = end + 1;
  }
  return path;
}

MString MCollectedFolder(const MString& subpath) {
  MString plain;
  for (int32_t i = 0; i < subpath.GetLength(); ++i)
    plain.Append(subpath.At(i) == u':' ? MChar{u'-'} : subpath.At(i));
  MString volume;
  if (uint64_t number = 0; GetVolumeNumber(GetSystemPath(MSystemPath::kSystem), number))
    volume = MString::FromUnsigned(number);
  return JoinPath(JoinPath("Imported", volume), MWithoutParents(plain));
}
