#include "core/MFileList.h"

#include <algorithm>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include "core/MException.h"
#include "core/MFormat.h"
#include "core/MPath.h"
#include "core/MTranslate.h"

namespace {

enum class Kind { kFile, kFolder, kOther };

Kind KindOf(mode_t mode) noexcept {
  if (S_ISDIR(mode)) return Kind::kFolder;
  return S_ISREG(mode) ? Kind::kFile : Kind::kOther;
}

// Most disks tell the kind with the name. A link to a folder is one only if such links are followed.
Kind FindKind(int folder, const dirent& entry, bool followsFolders) noexcept {
  if (entry.d_type == DT_DIR) return Kind::kFolder;
  if (entry.d_type == DT_REG) return Kind::kFile;
  struct stat info;
  if (fstatat(folder, entry.d_name, &info, AT_SYMLINK_NOFOLLOW) != 0) return Kind::kOther;
  if (!S_ISLNK(info.st_mode)) return KindOf(info.st_mode);
  if (fstatat(folder, entry.d_name, &info, 0) != 0) return Kind::kOther;
  return S_ISDIR(info.st_mode) && !followsFolders ? Kind::kOther : KindOf(info.st_mode);
}

bool IsBefore(const MString& left, const MString& right) noexcept {
  const int32_t order = left.Compare(right);
  if (order != 0) return order < 0;
  int32_t i = 0;
  while (left.At(i) == right.At(i) && i < left.GetLength()) ++i;
  return left.At(i) < right.At(i);
}

struct CloseFolder {
  void operator()(DIR* folder) const noexcept { closedir(folder); }
};

struct Listing {
  MList<MString> files;
  MList<MString> folders;
};

// False if the folder cannot be read.
bool ReadFolder(const MString& path, const MString& filter, bool followsFolders, Listing& listing) {
  const MBytes bytes = MEncodePath(path);
  const std::unique_ptr<DIR, CloseFolder> folder(opendir(bytes.GetText()));
  if (!folder) return false;
  while (const dirent* const entry = readdir(folder.get())) {
    MString name;
    if (!MDecodePath(entry->d_name, name) || name == "." || name == "..") continue;
    const bool matches = MatchesFilter(name, filter);
    if (!matches && name.At(0) == u'.') continue;
    const Kind kind = FindKind(dirfd(folder.get()), *entry, followsFolders);
    if (kind == Kind::kFolder) listing.folders.Add(name);
    if (kind == Kind::kFile && matches) listing.files.Add(name);
  }
  std::sort(listing.files.begin(), listing.files.end(), IsBefore);
  std::sort(listing.folders.begin(), listing.folders.end(), IsBefore);
  return true;
}

// The listing is gone and the folder closed before the folders below are read.
MFileTree ScanFolder(const MString& path, const MString& name, int32_t depth) {
  MFileTree tree;
  tree.name = name;
  Listing listing;
  if (!ReadFolder(path, MString(), false, listing)) return tree;
  tree.files.Swap(listing.files);
  if (depth >= MFileTree::kMaximumDepth) return tree;
  tree.folders.reserve(static_cast<std::size_t>(listing.folders.GetCount()));
  for (const MString& folder : listing.folders)
    tree.folders.push_back(ScanFolder(JoinPath(path, folder), folder, depth + 1));
  return tree;
}

}  // namespace

void GetFileList(const MString& path, const MString& filter, MList<MString>* files, MList<MString>* folders) {
  Listing listing;
  if (!ReadFolder(path, filter, true, listing))
    throw MException(Format(Translate("Could not access path \"{0}\" to get file list.")).Arg(path).Text());
  if (files) files->Swap(listing.files);
  if (folders) folders->Swap(listing.folders);
}

MFileTree MFileTree::Scan(const MString& path) {
  return ScanFolder(path, GetPathName(path), 0);
}
