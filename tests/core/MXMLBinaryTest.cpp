// Compressed binary data in the text of an item.

#include "core/MStreamTools.h"
#include "core/MXMLItem.h"
#include "tests/core/Balanced.h"
#include "tests/core/Compressed.h"
#include "tests/core/XMLTexts.h"

namespace {

class MXMLBinaryTest : public Balanced {
 protected:
  void TearDown() override {
    item.Clear();
    Balanced::TearDown();
  }
  void Store(const std::string& bytes) {
    MMemoryStream source;
    Put(source, bytes);
    item.StoreBinary(source, true);
  }
  void SetBytes(const std::string& bytes) {
    ForwardStream source(bytes);
    item.SetText(MHexadecimalText(source, false));
  }
  std::string Load() {
    MMemoryStream target;
    item.LoadBinary(target, true);
    EXPECT_EQ(target.GetPosition(), 0);
    return All(target);
  }

  MXMLItem item{"a"};
};

TEST_F(MXMLBinaryTest, TextIsTheDigitsOfAZlibStream) {
  for (const std::size_t size : {0u, 1u, 4096u, 100'000u}) {
    Store(Pattern(size));
    ForwardStream compressed(Compressed<MZLibStream>(Pattern(size)));
    EXPECT_EQ(item.GetText(), MHexadecimalText(compressed, false)) << size;
    EXPECT_TRUE(Load() == Pattern(size)) << size;
  }
  EXPECT_LT(item.GetText().GetLength(), 100'000);
}

TEST_F(MXMLBinaryTest, WholeStreamIsStoredWhereverItStands) {
  MMemoryStream source;
  Put(source, "abcdef");
  source.Seek(3, MSeekOrigin::kStart);
  item.StoreBinary(source, true);
  EXPECT_EQ(Load(), "abcdef");
}

TEST_F(MXMLBinaryTest, BytesComeBackAtTheTargetsPositionWhichStays) {
  Store(Pattern(5000));
  MMemoryStream target;
  Put(target, "head and tail");
  target.Seek(4, MSeekOrigin::kStart);
  item.LoadBinary(target, true);
  EXPECT_EQ(target.GetPosition(), 4);
  EXPECT_TRUE(All(target) == "head" + Pattern(5000));
}

TEST_F(MXMLBinaryTest, BytesSurviveAFile) {
  MXMLItem read;
  Store(Pattern(5000));
  LoadText(read, SaveText(item, false));
  MMemoryStream target;
  read.LoadBinary(target, true);
  EXPECT_TRUE(All(target) == Pattern(5000));
}

TEST_F(MXMLBinaryTest, TextThatIsCutOffRaisesAndWritesNothing) {
  const std::string compressed = Compressed<MZLibStream>(Pattern(10'000));
  MMemoryStream target;
  for (std::size_t size = 0; size < compressed.size(); ++size) {
    SetBytes(compressed.substr(0, size));
    EXPECT_RAISES(item.LoadBinary(target, true), "Could not read required data from stream.", 256);
    ASSERT_EQ(target.GetSize(), 0);
  }
}

TEST_F(MXMLBinaryTest, DamagedTextRaisesAndWritesNothing) {
  const std::string compressed = Compressed<MZLibStream>(Pattern(10'000));
  MMemoryStream target;
  for (std::size_t at = 2; at < compressed.size(); ++at) {
    std::string damaged = compressed;
    damaged[at] = static_cast<char>(~damaged[at]);
    SetBytes(damaged);
    EXPECT_THROW(item.LoadBinary(target, true), MException) << at;
    ASSERT_EQ(target.GetSize(), 0);
  }
  SetBytes("no zlib stream");
  EXPECT_RAISES(item.LoadBinary(target, true), kInvalidContent, 256);
  item.SetText("789C_");
  EXPECT_RAISES(item.LoadBinary(target, true), "Could not read required data from stream.", 256);
}

TEST_F(MXMLBinaryTest, MoreThanTheLimitRaisesAndWritesNothing) {
  Store(std::string(10'000'000, '\0'));
  EXPECT_LT(item.GetText().GetLength(), 30'000);
  MMemoryStream target;
  EXPECT_RAISES(item.LoadBinary(target, true, 9'999'999), kInvalidContent, 256);
  EXPECT_EQ(target.GetSize(), 0);
  item.LoadBinary(target, true, 10'000'000);
  EXPECT_EQ(target.GetSize(), 10'000'000);
}

TEST_F(MXMLBinaryTest, WhatFollowsTheCompressedBytesDoesNotCount) {
  SetBytes(Compressed<MZLibStream>("abc") + std::string(1, '\0'));
  EXPECT_EQ(Load(), "abc");
}

TEST_F(MXMLBinaryTest, FailureToStoreLeavesTheText) {
  const std::string bytes = Pattern(10'000);
  for (int request = 0;; ++request) {
    MMemoryStream source;
    Put(source, bytes);
    item.SetText("before");
    CountingFunctions::FailAfter(request);
    try {
      item.StoreBinary(source, true);
      CountingFunctions::FailAfter(-1);
      break;
    } catch (const MException&) {
      CountingFunctions::FailAfter(-1);
      EXPECT_EQ(item.GetText(), "before");
    }
  }
  EXPECT_TRUE(Load() == bytes);
}

}  // namespace
