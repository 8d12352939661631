#include "core/MAtomicFile.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "core/MXMLItem.h"
#include "tests/common/CountingFunctions.h"
#include "tests/common/Descriptors.h"
#include "tests/core/FileTests.h"
#include "tests/core/StreamDoubles.h"

namespace {

namespace fs = std::filesystem;

std::string NotCreated(const std::string& path) {
  return "File \"" + path +
         "\" could not be created. Make sure there is no write-protected file already existing.";
}

std::string NotWritten(const std::string& path) {
  return "Error writing to file \"" + path + "\". Probably disk full.";
}

mode_t Mode(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 ? info.st_mode & 0777 : 0;
}

// Files may not grow beyond some bytes, as on a full disk.
class FullDisk {
 public:
  explicit FullDisk(rlim_t size) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{size, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }

 private:
  void (*handler_)(int);
  rlimit before_{};
};

class MAtomicFileTest : public testing::Test {
 protected:
  MString Path(const std::string& name) const { return Text(folder.Path(name)); }
  void Save(const std::string& name, const std::string& bytes) const {
    MAtomicFile file(Path(name));
    Put(file, bytes);
    file.Commit();
  }
  std::vector<std::string> Entries() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.GetPath()))
      names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }
  using Strings = std::vector<std::string>;
  const TemporaryFolder folder;
};

TEST_F(MAtomicFileTest, CommitPutsTheFileInPlace) {
  Save("file", "new");
  EXPECT_EQ(folder.ReadFile("file"), "new");
  Save("file", "newer");
  EXPECT_EQ(folder.ReadFile("file"), "newer");
  EXPECT_EQ(Entries(), Strings{"file"});
}

TEST_F(MAtomicFileTest, OldFileIsThereUntilTheCommit) {
  folder.WriteFile("file", "old");
  MAtomicFile file(Path("file"));
  Put(file, Pattern(100000));
  file.Flush();
  EXPECT_EQ(folder.ReadFile("file"), "old");
  EXPECT_EQ(Entries(), (Strings{"file", "file~"}));
  file.Commit();
  EXPECT_EQ(folder.ReadFile("file"), Pattern(100000));
  EXPECT_FALSE(file.IsValid());
  EXPECT_RAISES(file.Commit(), "File stream is not initialized.", 258);
}

TEST_F(MAtomicFileTest, WithoutACommitNothingHappens) {
  folder.WriteFile("file", "old");
  {
    MAtomicFile destroyed(Path("file")), closed(Path("other"));
    Put(destroyed, "new");
    Put(closed, "new");
    closed.Close();
    EXPECT_RAISES(closed.Commit(), "File stream is not initialized.", 258);
  }
  EXPECT_EQ(folder.ReadFile("file"), "old");
  EXPECT_EQ(Entries(), Strings{"file"});
}

TEST_F(MAtomicFileTest, DescriptorsAreClosedInChildProcessesAndWithTheFile) {
  {
    MAtomicFile committed(Path("file")), closed(Path("other")), destroyed(Path("third"));
    const std::vector<int> descriptors = DescriptorsOf(folder.GetPath());
    EXPECT_EQ(descriptors.size(), 6u) << "each has its file and its folder";
    for (const int descriptor : descriptors) EXPECT_TRUE(IsClosedInChildren(descriptor));
    committed.Commit();
    closed.Close();
    EXPECT_EQ(DescriptorsOf(folder.GetPath()).size(), 2u);
  }
  fs::create_directory(folder.Path("sub"));
  EXPECT_ANY_THROW(MAtomicFile(Path("sub")));
  EXPECT_TRUE(DescriptorsOf(folder.GetPath()).empty());
}

TEST_F(MAtomicFileTest, IsAStreamThatCanBeReadAndSought) {
  MAtomicFile file(Path("file"));
  Put(file, "abcdef");
  file.Seek(2, MSeekOrigin::kStart);
  EXPECT_EQ(Take(file, 2), "cd");
  file.Truncate();
  file.Commit();
  EXPECT_EQ(folder.ReadFile("file"), "abcd");
}

