#pragma once
// A folder of content of its own for the benchmarks of instruments, with the library's configuration on it.

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "plugin/SonvelleConfiguration.h"

class BenchFolder {
 public:
  BenchFolder()
      : path_(std::filesystem::temp_directory_path() / ("sonvelle-bench-" + std::to_string(getpid()))) {
    std::filesystem::create_directories(path_ / "Tessaron");
    setenv("XDG_DATA_HOME", path_.c_str(), 1);
    std::ofstream(path_ / "Tessaron" / "SonvelleConfiguration.cfg")
        << "<SonvelleCfg GlobalPath=\"" << path_.string() << "\"/>";
    SonvelleConfiguration::Create();
  }
  BenchFolder(const BenchFolder&) = delete;
  BenchFolder& operator=(const BenchFolder&) = delete;
  ~BenchFolder() {
    SonvelleConfiguration::Destroy();
    std::filesystem::remove_all(path_);
  }

  std::string Write(const std::string& name, const std::string& bytes) const {
    const std::filesystem::path file = path_ / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
    return file.string();
  }

 private:
  std::filesystem::path path_;
};
