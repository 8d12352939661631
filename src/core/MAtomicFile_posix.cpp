#include "core/MAtomicFile.h"

#include <algorithm>
#include <cerrno>
#include <charconv>

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/MException.h"
#include "core/MPath.h"

namespace {

constexpr int kLongestChain = 40;      // of links, as the kernel has it
constexpr std::size_t kLongest = 100;  // bytes of the target's name in the new one's
constexpr int kMostNames = 1000;

// Follows links in the last part of the path, also to what does not exist. False if they do not end.
template <typename Name>
bool FollowLinks(Name& path) {
  char link[PATH_MAX];
  for (int i = 0; i < kLongestChain; ++i) {
    const ssize_t size = readlink(path.c_str(), link, sizeof link);
    if (size < 0) return true;
    if (link[0] == '/') path.clear();
    path.resize(path.rfind('/') + 1);  // empty without any
    path.append(link, static_cast<std::size_t>(size));
  }
  return false;
}

// The first bytes of a name, in whole characters.
template <typename Name>
Name Shortened(const Name& name) {
  std::size_t size = std::min(name.size(), kLongest);
  while (size > 0 && size < name.size() && (name[size] & 0xC0) == 0x80) --size;
  return name.substr(0, size);
}

bool IsWritable(const char* path) noexcept {
  const int file = open(path, O_WRONLY | O_CLOEXEC | O_NONBLOCK);
  return file >= 0 && close(file) == 0;
}

// As far as the system lets us: the owner and group of the file that is replaced, and its permissions, which
// would be those of other people if the group were another one.
void TakeOver(int file, const struct stat& old) noexcept {
  mode_t mode = old.st_mode & 0777;
  if (fchown(file, old.st_uid, old.st_gid) != 0 && fchown(file, static_cast<uid_t>(-1), old.st_gid) != 0)
    mode &= ~mode_t{070};
  static_cast<void>(fchmod(file, mode));
}

// Some file systems and devices have no such operation.
bool BringToDisk(int file) noexcept {
  return fsync(file) == 0 || errno == EINVAL || errno == ENOSYS || errno == ENOTSUP;
}

}  // namespace

// The private constructor has made the object, so that a failure here runs the destructor.
MAtomicFile::MAtomicFile(const MString& path) : MAtomicFile(path, nullptr) {
  const MBytes encoded = MEncodePath(path);
  struct stat old;
  const bool exists = stat(encoded.GetText(), &old) == 0;
  const bool isDevice = exists && !S_ISREG(old.st_mode);
  if (exists && !isDevice && !IsWritable(encoded.GetText())) ThrowNotCreated(path);
  std::FILE* const file = !isDevice && OpenFolder(encoded.GetText()) ? MakeTemporary(exists) : nullptr;
  if (file) {
    if (exists) TakeOver(fileno(file), old);
    input_ = output_ = file;
  } else if (isDevice || (exists && (errno == EACCES || errno == EPERM || errno == EROFS))) {
    OpenDirectly();
  } else {
    ThrowNotCreated(path);
  }
}

MAtomicFile::~MAtomicFile() noexcept {
  Discard();
}

void MAtomicFile::Commit() {
  try {
    Put();
  } catch (...) {
    Discard();
    throw;
  }
}

void MAtomicFile::Close() {
  if (folder_ < 0) return MFileStream::Close();
  Discard();
}

void MAtomicFile::OpenDirectly() {
  Discard();
  MFileStream::Open(MString(), kWrite | kCreate);
}

// Opens the folder of the target, whose name it keeps.
bool MAtomicFile::OpenFolder(const char* path) {
  target_ = path;
  if (!FollowLinks(target_)) return false;
  const std::size_t start = target_.rfind('/') + 1;
  const Name folder = start > 0 ? target_.substr(0, start) : Name("./");
  target_.erase(0, start);
  if (target_.empty()) return false;
  folder_ = open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  return folder_ >= 0;
}

// A new file beside the target, null for a failure. What replaces a file may have to be as private as that.
std::FILE* MAtomicFile::MakeTemporary(bool isPrivate) {
  Name name = Shortened(target_) + "~";
  const std::size_t size = name.size();
  int file = -1;
  for (int number = 0; number < kMostNames; ++number) {
    char digits[8];
    const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    name.resize(size);
    if (number > 0) name.append(digits, static_cast<std::size_t>(end - digits));
    file = openat(folder_, name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, isPrivate ? 0600 : 0666);
    if (file >= 0 || errno != EEXIST) break;
  }
  if (file < 0) return nullptr;
  temporary_.swap(name);
  std::FILE* const stream = fdopen(file, "w+b");
  if (!stream) close(file);
  return stream;
}

void MAtomicFile::Put() {
  Flush();
  if (!BringToDisk(fileno(output_))) ThrowWriteError();
  MFileStream::Close();
  if (folder_ < 0) return;
  if (renameat(folder_, temporary_.c_str(), folder_, target_.c_str()) != 0) ThrowNotCreated(GetPath());
  temporary_.clear();
  const int entries = openat(folder_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (entries >= 0) {
    BringToDisk(entries);
    close(entries);
  }
  Discard();
}

void MAtomicFile::Discard() noexcept {
  CloseFiles();
  if (folder_ < 0) return;
  if (!temporary_.empty()) unlinkat(folder_, temporary_.c_str(), 0);
  temporary_.clear();
  close(folder_);
  folder_ = -1;
}
