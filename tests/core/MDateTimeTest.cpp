#include "core/MDateTime.h"

#include <ctime>
#include <limits>

#include "tests/common/CommaLocale.h"
#include "tests/core/FileTests.h"

namespace {

const MDateTime kMoment{2009, 3, 7, 4, 5, 6, 7};

// A moment in a time zone: a POSIX rule, which needs no table on the disk.
std::string At(const char* zone, int64_t milliseconds) {
  const Variable variable("TZ", zone);
  const MDateTime moment = MDateTime::FromUnixTime(milliseconds);
  return Utf8(moment.FormatDate()) + " " + Utf8(moment.FormatTimeWithMilliseconds());
}

void ExpectSixForms() {
  EXPECT_EQ(Utf8(kMoment.FormatCompact()), "20090307 040506");
  EXPECT_EQ(Utf8(kMoment.FormatForFileName()), "2009_03_07 04_05_06");
  EXPECT_EQ(Utf8(kMoment.FormatCompactDate()), "20090307");
  EXPECT_EQ(Utf8(kMoment.FormatDate()), "2009-03-07");
  EXPECT_EQ(Utf8(kMoment.FormatTime()), "04:05:06");
  EXPECT_EQ(Utf8(kMoment.FormatTimeWithMilliseconds()), "04:05:06.7");
}

TEST(MDateTime, HasSixTextForms) {
  ExpectSixForms();
}

TEST(MDateTime, TextFormsAreTheSameInEveryLocale) {
  const CommaLocale locale;
  if (!CommaLocale::IsInForce()) GTEST_SKIP() << "no locale with a decimal comma";
  ExpectSixForms();
}

TEST(MDateTime, MillisecondsAreNotPadded) {
  MDateTime moment = kMoment;
  for (const int32_t milliseconds : {0, 7, 70, 700, 999}) {
    moment.millisecond = milliseconds;
    EXPECT_EQ(Utf8(moment.FormatTimeWithMilliseconds()), "04:05:06." + std::to_string(milliseconds));
  }
}

TEST(MDateTime, NumbersThatAreTooLongAreWrittenWhole) {
  constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();
  const MDateTime moment{12345, 123, -1, kLowest, 0, 99, kLowest};
  EXPECT_EQ(Utf8(moment.FormatDate()), "12345-123--01");
  EXPECT_EQ(Utf8(moment.FormatTimeWithMilliseconds()), "-2147483648:00:99.-2147483648");
  EXPECT_EQ(Utf8(MDateTime{-5, 1, 1}.FormatCompactDate()), "-00050101");
}

TEST(MDateTime, UnixTimeStartsIn1970) {
  EXPECT_EQ(At("UTC0", 0), "1970-01-01 00:00:00.0");
  EXPECT_EQ(At("UTC0", 1236398706007), "2009-03-07 04:05:06.7");
}

TEST(MDateTime, MomentsBefore1970HaveTheirMillisecondsToo) {
  EXPECT_EQ(At("UTC0", -1), "1969-12-31 23:59:59.999");
  EXPECT_EQ(At("UTC0", -1000), "1969-12-31 23:59:59.0");
  EXPECT_EQ(At("UTC0", -1001), "1969-12-31 23:59:58.999");
  EXPECT_EQ(At("UTC0", -2208988800000), "1900-01-01 00:00:00.0");
}

TEST(MDateTime, MomentsBeyond32BitsAreRight) {
  EXPECT_EQ(At("UTC0", 2147483648000), "2038-01-19 03:14:08.0");
  EXPECT_EQ(At("UTC0", 4102444800000), "2100-01-01 00:00:00.0");
  EXPECT_EQ(At("UTC0", 253402300800000), "10000-01-01 00:00:00.0");
  EXPECT_EQ(At("UTC0", std::numeric_limits<int64_t>::max()), "292278994-08-17 07:12:55.807");
  EXPECT_EQ(At("UTC0", std::numeric_limits<int64_t>::min()), "-292275055-05-16 16:47:04.192");
}

TEST(MDateTime, ZoneMayChangeWhileTheProcessRuns) {
  EXPECT_EQ(At("CET-1CEST,M3.5.0,M10.5.0/3", 1236398706007), "2009-03-07 05:05:06.7");
  EXPECT_EQ(At("NPT-5:45", 1236398706007), "2009-03-07 09:50:06.7");
  EXPECT_EQ(At("HST10", 1236398706007), "2009-03-06 18:05:06.7");
  EXPECT_EQ(At("UTC0", 1236398706007), "2009-03-07 04:05:06.7");
}

TEST(MDateTime, SummerTimeBeginsAndEnds) {
  const char* const zone = "CET-1CEST,M3.5.0,M10.5.0/3";
  EXPECT_EQ(At(zone, 1238288399999), "2009-03-29 01:59:59.999");
  EXPECT_EQ(At(zone, 1238288400000), "2009-03-29 03:00:00.0");
  EXPECT_EQ(At(zone, 1256432399000), "2009-10-25 02:59:59.0");
  EXPECT_EQ(At(zone, 1256432400000), "2009-10-25 02:00:00.0");
}

TEST(MDateTime, NowLiesBetweenTwoLooksAtTheClock) {
  const Variable zone("TZ", "UTC0");
  const auto seconds = [](const MDateTime& moment) {
    std::tm parts{};
    parts.tm_year = moment.year - 1900;
    parts.tm_mon = moment.month - 1;
    parts.tm_mday = moment.day;
    parts.tm_hour = moment.hour;
    parts.tm_min = moment.minute;
    parts.tm_sec = moment.second;
    return std::mktime(&parts);
  };
  timespec before{}, after{};
  clock_gettime(CLOCK_REALTIME, &before);
  const MDateTime now = MDateTime::Now();
  clock_gettime(CLOCK_REALTIME, &after);
  const auto whole = [](time_t s, int64_t ms) { return int64_t{s} * 1000 + ms; };
  EXPECT_GE(whole(seconds(now), now.millisecond), whole(before.tv_sec, before.tv_nsec / 1000000));
  EXPECT_LE(whole(seconds(now), now.millisecond), whole(after.tv_sec, after.tv_nsec / 1000000));
}

}  // namespace
