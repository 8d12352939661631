#pragma once
// What this process has open.

#include <fcntl.h>

#include <charconv>
#include <filesystem>
#include <string>
#include <vector>

// The descriptors that are open on `path`, and on all below it.
inline std::vector<int> DescriptorsOf(const std::string& path) {
  const std::string real = std::filesystem::canonical(path);
  std::vector<int> found;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (!std::filesystem::read_symlink(entry.path(), gone).string().starts_with(real)) continue;
    const std::string name = entry.path().filename();
    int descriptor = -1;
    std::from_chars(name.data(), name.data() + name.size(), descriptor);
    found.push_back(descriptor);
  }
  return found;
}

inline bool IsClosedInChildren(int descriptor) {
  return (fcntl(descriptor, F_GETFD) & FD_CLOEXEC) != 0;
}
