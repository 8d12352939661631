#include "hosts/cli/System.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace cli {

void PrepareProcess() noexcept {
  // Opened for the other direction, so that using the stream fails as before.
  for (int stream = 0; stream <= STDERR_FILENO; ++stream) {
    const int mode = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
    if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", mode) != stream) return;
  }
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
}

std::filesystem::path GetProgramFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

bool IsErrorTerminal() noexcept {
  return isatty(STDERR_FILENO) == 1;
}

std::string WhyUnreadable(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return ErrorText(errno);
  if (S_ISDIR(status.st_mode)) return ErrorText(EISDIR);
  if (access(path.c_str(), R_OK) != 0) return ErrorText(errno);
  return S_ISREG(status.st_mode) && status.st_size == 0 ? "the file is empty" : "";
}

bool IsSameFile(const std::string& path, const std::string& other) noexcept {
  struct stat first, second;
  if (stat(path.c_str(), &first) != 0 || stat(other.c_str(), &second) != 0) return false;
  // A terminal or a socket may be read and written at the same time.
  return first.st_dev == second.st_dev && first.st_ino == second.st_ino && !S_ISCHR(first.st_mode) &&
         !S_ISSOCK(first.st_mode);
}

std::string ErrorText(int error) {
  return std::generic_category().message(error);
}

}  // namespace cli
