#include "plugin/SonvelleConfiguration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/common/DataFolder.h"
#include "tests/common/ReportedTexts.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr char kFile[] = "SonvelleConfiguration.cfg";

// The current folder is one of the test's own for the object's lifetime.
class CurrentFolder {
 public:
  CurrentFolder() : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(folder.GetPath());
  }
  ~CurrentFolder() { std::filesystem::current_path(before_); }

  TemporaryFolder folder;

 private:
  std::filesystem::path before_;
};

std::vector<std::string> Texts(const MList<MString>& list) {
  std::vector<std::string> texts;
  for (const MString& text : list) texts.push_back(Utf8(text));
  return texts;
}

TEST(SonvelleConfiguration, FirstRunKeepsTheCurrentFolderForAllLaterOnes) {
  const DataFolder data;
  const CurrentFolder first;
  const std::string path = first.folder.GetPath().string();
  {
    const SonvelleConfiguration configuration;
    EXPECT_EQ(Utf8(configuration.globalPath), path);
    EXPECT_EQ(Utf8(configuration.samplePath), path + "/Samples");
    EXPECT_EQ(Utf8(configuration.subSampleLibraryPath), path + "/SubSampleLibraries");
    EXPECT_EQ(Utf8(configuration.multiSamplePath), path + "/MultiSamples");
    EXPECT_EQ(configuration.samplePathCustom, "");
    EXPECT_FALSE(data.Has(kFile));
  }
  EXPECT_EQ(data.Read(kFile), "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<SonvelleCfg GlobalPath=\"" +
                                  path + "\" SamplePathCustom=\"\"/>\n");
  const CurrentFolder second;
  EXPECT_EQ(Utf8(SonvelleConfiguration().globalPath), path);
}

TEST(SonvelleConfiguration, ABrokenFileGivesTheDefaultsAndIsOverwritten) {
  const DataFolder data;
  const CurrentFolder current;
  for (const char* const text : {"", "<SonvelleCfg GlobalPath=\"/x\"", "\xFF\xFE", "nothing"}) {
    data.Write(kFile, text);
    EXPECT_EQ(Utf8(SonvelleConfiguration().globalPath), current.folder.GetPath().string()) << text;
    EXPECT_THAT(data.Read(kFile),
                HasSubstr("<SonvelleCfg GlobalPath=\"" + current.folder.GetPath().string()));
  }
}

TEST(SonvelleConfiguration, ChangedCustomPathIsSavedAndTheRestSurvives) {
  const DataFolder data;
  data.Write(kFile,
             "<SonvelleCfg GlobalPath=\"/content\" Other=\"kept\" SamplePathCustom=\"/mine\">"
             "<child a=\"1\">text</child></SonvelleCfg>");
  {
    SonvelleConfiguration configuration;
    EXPECT_EQ(configuration.globalPath, "/content");
    EXPECT_EQ(configuration.samplePathCustom, "/mine");
    configuration.samplePathCustom = "/yours";
  }
  const std::string text = data.Read(kFile);
  EXPECT_THAT(text, HasSubstr("GlobalPath=\"/content\" Other=\"kept\" SamplePathCustom=\"/yours\""));
  EXPECT_THAT(text, HasSubstr("<child a=\"1\">"));
}

TEST(SonvelleConfiguration, ContentIsListedAtTheStart) {
  const DataFolder data;
  const CurrentFolder current;
  const auto& root = current.folder.GetPath();
  std::filesystem::create_directories(root / "Samples" / "Drums" / "Kicks");
  std::filesystem::create_directories(root / "MultiSamples");
  std::filesystem::create_directory_symlink(root / "Samples", root / "Samples" / "Drums" / "Loop");
  current.folder.WriteFile("Samples/b.wav", "");
  current.folder.WriteFile("Samples/A.wav", "");
  current.folder.WriteFile("Samples/Drums/Kicks/deep.zsd", "");
  current.folder.WriteFile("MultiSamples/Kit.qxMultiSample", "");
  const SonvelleConfiguration configuration;
  EXPECT_THAT(Texts(configuration.sampleFiles.files), ElementsAre("A.wav", "b.wav"));
  ASSERT_EQ(configuration.sampleFiles.folders.size(), 1u);
  EXPECT_THAT(Texts(configuration.multiSampleFiles.files), ElementsAre("Kit.qxMultiSample"));
  EXPECT_THAT(Texts(configuration.subSampleLibraryFiles.files), ElementsAre()) << "the folder is missing";
}

TEST(SonvelleConfiguration, FailureToSaveIsReportedAndNothingIsLost) {
  const DataFolder data;
  const CurrentFolder current;
  const ReportedTexts reported;
  std::filesystem::create_directories(data.Path(kFile));
  { const SonvelleConfiguration configuration; }
  ASSERT_EQ(ReportedTexts::Get().size(), 1u);
  EXPECT_THAT(ReportedTexts::Get()[0], HasSubstr("catched at 'Sonvelle configuration could not be saved.'"));
  EXPECT_TRUE(std::filesystem::is_directory(data.Path(kFile)));
}

TEST(SonvelleConfiguration, AFileThatMustNotBeWrittenStaysAsItIs) {
  const DataFolder data;
  const CurrentFolder current;
  const ReportedTexts reported;
  const OrdinaryUser user(data.GetFolder());
  const std::string text = "<SonvelleCfg GlobalPath=\"/content\"/>";
  data.Write(kFile, text);
  std::filesystem::permissions(data.Path(kFile), std::filesystem::perms::owner_read);
  { SonvelleConfiguration().samplePathCustom = "/mine"; }
  ASSERT_EQ(ReportedTexts::Get().size(), 1u);
  EXPECT_THAT(ReportedTexts::Get()[0], HasSubstr("catched at 'Sonvelle configuration could not be saved.'"));
  EXPECT_EQ(data.Read(kFile), text);
}

// As when the process has all the files open that it may have.
TEST(SonvelleConfiguration, AFileThatCouldNotBeOpenedIsNotReplacedByDefaults) {
  const DataFolder data;
  const CurrentFolder current;
  const ReportedTexts reported;
  const OrdinaryUser user(data.GetFolder());
  const std::string text = "<SonvelleCfg GlobalPath=\"/content\"/>";
  data.Write(kFile, text);
  std::filesystem::permissions(data.Path(kFile), std::filesystem::perms::owner_write);
  { EXPECT_EQ(Utf8(SonvelleConfiguration().globalPath), current.folder.GetPath().string()); }
  ASSERT_EQ(ReportedTexts::Get().size(), 1u);
  EXPECT_THAT(ReportedTexts::Get()[0], HasSubstr("catched at 'Sonvelle configuration could not be saved.'"));
  std::filesystem::permissions(data.Path(kFile), std::filesystem::perms::owner_all);
  EXPECT_EQ(data.Read(kFile), text);
}

TEST(SonvelleConfiguration, ThereIsOneOrNone) {
  const DataFolder data;
  const CurrentFolder current;
  EXPECT_EQ(SonvelleConfiguration::Get(), nullptr);
  SonvelleConfiguration::Create();
  SonvelleConfiguration* const configuration = SonvelleConfiguration::Get();
  ASSERT_NE(configuration, nullptr);
  SonvelleConfiguration::Create();
  EXPECT_EQ(SonvelleConfiguration::Get(), configuration);
  SonvelleConfiguration::Destroy();
  EXPECT_EQ(SonvelleConfiguration::Get(), nullptr);
  EXPECT_TRUE(data.Has(kFile));
}

}  // namespace
