// The large form, and files of either.

#include "tests/common/Descriptors.h"
#include "tests/common/Texts.h"
#include "tests/resources/ResourceFiles.h"

namespace {

constexpr char kInvalid[] = "Invalid large resource library format.";
constexpr char kCorrupt[] = "Resource library file is corrupt.";

class MResourceLibraryFlagsTest : public testing::TestWithParam<uint32_t> {};
INSTANTIATE_TEST_SUITE_P(All, MResourceLibraryFlagsTest, testing::Range(0u, 8u),
                         [](const auto& kind) { return std::to_string(kind.param); });

TEST_P(MResourceLibraryFlagsTest, ItemsOfEachKindOfFileAreFound) {
  const bool isPacked = GetParam() & MLargeResourceFile::kItemsCompressed;
  const std::string plain = Pattern(10000);
  const std::string first = isPacked ? PackedAs(GetParam(), plain) : plain;
  const std::string second = isPacked ? PackedAs(GetParam(), "second") : "second";
  const std::string index = Index(Row("first", 0, plain.size()) + Row("second", first.size(), 6) +
                                  Row("part", 0, 100) + Row("none", 0, 0));
  const LibraryFile file(LargeFile(index, first + second, GetParam()));
  MResourceLibrary library;
  EXPECT_TRUE(library.IsEmpty());
  file.LoadInto(library);
  EXPECT_FALSE(library.IsEmpty());
  EXPECT_EQ(library.GetResources().GetCount(), 4);
  EXPECT_EQ(library.GetResources()[1]->size, 6);
  EXPECT_EQ(Found(library, "SECOND"), "second");
  EXPECT_EQ(Found(library, "first"), plain);
  EXPECT_EQ(Found(library, "part"), plain.substr(0, 100));
  EXPECT_EQ(Found(library, "none"), "");
  EXPECT_EQ(Found(library, "second"), "second");
  EXPECT_RAISES(library.Find("third"), "Cannot find requested resource (third).", 0);
}

TEST_P(MResourceLibraryFlagsTest, AnItemSaysForItselfWhetherItIsCompressed) {
  const std::string packed = PackedAs(GetParam(), "packed");
  const std::string index = Index(Row("a", 0, 5, "compressed=\"0\"") + Row("b", 5, 6, "compressed=\"1\""));
  const LibraryFile file(LargeFile(index, "plain" + packed, GetParam()));
  MResourceLibrary library;
  file.LoadInto(library);
  EXPECT_EQ(Found(library, "a"), "plain");
  EXPECT_EQ(Found(library, "b"), "packed");
}

class MResourceLibraryLargeTest : public testing::Test {
 protected:
  // Message and source of what loading these bytes as a file raises.
  void ExpectRefused(const std::string& bytes, const std::string& message) {
    file.Write(bytes);
    try {
      file.LoadInto(library);
      ADD_FAILURE() << "nothing raised";
    } catch (const MException& raised) {
      EXPECT_EQ(Utf8(raised.message), message);
      EXPECT_EQ(Utf8(raised.source).substr(0, file.path.size()), file.path);
    }
    EXPECT_TRUE(library.IsEmpty());
  }

