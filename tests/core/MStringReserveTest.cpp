// Copy on write, the sizes of blocks, and records that lie about their length.

#include <string_view>
#include <vector>

#include "tests/core/Balanced.h"
#include "tests/core/MStringRecord.h"

namespace {

using MStringReserve = Balanced;

// The rule for block sizes by the or-and-shift method, written out.
int64_t RoundedBlock(int64_t units) {
  int64_t bits = 2 * units + 7;
  if (bits + 1 < 3) return bits + 1;
  for (const int shift : {1, 2, 4, 8, 16}) bits |= bits >> shift;
  return bits + 1;
}

TEST_F(MStringReserve, BlocksArePowersOfTwoThatHoldHeadUnitsAndTerminator) {
  const std::pair<int32_t, int32_t> sizes[] = {{-5, 16}, {0, 16},  {1, 16},  {4, 16},
                                               {5, 32},  {12, 32}, {13, 64}, {28, 64}};
  for (const auto& [count, size] : sizes) {
    MString text("");
    text.Reserve(count);
    EXPECT_EQ(CapacityOf(text), size) << count;
  }
  for (int32_t count = 1; count < 3000; ++count) {
    MString text("");
    text.Reserve(count);
    EXPECT_EQ(CapacityOf(text), RoundedBlock(count)) << count;
  }
}

TEST_F(MStringReserve, GrowthReallocatesTheBlockAndKeepsTheText) {
  MString text = Buffer("abc");
  text.Reserve(100);
  EXPECT_EQ(table.GetAllocated(), 1);
  EXPECT_EQ(table.GetReallocated(), 1);
  EXPECT_EQ(CapacityOf(text), 256);
  EXPECT_EQ(ReferencesOf(text), 1);
  EXPECT_EQ(text, "abc");
}

TEST_F(MStringReserve, RoomThatIsThereAlreadyCostsNothing) {
  MString text = Buffer("abc");
  text.Reserve(100);
  const int64_t calls = table.GetCalls();
  text.Reserve(100);
  text.Reserve(124);
  text.Reserve(1);
  for (int i = 0; i < 120; ++i) text.Append(u'x');
  EXPECT_EQ(table.GetCalls(), calls);
}

TEST_F(MStringReserve, OfAnUnsharedBufferLeavesALongerTextAlone) {
  MString text = Buffer("abcdef");
  text.Reserve(3);
  EXPECT_EQ(text, "abcdef");
  EXPECT_EQ(CapacityOf(text), 32);
}

TEST_F(MStringReserve, OfASharedBufferCutsALongerText) {
  const MString other = Buffer("abcdef");
  MString text = other;
  text.Reserve(3);
  EXPECT_EQ(text, "ab");
  EXPECT_EQ(text.Units()[2], 0);
  EXPECT_EQ(other, "abcdef");
  EXPECT_EQ(ReferencesOf(other), 1);
}

TEST_F(MStringReserve, OfALiteralCopiesAsMuchAsFits) {
  MString text("abcdef");
  text.Reserve(3);
  EXPECT_FALSE(text.IsLiteral());
  EXPECT_EQ(text, "ab");
  EXPECT_EQ(text.Units()[2], 0);
  MString longer("abc");
  longer.Reserve(50);
  EXPECT_EQ(longer, "abc");
  EXPECT_EQ(CapacityOf(longer), 128);
}

TEST_F(MStringReserve, OfMoreThanABlockCanHoldRaises) {
  for (const int32_t count : {0x1FFFFFFD, 0x7FFFFFFF}) {
    MString text = Buffer("abc");
    EXPECT_RAISES(text.Reserve(count), "Out of memory.", 0);
    EXPECT_RAISES(text.AppendRepeated(u'x', count), "Out of memory.", 0);
    EXPECT_RAISES(MString::FromNarrow("abc", count), "Out of memory.", 0);
    EXPECT_EQ(text, "abc");
  }
  EXPECT_RAISES(MString(std::u16string_view(u"abc", 0x80000000u)), "Out of memory.", 0);
}

TEST_F(MStringReserve, TheLargestBlockFitsItsHead) {
  table.FailAfter(0);  // the request is made, and refused before any memory is taken
  MString text("");
  EXPECT_THROW(text.Reserve(0x1FFFFFFC), MException);
  EXPECT_EQ(table.GetAllocated(), 1);
}

// Bytes on the heap, so that a read behind them is noticed.
class HeapLiteral {
 public:
  explicit HeapLiteral(std::string_view text) : bytes_(text.begin(), text.end()) { bytes_.push_back(0); }
  const char* Get() const { return bytes_.data(); }

 private:
  std::vector<char> bytes_;
};

TEST_F(MStringReserve, MeasuresALiteralThatClaimsToBeLonger) {
  const HeapLiteral bytes("abc");
  for (const int32_t length : {4, 1000, 0x1FFFFFF0}) {
    MString text = Forged(bytes.Get(), length);
    text.Reserve(20);
    EXPECT_EQ(text, "abc");
    MString narrow = Forged(bytes.Get(), length);
    narrow.Reserve(2);
    EXPECT_EQ(narrow, "a");
  }
}

TEST_F(MStringReserve, KeepsTheLengthOfALiteralThatClaimsToBeShorter) {
  MString text = Forged("abcdef", 2);
  text.Reserve(20);
  EXPECT_EQ(text.GetLength(), 2);
  EXPECT_EQ(text, "ab");
}

TEST_F(MStringReserve, TakesANegativeLengthForAnEmptyText) {
  const HeapLiteral bytes("abc");
  MString text = Forged(bytes.Get(), -1000);
  text.Append(u'x');
  EXPECT_EQ(text, "x");
}

TEST_F(MStringReserve, WritingToAForgedLiteralReadsNoByteBehindIt) {
  const HeapLiteral bytes("abc");
  using Write = void (*)(MString&);
  const Write writes[] = {[](MString& text) { text.Append(u'x'); }, [](MString& text) { text.Append("x"); },
                          [](MString& text) { text.AppendRepeated(u'x', 1); },
                          [](MString& text) { text.Insert(1000, u'x'); },
                          [](MString& text) { text.Insert(1000, "x"); }};
  for (const Write write : writes) {
    MString text = Forged(bytes.Get(), 1000);
    write(text);
    EXPECT_EQ(text, "abcx");
  }
}

}  // namespace
