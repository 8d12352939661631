#include "core/MSizeStream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "tests/common/Texts.h"
#include "tests/core/StreamDoubles.h"

namespace {

const char* const kOutOfRange = "The stream cannot be written, because its size is out of range.";

// Memory that counts what is done to it from outside.
class CountedStream : public MMemoryStream {
 public:
  explicit CountedStream(int& destroyed) : destroyed_(destroyed) {}
  ~CountedStream() noexcept override { ++destroyed_; }
  void Seek(int64_t offset, MSeekOrigin origin) override {
    seeks.emplace_back(offset, origin);
    MMemoryStream::Seek(offset, origin);
  }
  void Flush() override { ++flushes; }

  std::vector<std::pair<int64_t, MSeekOrigin>> seeks;
  int flushes = 0;

 private:
  int& destroyed_;
};

class MSizeStreamTest : public testing::Test {
 protected:
  MSizeStreamTest() {
    Put(base, Pattern(100));
    base.Seek(10, MSeekOrigin::kStart);
    base.seeks.clear();
  }
  int destroyed = 0;
  CountedStream base{destroyed};
};

TEST_F(MSizeStreamTest, WindowStartsAtThePositionOfTheBaseWithoutSeekingIt) {
  MSizeStream window(&base, 20, false, true);
  EXPECT_TRUE(base.seeks.empty());
  EXPECT_EQ(window.GetPosition(), 0);
  EXPECT_EQ(window.GetSize(), 20);
  EXPECT_EQ(Take(window, 5), Pattern(100).substr(10, 5));
  EXPECT_EQ(window.GetPosition(), 5);
}

TEST_F(MSizeStreamTest, ReadIsLimitedToTheWindow) {
  MSizeStream window(&base, 20, false, true);
  EXPECT_FALSE(window.IsEnd());
  EXPECT_EQ(Take(window, 50), Pattern(100).substr(10, 20));
  EXPECT_TRUE(window.IsEnd());
  EXPECT_EQ(Take(window, 1), "");
  EXPECT_EQ(base.GetPosition(), 30);
}

TEST_F(MSizeStreamTest, ReadAdvancesByWhatTheBaseHas) {
  MSizeStream window(&base, 1000, false, true);
  EXPECT_EQ(Take(window, 500).size(), 90u);
  EXPECT_EQ(window.GetPosition(), 90);
  EXPECT_FALSE(window.IsEnd());
}

TEST_F(MSizeStreamTest, ReadGoesOnWhereTheBaseStands) {
  MSizeStream window(&base, 20, false, true);
  base.Seek(50, MSeekOrigin::kStart);
  EXPECT_EQ(Take(window, 3), Pattern(100).substr(50, 3));
}

TEST_F(MSizeStreamTest, WritePastTheEndWritesWhatFitsAndThenRaises) {
  MSizeStream window(&base, 4, false, true);
  Put(window, "ab");
  EXPECT_RAISES(Put(window, "cdef"), kOutOfRange, 256);
  EXPECT_EQ(window.GetPosition(), 4);
  EXPECT_RAISES(Put(window, "g"), kOutOfRange, 256);
  EXPECT_EQ(All(base), Pattern(10) + "abcd" + Pattern(100).substr(14));
}

TEST_F(MSizeStreamTest, TransfersOfNothingDoNothing) {
  MSizeStream window(&base, 0, false, true);
  char byte = 'x';
  EXPECT_NO_THROW(window.Write(&byte, 0));
  EXPECT_NO_THROW(window.Write(&byte, -1));
  EXPECT_EQ(window.Read(&byte, -1), 0);
  EXPECT_EQ(window.GetPosition(), 0);
}

TEST_F(MSizeStreamTest, SeekIsLimitedToTheWindowAndGoesToTheBaseFromItsStart) {
  MSizeStream window(&base, 20, false, true);
  const auto seek = [&](int64_t offset, MSeekOrigin origin) {
    window.Seek(offset, origin);
    EXPECT_EQ(base.seeks.back(), std::pair(10 + window.GetPosition(), MSeekOrigin::kStart));
    return window.GetPosition();
  };
  EXPECT_EQ(seek(7, MSeekOrigin::kStart), 7);
  EXPECT_EQ(seek(-2, MSeekOrigin::kCurrent), 5);
  EXPECT_EQ(seek(-1, MSeekOrigin::kEnd), 19);
  EXPECT_EQ(seek(21, MSeekOrigin::kStart), 20);
  EXPECT_EQ(seek(-1, MSeekOrigin::kStart), 0);
  EXPECT_EQ(seek(1, MSeekOrigin::kEnd), 20);
  EXPECT_EQ(seek(std::numeric_limits<int64_t>::max(), MSeekOrigin::kCurrent), 20);
  EXPECT_EQ(seek(std::numeric_limits<int64_t>::min(), MSeekOrigin::kCurrent), 0);
  EXPECT_EQ(Take(window, 2), Pattern(100).substr(10, 2));
}

TEST_F(MSizeStreamTest, SeekRaisesWhenItIsForbidden) {
  MSizeStream window(&base, 20, false, false);
  EXPECT_RAISES(window.Seek(0, MSeekOrigin::kStart), "Seeking operation is forbidden for the size-stream.",
                256);
  EXPECT_TRUE(base.seeks.empty());
}

TEST_F(MSizeStreamTest, SeekRefusesOtherOrigins) {
  MSizeStream window(&base, 20, false, true);
  EXPECT_RAISES(window.Seek(0, kBadOrigin), "Invalid seek origin.", 2);
}

TEST_F(MSizeStreamTest, PositionStaysWhenTheBaseFails) {
  ForwardStream forward(Pattern(100));
  forward.Seek(10, MSeekOrigin::kStart);
  MSizeStream window(&forward, 20, false, true);
  window.Seek(5, MSeekOrigin::kStart);
  EXPECT_THROW(window.Seek(0, MSeekOrigin::kStart), MException);
  EXPECT_EQ(window.GetPosition(), 5);
}

TEST_F(MSizeStreamTest, NegativeSizeIsAnEmptyWindow) {
  MSizeStream window(&base, -5, false, true);
  EXPECT_EQ(window.GetSize(), 0);
  EXPECT_TRUE(window.IsEnd());
  EXPECT_EQ(Take(window, 1), "");
  EXPECT_RAISES(Put(window, "a"), kOutOfRange, 256);
}

TEST_F(MSizeStreamTest, FlushForwardsAndTruncateIsNotImplemented) {
  MSizeStream window(&base, 20, false, true);
  window.Flush();
  EXPECT_EQ(base.flushes, 1);
  EXPECT_RAISES(window.Truncate(), "Service \"truncate stream\" is not implemented.", 1);
}

TEST_F(MSizeStreamTest, OwnedBaseIsDestroyedOnceAndAForeignOneNot) {
  { MSizeStream window(&base, 20, false, true); }
  EXPECT_EQ(destroyed, 0);
  { MSizeStream window(new CountedStream(destroyed), 20, true, true); }
  EXPECT_EQ(destroyed, 1);
}

TEST_F(MSizeStreamTest, BaseStaysTheCallersWhenTheWindowCannotBeMade) {
  BareStream withoutPosition;
  EXPECT_THROW(MSizeStream(&withoutPosition, 20, true, true), MException);
}

class UnfinishedStream : public BareStream {
 public:
  int64_t GetPosition() override { return 0; }
  ~UnfinishedStream() noexcept(false) override { throw std::runtime_error("unfinished"); }
};

TEST_F(MSizeStreamTest, FailureOfAnOwnedBaseToEndIsNotLost) {
  EXPECT_THROW({ MSizeStream window(new UnfinishedStream, 20, true, true); }, std::runtime_error);
}

TEST_F(MSizeStreamTest, WindowWithoutABaseIsNotValidAndRaises) {
  MSizeStream window(nullptr, 20, true, true);
  char byte = 'x';
  EXPECT_FALSE(window.IsValid());
  EXPECT_EQ(window.GetSize(), 0);
  EXPECT_RAISES(window.Write(&byte, 1), "File stream is not initialized.", 258);
  EXPECT_RAISES(window.Read(&byte, 1), "File stream is not initialized.", 258);
  EXPECT_RAISES(window.Seek(0, MSeekOrigin::kStart), "File stream is not initialized.", 258);
  EXPECT_RAISES(window.Flush(), "File stream is not initialized.", 258);
  EXPECT_TRUE(MSizeStream(&base, 1, false, true).IsValid());
}

}  // namespace
