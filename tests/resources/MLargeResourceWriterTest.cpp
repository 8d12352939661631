#include "resources/MLargeResourceWriter.h"

#include <gtest/gtest.h>

#include "core/MXMLItem.h"
#include "tests/common/Texts.h"
#include "tests/resources/ResourceFiles.h"

namespace {

using Compression = MLargeResourceWriter::Compression;

// Tells where it stands.
struct Target : BareStream {
  int64_t GetPosition() override { return static_cast<int64_t>(written.size()); }
};

struct Written {
  std::string bytes;
  std::vector<MLargeResourceWriter::Place> places;
};

Written Write(const std::vector<std::string>& items, Compression compression) {
  Target target;
  Written written;
  MLargeResourceWriter writer(target, compression);
  MXMLItem index("index");
  for (const std::string& item : items) {
    Put(writer.BeginItem(), item);
    written.places.push_back(writer.EndItem());
  }
  index.SetAttribute("items", MString::FromInteger(static_cast<int64_t>(items.size())));
  writer.Finish(index);
  written.bytes = target.written;
  return written;
}

std::unique_ptr<MStream> Open(const std::string& bytes) {
  return std::make_unique<MMemoryStream>(bytes.data(), static_cast<int32_t>(bytes.size()));
}

TEST(MLargeResourceWriter, GivesWhatTheReaderReadsInEveryCompression) {
  const std::vector<std::string> items = {"first", "", std::string(300000, 'x'), "last"};
  for (const Compression compression : {Compression::kNone, Compression::kZLib, Compression::kBZIP}) {
    const Written written = Write(items, compression);
    MXMLItem root;
    const MLargeResourceFile file(Open(written.bytes), root);
    EXPECT_EQ(root.GetAttribute("items"), "4");
    EXPECT_EQ(file.HasCompressedItems(), compression != Compression::kNone);
    for (std::size_t i = items.size(); i-- > 0;) {
      EXPECT_EQ(written.places[i].size, static_cast<int64_t>(items[i].size()));
      const std::unique_ptr<MStream> item =
          file.OpenItem(written.places[i].start, written.places[i].size, file.HasCompressedItems());
      EXPECT_EQ(Take(*item, static_cast<int32_t>(items[i].size()) + 1), items[i]);
    }
  }
}

TEST(MLargeResourceWriter, PutsItemsOneBehindTheOtherInFrontOfTheIndex) {
  const Written written = Write({"abc", "de"}, Compression::kNone);
  EXPECT_EQ(written.bytes.substr(0, 6), "abcde<");
  EXPECT_EQ(written.places[1].start, 3);
  EXPECT_EQ(written.bytes.substr(written.bytes.size() - 4), LittleEndian(0, 4));
  EXPECT_EQ(Write({}, Compression::kZLib).bytes.substr(Write({}, Compression::kZLib).bytes.size() - 4),
            LittleEndian(3, 4));
  const std::string packed = Write({}, Compression::kBZIP).bytes;
  EXPECT_EQ(packed.substr(packed.size() - 4), LittleEndian(7, 4));
}

TEST(MLargeResourceWriter, RefusesAnIndexThatNoReaderTakes) {
  Target target;
  MLargeResourceWriter writer(target, Compression::kNone);
  MXMLItem index("index");
  index.SetAttribute("long", MString::FromNarrow(std::string(0x200001, 'x').c_str()));
  EXPECT_RAISES(writer.Finish(index), "Invalid large resource library format.", MErrorCode::kTransferFailed);
}

TEST(MLargeResourceWriter, CanBeGivenUpInsideOfAnItem) {
  for (const Compression compression : {Compression::kNone, Compression::kZLib, Compression::kBZIP}) {
    Target target;
    MLargeResourceWriter writer(target, compression);
    Put(writer.BeginItem(), "begun");
  }
}

}  // namespace
