#include "core/MFileTools.h"

#include <sys/stat.h>

#include "tests/core/FileTests.h"
#include "tests/core/OnThreads.h"

namespace {

namespace fs = std::filesystem;

class MFileTools : public testing::Test {
 protected:
  MString Path(const std::string& name) const { return Text(folder.Path(name)); }
  bool Exists(const char* name) const { return fs::exists(fs::symlink_status(folder.Path(name))); }
  const TemporaryFolder folder;
};

// Unusual, but names.
const char* const kNames[] = {"Übung ř 𝄞.wav", "two\nlines", "a\\b",      " ", "~",
                              "-rf",           "\"{0}\"",    "日本語.zsd"};

TEST_F(MFileTools, FilesAndFoldersExistAndLinksThatLeadToThem) {
  folder.WriteFile("file", "");
  fs::permissions(folder.Path("file"), fs::perms::none);
  fs::create_symlink("file", folder.Path("link"));
  fs::create_symlink("nowhere", folder.Path("dangling"));
  for (const char* const name : {"file", "link", "."}) EXPECT_TRUE(FileExists(Path(name))) << name;
  for (const char* const name : {"dangling", "other", "file/x"}) EXPECT_FALSE(FileExists(Path(name))) << name;
  EXPECT_FALSE(FileExists(""));
}

TEST_F(MFileTools, CreatePathMakesWhatIsMissing) {
  CreatePath(Path("a/b/c"));
  EXPECT_TRUE(fs::is_directory(folder.Path("a/b/c")));
  CreatePath(Path("a/b/d//e/"));
  EXPECT_TRUE(fs::is_directory(folder.Path("a/b/d/e")));
}

TEST_F(MFileTools, CreatePathOfAnExistingPathDoesNothing) {
  folder.WriteFile("file", "abc");
  EXPECT_NO_THROW(CreatePath(Text(folder.GetPath())));
  EXPECT_NO_THROW(CreatePath("/"));
  EXPECT_NO_THROW(CreatePath(""));
  fs::create_directory_symlink(folder.GetPath(), folder.Path("link"));
  EXPECT_NO_THROW(CreatePath(Path("link")));
  EXPECT_EQ(folder.ReadFile("file"), "abc");
}

TEST_F(MFileTools, CreatePathTakesRelativePaths) {
  const fs::path before = fs::current_path();
  fs::current_path(folder.GetPath());
  CreatePath("x/y");
  fs::current_path(before);
  EXPECT_TRUE(fs::is_directory(folder.Path("x/y")));
}

TEST_F(MFileTools, CreatePathThroughOrOntoAFileRaisesWithTheCallersPath) {
  folder.WriteFile("file", "abc");
  fs::create_symlink("nowhere", folder.Path("dangling"));
  for (const char* name : {"file", "file/", "file/below", "a/../file/b/", "dangling", "dangling/b"})
    EXPECT_RAISES(CreatePath(Path(name)), "Could not create path \"" + folder.Path(name) + "\".", 0);
  EXPECT_EQ(folder.ReadFile("file"), "abc");
  EXPECT_FALSE(Exists("nowhere"));
}

TEST_F(MFileTools, CreatePathRaisesForNamesThatAreTooLongOrNoText) {
  const std::string longName(300, 'x');
  EXPECT_RAISES(CreatePath(Path(longName)), "Could not create path \"" + folder.Path(longName) + "\".", 0);
  MString cut = Path("cut");
  cut.Append(MChar{0});
  cut.Append("x");
  EXPECT_THROW(CreatePath(cut), MException);
  EXPECT_FALSE(Exists("cut"));
}

TEST_F(MFileTools, CreatePathMakesDeepPathsUpToTheLimitOfTheSystem) {
  std::string deep;
  while (folder.Path(deep).size() < 4000) deep += "folder/";
  EXPECT_NO_THROW(CreatePath(Path(deep)));
  EXPECT_TRUE(fs::is_directory(folder.Path(deep)));
  for (int i = 0; i < 20; ++i) deep += "folder/";
  EXPECT_THROW(CreatePath(Path(deep)), MException);
}

TEST_F(MFileTools, CreatePathWithoutPermissionRaises) {
  fs::create_directory(folder.Path("locked"));
  ASSERT_EQ(chmod(folder.Path("locked").c_str(), 0500), 0);
  const OrdinaryUser user(folder);
  ASSERT_TRUE(OrdinaryUser::IsInForce());
  EXPECT_RAISES(CreatePath(Path("locked/a")), "Could not create path \"" + folder.Path("locked/a") + "\".",
                0);
  EXPECT_NO_THROW(CreatePath(Path("locked")));
}

TEST_F(MFileTools, ThreadsMayMakeTheSamePathAtTheSameTime) {
  for (int round = 0; round < 50; ++round) {
    const std::string path = std::to_string(round) + "/a/b/c/d/e";
    OnThreads(2, [&](int) { EXPECT_NO_THROW(CreatePath(Path(path))); });
    EXPECT_TRUE(fs::is_directory(folder.Path(path)));
  }
}

TEST_F(MFileTools, RenameMovesFilesAndFolders) {
  folder.WriteFile("old", "abc");
  CreatePath(Path("a/b"));
  RenameFile(Path("old"), Path("a/new"));
  EXPECT_EQ(folder.ReadFile("a/new"), "abc");
  EXPECT_FALSE(Exists("old"));
  RenameFile(Path("a"), Path("c"));
  EXPECT_EQ(folder.ReadFile("c/new"), "abc");
  EXPECT_TRUE(Exists("c/b"));
}

TEST_F(MFileTools, RenameReplacesNothing) {
  folder.WriteFile("from", "new");
  folder.WriteFile("to", "old");
  CreatePath(Path("empty"));
  fs::create_symlink("nowhere", folder.Path("dangling"));
  for (const char* name : {"to", "empty", "dangling"})
    EXPECT_RAISES(RenameFile(Path("from"), Path(name)),
                  "Could not rename file \"" + folder.Path("from") + "\" to \"" + folder.Path(name) + "\".",
                  0);
  EXPECT_EQ(folder.ReadFile("from"), "new");
  EXPECT_EQ(folder.ReadFile("to"), "old");
  EXPECT_TRUE(fs::is_symlink(folder.Path("dangling")));
}

TEST_F(MFileTools, RenameToItselfKeepsTheFile) {
  folder.WriteFile("file", "abc");
  EXPECT_NO_THROW(RenameFile(Path("file"), Path("file")));
  EXPECT_EQ(folder.ReadFile("file"), "abc");
}

TEST_F(MFileTools, RenameReplacesNoOtherNameOfTheSameFile) {
  folder.WriteFile("file", "abc");
  fs::create_symlink("file", folder.Path("link"));
  fs::create_hard_link(folder.Path("file"), folder.Path("second"));
  CreatePath(Path("sub"));
  fs::create_directory_symlink("sub", folder.Path("sublink"));
  const std::pair<const char*, const char*> names[] = {
      {"link", "file"}, {"file", "link"}, {"file", "second"}, {"sub", "sublink"}, {"sublink", "sub"}};
  for (const auto& [from, to] : names)
    EXPECT_RAISES(RenameFile(Path(from), Path(to)),
                  "Could not rename file \"" + folder.Path(from) + "\" to \"" + folder.Path(to) + "\".", 0);
  EXPECT_TRUE(fs::is_symlink(folder.Path("link")) && fs::is_symlink(folder.Path("sublink")));
  EXPECT_EQ(folder.ReadFile("file"), "abc");
  EXPECT_TRUE(Exists("second"));
  EXPECT_TRUE(fs::is_directory(fs::symlink_status(folder.Path("sub"))));
}

TEST_F(MFileTools, RenameOfNothingOrIntoAMissingFolderRaises) {
  folder.WriteFile("file", "abc");
  EXPECT_RAISES(RenameFile(Path("none"), Path("x")),
                "Could not rename file \"" + folder.Path("none") + "\" to \"" + folder.Path("x") + "\".", 0);
  EXPECT_RAISES(RenameFile(Path("file"), "none/x"),
                "Could not rename file \"" + folder.Path("file") + "\" to \"none/x\".", 0);
  EXPECT_EQ(folder.ReadFile("file"), "abc");
}

TEST_F(MFileTools, DeleteRemovesAFileOrTheLinkItself) {
  folder.WriteFile("file", "abc");
  CreatePath(Path("sub"));
  fs::create_symlink("file", folder.Path("link"));
  fs::create_directory_symlink("sub", folder.Path("sublink"));
  DeleteFile(Path("link"));
  DeleteFile(Path("sublink"));
  EXPECT_FALSE(Exists("link"));
  EXPECT_FALSE(Exists("sublink"));
  EXPECT_EQ(folder.ReadFile("file"), "abc");
  EXPECT_TRUE(Exists("sub"));
  DeleteFile(Path("file"));
  EXPECT_FALSE(Exists("file"));
}

TEST_F(MFileTools, DeleteOfNothingOrAFolderRaises) {
  CreatePath(Path("sub"));
  for (const char* name : {"none", "sub", "none/x"})
    EXPECT_RAISES(DeleteFile(Path(name)), "Could not delete file \"" + folder.Path(name) + "\".", 0);
  EXPECT_RAISES(DeleteFile(""), "Could not delete file \"\".", 0);
  EXPECT_TRUE(Exists("sub"));
}

TEST_F(MFileTools, DeleteNeverTakesAnotherFileForOneWithoutAName) {
  folder.WriteFile("file", "abc");
  for (const char16_t unit : {u'\0', char16_t{0xD834}}) {
    MString path = Path("file");
    path.Append(unit);
    EXPECT_THROW(DeleteFile(path), MException);
  }
  EXPECT_EQ(folder.ReadFile("file"), "abc");
}

TEST_F(MFileTools, RemoveDirectoryRemovesAnEmptyFolderOnly) {
  CreatePath(Path("a/b"));
  folder.WriteFile("file", "abc");
  for (const char* name : {"a", "none", "file"})
    EXPECT_RAISES(RemoveDirectory(Path(name)), "Could not remove directory \"" + folder.Path(name) + "\".",
                  0);
  RemoveDirectory(Path("a/b"));
  RemoveDirectory(Path("a/"));
  EXPECT_FALSE(Exists("a"));
}

TEST_F(MFileTools, UnusualNamesAreNames) {
  for (const char* name : kNames) {
    const std::string below = std::string(name) + "/" + name;
    CreatePath(Path(name));
    folder.WriteFile(below, "abc");
    RenameFile(Path(below), Path("moved"));
    EXPECT_EQ(folder.ReadFile("moved"), "abc");
    DeleteFile(Path("moved"));
    RemoveDirectory(Path(name));
    EXPECT_TRUE(fs::is_empty(folder.GetPath())) << name;
  }
}

}  // namespace
