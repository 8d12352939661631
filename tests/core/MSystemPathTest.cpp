#include "core/MSystemPath.h"

#include <sys/wait.h>

#include <iterator>

#include "core/MPath.h"
#include "tests/core/FileTests.h"

namespace {

// A user without any settings whose home is a folder of the test's own.
class MSystemPathTest : public testing::Test {
 protected:
  static std::string Get(MSystemPath path) { return Utf8(GetSystemPath(path)); }
  std::string Home(const char* below) const { return home.Path(below); }

  const TemporaryFolder home;
  const Variable homeVariable{"HOME", home.GetPath().c_str()};
  const Variable data{"XDG_DATA_HOME", nullptr}, config{"XDG_CONFIG_HOME", nullptr};
  const Variable documents{"XDG_DOCUMENTS_DIR", nullptr}, desktop{"XDG_DESKTOP_DIR", nullptr};
  const Variable publicShare{"XDG_PUBLICSHARE_DIR", nullptr}, temporary{"TMPDIR", nullptr};
};

TEST_F(MSystemPathTest, EachNumberHasItsNameAndItsFolder) {
  const struct {
    const char* name;
    int32_t windowsId;
    std::string folder;
  } rows[] = {
      {"data", 35, Home(".local/share/Tessaron")},
      {"userdata", 26, Home(".config")},
      {"documents", 46, Home("Public")},
      {"userdocuments", 5, Home("Documents")},
      {"programfiles", 38, "/opt"},
      {"components", 43, "/usr/local/lib"},
      {"startmenu", 22, "/usr/share/applications"},
      {"userstartmenu", 11, Home(".local/share/applications")},
      {"startmenuprograms", 23, "/usr/share/applications"},
      {"userstartmenuprograms", 2, Home(".local/share/applications")},
      {"desktop", 25, Home("Desktop")},
      {"userdesktop", 16, Home("Desktop")},
      {"system", -1, "/usr/lib"},
      {"fonts", -1, "/usr/share/fonts"},
      {"temp", -1, "/tmp"},
  };
  ASSERT_EQ(std::size(kSystemPaths), std::size(rows));
  for (int32_t i = 0; i < 15; ++i) {
    EXPECT_STREQ(kSystemPaths[i].name, rows[i].name);
    EXPECT_EQ(kSystemPaths[i].windowsId, rows[i].windowsId);
    EXPECT_EQ(Get(MSystemPath{i}), rows[i].folder);
  }
}

TEST_F(MSystemPathTest, AllAreNormalised) {
  const Variable slash("HOME", (home.GetPath().string() + "/").c_str());
  const Variable temp("TMPDIR", (home.GetPath().string() + "/").c_str());
  for (int32_t i = 0; i < 15; ++i) {
    const MString path = GetSystemPath(MSystemPath{i});
    EXPECT_EQ(path, NormalizePath(path));
  }
}

TEST_F(MSystemPathTest, FoldersOfDataAreMade) {
  EXPECT_TRUE(std::filesystem::is_directory(Get(MSystemPath::kData)));
  EXPECT_TRUE(std::filesystem::is_directory(Get(MSystemPath::kUserData)));
  EXPECT_FALSE(std::filesystem::exists(Get(MSystemPath::kUserDocuments)));
}

TEST_F(MSystemPathTest, FolderThatCannotBeMadeIsNamedAllTheSame) {
  home.WriteFile("file", "");
  const Variable below("XDG_DATA_HOME", Home("file/below").c_str());
  EXPECT_EQ(Get(MSystemPath::kData), Home("file/below/Tessaron"));
}

TEST_F(MSystemPathTest, VariablesMoveTheFolders) {
  const Variable a("XDG_DATA_HOME", Home("a").c_str()), b("XDG_CONFIG_HOME", Home("b").c_str());
  const Variable c("XDG_DOCUMENTS_DIR", Home("c").c_str()), d("XDG_DESKTOP_DIR", Home("d").c_str());
  const Variable e("XDG_PUBLICSHARE_DIR", Home("e").c_str());
  EXPECT_EQ(Get(MSystemPath::kData), Home("a/Tessaron"));
  EXPECT_EQ(Get(MSystemPath::kUserData), Home("b"));
  EXPECT_EQ(Get(MSystemPath::kUserDocuments), Home("c"));
  EXPECT_EQ(Get(MSystemPath::kUserDesktop), Home("d"));
  EXPECT_EQ(Get(MSystemPath::kDocuments), Home("e"));
}

TEST_F(MSystemPathTest, VariablesThatAreNoAbsolutePathCountAsUnset) {
  for (const char* value : {"", "relative", "./x", "~/x", "/bad\xFF"}) {
    const Variable a("XDG_DATA_HOME", value), b("XDG_DOCUMENTS_DIR", value), c("TMPDIR", value);
    EXPECT_EQ(Get(MSystemPath::kData), Home(".local/share/Tessaron")) << value;
    EXPECT_EQ(Get(MSystemPath::kUserDocuments), Home("Documents")) << value;
    EXPECT_EQ(Get(MSystemPath::kTemp), "/tmp") << value;
  }
}

TEST_F(MSystemPathTest, FoldersAreReadFromTheUsersFile) {
  std::filesystem::create_directory(Home(".config"));
  home.WriteFile(".config/user-dirs.dirs",
                 "# XDG_DOCUMENTS_DIR=\"$HOME/commented\"\n"
                 "XDG_DOCUMENTS_DIR=\"$HOME/first\"\n"
                 " XDG_DOCUMENTS_DIR=\"$HOME/Doku\\$ \xC3\xA4\"\n"
                 "XDG_DOCUMENTS_DIR=\"relative\"\n"
                 "XDG_DOCUMENTS_DIR=\"$HOMEwhat\"\n"
                 "XDG_DOCUMENTS_DIR=\"unfinished\n"
                 "XDG_DOCUMENTS_DIRECTORY=\"/x\"\n"
                 "XDG_DESKTOP_DIR=\"$HOME\"\n"
                 "XDG_PUBLICSHARE_DIR=\"/srv/public/\"");
  EXPECT_EQ(Get(MSystemPath::kUserDocuments), Home("Doku$ ä"));
  EXPECT_EQ(Get(MSystemPath::kDesktop), home.GetPath());
  EXPECT_EQ(Get(MSystemPath::kDocuments), "/srv/public");
}

TEST_F(MSystemPathTest, WithoutHomeTheUsersEntryCounts) {
  const Variable none("HOME", nullptr);
  const std::string path = Get(MSystemPath::kUserDesktop);
  EXPECT_EQ(path[0], '/');
  EXPECT_EQ(path.find(home.GetPath().string()), std::string::npos);
}

TEST_F(MSystemPathTest, OtherNumbersRaise) {
  for (const int32_t number : {15, -1})
    EXPECT_RAISES(GetSystemPath(MSystemPath{number}), "Could not retrieve system path. Invalid argument", 0);
}

TEST_F(MSystemPathTest, TemporaryFolderMustExist) {
  EXPECT_EQ(Get(MSystemPath::kTemp), "/tmp");
  const Variable own("TMPDIR", Home("none").c_str());
  EXPECT_EQ(Get(MSystemPath::kTemp), "/tmp");
  std::filesystem::create_directory(Home("none"));
  EXPECT_EQ(Get(MSystemPath::kTemp), Home("none"));
}

// In a child process that sees an empty folder as its root.
TEST_F(MSystemPathTest, WithoutATemporaryFolderItLiesInTheSystemFolder) {
  const pid_t child = fork();
  if (child == 0) {
    if (chroot(home.GetPath().c_str()) != 0 || chdir("/") != 0) _exit(2);
    _exit(GetSystemPath(MSystemPath::kTemp) == "/usr/lib/temp" ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  if (WEXITSTATUS(status) == 2) GTEST_SKIP() << "only root can change its root";
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

// The same with an unknown user.
TEST_F(MSystemPathTest, UserWithoutAHomeRaises) {
  std::filesystem::permissions(home.GetPath(), std::filesystem::perms{0755});
  const pid_t child = fork();
  if (child == 0) {
    unsetenv("HOME");
    if (chroot(home.GetPath().c_str()) != 0 || setuid(54321) != 0) _exit(2);
    try {
      GetSystemPath(MSystemPath::kUserData);
    } catch (const MException& raised) {
      _exit(Utf8(raised.message) == "Could not retrieve system path. No such file or directory" ? 0 : 1);
    }
    _exit(1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  if (WEXITSTATUS(status) == 2) GTEST_SKIP() << "only root can change its root";
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
