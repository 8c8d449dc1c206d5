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

void SplitDateTime(TDateTime value, QDate &date, QTime &time)
{
  auto days = static_cast<qint64>(std::floor(value));
  auto milliseconds = static_cast<qint64>(std::llround((value - static_cast<double>(days)) * CMillisecondsPerDay));
  if (milliseconds >= CMillisecondsPerDay) { // rounded up to the next midnight
    ++days;
    milliseconds -= CMillisecondsPerDay;
  }
  date = DayZero().addDays(days);
  time = QTime::fromMSecsSinceStartOfDay(static_cast<int>(milliseconds));
}

QDateTime QDateTimeFromDateTime(TDateTime value)
{
  // Date and time of day at once: each local-time conversion costs a time-zone look-up.
  QDate date;
  QTime time;
  SplitDateTime(value, date, time);
  return QDateTime(date, time);
}

TDateTime NowDateTime()
{
  return DateTimeFromQDateTime(QDateTime::currentDateTime());
}
