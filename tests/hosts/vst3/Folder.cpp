// The data folder of the tests: made before anything starts the library, gone when that has ended.

#include "tests/common/DataFolder.h"

namespace {

class Folder {
 public:
  Folder() {
    std::filesystem::create_directory_symlink(SONVELLE_RESOURCES, folder_.GetFolder().GetPath() / "sonvelle");
  }

 private:
  DataFolder folder_;
};

const Folder folder;

}  // namespace
