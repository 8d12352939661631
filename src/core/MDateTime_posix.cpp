#include "core/MDateTime.h"

#include <time.h>

MDateTime MDateTime::Now() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return FromUnixTime(int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000);
}

MDateTime MDateTime::FromUnixTime(int64_t milliseconds) {
  const int64_t rest = (milliseconds % 1000 + 1000) % 1000;
  const auto seconds = static_cast<time_t>(milliseconds / 1000 - (milliseconds % 1000 < 0 ? 1 : 0));
  tzset();  // localtime_r may know the zone of its first call only
  tm local{};
  // Cannot fail: 2^63 milliseconds are less than 2^31 years.
  localtime_r(&seconds, &local);
  return {local.tm_year + 1900, local.tm_mon + 1,          local.tm_mday, local.tm_hour, local.tm_min,
          local.tm_sec,         static_cast<int32_t>(rest)};
}
