// The small form.

#include <type_traits>

#include "tests/core/Balanced.h"
#include "tests/resources/ResourceFiles.h"

namespace {

static_assert(std::is_standard_layout_v<MResourceLibrary>, "it lies in a record that a host shares");

class MResourceLibraryTest : public Balanced {};

TEST_F(MResourceLibraryTest, FindsItemsWithoutRegardToCase) {
  MResourceLibrary library;
  LoadBytes(library, SmallFile(Index(Row("First", 0, 3) + Row("second", 3, 4)), "abcdefg"));
  EXPECT_EQ(Found(library, "first"), "abc");
  EXPECT_EQ(Found(library, "SECOND"), "defg");
}

TEST_F(MResourceLibraryTest, EveryFindGivesTheSameStreamAtItsStart) {
  MResourceLibrary library;
  LoadBytes(library, SmallFile(Index(Row("a", 1, 3)), "xabc"));
  MMemoryStream& stream = library.Find("a");
  EXPECT_EQ(Take(stream, 2), "ab");
  EXPECT_EQ(&library.Find("a"), &stream);
  EXPECT_EQ(stream.GetPosition(), 0);
  EXPECT_EQ(Take(stream, 10), "abc");
}

TEST_F(MResourceLibraryTest, AnIdThatIsNotThereRaisesWithItsName) {
  MResourceLibrary library;
  EXPECT_RAISES(library.Find("gone"), "Cannot find requested resource (gone).", 0);
  LoadBytes(library, SmallFile(Index(Row("Eqpeak", 0, 1)), "a"));
  EXPECT_RAISES(library.Find("Eq"), "Cannot find requested resource (Eq).", 0);
  EXPECT_RAISES(library.Find("Eqpeaks"), "Cannot find requested resource (Eqpeaks).", 0);
  EXPECT_RAISES(library.Find(""), "Cannot find requested resource ().", 0);
}

TEST_F(MResourceLibraryTest, OfTwoItemsWithOneIdTheFirstIsFound) {
  MResourceLibrary library;
  LoadBytes(library, SmallFile(Index(Row("a", 0, 1) + Row("A", 1, 1)), "12"));
  EXPECT_EQ(Found(library, "A"), "1");
}

TEST_F(MResourceLibraryTest, ItIsEmptyWithoutAnIndex) {
  MResourceLibrary library;
  EXPECT_TRUE(library.IsEmpty());
  LoadBytes(library, SmallFile("<resources/>", ""));
  EXPECT_FALSE(library.IsEmpty());
  EXPECT_TRUE(library.GetResources().IsEmpty());
  library.Clear();
  EXPECT_TRUE(library.IsEmpty());
}

TEST_F(MResourceLibraryTest, ItemsAreTheInnerElementsWhoseNamesBeginWithResource) {
  MResourceLibrary library;
  LoadBytes(library,
            SmallFile("<resources><resourceX id=\"outside\"/><Resources><RESOURCE id=\"a\" offset=\"0\" "
                      "size=\"1\"/><text/><resource-b id=\"b\" offset=\"1\" "
                      "size=\"1\"/></Resources><resources><resourceX/></resources></resources>",
                      "12"));
  ASSERT_EQ(library.GetResources().GetCount(), 2);
  EXPECT_EQ(library.GetResources()[0]->id, "a");
  EXPECT_EQ(library.GetResources()[1]->id, "b");
  EXPECT_EQ(library.GetResources()[1]->offset, 1);
  EXPECT_EQ(library.GetRoot().GetName(), "resources");
}

TEST_F(MResourceLibraryTest, LoadReadsFromThePositionOnAndReplacesWhatWasThere) {
  MResourceLibrary library;
  LoadBytes(library, SmallFile(Index(Row("a", 0, 1)), "1"));
  ForwardStream stream("head" + SmallFile(Index(Row("b", 0, 1)), "2") + "behind");
  Take(stream, 4);
  library.Load(stream);
  EXPECT_EQ(Found(library, "b"), "2");
  EXPECT_RAISES(library.Find("a"), "Cannot find requested resource (a).", 0);
  EXPECT_EQ(Take(stream, 10), "behind");
}

TEST_F(MResourceLibraryTest, ItCanBeLoadedFromOneOfItsOwnItems) {
  const std::string inner = SmallFile(Index(Row("b", 0, 3)), "abc");
  const LibraryFile file(LargeFile(Index(Row("a", 0, inner.size())), inner));
  MResourceLibrary library;
  LoadBytes(library, SmallFile(Index(Row("a", 0, inner.size())), inner));
  library.Load(library.Find("a"));
  EXPECT_EQ(Found(library, "b"), "abc");
  file.LoadInto(library);
  library.Load(library.Find("a"));
  EXPECT_EQ(Found(library, "b"), "abc");
}

TEST_F(MResourceLibraryTest, AStreamThatEndsTooEarlyLeavesItEmptyAndRaisesNothing) {
  const std::string whole = SmallFile(Index(Row("a", 0, 1)), "item");
  for (std::size_t size = 0; size < whole.size(); ++size) {
    MResourceLibrary library;
    LoadBytes(library, SmallFile(Index(Row("old", 0, 1)), "1"));
    LoadBytes(library, whole.substr(0, size));
    EXPECT_TRUE(library.IsEmpty()) << size;
    EXPECT_TRUE(library.GetResources().IsEmpty()) << size;
  }
}

TEST_F(MResourceLibraryTest, ANegativeSizeCountsAsAStreamThatEndsTooEarly) {
  const std::string rest = Index(Row("a", 0, 1)) + "item";
  for (const uint64_t size : {0x80000000u, 0xFFFFFFFFu}) {
    MResourceLibrary library;
    LoadBytes(library, LittleEndian(0, 4) + LittleEndian(size, 4) + LittleEndian(4, 4) + rest);
    EXPECT_TRUE(library.IsEmpty());
    LoadBytes(library, LittleEndian(0, 4) + LittleEndian(rest.size() - 4, 4) + LittleEndian(size, 4) + rest);
    EXPECT_TRUE(library.IsEmpty());
  }
}

TEST_F(MResourceLibraryTest, AnItemBeyondTheDataHasTheBytesThatExist) {
  MResourceLibrary library;
  LoadBytes(library,
            SmallFile(Index(Row("partly", "2", "100") + Row("behind", "5", "1") + Row("far", "99", "9") +
                            Row("largest", "9223372036854775807", "9223372036854775807") +
                            Row("before", "-3", "2") + Row("negative", "0", "-1") + Row("words", "x", "y")),
                      "01234"));
  EXPECT_EQ(Found(library, "partly"), "234");
  for (const char* id : {"behind", "far", "largest", "negative", "words"}) EXPECT_EQ(Found(library, id), "");
  EXPECT_EQ(Found(library, "before"), "01");
  EXPECT_EQ(library.GetResources()[0]->size, 100);
  EXPECT_EQ(library.GetResources()[5]->size, 0);
}

TEST_F(MResourceLibraryTest, AnItemWithoutARequiredAttributeRaisesAndLeavesItEmpty) {
  const auto message = [](const std::string& name) {
    return "Could not find required attribute (" + name + ").";
  };
  const std::pair<const char*, const char*> rows[] = {{"id", "<resourceX offset=\"0\" size=\"1\"/>"},
                                                      {"offset", "<resourceX id=\"a\" size=\"1\"/>"},
                                                      {"size", "<resourceX id=\"a\" offset=\"0\"/>"}};
  for (const auto& [name, row] : rows) {
    MResourceLibrary library;
    EXPECT_RAISES(LoadBytes(library, SmallFile(Index(Row("b", 0, 1) + row), "1")), message(name), 0);
    EXPECT_TRUE(library.IsEmpty());
  }
}

TEST_F(MResourceLibraryTest, AnIndexThatIsNoXMLRaisesAndLeavesItEmpty) {
  MResourceLibrary library;
  EXPECT_RAISES(LoadBytes(library, SmallFile("", "1")), "The XML does not contain any elements.", 0);
  EXPECT_TRUE(library.IsEmpty());
  EXPECT_RAISES(LoadBytes(library, SmallFile("<a></b>", "1")),
                "Invalid file contents. Invalid closing element name.", 256);
  EXPECT_TRUE(library.IsEmpty());
}

TEST_F(MResourceLibraryTest, ACompressedItemGivesItsPlainBytes) {
  const std::string plain = Pattern(10000), stored = Packed<MZLibStream>(plain);
  MResourceLibrary library;
  LoadBytes(library, SmallFile(Index(Row("plain", 0, 3, "compressed=\"0\"") +
                                     Row("packed", 3, stored.size(), "compressed=\"1\"") +
                                     Row("cut", 3, stored.size() / 2, "compressed=\"1\"")),
                               "abc" + stored));
  EXPECT_EQ(Found(library, "plain"), "abc");
  EXPECT_EQ(Found(library, "packed"), plain);
  const std::string cut = Found(library, "cut");
  EXPECT_LT(cut.size(), plain.size());
  EXPECT_EQ(cut, plain.substr(0, cut.size()));
}

TEST_F(MResourceLibraryTest, ACompressedItemThatIsNoneRaisesWithItsIdAndLeavesItEmpty) {
  MResourceLibrary library;
  try {
    LoadBytes(library, SmallFile(Index(Row("bad", 0, 4, "compressed=\"1\"")), "text"));
    ADD_FAILURE() << "nothing raised";
  } catch (const MException& raised) {
    EXPECT_EQ(raised.message, kInvalidContents);
    EXPECT_EQ(raised.source, "bad");
  }
  EXPECT_TRUE(library.IsEmpty());
}

TEST_F(MResourceLibraryTest, CompressedItemsOfMoreThan64MiBTogetherAreRefused) {
  const std::string stored = Packed<MZLibStream>(std::string(0x2000000, '\0'));
  const auto row = [&](const char* id) { return Row(id, 0, stored.size(), "compressed=\"1\""); };
  MResourceLibrary library;
  LoadBytes(library, SmallFile(Index(row("a") + row("b")), stored));
  EXPECT_EQ(library.Find("b").GetSize(), 0x2000000);
  const std::string one = Packed<MZLibStream>("1");
  const std::string more = Row("c", stored.size(), one.size(), "compressed=\"1\"");
  EXPECT_RAISES(LoadBytes(library, SmallFile(Index(row("a") + row("b") + more), stored + one)),
                kInvalidContents, 256);
  EXPECT_TRUE(library.IsEmpty());
}

TEST_F(MResourceLibraryTest, RequestsForMemoryThatFailLeaveItEmpty) {
  const std::string bytes = SmallFile(Index(Row("a", 0, 2) + Row("b", 2, 2)), "1234");
  const auto make = [] { return std::make_unique<MResourceLibrary>(); };
  const auto check = [](const auto& library) { EXPECT_TRUE(library->IsEmpty()); };
  EXPECT_GT(FailEachRequest(
                make, [&](auto& library) { LoadBytes(*library, bytes); }, check),
            10);
}

}  // namespace
