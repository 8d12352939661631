#pragma once
#include <filesystem>
#include <stdexcept>

#include "hosts/bridge/PluginTable.h"

namespace bridge {

// The library cannot be opened; the text is the system's and names the file.
class LibraryError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The plug-ins of a shared library, which stays loaded for the object's lifetime. Plug-ins, and all texts
// that they gave, are gone before it.
class PluginLibrary {
 public:
  // Raises LibraryError.
  explicit PluginLibrary(const std::filesystem::path& file);
  PluginLibrary(const PluginLibrary&) = delete;
  PluginLibrary& operator=(const PluginLibrary&) = delete;
  ~PluginLibrary();

  // The plug-ins of the catalogue that the library exports.
  const PluginTable& GetPlugins() const noexcept { return plugins_; }

 private:
  void* handle_;
  PluginTable plugins_;
};

}  // namespace bridge
