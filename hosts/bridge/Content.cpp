#include "hosts/bridge/Content.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace bridge {

namespace {

namespace fs = std::filesystem;

bool IsFolder(const fs::path& path) {
  std::error_code error;
  return fs::is_directory(path, error);
}

}  // namespace

fs::path GetUserContent() {
  const char* const data = std::getenv("XDG_DATA_HOME");
  if (data && *data == '/') return fs::path(data) / "sonvelle";
  const char* const home = std::getenv("HOME");
  return home && *home ? fs::path(home) / ".local/share/sonvelle" : fs::path();
}

fs::path FindContent(const fs::path& binary) {
  fs::path folder = binary.parent_path();
  if (IsFolder(folder / "content")) return folder / "content";
  for (; folder.has_relative_path(); folder = folder.parent_path())
    if (IsFolder(folder / "share/sonvelle")) return folder / "share/sonvelle";
  const fs::path user = GetUserContent();
  return IsFolder(user) ? user : fs::path();
}

std::vector<Preset> ReadPresets(const fs::path& content, std::string_view plugin) {
  std::vector<Preset> presets;
  std::error_code error;
  for (fs::directory_iterator file(content / "states" / plugin, error), end; !error && file != end;
       file.increment(error)) {
    std::ifstream stream(file->path(), std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    if (file->path().extension() == ".xml" && !text.empty())
      presets.push_back({file->path().stem().string(), std::move(text)});
  }
  std::sort(presets.begin(), presets.end(), [](const Preset& a, const Preset& b) { return a.name < b.name; });
  return presets;
}

}  // namespace bridge
