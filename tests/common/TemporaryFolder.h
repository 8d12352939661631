#pragma once
// A folder of a test's own, below TMPDIR or /tmp; it and all that lies in it are removed with the object.

#include <cstdlib>  // mkdtemp
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "sonvelle-test-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("cannot make " + pattern);
    path_ = pattern;
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& GetPath() const { return path_; }
  // The path of an entry as UTF-8. Nothing is created.
  std::string Path(std::string_view name) const { return (path_ / name).string(); }

  // Makes a file of these bytes and returns its path.
  std::string WriteFile(std::string_view name, std::string_view bytes) const {
    const std::string path = Path(name);
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) throw std::runtime_error("cannot write " + path);
    return path;
  }
  // All bytes of a file.
  std::string ReadFile(std::string_view name) const {
    std::ifstream file(path_ / name, std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + Path(name));
    return std::string(std::istreambuf_iterator<char>(file), {});
  }

 private:
  std::filesystem::path path_;
};