TEST_F(MAtomicFileTest, FullDiskLeavesTheOldFile) {
  folder.WriteFile("file", "old");
  for (const std::size_t size : {1001u, 5000u, 100000u}) {  // in the buffer, at its end, beyond it
    const FullDisk disk(1000);
    EXPECT_RAISES(Save("file", Pattern(size)), NotWritten(folder.Path("file")), 256);
    EXPECT_RAISES(Save("fresh", Pattern(size)), NotWritten(folder.Path("fresh")), 256);
    EXPECT_EQ(Entries(), Strings{"file"});
  }
  EXPECT_EQ(folder.ReadFile("file"), "old");
}

TEST_F(MAtomicFileTest, FullDiskLeavesTheOldXMLFile) {
  MXMLItem item("a");
  item.SaveFile(Path("state.xml"));
  const std::string old = folder.ReadFile("state.xml");
  item.SetText(Buffer(std::string(50000, 'x').c_str()));
  {
    const FullDisk disk(1000);
    EXPECT_RAISES(item.SaveFile(Path("state.xml")), NotWritten(folder.Path("state.xml")), 256);
  }
  EXPECT_EQ(folder.ReadFile("state.xml"), old);
  EXPECT_EQ(Entries(), Strings{"state.xml"});
}

TEST_F(MAtomicFileTest, FailedAllocationsLeaveTheOldFileAndNothingElse) {
  folder.WriteFile("file", "old");
  const MString path = Path("file");
  int request = 0;
  for (bool isDone = false; !isDone; ++request) {
    ASSERT_LT(request, 100);
    const CountingFunctions table;
    CountingFunctions::FailAfter(request);
    try {
      MAtomicFile file(path);
      file.Write("new", 3);
      file.Commit();
      isDone = true;
    } catch (const MException& raised) {
      CountingFunctions::FailAfter(-1);
      EXPECT_EQ(raised.message, "Out of memory.");
      EXPECT_EQ(folder.ReadFile("file"), "old");
      EXPECT_EQ(Entries(), Strings{"file"});
    }
    CountingFunctions::FailAfter(-1);
  }
  EXPECT_GT(request, 1);
  EXPECT_EQ(folder.ReadFile("file"), "new");
}

TEST_F(MAtomicFileTest, FilesOfOthersBesideItAreKept) {
  folder.WriteFile("file~", "a backup");
  folder.WriteFile("file~1", "another");
  MAtomicFile one(Path("file")), two(Path("file"));
  Put(one, "one");
  Put(two, "two");
  EXPECT_EQ(Entries(), (Strings{"file~", "file~1", "file~2", "file~3"}));
  two.Commit();
  EXPECT_EQ(folder.ReadFile("file"), "two");
  one.Commit();
  EXPECT_EQ(folder.ReadFile("file"), "one");
  EXPECT_EQ(folder.ReadFile("file~"), "a backup");
  EXPECT_EQ(folder.ReadFile("file~1"), "another");
}

TEST_F(MAtomicFileTest, LinksStayAndWhatTheyLeadToIsReplaced) {
  fs::create_directory(folder.Path("sub"));
  folder.WriteFile("sub/file", "old");
  fs::create_symlink("sub/file", folder.Path("relative"));
  fs::create_symlink(folder.Path("relative"), folder.Path("chain"));
  fs::create_symlink("sub/fresh", folder.Path("dangling"));
  Save("chain", "new");
  EXPECT_EQ(folder.ReadFile("sub/file"), "new");
  Save("dangling", "made");
  EXPECT_EQ(folder.ReadFile("sub/fresh"), "made");
  for (const char* link : {"relative", "chain", "dangling"}) EXPECT_TRUE(fs::is_symlink(folder.Path(link)));
}

TEST_F(MAtomicFileTest, LinksInACircleCannotBeWritten) {
  fs::create_symlink("b", folder.Path("a"));
  fs::create_symlink("a", folder.Path("b"));
  EXPECT_RAISES(MAtomicFile(Path("a")), NotCreated(folder.Path("a")), 257);
  EXPECT_EQ(Entries(), (Strings{"a", "b"}));
}

TEST_F(MAtomicFileTest, PermissionsAreThoseOfTheOldFile) {
  for (const mode_t mode : {0600u, 0640u, 0666u, 0755u}) {
    folder.WriteFile("file", "old");
    ASSERT_EQ(chmod(folder.Path("file").c_str(), mode), 0);
    Save("file", "new");
    EXPECT_EQ(Mode(folder.Path("file")), mode);
  }
}

TEST_F(MAtomicFileTest, NewFileHasTheUsualPermissions) {
  const mode_t mask = umask(027);
  Save("file", "new");
  umask(mask);
  EXPECT_EQ(Mode(folder.Path("file")), mode_t{0640});
}

