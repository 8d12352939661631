// Damaged and hostile libraries of both forms: whatever is in them, reading raises or gives bytes.

#include "tests/common/TestRandom.h"
#include "tests/core/Balanced.h"
#include "tests/resources/ResourceFiles.h"

namespace {

class MResourceLibraryHostileTest : public Balanced {
 protected:
  // The bytes as either form; every item is read.
  void Read(const std::string& bytes) {
    {
      MResourceLibrary library;
      Try([&] { LoadBytes(library, bytes); });
      ReadItems(library);
    }
    file.Write(bytes);
    MResourceLibrary library;
    Try([&] { file.LoadInto(library); });
    ReadItems(library);
  }

  LibraryFile file{""};

 private:
  template <typename Use>
  static void Try(Use use) {
    try {
      use();
    } catch (const MException& raised) {
      EXPECT_FALSE(raised.message.IsEmpty());
    }
  }

  static void ReadItems(MResourceLibrary& library) {
    for (const MResource* const resource : library.GetResources())
      Try([&] {
        MMemoryStream& stream = library.Find(resource->id);
        const std::string all = Take(stream, static_cast<int32_t>(stream.GetSize()));
        EXPECT_EQ(static_cast<int64_t>(all.size()), stream.GetSize());
      });
  }
};

// One file of each kind, small enough to be damaged at every byte.
std::vector<std::string> Files() {
  const std::string zlib = Packed<MZLibStream>("zlib zlib zlib");
  const std::string small = Index(Row("a", 0, 3) + Row("b", 3, zlib.size(), "compressed=\"1\""));
  std::vector<std::string> files = {SmallFile(small, "abc" + zlib)};
  for (const uint32_t flags : {0u, 1u, 2u, 5u, 7u}) {
    const std::string item = flags & 1 ? PackedAs(flags, "item item item") : "item item item";
    files.push_back(LargeFile(Index(Row("a", 0, 14) + Row("b", item.size(), 14)), item + item, flags));
  }
  return files;
}

TEST_F(MResourceLibraryHostileTest, AFileCutAtAnyByteDoesNoMoreThanRaise) {
  for (const std::string& whole : Files())
    for (std::size_t size = 0; size < whole.size(); ++size) Read(whole.substr(0, size));
}

TEST_F(MResourceLibraryHostileTest, AFileChangedAtAnyByteDoesNoMoreThanRaise) {
  for (const std::string& whole : Files())
    for (std::size_t i = 0; i < whole.size(); ++i)
      for (const int change : {1, 0xFF}) {
        std::string bytes = whole;
        bytes[i] = static_cast<char>(bytes[i] ^ change);
        Read(bytes);
      }
}

TEST_F(MResourceLibraryHostileTest, NumbersOfAnySizeInTheIndexDoNoMoreThanRaise) {
  const std::vector<std::string> numbers = {"0",
                                            "-1",
                                            "4",
                                            "2147483647",
                                            "2147483648",
                                            "-2147483648",
                                            "4294967295",
                                            "4294967296",
                                            "9223372036854775807",
                                            "9223372036854775808",
                                            "-9223372036854775808",
                                            "18446744073709551615",
                                            "1e9",
                                            "0x7",
                                            "",
                                            " 3"};
  std::string rows;
  for (const std::string& offset : numbers)
    for (const std::string& size : numbers)
      for (const std::string flag : {"", "compressed=\"0\"", "compressed=\"99999999999\""})
        rows += Row(offset + "," + size + "," + flag.substr(0, flag.find('=')), offset, size, flag);
  const std::string zlib = Packed<MZLibStream>("some text");
  for (const uint32_t flags : {0u, 1u, 5u}) {
    Read(SmallFile(Index(rows), PackedAs(flags, "some text")));
    Read(LargeFile(Index(rows), PackedAs(flags, "some text"), flags));
  }
}

TEST_F(MResourceLibraryHostileTest, SizesOfAnyKindInTheHeadDoNoMoreThanRaise) {
  const std::string index = Index(Row("a", 0, 3));
  const std::vector<uint64_t> sizes = {0, 1, index.size(), 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0xFFFFFFF4};
  for (const uint64_t indexSize : sizes)
    for (const uint64_t itemsSize : sizes)
      Read(LittleEndian(0, 4) + LittleEndian(indexSize, 4) + LittleEndian(itemsSize, 4) + index + "abc");
}

TEST_F(MResourceLibraryHostileTest, RandomBytesBehindARightHeadOrInFrontOfARightTailDoNoMoreThanRaise) {
  TestRandom random;
  for (int round = 0; round < 500; ++round) {
    std::string bytes(static_cast<std::size_t>(random.Below(100)), '\0');
    for (char& byte : bytes) byte = static_cast<char>(random.Below(256));
    Read(bytes);
    Read(SmallFile(Index(Row("a", 0, bytes.size(), "compressed=\"1\"")), bytes));
    Read(LargeFile(Index(Row("a", 0, 1000)), bytes, static_cast<uint32_t>(random.Below(8))));
    Read(bytes + Tail(bytes, bytes.size(), static_cast<uint32_t>(random.Below(8))));
  }
}

TEST_F(MResourceLibraryHostileTest, ASizeThatIsALieCostsNoMemory) {
  ForwardStream stream(LittleEndian(0, 4) + LittleEndian(0x7FFFFFFF, 4) + LittleEndian(0, 4) + "short");
  MResourceLibrary library;
  library.Load(stream);
  EXPECT_TRUE(library.IsEmpty());
  for (const int32_t count : stream.reads) EXPECT_LE(count, 4096);
}

TEST_F(MResourceLibraryHostileTest, RequestsForMemoryThatFailLeaveItEmptyOrTheItemForAnotherTry) {
  const std::string item = "item item item";
  file.Write(LargeFile(Index(Row("a", 0, 14) + Row("b", 14, 14)), item + item));
  const auto load = [&](const auto& library) { file.LoadInto(*library); };
  const auto make = [] { return std::make_unique<MResourceLibrary>(); };
  EXPECT_GT(FailEachRequest(make, load, [](const auto& library) { EXPECT_TRUE(library->IsEmpty()); }), 10);

  const auto makeLoaded = [&] {
    auto library = std::make_unique<MResourceLibrary>();
    load(library);
    return library;
  };
  const auto find = [](const auto& library) { library->Find("b"); };
  EXPECT_GT(
      FailEachRequest(makeLoaded, find, [&](const auto& library) { EXPECT_EQ(Found(*library, "b"), item); }),
      2);
}

}  // namespace
