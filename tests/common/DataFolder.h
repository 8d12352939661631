#pragma once
// Gives the process a data folder of its own, where the library keeps its registry and its settings.

#include "tests/common/TemporaryFolder.h"

class DataFolder {
 public:
  DataFolder() {
    const char* const before = std::getenv(kVariable);
    hadOne_ = before != nullptr;
    if (before) before_ = before;
    setenv(kVariable, folder_.GetPath().c_str(), 1);
  }
  DataFolder(const DataFolder&) = delete;
  DataFolder& operator=(const DataFolder&) = delete;
  ~DataFolder() {
    if (hadOne_) {
      setenv(kVariable, before_.c_str(), 1);
    } else {
      unsetenv(kVariable);
    }
  }

  const TemporaryFolder& GetFolder() const { return folder_; }
  // The path of a file of the library.
  std::string Path(const std::string& name) const { return folder_.Path("Tessaron/" + name); }
  bool Has(const std::string& name) const { return std::filesystem::exists(Path(name)); }
  std::string Read(const std::string& name) const { return folder_.ReadFile("Tessaron/" + name); }
  void Write(const std::string& name, std::string_view bytes) const {
    std::filesystem::create_directories(folder_.GetPath() / "Tessaron");
    folder_.WriteFile("Tessaron/" + name, bytes);
  }

 private:
  static constexpr char kVariable[] = "XDG_DATA_HOME";

  TemporaryFolder folder_;
  bool hadOne_ = false;
  std::string before_;
};