TEST_F(MAtomicFileTest, OwnerIsThatOfTheOldFile) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  folder.WriteFile("file", "old");
  ASSERT_EQ(chown(folder.Path("file").c_str(), 1234, 2345), 0);
  Save("file", "new");
  struct stat info {};
  ASSERT_EQ(stat(folder.Path("file").c_str(), &info), 0);
  EXPECT_EQ(info.st_uid, 1234u);
  EXPECT_EQ(info.st_gid, 2345u);
}

TEST_F(MAtomicFileTest, WriteProtectedFileIsNotReplaced) {
  const OrdinaryUser user(folder);
  ASSERT_TRUE(OrdinaryUser::IsInForce());
  folder.WriteFile("file", "old");
  ASSERT_EQ(chmod(folder.Path("file").c_str(), 0400), 0);
  EXPECT_RAISES(MAtomicFile(Path("file")), NotCreated(folder.Path("file")), 257);
  EXPECT_EQ(folder.ReadFile("file"), "old");
  EXPECT_EQ(Entries(), Strings{"file"});
}

TEST_F(MAtomicFileTest, FileInALockedFolderIsWrittenDirectly) {
  const OrdinaryUser user(folder);
  ASSERT_TRUE(OrdinaryUser::IsInForce());
  folder.WriteFile("file", "an old and longer one");
  ASSERT_EQ(chmod(folder.GetPath().c_str(), 0500), 0);
  Save("file", "new");
  EXPECT_EQ(folder.ReadFile("file"), "new");
  EXPECT_RAISES(MAtomicFile(Path("fresh")), NotCreated(folder.Path("fresh")), 257);
  ASSERT_EQ(chmod(folder.GetPath().c_str(), 0700), 0);
}

TEST_F(MAtomicFileTest, WhatIsNoFileCannotBeWritten) {
  fs::create_directory(folder.Path("sub"));
  folder.WriteFile("file", "old");
  for (const char* name : {"sub", "sub/", "none/x", "file/x", "new/", "sub/.", "sub/.."})
    EXPECT_RAISES(MAtomicFile(Path(name)), NotCreated(folder.Path(name)), 257);
  EXPECT_RAISES(MAtomicFile(""), NotCreated(""), 257);
  MString cut = Path("cut");
  cut.Append(MChar{0});
  EXPECT_THROW(MAtomicFile{cut}, MException);
  EXPECT_EQ(Entries(), (Strings{"file", "sub"}));
}

TEST_F(MAtomicFileTest, FolderThatTakesThePlaceOfTheTargetStays) {
  MAtomicFile file(Path("file"));
  Put(file, "new");
  fs::create_directories(folder.Path("file/below"));
  EXPECT_RAISES(file.Commit(), NotCreated(folder.Path("file")), 257);
  EXPECT_FALSE(file.IsValid());
  EXPECT_EQ(Entries(), Strings{"file"});
}

TEST_F(MAtomicFileTest, DevicesAndPipesAreWrittenDirectly) {
  {
    MAtomicFile null("/dev/null");
    Put(null, "abc");
    EXPECT_NO_THROW(null.Commit());
  }
  MAtomicFile full("/dev/full");
  Put(full, "abc");
  EXPECT_RAISES(full.Commit(), NotWritten("/dev/full"), 256);
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0600), 0);
  EXPECT_NO_THROW(Save("pipe", "abc"));
  EXPECT_TRUE(fs::is_fifo(folder.Path("pipe")));
}

TEST_F(MAtomicFileTest, LongestAndUnusualNamesCanBeWritten) {
  std::string umlauts = "x";
  while (umlauts.size() < 254) umlauts += "Ü";
  for (const std::string& name :
       {std::string(255, 'n'), umlauts, std::string("two\nlines"), std::string("~")}) {
    Save(name, "new");
    EXPECT_EQ(Entries(), Strings{name});
    fs::remove(folder.Path(name));
  }
}

TEST_F(MAtomicFileTest, RelativePathKeepsItsFolder) {
  const fs::path before = fs::current_path();
  fs::current_path(folder.GetPath());
  MAtomicFile file("file");
  fs::current_path(before);
  Put(file, "new");
  file.Commit();
  EXPECT_EQ(folder.ReadFile("file"), "new");
}

}  // namespace
