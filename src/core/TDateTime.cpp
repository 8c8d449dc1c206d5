#include "TDateTime.h"

#include <cmath>

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

double EncodeDate(int year, int month, int day)
{
  return static_cast<double>(DayZero().daysTo(QDate(year, month, day)));
}

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

QDateTime QDateTimeFromDateTime(TDateTime value)
{
  const double days = std::floor(value);
  const auto milliseconds = static_cast<qint64>(std::llround((value - days) * CMillisecondsPerDay));
  return QDateTime(DayZero().addDays(static_cast<qint64>(days)), QTime(0, 0)).addMSecs(milliseconds);
}

TDateTime NowDateTime()
{
  return DateTimeFromQDateTime(QDateTime::currentDateTime());
}
