// Hostile sizes, and memory that runs out.

#include <malloc.h>

#include <memory>

#include "core/MXMLItem.h"
#include "core/MXMLParser.h"
#include "tests/common/TestRandom.h"
#include "tests/core/Balanced.h"
#include "tests/core/XMLTexts.h"

namespace {

class MXMLLimitsTest : public Balanced {};

std::string Repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

TEST_F(MXMLLimitsTest, AMillionNestedElementsAreReadWrittenAndDestroyed) {
  constexpr int kDepth = 1'000'000;
  MXMLItem item;
  const std::string text = Repeated("<a>", kDepth) + "x" + Repeated("</a>", kDepth);
  LoadText(item, text);
  EXPECT_TRUE(Body(item) == text);
  const MXMLItem* deepest = &item;
  while (!deepest->GetChildren().IsEmpty()) deepest = deepest->GetChildren()[0];
  EXPECT_EQ(deepest->GetDepth(), kDepth - 1);
}

TEST_F(MXMLLimitsTest, TheBlanksInFrontOfDeepElementsStayFew) {
  constexpr int kDepth = 200'000;
  MXMLItem item, read;
  LoadText(item, Repeated("<a>", kDepth));
  const std::string indented = SaveText(item, false);
  EXPECT_LT(indented.size(), 150u * kDepth);
  LoadText(read, indented);
  EXPECT_TRUE(Body(read) == Body(item));
}

TEST_F(MXMLLimitsTest, AHundredThousandAttributesOfOneElementAreSortedAtOnce) {
  std::string text = "<a";
  for (int i = 0; i < 100'000; ++i)
    text += " n" + std::to_string(i * 7919 % 100'000) + "=\"" + std::to_string(i) + "\"";
  MXMLItem item;
  LoadText(item, text + " n0=\"last\"/>");
  EXPECT_EQ(item.GetAttributes().GetCount(), 100'000);
  EXPECT_EQ(item.GetAttribute("N0"), "last");
  EXPECT_EQ(item.GetAttribute("n7919"), "1");
}

TEST_F(MXMLLimitsTest, LongNamesValuesAndTextsAreTakenWhole) {
  const std::string name(100'000, 'n'), value(5'000'000, 'v'), text(5'000'000, 't');
  MXMLItem item;
  LoadText(item, "<" + name + " " + name + "=\"" + value + "\">" + text + "</" + name + ">");
  EXPECT_TRUE(Utf8(item.GetName()) == name);
  EXPECT_TRUE(Utf8(item.GetAttribute(item.GetName())) == value);
  EXPECT_TRUE(Utf8(item.GetText()) == text);
}

TEST_F(MXMLLimitsTest, ManyPiecesOfTextAmpersandsAndDashesTakeLinearTime) {
  constexpr int kCount = 500'000;
  MXMLItem item;
  LoadText(item, "<a>" + Repeated("x<b/>", kCount) + "</a>");
  EXPECT_EQ(item.GetText().GetLength(), 2 * kCount - 1);
  LoadText(item, "<a>" + Repeated("&", kCount) + Repeated("&a", kCount) + "</a>");
  EXPECT_EQ(item.GetText().GetLength(), 3 * kCount);
  LoadText(item, "<a><!--" + Repeated("- -", kCount) + "--><![CDATA[" + Repeated("]", kCount) + "]]></a>");
  EXPECT_EQ(item.GetText().GetLength(), kCount);
}

TEST_F(MXMLLimitsTest, ALongDocumentWithoutATreeTakesNoMoreMemoryThanAShortOne) {
  class Nothing final : public MMLParser<MAttribute, MList<MAttribute>> {
   public:
    bool OnElement(const MString&, MList<MAttribute>&, bool) override {
      highest = std::max(highest, CountingFunctions::GetBalance());
      return false;
    }
    bool OnText(const MString&) override { return false; }
    int64_t highest = 0;
  };
  std::string text;
  for (int i = 0; i < 100'000; ++i) text += "<n" + std::to_string(i) + " a=\"" + std::to_string(i) + "\">";
  Nothing parser;
  ForwardStream stream(text);
  parser.Parse(stream);
  EXPECT_LT(parser.highest, 2000);
}

// A device: the same byte for ever, as far as the parser goes.
class EndlessStream final : public BareStream {
 public:
  explicit EndlessStream(char byte) : byte_(byte) {}
  int32_t Read(void* bytes, int32_t count) override {
    std::memset(bytes, byte_, static_cast<std::size_t>(count));
    read += count;
    return count;
  }
  int64_t read = 0;

 private:
  char byte_;
};

TEST_F(MXMLLimitsTest, AStreamWithoutEndThatIsNoXMLIsLeftSoonAndNothingOfItIsKept) {
  for (const auto& [byte, message] : {std::pair('\0', "The XML does not contain any elements."),
                                      {' ', "The XML does not contain any elements."},
                                      {'x', "Invalid file contents. Text outside of any element."}}) {
    EndlessStream stream(byte);
    MXMLItem item;
    const int64_t calls = CountingFunctions::GetCalls();
    try {
      item.Load(stream);
      FAIL() << "raised nothing";
    } catch (const MException& raised) {
      EXPECT_EQ(Utf8(raised.message), message);
    }
    EXPECT_LT(stream.read, 2 << 20);
    EXPECT_LT(CountingFunctions::GetCalls() - calls, 16) << "only the message takes memory";
  }
}

TEST_F(MXMLLimitsTest, AMillionBlanksMayStandInFrontOfTheRoot) {
  const std::string blanks(1 << 20, '\0');
  EXPECT_EQ(Reread(blanks + "<a/>"), "<a/>");
  EXPECT_EQ(FailureOf(blanks + " x"), "The XML does not contain any elements.|0|");
}

TEST_F(MXMLLimitsTest, NamesAndShortValuesOfADocumentAreShared) {
  MXMLItem item;
  LoadText(item,
           "<a parametergain=\"0.5000\"><a parametergain=\"0.5000\"/><a parametergain=\"0.5000\"/></a>");
  const MXMLItem& first = *item.GetChildren()[0];
  const MXMLItem& second = *item.GetChildren()[1];
  EXPECT_EQ(first.GetName().GetData(), second.GetName().GetData());
  EXPECT_EQ(first.GetAttributes()[0].name.GetData(), second.GetAttributes()[0].name.GetData());
  EXPECT_EQ(first.GetAttributes()[0].value.GetData(), second.GetAttributes()[0].value.GetData());
}

// While it lives: how much memory is held, in blocks as an allocator hands them out, with their heads.
class HeldMemory {
 public:
  HeldMemory() : before_(MGetLibraryFunctions()) {
    held = 0;
    MSetLibraryFunctions({Allocate, Release, Reallocate, nullptr, nullptr});
  }
  HeldMemory(const HeldMemory&) = delete;
  HeldMemory& operator=(const HeldMemory&) = delete;
  ~HeldMemory() { MSetLibraryFunctions(before_); }

  static inline double held = 0;

 private:
  static double SizeOf(void* block) {
    return block ? static_cast<double>(std::max<std::size_t>(32, (malloc_usable_size(block) + 23) / 16 * 16))
                 : 0;
  }
  static void* M_CALL Allocate(std::size_t size) { return Reallocate(nullptr, size); }
  static void M_CALL Release(void* block) {
    held -= SizeOf(block);
    std::free(block);
  }
  static void* M_CALL Reallocate(void* block, std::size_t size) {
    held -= SizeOf(block);
    block = std::realloc(block, size);
    held += SizeOf(block);
    return block;
  }

  MLibraryFunctions before_;
};

// Bytes of memory for each piece, of which the document has a power of two.
double MemoryOfEach(const std::string& piece) {
  constexpr int kCount = 1 << 16;
  const HeldMemory memory;
  MXMLItem item;
  LoadText(item, "<a>" + Repeated(piece, kCount) + "</a>");
  return memory.held / kCount;
}

TEST_F(MXMLLimitsTest, ADocumentOfSmallElementsTakesAtMostTenTimesItsText) {
  for (const std::string piece :
       {"  <point/>\n", "<point x=\"0.5\"/>", "  <p x=\"0\" y=\"1\"/>\n", "  <b>some text</b>\n"})
    EXPECT_LE(MemoryOfEach(piece), 10 * static_cast<double>(piece.size())) << piece;
  EXPECT_LE(MemoryOfEach("<a/>"), 96);
}

TEST_F(MXMLLimitsTest, RandomBytesNeverDoMoreThanRaise) {
  TestRandom random;
  const std::vector<std::string> pieces = {"<",        ">",
                                           "/",        "\"",
                                           "=",        "!",
                                           "?",        "&",
                                           ";",        "a",
                                           " ",        "<a",
                                           "</a>",     "<!--",
                                           "-->",      "<![CDATA[",
                                           "]]>",      "<?xml encoding=\"latin2\"?>",
                                           "#10",      "\xC3",
                                           "\xFF\xFE", std::string(1, '\0'),
                                           "b=\"c\""};
  for (int round = 0; round < 5000; ++round) {
    std::string text;
    for (int32_t i = random.Below(30); i > 0; --i) text += random.OneOf(pieces);
    MXMLItem item, read;
    FailureOf(item, text);
    LoadText(read, SaveText(item));
  }
}

constexpr char kDocument[] =
    "<?xml version=\"1.0\" encoding=\"windows-1250\"?><state name=\"x &lt; y\" b=\"0.5\" a=\"0.5\">text<!-- "
    "c -->"
    "<graph><point x=\"a value that is longer than the ones that are "
    "shared\"/><![CDATA[raw]]></graph>more</state>";

TEST_F(MXMLLimitsTest, AFailedRequestWhileReadingLeavesATreeThatCanBeDestroyed) {
  int request = 0;
  for (bool isDone = false; !isDone; ++request) {
    const int64_t balance = table.GetBalance();
    {
      MXMLItem item("old");
      item.AddSubItem("old");
      ForwardStream stream(kDocument);
      table.FailAfter(request);
      try {
        item.Load(stream);
        isDone = true;
      } catch (const MException& raised) {
        EXPECT_EQ(raised.message, "Out of memory.");
      }
      table.FailAfter(-1);
      if (isDone) {
        EXPECT_EQ(item.GetText(), "text\nmore");
      }
    }
    ASSERT_EQ(table.GetBalance(), balance);
  }
  EXPECT_GT(request, 20);
}

TEST_F(MXMLLimitsTest, AFailedRequestWhileWritingLeavesTheTreeAsItWas) {
  const auto make = [] {
    auto item = std::make_unique<MXMLItem>("a<b");
    item->SetAttribute(MString(u"\u20AC"), MString(u"\u0159\u20AC&"));
    item->SetText(MString(u"\U0001F39B\uFEFF"));
    return item;
  };
  const std::string before = Body(*make());
  const auto check = [&](const std::unique_ptr<MXMLItem>& item) { EXPECT_EQ(Body(*item), before); };
  for (const MString& name : {MString("utf-8"), MString("utf-16"), MString("latin2"), MString("ascii")}) {
    const auto write = [&](const std::unique_ptr<MXMLItem>& item) { SaveText(*item, false, name); };
    EXPECT_GT(FailEachRequest(make, write, check), 5);
  }
}

TEST_F(MXMLLimitsTest, AFailedRequestOfAnOperationLeavesTheTreeAsItWas) {
  const auto make = [] {
    auto item = std::make_unique<MXMLItem>("a");
    item->SetAttribute("c", "1");
    item->AddSubItem("s");
    item->SetText("text");
    return item;
  };
  const std::string before = Body(*make());
  const auto check = [&](const std::unique_ptr<MXMLItem>& item) { EXPECT_EQ(Body(*item), before); };
  EXPECT_GT(FailEachRequest(
                make, [](auto& item) { item->SetAttribute("b", "2"); }, check),
            0);
  EXPECT_GT(FailEachRequest(
                make, [](auto& item) { item->AddSubItem("t"); }, check),
            0);
  EXPECT_GT(FailEachRequest(
                make, [](auto& item) { item->SubItem("t"); }, check),
            0);
  EXPECT_GT(FailEachRequest(
                make, [](auto& item) { item->AppendText("more"); }, check),
            0);
}

}  // namespace
