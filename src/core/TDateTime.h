#pragma once

#include <QDateTime>

// Date-times are day counts with a fraction: day 0 is 30 December 1899 and the
// fraction is the time of day. The settings file and the report keep this form.
using TDateTime = double;

// Days from 30 December 1899 to the given date (negative before it).
double EncodeDate(int year, int month, int day);
// Fraction of a day for the given time.
double EncodeTime(int hour, int minute, int second, int millisecond);

TDateTime DateTimeFromQDateTime(const QDateTime &value);
QDateTime QDateTimeFromDateTime(TDateTime value);
// The calendar date and the time of day of a day count, as they stand: no
// time-zone conversion is made (a local QDateTime costs one per value).
void SplitDateTime(TDateTime value, QDate &date, QTime &time);
// Local time now, as a day count.
TDateTime NowDateTime();
