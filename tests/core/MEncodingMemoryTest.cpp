#include <gtest/gtest.h>

#include "core/MEncodingReader.h"
#include "core/MEncodingWriter.h"
#include "tests/common/CountingFunctions.h"
#include "tests/common/Texts.h"
#include "tests/core/Encodings.h"
#include "tests/core/StreamDoubles.h"

namespace {

using namespace MEncoding;

// Lets each request for memory of `use` fail in turn; every time it must raise and leave nothing behind.
// Returns how many requests it makes.
template <typename Use>
int FailEachRequest(Use use) {
  for (int request = 0;; ++request) {
    const CountingFunctions table;
    table.FailAfter(request);
    bool isDone = false;
    try {
      use();
      isDone = true;
    } catch (const MException& raised) {
      EXPECT_EQ(raised.message, "Out of memory.");
    }
    table.FailAfter(-1);
    EXPECT_EQ(table.GetBalance(), 0);
    if (isDone) return request;
  }
}

TEST(MEncodingMemory, FailedAllocationsOfDecodeAndEncodeLeaveNothingBehind) {
  const std::string bytes(5000, 'a');
  for (const MString& name : CodecNames()) {
    const Codec& codec = FindCodec(name);
    EXPECT_GT(FailEachRequest([&] { Decode(codec, bytes); }), 0) << Utf8(name);
    EXPECT_EQ(FailEachRequest([&] { codec.Encode("literal", true); }), 2) << Utf8(name);
  }
}

TEST(MEncodingMemory, FailedAllocationsOfLinesLeaveNothingBehind) {
  const std::string bytes(10000, 'a');
  for (const MString& name : CodecNames()) {
    EXPECT_GT(FailEachRequest([&] {
                ForwardStream stream(bytes + "\n");
                Reader reader(stream, FindCodec(name));
                MString line;
                reader.ReadLine(line);
              }),
              0);
    EXPECT_GT(FailEachRequest([&] {
                BareStream stream;
                Writer writer(stream, FindCodec(name));
                writer.WriteTextLine("literal");
              }),
              0);
  }
}

TEST(MEncodingMemory, AFailedMessageOfAnUnknownNameLeavesNothingBehind) {
  EXPECT_GT(FailEachRequest([] {
              try {
                FindCodec("no such name");
              } catch (const MException& raised) {
                if (raised.message == "Out of memory.") throw;
              }
            }),
            0);
}

TEST(MEncodingMemory, ReadingUnitsAndWritingShortTextsAllocatesNothing) {
  const std::string bytes = Pattern(10000);
  for (const MString& name : CodecNames()) {
    ForwardStream source(bytes);
    BareStream target;
    target.written.reserve(10000);
    target.writes.reserve(10);
    const MString text(u"short");
    const CountingFunctions table;
    Reader reader(source, FindCodec(name));
    MChar units[1024];
    while (reader.ReadUnits(units, 1024) > 0) {
    }
    Writer writer(target, FindCodec(name));
    for (int i = 0; i < 500; ++i) writer.WriteText(text);
    writer.Flush();
    EXPECT_EQ(table.GetCalls(), 0) << Utf8(name);
  }
}

TEST(MEncodingMemory, Utf16SharesTheUnitsOfATextUntilOneOfThemIsWrittenTo) {
  const CountingFunctions table;
  {
    MString text(u"ab");
    const MBytes bytes = UTF16Codec::Get().Encode(text, true);
    EXPECT_EQ(static_cast<const void*>(bytes.GetData()), text.GetData());
    EXPECT_EQ(table.GetAllocated(), 2);  // the text's units and the block
    text.Append(u'c');
    EXPECT_EQ(Bytes(bytes), std::string("a\0b\0\0\0", 6));
  }
  EXPECT_EQ(table.GetBalance(), 0);
}

TEST(MEncodingMemory, SharedUnitsOutliveTheirText) {
  const CountingFunctions table;
  {
    MBytes bytes = UTF16Codec::Get().Encode(MString(u"ab"), false);
    const MBytes copy = bytes;
    bytes = MBytes();
    EXPECT_EQ(Bytes(copy), std::string("a\0b\0", 4));
  }
  EXPECT_EQ(table.GetBalance(), 0);
}

}  // namespace
