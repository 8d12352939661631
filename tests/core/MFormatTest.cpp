#include "core/MFormat.h"

#include <cmath>

#include "tests/core/Balanced.h"

namespace {

using MFormatTest = Balanced;

// The text with "a", "b", "c" ... as arguments, the same for a literal and a buffer.
std::string Letters(const char* format, int count) {
  std::string results[2];
  for (const bool literal : {true, false}) {
    MFormat handle = Format(literal ? MString::Literal(format) : Buffer(format));
    for (int i = 0; i < count; ++i) handle.Arg(MString(static_cast<MChar>('a' + i)));
    results[literal] = Utf8(handle.Text());
  }
  EXPECT_EQ(results[0], results[1]) << format;
  return results[0];
}

template <typename T>
std::string One(const char* format, T value) {
  return Utf8(Format(MString::Literal(format)).Arg(value).Text());
}

TEST_F(MFormatTest, ArgumentsStandInAnyOrder) {
  EXPECT_EQ(Letters("{0}{1}", 2), "ab");
  EXPECT_EQ(Letters("{1}{0}", 2), "ba");
  EXPECT_EQ(Letters("{2}{0}{1}", 3), "cab");
  EXPECT_EQ(Letters("{1}{2}{0}", 3), "bca");
  EXPECT_EQ(Letters("x{1}y{0}z", 2), "xbyaz");
  EXPECT_EQ(Letters("{3}{1}{0}-{2}{5}{4}", 6), "dba-cfe");
}

TEST_F(MFormatTest, AnIndexThatIsNamedTwiceCountsAtItsLastPlace) {
  EXPECT_EQ(Letters("{0}{0}", 1), "a");
  EXPECT_EQ(Letters("{0}x{0}", 1), "xa");
  EXPECT_EQ(Letters("{0}x{1}y{0}", 2), "xbya");
}

TEST_F(MFormatTest, AnIndexThatComesBackBesideAnotherOneCountsAsPlacedTogetherWithIt) {
  EXPECT_EQ(Letters("{1}{0}{1}", 2), "ba");
  EXPECT_EQ(Letters("{0}{1}{0}", 2), "ba");
}

TEST_F(MFormatTest, FlagsOfARepeatedIndexAccumulate) {
  EXPECT_EQ(One("{0+}x{0x}", int64_t{255}), "x+FF");
}

TEST_F(MFormatTest, BracesArePlainWhenDoubled) {
  EXPECT_EQ(Letters("{{0}}", 0), "{0}");
  EXPECT_EQ(Letters("{{0}}", 1), "{0}");
  EXPECT_EQ(Letters("{{{0}}}", 1), "{a}");
  EXPECT_EQ(Letters("}}", 0), "}");
  EXPECT_EQ(Letters("}a", 0), "a");
  EXPECT_EQ(Letters("a}{0}b", 0), "a{0b");  // what stands behind "}" is plain, a brace too
}

TEST_F(MFormatTest, AClosingBraceAtTheEndAppendsItsZero) {
  for (const MString& format : {MString("abc}"), Buffer("abc}")}) {
    const MString text = Format(format).Text();
    EXPECT_EQ(text.GetLength(), 4);
    EXPECT_EQ(text.At(3), 0);
    EXPECT_EQ(text.Substring(0, 3), "abc");
  }
}

TEST_F(MFormatTest, AZeroInsideOfABufferEndsTheFormat) {
  EXPECT_EQ(Format(MString(std::u16string_view(u"ab\0{0}", 6))).Arg("x").Text(), "ab");
  const MString text = Format(MString(std::u16string_view(u"ab}\0{", 5))).Text();
  EXPECT_EQ(text.GetLength(), 3);
}

TEST_F(MFormatTest, EndingInsideOfAnArgumentRaises) {
  for (const char* const format : {"{0", "{", "abc{", "{0;.2", "{0;.", "{0 ", "{0:04", "{{{", "{0}{1"}) {
    for (const MString& text : {MString::Literal(format), Buffer(format)})
      EXPECT_RAISES(Format(text), "Formatting string ends in an argument specification.", 0);
  }
  try {
    Format("{0");
  } catch (const MException& raised) {
    EXPECT_TRUE(raised.source.IsEmpty());
    EXPECT_TRUE(raised.message.IsLiteral());
  }
}

TEST_F(MFormatTest, IntegersArePaddedWithTheSignInFront) {
  EXPECT_EQ(One("{0:04}", -5), "-0005");
  EXPECT_EQ(One("{0:04}", 5), "0005");
  EXPECT_EQ(One("{0 4}", 5), "   5");
  EXPECT_EQ(One("{0 4}", -5), "-   5");
  EXPECT_EQ(One("{0:04+}", 5), "+0005");
  EXPECT_EQ(One("{0;02}", 12345), "12345");
  EXPECT_EQ(One("{0}", INT64_MIN), "-9223372036854775808");
}

TEST_F(MFormatTest, IntegersMayBeHexadecimal) {
  EXPECT_EQ(One("{0x;02}", 255), "FF");
  EXPECT_EQ(One("{0x;04}", 255), "00FF");
  EXPECT_EQ(One("{0x}", -255), "-FF");
  EXPECT_EQ(One("{0x+}", uint64_t{255}), "+FF");
}

TEST_F(MFormatTest, DoublesHaveFourDecimalsUnlessTheFormatSaysOtherwise) {
  EXPECT_EQ(One("{0}", 0.12345), "0.1235");
  for (const char* const format : {"{0;.2}", "{0.2}", "{0.02}", "{0:.2}", "{0;;.2!}"})
    EXPECT_EQ(One(format, 1.5), "1.50") << format;
  EXPECT_EQ(One("{0.0}", 1.25), "1");
  EXPECT_EQ(One("{0;.12}", 0.5), "0.500000000000");
  EXPECT_EQ(One("{0:010.2}", 1.5), "1.50");  // width and fill are for integers
  EXPECT_EQ(One("{0x}", 1.5), "1.5000");
}

TEST_F(MFormatTest, PlusShowsTheSignOfSignedNumbersFromZeroOn) {
  EXPECT_EQ(One("{0+}", 5), "+5");
  EXPECT_EQ(One("{0+}", 0), "+0");
  EXPECT_EQ(One("{0+}", -5), "-5");
  EXPECT_EQ(One("{0;+.02}", 1.5), "+1.50");
  EXPECT_EQ(One("{0;+.02}", 0.0), "+0.00");
  EXPECT_EQ(One("{0;+.02}", -0.0), "+0.00");
  EXPECT_EQ(One("{0;.02}", -0.0), "-0.00");
  EXPECT_EQ(One("{0;+.02}", -1.5), "-1.50");
  EXPECT_EQ(One("{0;+.02}", INFINITY), "+inf");
  EXPECT_EQ(One("{0;+.02}", NAN), "nan");
}

TEST_F(MFormatTest, PlusShowsTheSignOfEveryUnsignedNumber) {
  EXPECT_EQ(One("{0+}", uint64_t{0}), "+0");
  EXPECT_EQ(One("{0+}", ~uint64_t{0}), "+18446744073709551615");
  EXPECT_EQ(One("{0+}", 7u), "+7");
}

TEST_F(MFormatTest, LoneDigitsAndOtherCharactersOfAStyleAreIgnored) {
  EXPECT_EQ(One("{0;5}", 7), "7");
  EXPECT_EQ(One("{0;!?a9#}", 7), "7");
  EXPECT_EQ(One("{0;1.53}", 1.0), "1." + std::string(53, '0'));
}

TEST_F(MFormatTest, WidthAndPrecisionWrapAndAreThenLimited) {
  EXPECT_EQ(One("{0:0255}", 5).size(), 62u);
  EXPECT_EQ(One("{0:0260}", 5), "0005");
  EXPECT_EQ(One("{0.200}", 1.0).size(), 101u);
  EXPECT_EQ(One("{0.258}", 1.0), "1.00");
}

TEST_F(MFormatTest, TextsIgnoreTheStyleAndAreNotReadAgain) {
  EXPECT_EQ(One("[{0:010+x}]", "abc"), "[abc]");
  EXPECT_EQ(One("{0}", MString(u"\u0159")), "\u0159");
  EXPECT_EQ(Utf8(Format("{0}{1}").Arg("{1}").Arg("b").Text()), "{1}b");
  EXPECT_EQ(One("[{0}]", static_cast<const char*>(nullptr)), "[]");
}

TEST_F(MFormatTest, AnIndexThatIsNoNumberIsZero) {
  EXPECT_EQ(Letters("{}", 1), "a");
  EXPECT_EQ(Letters("{x}", 1), "a");
  EXPECT_EQ(One("{x}", 255), "FF");
  EXPECT_EQ(Letters("{-}", 1), "a");
}

TEST_F(MFormatTest, IndicesThatDoNotExistWriteNothing) {
  for (const char* const format : {"[{-1}]", "[{32}]", "[{99999999999}]", "[{-1;.2+x04 7}]"})
    EXPECT_EQ(Letters(format, 3), "[]") << format;
  MFormat last = Format("{31}{30}");
  for (int i = 0; i < 40; ++i) last.Arg(i);
  EXPECT_EQ(last.Text(), "3130");
}

TEST_F(MFormatTest, ArgumentsThatTheTextDoesNotNameAreDropped) {
  EXPECT_EQ(Letters("abc", 3), "abc");
  EXPECT_EQ(Letters("{1}", 2), "b");
  EXPECT_EQ(Letters("{2}{0}", 3), "ca");
  EXPECT_EQ(Letters("{0}", 40), "a");
  EXPECT_EQ(Letters("{0}{1}", 1), "a");
}

TEST_F(MFormatTest, TheGuardsMessageComesOutRight) {
  const MString text =
      Format("Error '{1}' in '{0}' ('{2}').").Arg("Service").Arg("Out of memory.").Arg(12).Text();
  EXPECT_EQ(text, "Error 'Out of memory.' in 'Service' ('12').");
}

TEST_F(MFormatTest, CopiesOfAHandleShareOneState) {
  MFormat first = Format("{0}{1}");
  MFormat second(first);
  first.Arg("a");
  second.Arg("b");
  EXPECT_EQ(first.Text(), "ab");
  first = Format("other");
  EXPECT_EQ(second.Text(), "ab");
  second = *&second;
  EXPECT_EQ(second.Text(), "ab");
}

TEST_F(MFormatTest, TheTextOutlivesItsHandleAndIsNoPartOfIt) {
  MFormat handle = Format("{0}{1}");
  MString text = handle.Arg("a").Text();
  text.Append("x");
  EXPECT_EQ(handle.Arg(handle.Text()).Text(), "aa");
  EXPECT_EQ(text, "ax");
}

TEST_F(MFormatTest, FailedAllocationsLeaveNothingBehind) {
  const int requests =
      FailEachRequest([] { return MString("before"); },
                      [](MString& text) { text = Format("{0} of {1}").Arg(5).Arg(0.5).Text(); },
                      [](const MString& text) { EXPECT_EQ(text, "before"); });
  EXPECT_EQ(requests, 2);
}

TEST_F(MFormatTest, AnArgumentWithoutMemoryLeavesTheTextAsItWas) {
  MString argument;
  argument.AppendRepeated(u'x', 200);
  const int requests =
      FailEachRequest([] { return Format("[{0}]"); }, [&](MFormat& handle) { handle.Arg(argument); },
                      [&](MFormat& handle) {
                        EXPECT_EQ(handle.Text(), "[]");
                        EXPECT_EQ(handle.Arg("x").Text(), "[x]");  // it may be given again
                      });
  EXPECT_EQ(requests, 1);
}

}  // namespace