  LibraryFile file{""};
  MResourceLibrary library;
};

TEST_F(MResourceLibraryLargeTest, ItemsAreReadWhenTheyAreFoundForTheFirstTime) {
  const std::string fill(100'000, 'x');  // more than a file's buffer
  const std::string index = Index(Row("a", 0, 3) + Row("b", 3 + fill.size(), 3));
  file.Write(LargeFile(index, "123" + fill + "456" + fill));
  file.LoadInto(library);
  EXPECT_EQ(Found(library, "a"), "123");
  file.Write(LargeFile(index, "abc" + fill + "def" + fill));
  EXPECT_EQ(Found(library, "a"), "123");
  EXPECT_EQ(Found(library, "b"), "def");
}

TEST_F(MResourceLibraryLargeTest, AnItemThatCannotBeReadRaisesWithItsPlaceAndCanBeTriedAgain) {
  const std::string index = Index(Row("item", 0, 4));
  const std::string packed = Packed<MZLibStream>("text"), fill(100'000, 'x');  // more than a file's buffer
  file.Write(LargeFile(index, std::string(packed.size(), '?') + fill, MLargeResourceFile::kItemsCompressed));
  file.LoadInto(library);
  for (int i = 0; i < 2; ++i) {
    try {
      library.Find("ITEM");
      ADD_FAILURE() << "nothing raised";
    } catch (const MException& raised) {
      EXPECT_EQ(raised.message, kInvalidContents);
      EXPECT_EQ(Utf8(raised.source), file.path + ", item");
    }
  }
  file.Write(LargeFile(index, packed + fill, MLargeResourceFile::kItemsCompressed));
  EXPECT_EQ(Found(library, "item"), "text");
}

TEST_F(MResourceLibraryLargeTest, AnItemBeyondTheItemsHasTheBytesThatExistAndNoneOfTheIndex) {
  file.Write(
      LargeFile(Index(Row("partly", "2", "100") + Row("behind", "5", "10") + Row("before", "-3", "2") +
                      Row("largest", "9223372036854775807", "9223372036854775807") + Row("less", "0", "-1")),
                "01234"));
  file.LoadInto(library);
  EXPECT_EQ(Found(library, "partly"), "234");
  EXPECT_EQ(Found(library, "before"), "01");
  for (const char* id : {"behind", "largest", "less"}) EXPECT_EQ(Found(library, id), "");
}

TEST_F(MResourceLibraryLargeTest, ACompressedItemGivesNoMoreThanItsSize) {
  for (const uint32_t flags : {1u, 5u}) {
    const std::string bomb = PackedAs(flags, std::string(50'000'000, 'x'));
    file.Write(LargeFile(Index(Row("few", 0, 10) + Row("more", "0", "9223372036854775807")), bomb, flags));
    file.LoadInto(library);
    EXPECT_EQ(Found(library, "few"), std::string(10, 'x'));
    EXPECT_EQ(library.Find("more").GetSize(), 50'000'000);
  }
}

TEST_F(MResourceLibraryLargeTest, AFileWithoutRoomForTheTailIsTooShort) {
  for (std::size_t size = 0; size < 28; ++size) ExpectRefused(std::string(size, '\1'), kShort);
  ExpectRefused(std::string(28, '\0'), kCorrupt);  // all zero is not the digest of the empty text
  ExpectRefused(LargeFile("", ""), "The XML does not contain any elements.");
}

TEST_F(MResourceLibraryLargeTest, AnIndexThatBeginsBeforeTheFileIsTooShort) {
  const std::string index = Index("");
  ExpectRefused(index + Tail(index, index.size() + 1, 0), kShort);
  ExpectRefused(Tail("", 0x200000, 0), kShort);
}

TEST_F(MResourceLibraryLargeTest, AnIndexOf2MiBIsReadAndALongerOneIsInvalid) {
  std::string index = Index(Row("a", 0, 3));
  index.insert(11, 0x200000 - index.size(), ' ');
  file.Write(LargeFile(index, "abc"));
  file.LoadInto(library);
  EXPECT_EQ(Found(library, "a"), "abc");
  index.insert(11, 1, ' ');
  ExpectRefused(LargeFile(index, "abc"), kInvalid);
}

TEST_F(MResourceLibraryLargeTest, AHighWordOfTheIndexLengthIsInvalid) {
  const std::string index = Index("");
  for (const uint64_t high : {1u, 0x80000000u, 0xFFFFFFFFu})
    ExpectRefused(index + Tail(index, high << 32 | index.size(), 0), kInvalid);
  ExpectRefused(index + Tail(index, 0xFFFFFFFFu, 0), kInvalid);
  ExpectRefused(Tail("", 0x80000000u, 0), kInvalid);
}

TEST_F(MResourceLibraryLargeTest, ADigestThatDiffersInOneByteIsCorrupt) {
  for (const uint32_t flags : {0u, 2u, 6u}) {
    const std::string whole = LargeFile(Index(Row("a", 0, 3)), "abc", flags);
    for (std::size_t i = 0; i < 16; ++i) {
      std::string bytes = whole;
      bytes[bytes.size() - 28 + i] ^= 1;
      ExpectRefused(bytes, kCorrupt);
    }
  }
}

TEST_F(MResourceLibraryLargeTest, AnIndexThatDiffersInOneByteIsCorrupt) {
  const std::string index = Index(Row("a", 0, 3));
  for (std::size_t i = 0; i < index.size(); ++i) {
    std::string changed = index;
    changed[i] ^= 1;
    ExpectRefused("abc" + changed + Tail(index, index.size(), 0), kCorrupt);
    const std::string packed = Packed<MZLibStream>(changed);
    ExpectRefused("abc" + packed + Tail(index, packed.size(), 2), kCorrupt);
  }
}

TEST_F(MResourceLibraryLargeTest, AnIndexThatTheFlagsCallCompressedAndIsNotIsRefused) {
  const std::string index = Index("");
  for (const uint32_t flags : {2u, 6u})
    ExpectRefused(index + Tail(index, index.size(), flags), kInvalidContents);
}

TEST_F(MResourceLibraryLargeTest, ACompressedIndexHasAtMost64MiBOfText) {
  for (const uint32_t flags : {2u, 6u}) {
    std::string index = Index(Row("a", 0, 3));
    index.insert(index.size() - 12, "<!--" + std::string(0x4000000 - index.size() - 7, ' ') + "-->");
    ASSERT_EQ(index.size(), 0x4000000u);
    file.Write(LargeFile(index, "abc", flags));
    file.LoadInto(library);
    EXPECT_EQ(Found(library, "a"), "abc");
    ExpectRefused(LargeFile(index + " ", "abc", flags), kInvalidContents);
  }
}

// Some kilobytes of a compressed index could stand for gigabytes of elements and attributes.
TEST_F(MResourceLibraryLargeTest, AnIndexHasAtMostSoManyElementsAndAttributes) {
  constexpr int32_t kMost = MLargeResourceFile::kMostIndexMarks;
  const auto make = [](int32_t count, const std::string& piece, const std::string& end = "") {
    std::string rows = Row("a", 0, 3);
    for (; count > 0; --count) rows += piece;
    return LargeFile(Index(rows + end), "abc", MLargeResourceFile::kIndexCompressed);
  };
  const int32_t marks = 8;  // of the index around the pieces
  file.Write(make(kMost - marks, "<b/>"));
  file.LoadInto(library);
  EXPECT_EQ(Found(library, "a"), "abc");
  ExpectRefused(make(kMost - marks + 1, "<b/>"), kInvalid);
  ExpectRefused(make(kMost / 2, "<b c=\"\"/>"), kInvalid);
  ExpectRefused(make(kMost, "\xC0\xBC/>"), kInvalid);  // an overlong form
  ExpectRefused("abc" + make(kMost, " c=\"\"", "/>"), kInvalid);
}

TEST_F(MResourceLibraryLargeTest, AMissingAttributeIsRefused) {
  ExpectRefused(LargeFile(Index("<resourceX id=\"a\" size=\"1\"/>"), "abc"),
                "Could not find required attribute (offset).");
}

TEST_F(MResourceLibraryLargeTest, FlagsThatMeanNothingAreLeftAlone) {
  file.Write(LargeFile(Index(Row("a", 0, 3)), "abc", 0xFFFFFFF8u));
  file.LoadInto(library);
  EXPECT_EQ(Found(library, "a"), "abc");
}

TEST_F(MResourceLibraryLargeTest, ItemsBeyond4GiBAreReadAndOneThatMemoryCannotHoldRaises) {
  const std::string index = Index(Row("far", 0x140000000u, 3) + Row("huge", 0, 0x80000000u));
  file.Write("");
  std::filesystem::resize_file(file.path, 0x140000000u);  // a hole
  MFileStream stream(Buffer(file.path.c_str()), MFileStream::kWrite);
  stream.Seek(0, MSeekOrigin::kEnd);
  Put(stream, LargeFile(index, "abc"));
  stream.Close();
  file.LoadInto(library);
  EXPECT_EQ(Found(library, "far"), "abc");
  EXPECT_RAISES(library.Find("huge"), "Out of memory.", 0);
}

TEST_F(MResourceLibraryLargeTest, AFileOfTheSmallFormIsKnownByItsSize) {
  const std::string small = SmallFile(Index(Row("a", 0, 3)), "abc");
  file.Write(small);
  file.LoadInto(library);
  EXPECT_EQ(Found(library, "a"), "abc");
  ExpectRefused(small + "x", kInvalid);
  ExpectRefused(small.substr(0, small.size() - 1), kInvalid);
  ExpectRefused("\1" + small.substr(1), kInvalid);
  ExpectRefused(SmallFile("<a></b>", "abc"), "Invalid file contents. Invalid closing element name.");
}

TEST_F(MResourceLibraryLargeTest, ALargeFileMayBeginLikeASmallOne) {
  file.Write(LargeFile(Index(Row("a", 0, 12)), std::string(12, '\0')));
  file.LoadInto(library);
  EXPECT_EQ(Found(library, "a"), std::string(12, '\0'));
}

TEST_F(MResourceLibraryLargeTest, AFileThatCannotBeOpenedLeavesTheLibraryAsItWas) {
  LoadBytes(library, SmallFile(Index(Row("a", 0, 3)), "abc"));
  EXPECT_RAISES(library.LoadFile("/no/such.mrf"),
                "File \"/no/such.mrf\" could not be open. Make sure it exists.", 257);
  EXPECT_EQ(Found(library, "a"), "abc");
}

TEST_F(MResourceLibraryLargeTest, TheFileStaysOpenUntilTheLibraryIsEmptied) {
  const auto countOpen = [this] { return DescriptorsOf(file.path).size(); };
  file.Write(LargeFile(Index(Row("a", 0, 3)), "abc"));
  file.LoadInto(library);
  EXPECT_EQ(countOpen(), 1u);
  library.Clear();
  EXPECT_EQ(countOpen(), 0u);
  ExpectRefused(std::string(28, '\0'), kCorrupt);
  EXPECT_EQ(countOpen(), 0u);
  file.Write(SmallFile(Index(Row("a", 0, 3)), "abc"));
  file.LoadInto(library);
  EXPECT_EQ(countOpen(), 0u);
}

TEST_F(MResourceLibraryLargeTest, LoadingAgainReplacesWhatWasThere) {
  file.Write(LargeFile(Index(Row("a", 0, 3)), "abc"));
  file.LoadInto(library);
  LoadBytes(library, SmallFile(Index(Row("b", 0, 1)), "1"));
  EXPECT_RAISES(library.Find("a"), "Cannot find requested resource (a).", 0);
  file.LoadInto(library);
  EXPECT_EQ(Found(library, "a"), "abc");
}

TEST(MLargeResourceFile, ReadsATreeOfAnyKindAndGivesWindowsOnTheItems) {
  const std::string bytes = LargeFile("<root samplerate=\"48000\"><file filestart=\"2\"/></root>", "0123456");
  std::unique_ptr<MStream> stream(new MMemoryStream(bytes.data(), static_cast<int32_t>(bytes.size())));
  MXMLItem root;
  const MLargeResourceFile file(std::move(stream), root);
  EXPECT_EQ(root.GetAttribute("samplerate"), "48000");
  EXPECT_FALSE(file.HasCompressedItems());
  const std::unique_ptr<MStream> item = file.OpenItem(2, 3, false);
  EXPECT_EQ(item->GetSize(), 3);
  EXPECT_EQ(Take(*item, 10), "234");
  item->Seek(1, MSeekOrigin::kStart);
  EXPECT_EQ(Take(*item, 10), "34");
}

}  // namespace
