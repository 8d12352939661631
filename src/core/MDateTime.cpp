#include "core/MDateTime.h"

#include "core/MFormat.h"

namespace {

MFormat& AddDate(MFormat& format, const MDateTime& moment) {
  return format.Arg(moment.year).Arg(moment.month).Arg(moment.day);
}

MFormat& AddTime(MFormat& format, const MDateTime& moment) {
  return format.Arg(moment.hour).Arg(moment.minute).Arg(moment.second);
}

}  // namespace

MString MDateTime::FormatCompact() const {
  MFormat format("{0:04}{1:02}{2:02} {3:02}{4:02}{5:02}");
  return AddTime(AddDate(format, *this), *this).Text();
}

MString MDateTime::FormatForFileName() const {
  MFormat format("{0:04}_{1:02}_{2:02} {3:02}_{4:02}_{5:02}");
  return AddTime(AddDate(format, *this), *this).Text();
}

MString MDateTime::FormatCompactDate() const {
  MFormat format("{0:04}{1:02}{2:02}");
  return AddDate(format, *this).Text();
}

MString MDateTime::FormatDate() const {
  MFormat format("{0:04}-{1:02}-{2:02}");
  return AddDate(format, *this).Text();
}

MString MDateTime::FormatTime() const {
  MFormat format("{0:02}:{1:02}:{2:02}");
  return AddTime(format, *this).Text();
}

MString MDateTime::FormatTimeWithMilliseconds() const {
  MFormat format("{0:02}:{1:02}:{2:02}.{3}");
  return AddTime(format, *this).Arg(millisecond).Text();
}
