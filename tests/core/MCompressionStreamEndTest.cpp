// How the compressing filters end: unfinished, over bases that fail, without memory.

#include <gtest/gtest.h>

#include "core/MSizeStream.h"
#include "tests/common/ReportedTexts.h"
#include "tests/core/Balanced.h"
#include "tests/core/Compressed.h"

namespace {

template <typename Stream>
class MCompressionStreamEndTest : public Balanced {};

using Streams = testing::Types<MZLibStream, MBZIPStream>;
TYPED_TEST_SUITE(MCompressionStreamEndTest, Streams);

TYPED_TEST(MCompressionStreamEndTest, DestroyingAnUnfinishedCompressorRaises) {
  BareStream base;
  EXPECT_RAISES({ TypeParam stream(&base, true); }, kUnfinished<TypeParam>, 0);
  auto* const stream = new TypeParam(&base, true);
  Put(*stream, "abc");
  EXPECT_RAISES(delete stream, kUnfinished<TypeParam>, 0);
}

TYPED_TEST(MCompressionStreamEndTest, DestroyingOneThroughItsWindowRaises) {
  MMemoryStream base;
  EXPECT_RAISES({ MSizeStream window(new TypeParam(&base, true), 100, true, false); }, kUnfinished<TypeParam>,
                0);
}

TYPED_TEST(MCompressionStreamEndTest, WhileAnExceptionIsInFlightTheTextIsReportedInstead) {
  const ReportedTexts reported;
  BareStream base;
  try {
    TypeParam stream(&base, true);
    throw 1;
  } catch (int) {
  }
  EXPECT_EQ(reported.Get(), std::vector<std::string>{kUnfinished<TypeParam>});
}

TYPED_TEST(MCompressionStreamEndTest, OneThatIsMadeWhileAnExceptionIsInFlightRaisesAsEver) {
  struct Outer {
    explicit Outer(std::string& text) : text_(text) {}
    ~Outer() {
      BareStream base;
      try {
        TypeParam stream(&base, true);
      } catch (const MException& raised) {
        text_ = Utf8(raised.message);
      }
    }
    std::string& text_;
  };
  std::string text;
  try {
    const Outer outer(text);
    throw 1;
  } catch (int) {
  }
  EXPECT_EQ(text, kUnfinished<TypeParam>);
}

TYPED_TEST(MCompressionStreamEndTest, CloseRaisesOnceAndDestroyingIsSilentThen) {
  const ReportedTexts reported;
  BareStream base;
  {
    TypeParam stream(&base, true);
    EXPECT_RAISES(stream.Close(), kUnfinished<TypeParam>, 0);
    EXPECT_FALSE(stream.IsValid());
    EXPECT_NO_THROW(stream.Close());
  }
  EXPECT_TRUE(reported.Get().empty());
}

TYPED_TEST(MCompressionStreamEndTest, OpenOnAnUnfinishedCompressorRaisesAndClosesIt) {
  BareStream first, second;
  TypeParam stream(&first, true);
  EXPECT_RAISES(stream.Open(&second, true), kUnfinished<TypeParam>, 0);
  EXPECT_FALSE(stream.IsValid());
  stream.Open(&second, true);
  Put(stream, "abc");
  stream.Finish();
  EXPECT_EQ(Decompressed<TypeParam>(second.written), "abc");
}

TYPED_TEST(MCompressionStreamEndTest, FinishTwiceIsHarmlessAndNothingCanBeWrittenBehindIt) {
  BareStream base;
  {
    TypeParam stream(&base, true);
    Put(stream, "abc");
    stream.Finish();
    stream.Finish();
    EXPECT_EQ(stream.GetPosition(), 3);
    EXPECT_RAISES(Put(stream, "d"), "File stream is not initialized.", 258);
    stream.Close();
  }
  EXPECT_EQ(Decompressed<TypeParam>(base.written), "abc");
}

TYPED_TEST(MCompressionStreamEndTest, DestroyingADecompressorAnywhereIsSilent) {
  const std::string bytes = Compressed<TypeParam>(Pattern(10'000));
  for (const int32_t count : {0, 1, 5000, 10'000, 20'000}) {
    ForwardStream base(bytes);
    TypeParam stream(&base, false);
    Take(stream, count);
  }
}

// Fails from the n-th transfer on.
class FailingStream : public ForwardStream {
 public:
  FailingStream(std::string bytes, int transfers) : ForwardStream(std::move(bytes)), transfers_(transfers) {}
  void Write(const void* bytes, int32_t count) override {
    Count();
    ForwardStream::Write(bytes, count);
  }
  int32_t Read(void* bytes, int32_t count) override {
    Count();
    return ForwardStream::Read(bytes, count);
  }

 private:
  void Count() {
    if (transfers_-- <= 0) throw MException("The base failed.", 77);
  }
  int transfers_;
};

TYPED_TEST(MCompressionStreamEndTest, FailureOfTheBaseToWriteClosesTheCompressor) {
  const ReportedTexts reported;
  TestRandom random;
  const std::string noise = Mixed(2'000'000, random);
  for (int transfers = 0; transfers < 3; ++transfers) {
    FailingStream base("", transfers);
    TypeParam stream(&base, true);
    EXPECT_RAISES(Put(stream, noise), "The base failed.", 77);
    EXPECT_FALSE(stream.IsValid());
    EXPECT_RAISES(Put(stream, "a"), "File stream is not initialized.", 258);
    EXPECT_RAISES(stream.Finish(), "File stream is not initialized.", 258);
  }
  EXPECT_TRUE(reported.Get().empty());
}

TYPED_TEST(MCompressionStreamEndTest, FailureOfTheBaseToTakeTheEndClosesTheCompressor) {
  const ReportedTexts reported;
  BareStream healthy;
  TypeParam probe(&healthy, true);
  Put(probe, "abc");
  const auto writes = static_cast<int>(healthy.writes.size());
  probe.Finish();
  {
    FailingStream base("", writes);
    TypeParam stream(&base, true);
    Put(stream, "abc");
    EXPECT_RAISES(stream.Finish(), "The base failed.", 77);
    EXPECT_FALSE(stream.IsValid());
  }
  EXPECT_TRUE(reported.Get().empty());
}

TYPED_TEST(MCompressionStreamEndTest, FailureOfTheBaseToReadClosesTheDecompressor) {
  TestRandom random;
  FailingStream base(Compressed<TypeParam>(Mixed(300'000, random)), 1);
  TypeParam stream(&base, false);
  EXPECT_RAISES(Take(stream, 300'000), "The base failed.", 77);
  EXPECT_FALSE(stream.IsValid());
  EXPECT_RAISES(Take(stream, 1), "File stream is not initialized.", 258);
}

TYPED_TEST(MCompressionStreamEndTest, CountsThatABaseCannotHaveReadAreNotBelieved) {
  class Lying : public BareStream {
   public:
    explicit Lying(int32_t found) : found_(found) {}
    int32_t Read(void* bytes, int32_t count) override {
      std::memset(bytes, 0, static_cast<std::size_t>(count));
      return found_;
    }
    int32_t found_;
  };
  Lying negative(-1), huge(1'000'000);
  TypeParam empty(&negative, false), full(&huge, false);
  EXPECT_EQ(Take(empty, 10), "");
  EXPECT_RAISES(Take(full, 10), kInvalidContent, 256);
}

TYPED_TEST(MCompressionStreamEndTest, AllMemoryIsThatOfTheTable) {
  BareStream base;
  for (const bool isCompressing : {true, false}) {
    const int64_t balance = CountingFunctions::GetBalance();
    TypeParam stream(&base, isCompressing);
    EXPECT_GT(CountingFunctions::GetBalance(), balance + 1) << "the library's record and its own blocks";
    if (isCompressing) {
      stream.Finish();
      EXPECT_EQ(CountingFunctions::GetBalance(), balance);
    }
  }
}

// The record itself fails as all memory does, the library's own blocks as the library reports them.
TYPED_TEST(MCompressionStreamEndTest, MemoryThatRunsOutRaisesAndLosesNothing) {
  const std::string compressed = Compressed<TypeParam>("abc");
  for (const bool isCompressing : {true, false}) {
    for (int request = 0;; ++request) {
      std::string text;
      ForwardStream base(compressed);
      TypeParam stream(nullptr, true);
      CountingFunctions::FailAfter(request);
      try {
        stream.Open(&base, isCompressing);
        if (isCompressing) {
          Put(stream, "abc");
          stream.Finish();
        } else {
          EXPECT_EQ(Take(stream, 4), "abc");
        }
      } catch (const MException& raised) {
        text = Utf8(raised.message);
      }
      CountingFunctions::FailAfter(-1);
      if (text.empty()) break;
      EXPECT_FALSE(stream.IsValid());
      const bool isRefused = text == "Could not initialize deflating." ||
                             text == "Could not initialize inflating." || text == kInvalidContent;
      EXPECT_TRUE(request == 0 ? text == "Out of memory." : isRefused) << text;
    }
  }
}

}  // namespace
