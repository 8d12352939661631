#include "plugin/MBuiltInResources.h"

#include <set>

#include "tests/common/Texts.h"
#include "tests/resources/ResourceFiles.h"

namespace {

constexpr int32_t kPictureSize = 18 + 26 * 16 * 4 + 26;

class MBuiltInResourcesTest : public testing::Test {
 protected:
  void SetUp() override {
    MMemoryStream stream(MBuiltInResources, MBuiltInResourcesSize);
    library.Load(stream);
    EXPECT_TRUE(stream.IsEnd());
  }
  MResourceLibrary library;
};

TEST_F(MBuiltInResourcesTest, SevenPicturesLieBackToBack) {
  const char* const ids[] = {"Eqbandpass", "Eqhighpass", "Eqhighshelf", "Eqlowpass",
                             "Eqlowshelf", "Eqnotch",    "Eqpeak"};
  ASSERT_EQ(library.GetResources().GetCount(), 7);
  for (int32_t i = 0; i < 7; ++i) {
    const MResource& resource = *library.GetResources()[i];
    EXPECT_EQ(Utf8(resource.id), ids[i]);
    EXPECT_EQ(resource.offset, 1708 * i);
    EXPECT_EQ(resource.size, 1708);
    EXPECT_EQ(resource.stream.GetData(), library.GetResources()[0]->stream.GetData() + 1708 * i);
  }
}

TEST_F(MBuiltInResourcesTest, TheIndexNamesTheirType) {
  EXPECT_EQ(library.GetRoot().GetName(), "resources");
  ASSERT_TRUE(library.GetRoot().HasSubItem("resources"));
  for (const MXMLItem* item : library.GetRoot().CachedSubItem().GetChildren())
    EXPECT_EQ(item->GetName(), "resourceEq");
}

TEST_F(MBuiltInResourcesTest, PicturesAreFoundInAnyCase) {
  EXPECT_EQ(library.Find("eqpeak").GetSize(), kPictureSize);
  EXPECT_EQ(library.Find("EQLOWSHELF").GetSize(), kPictureSize);
}

TEST_F(MBuiltInResourcesTest, EachIsA32BitTGAImageOf26By16PixelsWithAFooter) {
  const std::string head = LittleEndian(0x020000, 3) + LittleEndian(0, 9) + LittleEndian(26, 2) +
                           LittleEndian(16, 2) + LittleEndian(32, 1) + LittleEndian(8, 1);
  for (MResource* const resource : library.GetResources()) {
    const std::string picture = Take(resource->stream, 10000);
    ASSERT_EQ(picture.size(), std::size_t{kPictureSize});
    EXPECT_EQ(picture.substr(0, 18), head);
    EXPECT_EQ(picture.substr(picture.size() - 26), std::string(8, '\0') + "TRUEVISION-XFILE." + '\0');
  }
}

TEST_F(MBuiltInResourcesTest, EachShowsSomethingOfItsOwnOnATransparentGround) {
  std::set<std::string> different;
  for (MResource* const resource : library.GetResources()) {
    const std::string picture = Take(resource->stream, 10000);
    different.insert(picture);
    std::set<uint8_t> alphas;
    int opaque = 0, clear = 0;
    for (std::size_t i = 18 + 3; i < 18 + 26 * 16 * 4; i += 4) {
      const auto alpha = static_cast<uint8_t>(picture[i]);
      alphas.insert(alpha);
      opaque += alpha == 255;
      clear += alpha == 0;
    }
    EXPECT_GT(opaque, 5) << Utf8(resource->id);
    EXPECT_GT(clear, 50) << Utf8(resource->id);
    EXPECT_GT(alphas.size(), 20u) << Utf8(resource->id) << " has smooth edges";
  }
  EXPECT_EQ(different.size(), 7u);
}

}  // namespace
