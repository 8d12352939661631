#pragma once
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <vector>

#include "hosts/bridge/PluginTable.h"

namespace bridge {

// The library cannot be opened; the text is the system's and names the file.
class LibraryError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The plug-ins of a shared library, which stays loaded for the object's lifetime. It is started before any
// plug-in is made, with the allocator table and the event lock of this program; a library that has no start
// is used as it is. Plug-ins, and all texts and items that they filled, are gone before it.
class PluginLibrary {
 public:
  // Raises LibraryError.
  explicit PluginLibrary(const std::filesystem::path& file);
  PluginLibrary(const PluginLibrary&) = delete;
  PluginLibrary& operator=(const PluginLibrary&) = delete;

  // The plug-ins of the catalogue that the library exports.
  const PluginTable& GetPlugins() const noexcept { return plugins_; }
  // The absolute path.
  const std::filesystem::path& GetFile() const noexcept { return file_; }

  // Calls a named service of the library. -1 for an unknown name, and where there is no module.
  MWord Invoke(const char* name, MServiceArguments& arguments) const;

  // Writes the library's plug-ins to the registry of this system, where hosts look for plug-ins, and returns
  // the registry's files. Raises MException when one cannot be written, and LibraryError when the library has
  // no services or a path that the registry cannot hold.
  std::vector<std::string> Register() const;

 private:
  struct Close {
    void operator()(void* handle) const noexcept;
  };

  void Start();

  std::filesystem::path file_;
  std::unique_ptr<void, Close> handle_;
  MModule* module_ = nullptr;
  PluginTable plugins_;
};

}  // namespace bridge
