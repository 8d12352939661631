#include "core/MBZIPStream.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/common/TemporaryFolder.h"
#include "tests/core/Balanced.h"
#include "tests/core/Compressed.h"

namespace {

class MBZIPStreamTest : public Balanced {
 protected:
  TestRandom random{1};
};

// What the tool makes of the input.
std::string BZip2(const std::string& options, const std::string& input) {
  const TemporaryFolder folder;
  const std::string from = folder.WriteFile("input", input);
  EXPECT_EQ(std::system(("bzip2 -c " + options + " <" + from + " >" + folder.Path("output")).c_str()), 0);
  return folder.ReadFile("output");
}

TEST_F(MBZIPStreamTest, WhatItWritesIsReadByTheTool) {
  for (const std::size_t size : {0u, 1u, 4097u, 1u << 20}) {
    const std::string bytes = Mixed(size, random);
    EXPECT_TRUE(BZip2("-d", Compressed<MBZIPStream>(bytes)) == bytes);
  }
}

TEST_F(MBZIPStreamTest, WhatTheToolWritesIsRead) {
  const std::string bytes = Mixed(1 << 20, random);
  EXPECT_TRUE(Decompressed<MBZIPStream>(BZip2("-1", bytes), 5000) == bytes);
  EXPECT_TRUE(BZip2("-9", bytes) == Compressed<MBZIPStream>(bytes));
}

TEST_F(MBZIPStreamTest, TensOfTheQualityAreTheSizeOfABlock) {
  const std::pair<int32_t, char> kLevels[] = {{100, '9'}, {95, '9'}, {91, '9'}, {90, '8'},
                                              {81, '8'},  {20, '1'}, {11, '1'}, {200, '9'}};
  for (const auto& [quality, level] : kLevels)
    EXPECT_EQ(Compressed<MBZIPStream>("abc", quality).substr(0, 4), std::string("BZh") + level) << quality;
}

TEST_F(MBZIPStreamTest, LevelZeroIsRefused) {
  BareStream base;
  for (const int32_t quality : {10, 1, 0, -1}) {
    EXPECT_RAISES(MBZIPStream(&base, true, quality), "Could not initialize deflating.", 0);
    MBZIPStream stream(nullptr, true);
    EXPECT_RAISES(stream.Open(&base, true, quality), "Could not initialize deflating.", 0);
    EXPECT_FALSE(stream.IsValid());
  }
  EXPECT_TRUE(base.writes.empty());
}

TEST_F(MBZIPStreamTest, QualityDoesNotCountWhileDecompressing) {
  ForwardStream base(Compressed<MBZIPStream>("abc"));
  MBZIPStream stream(&base, false, 1);
  EXPECT_EQ(Take(stream, 3), "abc");
}

TEST_F(MBZIPStreamTest, IsAtItsEndOnceTheEndMarkWasRead) {
  ForwardStream base(Compressed<MBZIPStream>("abc"));
  MBZIPStream stream(&base, false);
  EXPECT_FALSE(stream.IsEnd());
  EXPECT_EQ(Take(stream, 2), "ab");
  EXPECT_FALSE(stream.IsEnd());
  EXPECT_EQ(Take(stream, 2), "c");
  EXPECT_TRUE(stream.IsEnd());
  ForwardStream cut(Compressed<MBZIPStream>("abc").substr(0, 10));
  stream.Open(&cut, false);
  EXPECT_FALSE(stream.IsEnd());
  EXPECT_EQ(Take(stream, 4), "");
  EXPECT_FALSE(stream.IsEnd());
  stream.Close();
  EXPECT_FALSE(stream.IsEnd());
}

}  // namespace
