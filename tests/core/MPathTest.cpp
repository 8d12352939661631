#include "core/MPath.h"

#include "tests/core/FileTests.h"

namespace {

std::string Normal(const char* path) {
  return Utf8(NormalizePath(Buffer(path)));
}

std::string Joined(const char* folder, const char* name) {
  return Utf8(JoinPath(Buffer(folder), Buffer(name)));
}

TEST(MPath, NormalizingDropsOneSlashAtTheEnd) {
  EXPECT_EQ(Normal("/a/b/"), "/a/b");
  EXPECT_EQ(Normal("/a/b//"), "/a/b/");
  EXPECT_EQ(Normal("/a/b"), "/a/b");
}

TEST(MPath, NormalizingTurnsBackslashesIntoSlashes) {
  EXPECT_EQ(Normal("\\a\\b"), "/a/b");
  EXPECT_EQ(Normal("\\a/b\\"), "/a/b");
  EXPECT_EQ(Normal("\\"), "/");
}

TEST(MPath, NormalizingPutsTheCurrentFolderInFrontOfARelativePath) {
  const std::string current = std::filesystem::current_path();
  EXPECT_EQ(Normal("x"), current + "/x");
  EXPECT_EQ(Normal("a:b"), current + "/a:b");
  EXPECT_EQ(Normal("x\\y/"), current + "/x/y");
}

TEST(MPath, NormalizingInTheRootMakesNoDoubleSlash) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path("/");
  EXPECT_EQ(Normal("x"), "/x");
  std::filesystem::current_path(before);
}

TEST(MPath, NormalizingWithoutACurrentFolderRaises) {
  const std::filesystem::path before = std::filesystem::current_path();
  {
    const TemporaryFolder folder;
    std::filesystem::current_path(folder.GetPath());
  }
  EXPECT_RAISES(NormalizePath("x"), "Could not retrieve system path. No such file or directory", 0);
  EXPECT_EQ(Normal("/x/"), "/x");
  std::filesystem::current_path(before);
}

TEST(MPath, NormalizingInAFolderWhoseNameIsNoTextRaises) {
  const std::filesystem::path before = std::filesystem::current_path();
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.Path("\xFF"));
  std::filesystem::current_path(folder.Path("\xFF"));
  EXPECT_RAISES(NormalizePath("x"),
                "Could not retrieve system path. Invalid or incomplete multibyte or wide character", 0);
  std::filesystem::current_path(before);
}

TEST(MPath, NormalizingKeepsTheEmptyPathAndTheRoot) {
  EXPECT_EQ(Normal(""), "");
  EXPECT_EQ(Normal("/"), "/");
}

TEST(MPath, NormalizingKeepsCharactersOfAllKinds) {
  EXPECT_EQ(Utf8(NormalizePath(Text("/Übung\n/𝄞/"))), "/Übung\n/𝄞");
}

TEST(MPath, JoiningPutsExactlyOneSlashBetween) {
  for (const char* folder : {"/a", "/a/", "/a///"})
    for (const char* name : {"b/c", "/b/c", "//b/c"}) EXPECT_EQ(Joined(folder, name), "/a/b/c");
  EXPECT_EQ(Joined("/", "b"), "/b");
  EXPECT_EQ(Joined("a", "b/"), "a/b/");
}

TEST(MPath, JoiningWithAnEmptyPartLeavesTheOther) {
  EXPECT_EQ(Joined("", "/b/"), "/b/");
  EXPECT_EQ(Joined("/a/", ""), "/a/");
  EXPECT_EQ(Joined("", ""), "");
}

TEST(MPath, NameIsWhatStandsBehindTheLastSlash) {
  EXPECT_EQ(Utf8(GetPathName("/a/b.wav")), "b.wav");
  EXPECT_EQ(Utf8(GetPathName("b.wav")), "b.wav");
  EXPECT_EQ(Utf8(GetPathName("/a/")), "");
}

TEST(MPath, TextThatWouldNameAnotherFileHasNoBytes) {
  EXPECT_EQ(MEncodePath(Text("a𝄞b")).GetSize(), 7);
  for (const char16_t unit : {u'\0', char16_t{0xD834}, char16_t{0xDD1E}}) {
    MString path = "ab";
    path.Insert(1, unit);
    EXPECT_EQ(MEncodePath(path).GetSize(), 0) << int{unit};
  }
  EXPECT_EQ(MEncodePath(MString(char16_t{0xD834})).GetSize(), 0);
}

TEST(MPath, BytesThatWouldNotComeBackAreNoText) {
  MString path;
  EXPECT_TRUE(MDecodePath("/\xC3\x9C\n\xF0\x9D\x84\x9E", path));
  EXPECT_EQ(Utf8(path), "/Ü\n𝄞");
  for (const char* bytes : {"a\xFF", "\x80", "a\xC3", "\xC3(", "\xED\xA0\x80", "\xC0\xAF",
                            "\xEF\xBB\xBF"
                            "a",
                            "\xF4\x8F\xB9\x81", "\xF8\x88\x80\x80\x80"})
    EXPECT_FALSE(MDecodePath(bytes, path)) << bytes;
}

}  // namespace
