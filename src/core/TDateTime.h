#pragma once

#include <QDateTime>

// Date-times of the settings file (TokenRequest): day counts with a fraction,
// day 0 being 30 December 1899 and the fraction the time of day, on the local
// clock's face. The workbook's dates take the same form.
using TDateTime = double;

// Fraction of a day for the given time.
double EncodeTime(int hour, int minute, int second, int millisecond);

// The day count of a date and time as its clock shows it (no zone conversion).
TDateTime DateTimeFromQDateTime(const QDateTime &value);
// Local time now, as a day count.
TDateTime NowDateTime();
