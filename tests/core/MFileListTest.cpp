#include "core/MFileList.h"

#include <sys/stat.h>

#include "core/MFileStream.h"
#include "core/MFileTools.h"
#include "core/MPath.h"
#include "tests/common/Descriptors.h"
#include "tests/core/FileTests.h"
#include "tests/core/StreamDoubles.h"

namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

class MFileListTest : public testing::Test {
 protected:
  MString Root() const { return Text(folder.GetPath()); }
  void Make(const Strings& files, const Strings& folders = {}) const {
    for (const std::string& name : files) folder.WriteFile(name, "");
    for (const std::string& name : folders) fs::create_directories(folder.Path(name));
  }
  Strings Files(const char* filter = "") const {
    MList<MString> files;
    GetFileList(Root(), Buffer(filter), &files, nullptr);
    return Names(files);
  }
  Strings Folders(const char* filter = "") const {
    MList<MString> folders;
    GetFileList(Root(), Buffer(filter), nullptr, &folders);
    return Names(folders);
  }
  const TemporaryFolder folder;
};

TEST_F(MFileListTest, FilesAndFoldersAreListedApartWithoutTheDots) {
  EXPECT_EQ(Files(), Strings{});
  EXPECT_EQ(Folders(), Strings{});
  Make({"a.wav", "b"}, {"c", "d.wav"});
  EXPECT_EQ(Files(), (Strings{"a.wav", "b"}));
  EXPECT_EQ(Folders(), (Strings{"c", "d.wav"}));
  EXPECT_EQ(Files(".*;*"), (Strings{"a.wav", "b"}));
  EXPECT_EQ(Folders(".*"), (Strings{"c", "d.wav"}));
}

TEST_F(MFileListTest, NamesAreSortedWithoutRegardToCaseThenByTheirUnits) {
  Make({"b", "C", "a", "Ab", "ä", "A", "aa", "é", "Z", "10", "9"});
  EXPECT_EQ(Files(), (Strings{"10", "9", "A", "a", "ä", "aa", "Ab", "b", "C", "é", "Z"}));
}

TEST_F(MFileListTest, FilterHoldsBackFilesWithoutRegardToCase) {
  Make({"a.wav", "B.WAV", "c.Zsd", "d.wave", "wav", "e.txt"}, {"sub", "sub.wav"});
  EXPECT_EQ(Files("*.wav;*.zsd"), (Strings{"a.wav", "B.WAV", "c.Zsd"}));
  EXPECT_EQ(Files("*.wav;;"), (Strings{"a.wav", "B.WAV"}));
  EXPECT_EQ(Folders("*.wav"), (Strings{"sub", "sub.wav"}));
  EXPECT_EQ(Files("*.none"), Strings{});
}

TEST_F(MFileListTest, HiddenOnesNeedAPatternWithADot) {
  Make({".hidden", "shown", ".directoryicon"}, {".folder", "open"});
  EXPECT_EQ(Files(), Strings{"shown"});
  EXPECT_EQ(Folders(), Strings{"open"});
  EXPECT_EQ(Files("?hidden"), Strings{});
  EXPECT_EQ(Files(".*"), (Strings{".directoryicon", ".hidden"}));
  EXPECT_EQ(Folders(".*"), (Strings{".folder", "open"}));
  EXPECT_EQ(Files("*;.h*"), (Strings{".hidden", "shown"}));
}

TEST_F(MFileListTest, WhatCannotBeListedRaisesWithTheCallersPathAndKeepsTheLists) {
  Make({"file"});
  MList<MString> files;
  files.Add("kept");
  for (const char* name : {"none", "file", "file/x"}) {
    const std::string path = folder.Path(name);
    EXPECT_RAISES(GetFileList(Text(path), "", &files, nullptr),
                  "Could not access path \"" + path + "\" to get file list.", 0);
  }
  EXPECT_RAISES(GetFileList("", "", &files, nullptr), "Could not access path \"\" to get file list.", 0);
  EXPECT_EQ(Names(files), Strings{"kept"});
}

TEST_F(MFileListTest, FolderWithoutPermissionRaises) {
  Make({}, {"locked"});
  ASSERT_EQ(chmod(folder.Path("locked").c_str(), 0), 0);
  const OrdinaryUser user(folder);
  ASSERT_TRUE(OrdinaryUser::IsInForce());
  EXPECT_THROW(GetFileList(Text(folder.Path("locked")), "", nullptr, nullptr), MException);
  const MFileTree tree = MFileTree::Scan(Root());
  ASSERT_EQ(tree.folders.size(), 1u);
  EXPECT_TRUE(tree.folders[0].files.IsEmpty());
}

