#include "core/MPath.h"

#include <cstring>

#include "core/MEncoding.h"
#include "core/MException.h"
#include "core/MTranslate.h"

namespace {

bool IsHigh(MChar unit) noexcept {
  return unit >= 0xD800 && unit < 0xDC00;
}

bool IsLow(MChar unit) noexcept {
  return unit >= 0xDC00 && unit < 0xE000;
}

// Whether nothing of the text gets lost on the way to the operating system.
bool IsWhole(const MString& path) noexcept {
  for (int32_t i = 0; i < path.GetLength(); ++i) {
    const MChar unit = path.At(i);
    if (unit == 0 || IsLow(unit)) return false;
    if (IsHigh(unit) && !IsLow(path.At(++i))) return false;
  }
  return true;
}

}  // namespace

MString JoinPath(const MString& folder, const MString& name) {
  if (folder.IsEmpty()) return name;
  if (name.IsEmpty()) return folder;
  int32_t end = folder.GetLength();
  while (end > 0 && folder.At(end - 1) == u'/') --end;
  int32_t start = 0;
  while (name.At(start) == u'/') ++start;
  MString path = folder.Substring(0, end);
  path.Append(u'/');
  path.Append(name.Substring(start));
  return path;
}

MString GetPathName(const MString& path) {
  return path.Substring(path.FindLast(u'/') + 1);
}

void MThrowNoSystemPath(const MString& reason) {
  MString text = Translate("Could not retrieve system path.");
  text.Append(u' ');
  text.Append(reason);
  throw MException(text);
}

MBytes MEncodePath(const MString& path) {
  return IsWhole(path) ? EncodeNarrow(path) : MBytes();
}

bool MDecodePath(const char* bytes, MString& path) {
  const std::size_t size = std::strlen(bytes);
  if (size > MString::kWhole) return false;
  path = MEncoding::UTF8Codec::Get().Decode(bytes, static_cast<int32_t>(size));
  const MBytes again = MEncodePath(path);
  return again.GetSize() > 0 && std::strcmp(again.GetText(), bytes) == 0;
}
