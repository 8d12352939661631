#include "core/MSystemPath.h"

#include <cerrno>
#include <cstdlib>
#include <vector>

#include <pwd.h>
#include <unistd.h>

#include "core/MEncodingReader.h"
#include "core/MException.h"
#include "core/MFileStream.h"
#include "core/MFileTools.h"
#include "core/MMemory.h"
#include "core/MPath.h"

namespace {

// False unless the text is an absolute path.
bool TakePath(const char* bytes, MString& path) {
  return bytes && bytes[0] == '/' && MDecodePath(bytes, path);
}

[[noreturn]] void ThrowSystemError(int error) {
  errno = error;
  MThrowNoSystemPath(OSErrorText());
}

MString GetHome() {
  MString path;
  if (TakePath(std::getenv("HOME"), path)) return path;
  std::vector<char, MAllocator<char>> text(1024);
  passwd entry;
  passwd* found = nullptr;
  int error;
  while ((error = getpwuid_r(getuid(), &entry, text.data(), text.size(), &found)) == ERANGE)
    text.resize(2 * text.size());
  if (!found || !TakePath(found->pw_dir, path)) ThrowSystemError(error ? error : ENOENT);
  return path;
}

// The value of a variable, else a folder below the home.
MString GetUserFolder(const char* variable, const char* below) {
  MString path;
  return TakePath(std::getenv(variable), path) ? path : JoinPath(GetHome(), MString::Literal(below));
}

// The value of NAME="value" in a line of user-dirs.dirs, if it has that name: an absolute path, or one that
// begins with $HOME; a backslash stands before characters that are special to the shell.
bool ReadUserFolder(const MString& line, const MString& name, MString& path) {
  int32_t i = 0;
  while (line.At(i) == u' ' || line.At(i) == u'\t') ++i;
  if (!(line.Substring(i, name.GetLength()) == name)) return false;
  i += name.GetLength();
  if (line.At(i) != u'=' || line.At(i + 1) != u'"') return false;
  MString value;
  for (i += 2; line.At(i) != u'"'; ++i) {
    if (line.At(i) == u'\\') ++i;
    if (line.At(i) == 0) return false;
    value.Append(line.At(i));
  }
  const MString home = "$HOME";
  const int32_t length = home.GetLength();
  const bool isBelowHome =
      value.Substring(0, length) == home && (value.GetLength() == length || value.At(length) == u'/');
  if (!isBelowHome && value.At(0) != u'/') return false;
  path = isBelowHome ? JoinPath(GetHome(), value.Substring(length)) : value;
  return true;
}

// A folder that the user has named for a purpose.
MString GetNamedFolder(const char* name, const char* below) {
  MString path;
  if (TakePath(std::getenv(name), path)) return path;
  bool isFound = false;
  try {
    MFileStream file(JoinPath(GetUserFolder("XDG_CONFIG_HOME", ".config"), "user-dirs.dirs"),
                     MFileStream::kRead);
    MEncoding::Reader reader(file, MEncoding::UTF8Codec::Get());
    MString line;
    while (reader.ReadLine(line))  // the last one counts, as in a shell
      if (ReadUserFolder(line, MString::Literal(name), path)) isFound = true;
  } catch (const MException& failure) {
    if (failure.code != MErrorCode::kNotOpened && failure.code != MErrorCode::kTransferFailed) throw;
  }
  return isFound ? path : JoinPath(GetHome(), MString::Literal(below));
}

MString GetTemporaryFolder() {
  MString path;
  if (TakePath(std::getenv("TMPDIR"), path) && FolderExists(path)) return path;
  return FolderExists("/tmp") ? MString("/tmp") : JoinPath(GetSystemPath(MSystemPath::kSystem), "temp");
}

MString MakeFolder(const MString& path) {
  const MString normal = NormalizePath(path);
  try {
    CreatePath(normal);
  } catch (const MException&) {
    // Who writes there gets an error that names the file.
  }
  return normal;
}

MString FindFolder(MSystemPath path) {
  switch (path) {
    case MSystemPath::kData:
      return MakeFolder(JoinPath(GetUserFolder("XDG_DATA_HOME", ".local/share"), "Tessaron"));
    case MSystemPath::kUserData:
      return MakeFolder(GetUserFolder("XDG_CONFIG_HOME", ".config"));
    case MSystemPath::kDocuments:
      return GetNamedFolder("XDG_PUBLICSHARE_DIR", "Public");
    case MSystemPath::kUserDocuments:
      return GetNamedFolder("XDG_DOCUMENTS_DIR", "Documents");
    case MSystemPath::kProgramFiles:
      return "/opt";
    case MSystemPath::kComponents:
      return "/usr/local/lib";
    case MSystemPath::kStartMenu:
    case MSystemPath::kStartMenuPrograms:
      return "/usr/share/applications";
    case MSystemPath::kUserStartMenu:
    case MSystemPath::kUserStartMenuPrograms:
      return JoinPath(GetHome(), ".local/share/applications");
    case MSystemPath::kDesktop:
    case MSystemPath::kUserDesktop:
      return GetNamedFolder("XDG_DESKTOP_DIR", "Desktop");
    case MSystemPath::kSystem:
      return "/usr/lib";
    case MSystemPath::kFonts:
      return "/usr/share/fonts";
    case MSystemPath::kTemp:
      return GetTemporaryFolder();
  }
  ThrowSystemError(EINVAL);
}

}  // namespace

MString GetSystemPath(MSystemPath path) {
  return NormalizePath(FindFolder(path));
}
