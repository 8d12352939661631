#include "hosts/cli/OutputFile.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

#include "hosts/cli/Failure.h"
#include "hosts/cli/System.h"

namespace cli {

namespace {

constexpr int kSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXCPU};

// The file to remove when a signal ends the process; empty when there is none.
char unfinished[4096];

void RemoveUnfinished(int signal) {
  if (unfinished[0]) unlink(unfinished);
  raise(signal);  // which has its default action again, and comes when the handler is left
}

// While it lives, the signals wait: for steps that change the file system and `unfinished` together.
class SignalsWait {
 public:
  SignalsWait() noexcept {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, &before_);
  }
  SignalsWait(const SignalsWait&) = delete;
  SignalsWait& operator=(const SignalsWait&) = delete;
  ~SignalsWait() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_;
};

// A signal that the caller ignores (nohup) stays ignored.
void CatchSignals() noexcept {
  struct sigaction action = {};
  action.sa_handler = RemoveUnfinished;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (const int signal : kSignals) {
    struct sigaction before;
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
      sigaction(signal, &action, nullptr);
  }
}

void SetUnfinished(const std::string& path) noexcept {
  unfinished[path.copy(unfinished, sizeof unfinished - 1)] = 0;
}

// The descriptor of this process that a name in the folder of descriptors stands for.
std::optional<int> AsDescriptor(const std::filesystem::path& path) {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::canonical(path.parent_path(), error);
  const std::string name = path.filename().string();
  if (error || folder != std::filesystem::canonical("/proc/self/fd", error) || name.empty() ||
      name.size() > 6 || name.find_first_not_of("0123456789") != std::string::npos)
    return std::nullopt;
  return std::stoi(name);
}

// Follows links, also one that leads nowhere yet, up to a name that is none or stands for a descriptor.
std::filesystem::path FollowLinks(std::filesystem::path path) {
  constexpr int kMostLinks = 40;
  std::error_code error;
  for (int i = 0; i < kMostLinks && !AsDescriptor(path) && std::filesystem::is_symlink(path, error); ++i)
    path = path.parent_path() / std::filesystem::read_symlink(path, error);
  return path;
}

mode_t GetCreationMask() noexcept {
  const mode_t mask = umask(0);
  umask(mask);
  return mask;
}

// The new file gets the owner and the permissions of the one that it will replace, else the usual ones.
void TakePermissions(int file, const std::filesystem::path& target) noexcept {
  struct stat status;
  if (stat(target.c_str(), &status) != 0) {
    static_cast<void>(fchmod(file, 0666 & ~GetCreationMask()));
    return;
  }
  // Only the superuser may give a file away; for others the owner is then the user.
  const bool isGiven = fchown(file, status.st_uid, status.st_gid) == 0;
  static_cast<void>(fchmod(file, status.st_mode & (isGiven ? 07777 : 0777)));
}

bool WriteAll(int file, const char* bytes, int64_t count, int64_t& written) noexcept {
  while (written < count) {
    const ssize_t now = write(file, bytes + written, static_cast<std::size_t>(count - written));
    if (now < 0 && errno == EINTR) continue;
    if (now < 0) return false;
    written += now;
  }
  return true;
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : path_(path) {
  CatchSignals();
  const std::filesystem::path target = FollowLinks(path);
  struct stat status;
  if (const std::optional<int> descriptor = AsDescriptor(target)) {
    device_ = fcntl(*descriptor, F_DUPFD_CLOEXEC, 0);
    if (device_ < 0) Throw(errno);
    OpenNameless();
  } else if (stat(target.c_str(), &status) != 0) {
    if (errno != ENOENT) Throw(errno);
    OpenBeside(target);
  } else if (S_ISDIR(status.st_mode)) {
    Throw(EISDIR);
  } else if (S_ISREG(status.st_mode)) {
    if (access(target.c_str(), W_OK) != 0) Throw(errno);
    OpenBeside(target);
  } else {
    device_ = open(target.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    if (device_ < 0) Throw(errno);
    OpenNameless();
  }
}

OutputFile::~OutputFile() {
  const SignalsWait wait;
  if (!temporary_.empty()) unlink(temporary_.c_str());
  SetUnfinished({});
  if (file_ >= 0) close(file_);
  if (device_ >= 0) close(device_);
}

void OutputFile::OpenBeside(const std::filesystem::path& target) {
  if (target.filename().empty()) Throw(ENOENT);
  target_ = target;
  std::filesystem::path folder = target.parent_path();
  if (folder.empty()) folder = ".";
  std::string name = (folder / ".sonvelle-XXXXXX").string();
  if (name.size() >= sizeof unfinished) Throw(ENAMETOOLONG);
  const SignalsWait wait;
  file_ = mkostemp(name.data(), O_CLOEXEC);
  if (file_ < 0)
    throw Failure(ExitCode::kOutput,
                  path_ + ": no file can be made in the folder " + folder.string() + ": " + ErrorText(errno));
  temporary_ = name;
  SetUnfinished(name);
  TakePermissions(file_, target);
}

void OutputFile::OpenNameless() {
  std::error_code error;
  std::filesystem::path folder = std::filesystem::temp_directory_path(error);
  if (error) folder = "/tmp";
  std::string name = (folder / "sonvelle-XXXXXX").string();
  const SignalsWait wait;
  file_ = mkostemp(name.data(), O_CLOEXEC);
  if (file_ < 0)
    throw Failure(ExitCode::kOutput,
                  "no temporary file can be made in the folder " + folder.string() + ": " + ErrorText(errno));
  unlink(name.c_str());
}

int64_t OutputFile::Write(const void* bytes, int64_t count) noexcept {
  int64_t written = 0;
  if (!WriteAll(file_, static_cast<const char*>(bytes), count, written) && error_ == 0) error_ = errno;
  return written;
}

int64_t OutputFile::Read(void* bytes, int64_t count) noexcept {
  int64_t got = 0;
  while (got < count) {
    const ssize_t now = read(file_, static_cast<char*>(bytes) + got, static_cast<std::size_t>(count - got));
    if (now < 0 && errno == EINTR) continue;
    if (now <= 0) break;
    got += now;
  }
  return got;
}

int64_t OutputFile::Seek(int64_t offset, int whence) noexcept {
  return lseek(file_, offset, whence);
}

int64_t OutputFile::GetSize() const noexcept {
  struct stat status;
  return fstat(file_, &status) == 0 ? status.st_size : -1;
}

void OutputFile::ThrowIfFailed() const {
  if (error_ != 0) Throw(error_);
}

void OutputFile::Commit() {
  ThrowIfFailed();
  if (device_ >= 0) CopyToDevice();
  const int file = std::exchange(file_, -1);
  if (close(file) != 0) Throw(errno);
  if (device_ >= 0 && close(std::exchange(device_, -1)) != 0) Throw(errno);
  if (temporary_.empty()) return;
  const SignalsWait wait;
  if (rename(temporary_.c_str(), target_.c_str()) != 0) Throw(errno);
  temporary_.clear();
  SetUnfinished({});
}

void OutputFile::CopyToDevice() {
  char bytes[1 << 16];
  Seek(0, SEEK_SET);
  while (const int64_t count = Read(bytes, sizeof bytes)) {
    int64_t written = 0;
    if (!WriteAll(device_, bytes, count, written)) Throw(errno);
  }
}

void OutputFile::Throw(int error) const {
  throw Failure(ExitCode::kOutput, path_ + ": " + ErrorText(error));
}

}  // namespace cli
