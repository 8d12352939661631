#include "core/MException.h"

#include <cerrno>
#include <cstring>

#include "core/MTranslate.h"
#include "tests/core/Balanced.h"

namespace {

using MExceptionTest = Balanced;

TEST_F(MExceptionTest, OfAnOrdinaryFailureHasNoSourceAndCodeZero) {
  const MException raised("text");
  EXPECT_EQ(raised.message, "text");
  EXPECT_TRUE(raised.source.IsEmpty());
  EXPECT_EQ(raised.code, 0);
}

TEST_F(MExceptionTest, OfAServiceThatIsNotImplementedNamesItAndHasCodeOne) {
  try {
    MThrowNotImplemented("read from stream");
  } catch (const MException& raised) {
    EXPECT_EQ(raised.message, "Service \"read from stream\" is not implemented.");
    EXPECT_EQ(raised.code, 1);
    EXPECT_TRUE(raised.source.IsEmpty());
  }
}

TEST_F(MExceptionTest, HelpersRaiseTheirTexts) {
  EXPECT_RAISES(MThrowIndexOutOfRange(), "Index out of range.", 0);
  EXPECT_RAISES(MThrowOutOfMemory(), "Out of memory.", 0);
}

TEST_F(MExceptionTest, CopiesShareTheMessage) {
  const MException raised(Buffer("text"), 256);
  MException copy(raised);
  EXPECT_EQ(copy.message.GetData(), raised.message.GetData());
  EXPECT_EQ(copy.code, 256);
  copy = MException("other");
  EXPECT_EQ(raised.message, "text");
  EXPECT_EQ(copy.message, "other");
}

TEST_F(MExceptionTest, WithoutMemoryForItsMessageRaisesOutOfMemory) {
  const int requests = FailEachRequest([] { return 0; },
                                       [](int) {
                                         try {
                                           MThrowNotImplemented("read from stream");
                                         } catch (const MException& raised) {
                                           if (raised.code == 0) throw;
                                         }
                                       },
                                       [](int) {});
  EXPECT_GT(requests, 0);
}

TEST_F(MExceptionTest, HelpersTranslateTheirTexts) {
  MTranslationTable translations;
  translations.Set("Index out of range.", "", "Index mimo rozsah.");
  translations.Set("Out of memory.", "", "Nedostatek pameti.");
  translations.Set("Service \"{0}\" is not implemented.", "", "Sluzba \"{0}\" chybi.");
  translations.Set("NULL cannot be released.", "", "wrong");
  MTranslationTable* const before = MSetTranslationTable(&translations);
  EXPECT_RAISES(MThrowIndexOutOfRange(), "Index mimo rozsah.", 0);
  EXPECT_RAISES(MThrowOutOfMemory(), "Nedostatek pameti.", 0);
  EXPECT_RAISES(MThrowNotImplemented("x"), "Sluzba \"x\" chybi.", 1);
  EXPECT_RAISES(MGetDefaultLibraryFunctions().release(nullptr), "NULL cannot be released.", 0);
  MSetTranslationTable(before);
}

TEST_F(MExceptionTest, TheOperatingSystemsErrorIsTheOneBeforeTheCall) {
  for (const int code : {ENOENT, EACCES, ENOSPC}) {
    errno = code;
    EXPECT_EQ(Utf8(OSErrorText()), std::strerror(code));
  }
  errno = 123456;
  EXPECT_NE(OSErrorText().Find(u'1'), -1);  // "Unknown error 123456"
}

TEST(MException, PlacesStandInFrontOfThoseThatAreThere) {
  MException failure("broken");
  failure.AddSource("line 2");
  EXPECT_EQ(failure.source, "line 2");
  failure.AddSource("a.xml");
  EXPECT_EQ(failure.source, "a.xml, line 2");
  EXPECT_EQ(failure.message, "broken");
}

}  // namespace
