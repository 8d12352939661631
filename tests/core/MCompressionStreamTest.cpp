// What both compressing filters have in common.

#include "core/MCompressionStream.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "core/MHexaStream.h"
#include "core/MSizeStream.h"
#include "core/MStreamTools.h"
#include "tests/core/Balanced.h"
#include "tests/core/Compressed.h"

namespace {

template <typename Stream>
class MCompressionStreamTest : public Balanced {
 protected:
  TestRandom random;
};

using Streams = testing::Types<MZLibStream, MBZIPStream>;
TYPED_TEST_SUITE(MCompressionStreamTest, Streams);

TYPED_TEST(MCompressionStreamTest, GivesBackWhatWasWrittenInOnePiece) {
  for (const std::size_t size : {0u, 1u, 4095u, 4096u, 4097u, 1u << 20}) {
    const std::string bytes = Mixed(size, this->random);
    EXPECT_TRUE(Decompressed<TypeParam>(Compressed<TypeParam>(bytes), 1 << 20) == bytes) << size;
  }
}

TYPED_TEST(MCompressionStreamTest, GivesBackWhatWasWrittenInPiecesOfAnySize) {
  for (const int32_t largest : {3, 1000, 5000, 100'000}) {
    const std::string bytes = Mixed(static_cast<std::size_t>(20 * largest), this->random);
    BareStream target;
    TypeParam writer(&target, true);
    for (std::size_t at = 0; at < bytes.size();) {
      const std::string piece = bytes.substr(at, static_cast<std::size_t>(this->random.Below(largest)));
      Put(writer, piece);
      at += piece.size();
      EXPECT_EQ(writer.GetPosition(), static_cast<int64_t>(at));
    }
    writer.Finish();
    ForwardStream source(target.written);
    TypeParam reader(&source, false);
    std::string all;
    while (all.size() < bytes.size()) {
      all += Take(reader, this->random.Below(largest));
      EXPECT_EQ(reader.GetPosition(), static_cast<int64_t>(all.size()));
    }
    EXPECT_TRUE(all == bytes);
    EXPECT_EQ(Take(reader, 1), "");
  }
}

TYPED_TEST(MCompressionStreamTest, MovesAtMost4096BytesAtATimeBetweenItselfAndTheBase) {
  const std::string bytes = Mixed(200'000, this->random);
  BareStream target;
  TypeParam writer(&target, true);
  Put(writer, bytes);
  writer.Finish();
  EXPECT_EQ(*std::max_element(target.writes.begin(), target.writes.end()), 4096);
  EXPECT_GT(*std::min_element(target.writes.begin(), target.writes.end()), 0);
  ForwardStream source(target.written);
  TypeParam reader(&source, false);
  Take(reader, 200'000);
  EXPECT_EQ(std::count(source.reads.begin(), source.reads.end(), 4096), std::ssize(source.reads));
}

TYPED_TEST(MCompressionStreamTest, ReadsFromABaseThatGivesAByteAtATime) {
  class Dripping : public ForwardStream {
   public:
    using ForwardStream::ForwardStream;
    int32_t Read(void* bytes, int32_t count) override {
      return ForwardStream::Read(bytes, std::min(count, 1));
    }
  };
  const std::string bytes = Mixed(10'000, this->random);
  Dripping base(Compressed<TypeParam>(bytes));
  TypeParam stream(&base, false);
  EXPECT_TRUE(Take(stream, 10'000) == bytes);
}

TYPED_TEST(MCompressionStreamTest, NoByteAndFinishGiveAValidEmptyStream) {
  const std::string empty = Compressed<TypeParam>("");
  EXPECT_FALSE(empty.empty());
  ForwardStream base(empty);
  TypeParam stream(&base, false);
  EXPECT_EQ(Take(stream, 100), "");
  EXPECT_TRUE(stream.HasEnded());
}

TYPED_TEST(MCompressionStreamTest, CountsOfNothingMoveNothing) {
  BareStream target;
  TypeParam writer(&target, true);
  writer.Write(nullptr, 0);
  writer.Write(nullptr, -1);
  EXPECT_EQ(writer.GetPosition(), 0);
  EXPECT_TRUE(target.writes.empty());
  writer.Finish();
  EXPECT_EQ(target.written, Compressed<TypeParam>(""));
  ForwardStream source(Compressed<TypeParam>("abc"));
  TypeParam reader(&source, false);
  EXPECT_EQ(reader.Read(nullptr, 0), 0);
  EXPECT_EQ(reader.Read(nullptr, -1), 0);
  EXPECT_TRUE(source.reads.empty());
}

TYPED_TEST(MCompressionStreamTest, ReadBehindTheEndGivesWhatCameAndThenNothing) {
  ForwardStream base(Compressed<TypeParam>("abc") + "trailing data");
  TypeParam stream(&base, false);
  EXPECT_EQ(Take(stream, 3), "abc");
  EXPECT_EQ(Take(stream, 100), "");
  EXPECT_EQ(Take(stream, 100), "");
  EXPECT_TRUE(stream.HasEnded());
  EXPECT_EQ(stream.GetPosition(), 3);
  EXPECT_EQ(base.reads.size(), 1u);
}

TYPED_TEST(MCompressionStreamTest, SeekIsForwardOnlyAndByReading) {
  const std::string bytes = Mixed(10'000, this->random);
  ForwardStream base(Compressed<TypeParam>(bytes));
  TypeParam stream(&base, false);
  stream.Seek(5000, MSeekOrigin::kStart);
  EXPECT_EQ(stream.GetPosition(), 5000);
  EXPECT_EQ(Take(stream, 10), bytes.substr(5000, 10));
  stream.Seek(100, MSeekOrigin::kCurrent);
  EXPECT_EQ(Take(stream, 10), bytes.substr(5110, 10));
  EXPECT_RAISES(stream.Seek(0, MSeekOrigin::kStart),
                "Service \"backward seek in a stream\" is not implemented.", 1);
  EXPECT_RAISES(stream.Seek(0, MSeekOrigin::kEnd), "Service \"stream size detection\" is not implemented.",
                1);
  EXPECT_RAISES(stream.Seek(0, kBadOrigin), "Invalid seek origin.", 2);
  EXPECT_EQ(Take(stream, 10), bytes.substr(5120, 10));
  stream.Seek(1'000'000, MSeekOrigin::kStart);
  EXPECT_EQ(stream.GetPosition(), 10'000);
}

TYPED_TEST(MCompressionStreamTest, WhatTheOtherDirectionDoesIsNotImplemented) {
  BareStream target;
  TypeParam writer(&target, true);
  char byte = 'x';
  EXPECT_RAISES(writer.Read(&byte, 1), "Service \"read from stream\" is not implemented.", 1);
  EXPECT_RAISES(writer.Seek(1, MSeekOrigin::kStart), "Service \"read from stream\" is not implemented.", 1);
  Put(writer, "abc");
  writer.Finish();
  EXPECT_EQ(Decompressed<TypeParam>(target.written), "abc");
  ForwardStream source(target.written);
  TypeParam reader(&source, false);
  EXPECT_RAISES(reader.Write(&byte, 1), "Service \"write to stream\" is not implemented.", 1);
  reader.Finish();
  EXPECT_EQ(Take(reader, 3), "abc");
  for (MStream* const stream : {static_cast<MStream*>(&writer), static_cast<MStream*>(&reader)}) {
    EXPECT_RAISES(stream->GetSize(), "Service \"stream size detection\" is not implemented.", 1);
    EXPECT_RAISES(stream->Truncate(), "Service \"truncate stream\" is not implemented.", 1);
  }
}

TYPED_TEST(MCompressionStreamTest, FlushIsThatOfTheBase) {
  class Flushed : public BareStream {
   public:
    void Flush() override { ++flushes; }
    int flushes = 0;
  } base;
  TypeParam stream(&base, true);
  Put(stream, "abc");
  stream.Flush();
  EXPECT_EQ(base.flushes, 1);
  stream.Finish();
  EXPECT_EQ(Decompressed<TypeParam>(base.written), "abc");
}

TYPED_TEST(MCompressionStreamTest, WithoutABaseItIsNotValidAndRaises) {
  for (const bool isCompressing : {true, false}) {
    TypeParam stream(nullptr, isCompressing);
    char byte = 'x';
    EXPECT_FALSE(stream.IsValid());
    EXPECT_EQ(stream.GetPosition(), 0);
    EXPECT_RAISES(stream.Write(&byte, 1), "File stream is not initialized.", 258);
    EXPECT_RAISES(stream.Read(&byte, 1), "File stream is not initialized.", 258);
    EXPECT_RAISES(stream.Finish(), "File stream is not initialized.", 258);
    EXPECT_RAISES(stream.Flush(), "File stream is not initialized.", 258);
    stream.Close();
  }
}

TYPED_TEST(MCompressionStreamTest, OpenBeginsAnew) {
  BareStream first, second;
  TypeParam stream(&first, true);
  EXPECT_TRUE(stream.IsValid());
  Put(stream, "abc");
  stream.Finish();
  stream.Open(&second, true);
  EXPECT_EQ(stream.GetPosition(), 0);
  Put(stream, "defg");
  stream.Finish();
  EXPECT_EQ(Decompressed<TypeParam>(first.written), "abc");
  ForwardStream source(second.written);
  stream.Open(&source, false);
  EXPECT_EQ(Take(stream, 10), "defg");
  EXPECT_TRUE(stream.HasEnded());
  ForwardStream again(first.written);
  stream.Open(&again, false);
  EXPECT_FALSE(stream.HasEnded());
  EXPECT_EQ(stream.GetPosition(), 0);
  EXPECT_EQ(Take(stream, 10), "abc");
  stream.Open(nullptr, true);
  EXPECT_FALSE(stream.IsValid());
}

TYPED_TEST(MCompressionStreamTest, FiltersStandOverEachOther) {
  const std::string bytes = Mixed(50'000, this->random);
  MMemoryStream memory;
  {
    MHexaStream digits(&memory);
    MZLibStream outer(&digits, true);
    TypeParam inner(&outer, true);
    Put(inner, bytes);
    inner.Finish();
    outer.Finish();
  }
  memory.Seek(0, MSeekOrigin::kStart);
  MHexaStream digits(&memory);
  MSizeStream window(&digits, memory.GetSize() / 2, false, false);
  MZLibStream outer(&window, false);
  TypeParam inner(&outer, false);
  EXPECT_TRUE(Rest(inner) == bytes);
}

TYPED_TEST(MCompressionStreamTest, CopiesOfAStreamGoThroughIt) {
  for (const std::size_t size : {4095u, 8192u, 20'000u}) {
    const std::string bytes = Mixed(size, this->random);
    ForwardStream plain(bytes);
    MMemoryStream memory, copy;
    TypeParam writer(&memory, true);
    MCopyStream(plain, writer);
    writer.Finish();
    memory.Seek(0, MSeekOrigin::kStart);
    TypeParam reader(&memory, false);
    MCopyStream(reader, copy);
    EXPECT_TRUE(All(copy) == bytes);
    EXPECT_TRUE(reader.HasEnded());
  }
}

TYPED_TEST(MCompressionStreamTest, LinesAreReadThroughIt) {
  ForwardStream base(Compressed<TypeParam>("first\r\nsecond\nlast"));
  TypeParam stream(&base, false);
  EXPECT_EQ(Line(stream, 100), "0:first");
  EXPECT_EQ(Line(stream, 100), "0:second");
  EXPECT_EQ(Line(stream, 100), "0:last");
  EXPECT_EQ(Line(stream, 100), "2:");
}

}  // namespace