TEST_F(MFileListTest, NothingStaysOpen) {
  Make({"file"}, {"sub/deep"});
  Files();
  MFileTree::Scan(Root());
  EXPECT_THROW(GetFileList(Text(folder.Path("file")), "", nullptr, nullptr), MException);
  EXPECT_TRUE(DescriptorsOf(folder.GetPath()).empty());
}

TEST_F(MFileListTest, ListsAreReplaced) {
  Make({"file"});
  MList<MString> files, folders;
  files.Add("old");
  folders.Add("old");
  GetFileList(Root(), "", &files, &folders);
  EXPECT_EQ(Names(files), Strings{"file"});
  EXPECT_TRUE(folders.IsEmpty());
}

TEST_F(MFileListTest, LinksCountAsWhatTheyLeadTo) {
  Make({"file"}, {"sub"});
  fs::create_symlink("file", folder.Path("filelink"));
  fs::create_directory_symlink("sub", folder.Path("sublink"));
  fs::create_symlink("none", folder.Path("dangling"));
  fs::create_symlink("circle", folder.Path("circle"));
  EXPECT_EQ(Files(), (Strings{"file", "filelink"}));
  EXPECT_EQ(Folders(), (Strings{"sub", "sublink"}));
}

TEST_F(MFileListTest, DevicesAndPipesAreNoFiles) {
  ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0600), 0);
  fs::create_symlink("/dev/null", folder.Path("null"));
  EXPECT_EQ(Files(), Strings{});
  EXPECT_EQ(Folders(), Strings{});
}

TEST_F(MFileListTest, NamesThatAreNoTextAreLeftOutAndStay) {
  Make({"good", "bad\xFF", "\xC3", "mark\xEF\xBB\xBF"}, {"bad\x80"});
  EXPECT_EQ(Files(), Strings{"good"});
  EXPECT_EQ(Folders(), Strings{});
  EXPECT_TRUE(fs::exists(folder.Path("bad\xFF")));
}

TEST_F(MFileListTest, ListedNamesCanBeOpenedAndDeleted) {
  const Strings names{"two\nlines", "a\\b", " ", "Übung ř 𝄞.wav", "日本語.zsd", "\x01", "*", "q?;"};
  Make(names);
  MList<MString> files;
  GetFileList(Root(), "", &files, nullptr);
  EXPECT_EQ(files.GetCount(), static_cast<int32_t>(names.size()));
  for (const MString& name : files) {
    const MString path = JoinPath(Root(), name);
    MFileStream(path, MFileStream::kRead).Close();
    DeleteFile(path);
  }
  EXPECT_TRUE(fs::is_empty(folder.GetPath()));
}

TEST(MFileFilter, StarsStandForAnyTextAndQuestionMarksForOneCharacter) {
  const struct {
    const char* name;
    const char* filter;
    bool matches;
  } rows[] = {
      {"abc", "*", true},       {"abc", "a*c", true},       {"abc", "a*b", false},
      {"abc", "???", true},     {"abc", "??", false},       {"abc", "????", false},
      {"abc", "*?c", true},     {"abc", "**a**c**", true},  {"abc", "abc*", true},
      {"abc", "", true},        {"abc", ";", false},        {"abc", "x;ABC", true},
      {"aab", "*ab", true},     {"abab", "*ab", true},      {"aXbXc", "a*b*c", true},
      {"ab", "a;b", false},     {"a.b.wav", "*.wav", true}, {"wav", "*.wav", false},
      {".wav", "*.wav", false}, {".wav", ".wav", true},     {"𝄞", "?", true},
      {"x𝄞y", "x?y", true},     {"x𝄞y", "x??y", false},     {"𝄞𝄞b", "*?b", true},
      {"Éa", "é*", true},       {"a*", "a\\*", false},
  };
  for (const auto& row : rows)
    EXPECT_EQ(MatchesFilter(Text(row.name), Text(row.filter)), row.matches) << row.name << " " << row.filter;
}

TEST(MFileFilter, ManyStarsTakeNoMoreThanAMoment) {
  std::string filter;
  for (int i = 0; i < 1000; ++i) filter += "*a";
  EXPECT_FALSE(MatchesFilter(Buffer(std::string(5000, 'a').c_str()), Buffer((filter + "*b").c_str())));
}

}  // namespace
