#include <sys/stat.h>

#include "core/MFileList.h"
#include "tests/core/FileTests.h"

namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

class MFileTreeTest : public testing::Test {
 protected:
  MFileTree Scan(const std::string& name = "root") const { return MFileTree::Scan(Text(folder.Path(name))); }
  void Make(const std::string& name) const {
    fs::create_directories(fs::path(folder.Path(name)).parent_path());
    folder.WriteFile(name, "");
  }
  const TemporaryFolder folder;
};

TEST_F(MFileTreeTest, HoldsAllFilesAndFoldersSorted) {
  Make("root/b.wav");
  Make("root/A.wav");
  Make("root/sub/deep/x.wav");
  Make("root/Also/.hidden");
  Make("root/.git/file");
  const MFileTree tree = Scan();
  EXPECT_EQ(Utf8(tree.name), "root");
  EXPECT_EQ(Names(tree.files), (Strings{"A.wav", "b.wav"}));
  ASSERT_EQ(tree.folders.size(), 2u);
  EXPECT_EQ(Utf8(tree.folders[0].name), "Also");
  EXPECT_TRUE(tree.folders[0].files.IsEmpty());
  EXPECT_EQ(Utf8(tree.folders[1].name), "sub");
  ASSERT_EQ(tree.folders[1].folders.size(), 1u);
  EXPECT_EQ(Names(tree.folders[1].folders[0].files), Strings{"x.wav"});
}

TEST_F(MFileTreeTest, MissingFolderIsEmpty) {
  Make("file");
  for (const char* name : {"none", "file", "file/x"}) {
    const MFileTree tree = Scan(name);
    EXPECT_TRUE(tree.files.IsEmpty());
    EXPECT_TRUE(tree.folders.empty());
  }
  EXPECT_TRUE(MFileTree::Scan(MString()).files.IsEmpty());
}

TEST_F(MFileTreeTest, LinksToFoldersAreNotFollowedLinksToFilesAre) {
  Make("root/a/file");
  Make("elsewhere/other");
  fs::create_directory_symlink("..", folder.Path("root/a/loop"));
  fs::create_directory_symlink(".", folder.Path("root/self"));
  fs::create_directory_symlink(folder.Path("elsewhere"), folder.Path("root/away"));
  fs::create_symlink(folder.Path("elsewhere/other"), folder.Path("root/link"));
  const MFileTree tree = Scan();
  EXPECT_EQ(Names(tree.files), Strings{"link"});
  ASSERT_EQ(tree.folders.size(), 1u);
  EXPECT_TRUE(tree.folders[0].folders.empty());
}

TEST_F(MFileTreeTest, ALinkAsItsRootIsFollowed) {
  Make("elsewhere/other");
  fs::create_directory_symlink("elsewhere", folder.Path("root"));
  EXPECT_EQ(Names(Scan().files), Strings{"other"});
}

TEST_F(MFileTreeTest, DepthIsBounded) {
  std::string deep = folder.Path("root");
  ASSERT_EQ(mkdir(deep.c_str(), 0700), 0);
  const int made = MFileTree::kMaximumDepth + 20;
  for (int i = 0; i < made; ++i) ASSERT_EQ(mkdir((deep += "/d").c_str(), 0700), 0);
  const MFileTree tree = Scan();
  int depth = 0;
  for (const MFileTree* below = &tree; !below->folders.empty(); below = &below->folders[0]) ++depth;
  EXPECT_EQ(depth, MFileTree::kMaximumDepth);
}

}  // namespace
