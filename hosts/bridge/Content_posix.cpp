#include <unistd.h>

#include "hosts/bridge/Content.h"

namespace bridge {

namespace {

namespace fs = std::filesystem;

// Links that lead nowhere any more are made anew.
std::error_code LinkFiles(const fs::path& from, const fs::path& to) {
  std::error_code error;
  fs::create_directories(to, error);
  for (fs::recursive_directory_iterator file(from, error), end; !error && file != end;
       file.increment(error)) {
    const fs::path link = to / file->path().lexically_relative(from);
    if (file->is_directory(error)) {
      fs::create_directories(link, error);
    } else if (!fs::exists(link, error)) {
      fs::remove(link, error);
      fs::create_symlink(file->path(), link, error);
    }
    if (error) break;
  }
  return error;
}

}  // namespace

fs::path MakeWritable(const fs::path& content) {
  const fs::path own = GetUserContent();
  if (content.empty() || own.empty() || access(content.c_str(), W_OK) == 0) return content;
  return LinkFiles(content, own) ? content : own;
}

}  // namespace bridge
