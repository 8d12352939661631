#include "core/MFileTools.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/MAtomicFile.h"
#include "core/MException.h"
#include "core/MFormat.h"
#include "core/MPath.h"
#include "core/MStreamTools.h"
#include "core/MTranslate.h"

namespace {

// Whether both paths lead to the same file.
bool IsSameFile(const char* left, const char* right) noexcept {
  struct stat a, b;
  return stat(left, &a) == 0 && stat(right, &b) == 0 && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// The folder may come from another thread or process at the same time.
bool MakeFolder(const MString& path) {
  return FolderExists(path) || mkdir(MEncodePath(path).GetText(), 0777) == 0 || FolderExists(path);
}

// Whether both paths are one entry of a folder, for instance in upper and lower case where the disk is blind
// for it. A link is not what it leads to: renamed to that it would replace it and lead to itself.
bool IsSameEntry(const char* left, const char* right) noexcept {
  struct stat a, b;
  if (lstat(left, &a) != 0 || lstat(right, &b) != 0 || a.st_dev != b.st_dev || a.st_ino != b.st_ino)
    return false;
  return S_ISDIR(a.st_mode) || a.st_nlink == 1 || std::strcmp(left, right) == 0;
}

// Renames without replacing what stands there.
bool MoveFile(const char* from, const char* to) noexcept {
  if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return true;
  if (errno == EEXIST) return IsSameEntry(from, to) && std::rename(from, to) == 0;
  if (errno != EINVAL && errno != ENOSYS) return false;
  struct stat info;  // a kind of disk that cannot look and rename in one step
  return lstat(to, &info) != 0 && errno == ENOENT && std::rename(from, to) == 0;
}

}  // namespace

bool FolderExists(const MString& path) {
  struct stat info;
  return stat(MEncodePath(path).GetText(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool GetVolumeNumber(const MString& path, uint64_t& number) {
  struct stat info;
  if (stat(MEncodePath(path).GetText(), &info) != 0) return false;
  number = info.st_dev;
  return true;
}

bool FileExists(const MString& path) {
  struct stat info;
  return stat(MEncodePath(path).GetText(), &info) == 0;
}

void CreatePath(const MString& path) {
  for (int32_t start = 0; start < path.GetLength();) {
    const int32_t slash = path.Find(u'/', start);
    const int32_t end = slash < 0 ? path.GetLength() : slash;
    if (end > start && !MakeFolder(path.Substring(0, end)))
      throw MException(Format(Translate("Could not create path \"{0}\".")).Arg(path).Text());
    start = end + 1;
  }
}

void RenameFile(const MString& from, const MString& to) {
  if (!MoveFile(MEncodePath(from).GetText(), MEncodePath(to).GetText()))
    throw MException(Format(Translate("Could not rename file \"{0}\" to \"{1}\".")).Arg(from).Arg(to).Text());
}

void DeleteFile(const MString& path) {
  if (unlink(MEncodePath(path).GetText()) != 0)
    throw MException(Format(Translate("Could not delete file \"{0}\".")).Arg(path).Text());
}

void RemoveDirectory(const MString& path) {
  if (rmdir(MEncodePath(path).GetText()) != 0)
    throw MException(Format(Translate("Could not remove directory \"{0}\".")).Arg(path).Text());
}

void CopyFile(const MString& from, const MString& to) {
  MFileStream source(from, MFileStream::kRead);
  if (IsSameFile(MEncodePath(from).GetText(), MEncodePath(to).GetText())) MFileStream::ThrowNotCreated(to);
  MAtomicFile target(to);
  MCopyStream(source, target);
  target.Commit();
}
