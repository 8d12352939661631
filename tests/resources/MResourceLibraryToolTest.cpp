// What tools/make_resources.py builds of the pictures, in each of its forms, is what is built in.

#include "plugin/MBuiltInResources.h"
#include "tests/common/Texts.h"
#include "tests/resources/ResourceFiles.h"

namespace {

class MResourceLibraryToolTest : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(All, MResourceLibraryToolTest,
                         testing::Values("small", "smallc", "large", "largec", "largei", "largeci", "largeib",
                                         "largecib", "largecb"),
                         [](const auto& kind) { return std::string(kind.param); });

TEST_P(MResourceLibraryToolTest, LibrariesOfEachFormGiveTheFilesThatWereBuiltInto) {
  MResourceLibrary builtIn, library;
  MMemoryStream stream(MBuiltInResources, MBuiltInResourcesSize);
  builtIn.Load(stream);
  library.LoadFile(Buffer((std::string(SONVELLE_LIBRARIES) + "/" + GetParam() + ".mrf").c_str()));
  ASSERT_EQ(library.GetResources().GetCount(), 7);
  for (const MResource* const resource : library.GetResources())
    EXPECT_EQ(All(library.Find(resource->id)), All(builtIn.Find(resource->id))) << Utf8(resource->id);
}

}  // namespace
