#pragma once
// Gives the process a data folder of its own, where the library keeps its registry and its settings.

#include "tests/common/Environment.h"

class DataFolder {
 public:
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
  TemporaryFolder folder_;
  Variable variable_{"XDG_DATA_HOME", folder_.GetPath().c_str()};
};
