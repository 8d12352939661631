#pragma once
#include "core/MString.h"

// A moment in local time, in the Gregorian calendar, and its text forms. Numbers out of their range are
// written as they are.
struct MDateTime {
  int32_t year = 0;
  int32_t month = 0;  // 1 to 12
  int32_t day = 0;    // 1 to 31
  int32_t hour = 0;
  int32_t minute = 0;
  int32_t second = 0;  // 60 in a leap second
  int32_t millisecond = 0;

  static MDateTime Now();
  // From milliseconds since the start of 1970 UTC, earlier ones negative, by the rules of the time zone in
  // force (TZ).
  static MDateTime FromUnixTime(int64_t milliseconds);

  MString FormatCompact() const;               // "20090307 040506"
  MString FormatForFileName() const;           // "2009_03_07 04_05_06"
  MString FormatCompactDate() const;           // "20090307"
  MString FormatDate() const;                  // "2009-03-07"
  MString FormatTime() const;                  // "04:05:06"
  MString FormatTimeWithMilliseconds() const;  // "04:05:06.7" for 7 ms
};
