#include <sys/stat.h>

#include "core/MFileTools.h"
#include "tests/core/FileTests.h"
#include "tests/core/StreamDoubles.h"

namespace {

namespace fs = std::filesystem;

std::string NotCreated(const std::string& path) {
  return "File \"" + path +
         "\" could not be created. Make sure there is no write-protected file already existing.";
}

class MCopyFile : public testing::Test {
 protected:
  MString Path(const std::string& name) const { return Text(folder.Path(name)); }
  const TemporaryFolder folder;
};

TEST_F(MCopyFile, CopiesContentOfAnySize) {
  for (const std::size_t size : {0u, 1u, 4095u, 4096u, 4097u, 8192u, 1000000u}) {
    const std::string bytes = Pattern(size);
    folder.WriteFile("from", bytes);
    CopyFile(Path("from"), Path("to"));
    EXPECT_EQ(folder.ReadFile("to"), bytes);
    EXPECT_EQ(folder.ReadFile("from"), bytes);
  }
}

TEST_F(MCopyFile, OntoItselfIsRefusedByWhateverName) {
  folder.WriteFile("file", "abc");
  fs::create_symlink("file", folder.Path("link"));
  fs::create_hard_link(folder.Path("file"), folder.Path("hard"));
  fs::create_directory(folder.Path("sub"));
  for (const char* to : {"file", "link", "hard", "sub/../file", ".//file"})
    EXPECT_RAISES(CopyFile(Path("file"), Path(to)), NotCreated(folder.Path(to)), 257);
  EXPECT_EQ(folder.ReadFile("file"), "abc");
  EXPECT_TRUE(fs::is_symlink(folder.Path("link")));
}

TEST_F(MCopyFile, OntoAFolderIsRefused) {
  folder.WriteFile("file", "abc");
  fs::create_directory(folder.Path("sub"));
  for (const char* to : {"sub", "sub/", "none/x", "file/x", "new/"})
    EXPECT_RAISES(CopyFile(Path("file"), Path(to)), NotCreated(folder.Path(to)), 257);
  EXPECT_TRUE(fs::is_empty(folder.Path("sub")));
}

TEST_F(MCopyFile, MissingSourceLeavesTheTarget) {
  folder.WriteFile("to", "old");
  EXPECT_RAISES(CopyFile(Path("none"), Path("to")),
                "File \"" + folder.Path("none") + "\" could not be open. Make sure it exists.", 257);
  fs::create_directory(folder.Path("sub"));
  EXPECT_RAISES(CopyFile(Path("sub"), Path("to")),
                "File \"" + folder.Path("sub") + "\" could not be open. Make sure it exists.", 257);
  EXPECT_EQ(folder.ReadFile("to"), "old");
}

TEST_F(MCopyFile, SourceThatCannotBeReadLeavesTheTarget) {
  folder.WriteFile("to", "old");
  EXPECT_RAISES(CopyFile("/proc/self/mem", Path("to")), "Error reading from file \"/proc/self/mem\".", 256);
  EXPECT_EQ(folder.ReadFile("to"), "old");
}

TEST_F(MCopyFile, ADeviceIsWrittenDirectly) {
  folder.WriteFile("file", "abc");
  EXPECT_NO_THROW(CopyFile(Path("file"), "/dev/null"));
  EXPECT_RAISES(CopyFile(Path("file"), "/dev/full"),
                "Error writing to file \"/dev/full\". Probably disk full.", 256);
}

}  // namespace
