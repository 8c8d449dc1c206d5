#pragma once

#include "TColor.h"
#include "TDateTime.h"

#include <QDateTime>
#include <QString>
#include <optional>
#include <cstdint>

// Removes leading and trailing blanks and control characters (every character up
// to the space), the trimming used by the settings and the report.
QString TrimBlanks(const QString &value);

// Text for an HTML table cell: "&nbsp;" when the text is blank, otherwise the text
// itself with each blank turned into "&nbsp;". Nothing else is escaped.
QString Str2Html(const QString &value);

// Decimal text of the value, with "0" put in front until it is at least `width`
// long (a negative number gets its zeros before the minus sign: -5, 4 gives 00-5).
QString NumStr(std::int32_t value, std::uint8_t width);

// Splits a colour (system colours resolved first) in its red, green, blue bytes.
void ExtractRGB(TColor color, std::uint8_t &red, std::uint8_t &green, std::uint8_t &blue);
tyRGBTriple ColorToRGBTriple(TColor color);

// Black or white, whichever reads best on a background of the given colour.
TColor GetContrastedColor(TColor color);

// "#RRGGBB" of a colour, system colours resolved.
QString ColorToHtml1(TColor color);

// Colour of six hexadecimal digits "RRGGBB" (no "#"). Raises EConvertError when
// the text does not convert.
TColor HtmlToColor(const QString &value);

// A service time stamp such as 2024-03-15T08:30:00.123Z (ISO 8601) as local
// time: a stamp with a zone designator (Z, +hh:mm, +hhmm) is converted from that
// zone, one without is local time already. Nothing when the text is no such
// stamp (empty, garbage, an impossible date): that date is unknown. Ages are
// measured between such moments in absolute time, never on the clock's face.
std::optional<QDateTime> RestTimestamp2DateTime(const QString &value);

// A date and time as the user's locale writes them: short date, a blank and long
// time; at exactly midnight the time is left out.
QString DateTimeToStr(const QDateTime &moment);

// Local time now as "yyyymmdd_hhmmss" (names of log files).
QString Timestamp();
