#include "TDateTime.h"

namespace {
// A function rather than a global, so that constants of other files computed at
// start-up can already use it.
QDate DayZero()
{
  static const QDate dayZero(1899, 12, 30);
  return dayZero;
}
constexpr double CMillisecondsPerDay = 86400000.0;
} // namespace

double EncodeTime(int hour, int minute, int second, int millisecond)
{
  return (((hour * 60.0 + minute) * 60.0 + second) * 1000.0 + millisecond) / CMillisecondsPerDay;
}

TDateTime DateTimeFromQDateTime(const QDateTime &value)
{
  const QTime time = value.time();
  return static_cast<double>(DayZero().daysTo(value.date())) +
         EncodeTime(time.hour(), time.minute(), time.second(), time.msec());
}

TDateTime NowDateTime()
{
  return DateTimeFromQDateTime(QDateTime::currentDateTime());
}
