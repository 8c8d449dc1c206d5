#include "TDateTime.h"

#include <cmath>

namespace {
const QDate CDayZero(1899, 12, 30);
constexpr double CMillisecondsPerDay = 86400000.0;
} // namespace

double EncodeDate(int year, int month, int day)
{
  return static_cast<double>(CDayZero.daysTo(QDate(year, month, day)));
}

double EncodeTime(int hour, int minute, int second, int millisecond)
{
  return (((hour * 60.0 + minute) * 60.0 + second) * 1000.0 + millisecond) / CMillisecondsPerDay;
}

TDateTime DateTimeFromQDateTime(const QDateTime &value)
{
  const QTime time = value.time();
  return static_cast<double>(CDayZero.daysTo(value.date())) +
         EncodeTime(time.hour(), time.minute(), time.second(), time.msec());
}

QDateTime QDateTimeFromDateTime(TDateTime value)
{
  const double days = std::floor(value);
  const auto milliseconds = static_cast<qint64>(std::llround((value - days) * CMillisecondsPerDay));
  return QDateTime(CDayZero.addDays(static_cast<qint64>(days)), QTime(0, 0)).addMSecs(milliseconds);
}

TDateTime NowDateTime()
{
  return DateTimeFromQDateTime(QDateTime::currentDateTime());
}
