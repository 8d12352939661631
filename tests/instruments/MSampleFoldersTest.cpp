#include "instruments/MSampleFolders.h"

#include <gtest/gtest.h>

#include "instruments/Playbox.h"
#include "instruments/Vinylrake.h"
#include "tests/common/ReportedTexts.h"
#include "tests/instruments/ContentFolder.h"
#include "tests/instruments/StreamPlayer.h"

namespace {

TEST(MSampleFolders, FolderIsBelowItsRootWithoutRegardToCase) {
  MString rest;
  EXPECT_TRUE(MIsBelowFolder("/a/Samples", "/a/samples", rest));
  EXPECT_EQ(rest, "");
  EXPECT_TRUE(MIsBelowFolder("/a/SAMPLES/x/y", "/a/samples", rest));
  EXPECT_EQ(rest, "x/y");
  EXPECT_TRUE(MIsBelowFolder("/a/samples/x", "/a/samples/", rest));
  EXPECT_EQ(rest, "x");
  EXPECT_TRUE(MIsBelowFolder("/x", "/", rest));
  EXPECT_EQ(rest, "x");
  EXPECT_FALSE(MIsBelowFolder("/a/samples2", "/a/samples", rest));
  EXPECT_FALSE(MIsBelowFolder("/a/sample", "/a/samples", rest));
  EXPECT_FALSE(MIsBelowFolder("/a", "", rest));
}

TEST(MSampleFolders, PathWithoutParentsLeadsDown) {
  EXPECT_EQ(MWithoutParents("/a//b/"), "a/b");
  EXPECT_EQ(MWithoutParents("../../a/../b/.."), "a/b");
  EXPECT_EQ(MWithoutParents("..a/b.."), "..a/b..");
  EXPECT_EQ(MWithoutParents(".."), "");
  EXPECT_EQ(MWithoutParents(""), "");
}

template <typename Plugin>
class SampleImportTest : public testing::Test {
 protected:
  ContentFolder content;
  ReportedTexts reported;
};

using SamplePlugins = testing::Types<PlayboxAudioStreamPlugin, VinylrakeAudioStreamPlugin>;
TYPED_TEST_SUITE(SampleImportTest, SamplePlugins);

TYPED_TEST(SampleImportTest, CopyHasTheLastPartOfTheNameAndStaysBelowTheRoot) {
  this->content.WriteSample("own/a.wav", {{0.5f}});
  this->content.WriteSample("own/x/b.wav", {{0.5f}});
  StreamPlayer<TypeParam> player(1);
  ASSERT_TRUE(player.Import(this->content.Text("own/x/.."), "../own/a.wav"));
  MXMLItem& state = player.Save();
  const std::string path = Utf8(state.GetAttribute("subpath")) + "/" + Utf8(state.GetAttribute("filename"));
  EXPECT_EQ(path.find(".."), std::string::npos);
  EXPECT_TRUE(this->content.Has("Samples/" + path));
  ASSERT_TRUE(player.Import(this->content.Text("Samples"), "../own/a.wav"));
  EXPECT_EQ(Utf8(player.Save().GetAttribute("filename")), "../own/a.wav");
}

TYPED_TEST(SampleImportTest, CollectedNameCannotLeaveTheRoot) {
  this->content.WriteSample("a.wav", {{0.5f}});
  MXMLItem state("state");
  state.SetAttribute("CustomSamplePath", "1");
  state.SetAttribute("filename", "../a.wav");
  StreamPlayer<TypeParam> player(1);
  player.Load(state);
  MCollectedFiles files;
  player.Call(MService::kCollectFiles, MAsWord(&files));
  ASSERT_EQ(files.count, 1);
  EXPECT_EQ(Utf8(files.path[0]).find(this->content.Path("Samples/Imported")), 0u);
  EXPECT_EQ(Utf8(files.path[0]).find(".."), std::string::npos);
  MXMLItem& collected = player.Save();
  EXPECT_EQ(collected.GetAttribute("filename"), "a.wav");
  EXPECT_EQ(player.Save().GetAttribute("filename"), "../a.wav");
  player.Load(collected);
  EXPECT_EQ(Utf8(files.path[0]),
            this->content.Path("Samples/" + Utf8(collected.GetAttribute("subpath")) + "/a.wav"));
  MWord note = player.Create();
  EXPECT_NE(note, 0);
  player.Close(note);
}

TYPED_TEST(SampleImportTest, CollectionThatCannotCopyIsReportedAndNamesNothing) {
  this->content.WriteSample("own/a.wav", {{0.5f}});
  MXMLItem state("state");
  state.SetAttribute("CustomSamplePath", "1");
  state.SetAttribute("filename", "a.wav");
  StreamPlayer<TypeParam> player(1);
  player.Load(state);
  std::filesystem::remove(this->content.Path("own/a.wav"));
  MCollectedFiles files;
  player.Call(MService::kCollectFiles, MAsWord(&files));
  EXPECT_EQ(files.count, 0);
  EXPECT_EQ(this->reported.Get().size(), 1u);
  EXPECT_EQ(player.Save().GetAttribute("CustomSamplePath"), "1");
  for (const int32_t count : {-1, 256, 257, INT32_MAX}) {
    files.count = count;
    player.Call(MService::kCollectFiles, MAsWord(&files));
    EXPECT_EQ(files.count, count);
  }
}

TYPED_TEST(SampleImportTest, MissingBrokenAndEmptyFilesAreReportedAndSilent) {
  this->content.GetFolder().WriteFile("Samples/empty.wav", "");
  this->content.GetFolder().WriteFile("Samples/broken.wav", "RIFF and nothing else");
  this->content.WriteSample("Samples/a.wav", {{0.5f}});
  StreamPlayer<TypeParam> player(1);
  for (const char* const name : {"missing.wav", "empty.wav", "broken.wav", "nothing"}) {
    ASSERT_TRUE(player.Import(this->content.Text("Samples"), "a.wav"));
    ReportedTexts::Clear();
    EXPECT_FALSE(player.Import(this->content.Text("Samples"), MString::Literal(name))) << name;
    EXPECT_EQ(player.Create(), 0);
    ASSERT_EQ(this->reported.Get().size(), 1u);
    EXPECT_NE(this->reported.Get()[0].find(name), std::string::npos) << "the report names the file";
    EXPECT_EQ(SonvelleConfiguration::Get()->sampleCache.GetCount(), 0);
  }
}

}  // namespace
