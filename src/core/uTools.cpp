#include "uTools.h"

#include "Errors.h"

#include <QDate>
#include <QLocale>
#include <QRegularExpression>
#include <QTime>
#include <optional>

QString TrimBlanks(const QString &value)
{
  qsizetype first = 0;
  qsizetype last = value.size();
  while (first < last && value.at(first).unicode() <= u' ')
    ++first;
  while (last > first && value.at(last - 1).unicode() <= u' ')
    --last;
  return value.mid(first, last - first);
}

QString Str2Html(const QString &value)
{
  if (TrimBlanks(value).isEmpty())
    return QStringLiteral("&nbsp;");
  QString result = value;
  return result.replace(u' ', QStringLiteral("&nbsp;"));
}

QString NumStr(std::int32_t value, std::uint8_t width)
{
  QString result = QString::number(value);
  if (result.size() < width)
    result.prepend(QString(width - result.size(), u'0'));
  return result;
}

void ExtractRGB(TColor color, std::uint8_t &red, std::uint8_t &green, std::uint8_t &blue)
{
  const auto rgb = static_cast<std::uint32_t>(ColorToRGB(color));
  red = rgb & 0xFF;
  green = (rgb >> 8) & 0xFF;
  blue = (rgb >> 16) & 0xFF;
}

tyRGBTriple ColorToRGBTriple(TColor color)
{
  tyRGBTriple triple;
  ExtractRGB(color, triple.rgbtRed, triple.rgbtGreen, triple.rgbtBlue);
  return triple;
}

TColor GetContrastedColor(TColor color)
{
  const tyRGBTriple triple = ColorToRGBTriple(color);
  const double brightness = 0.3 * triple.rgbtRed + 0.59 * triple.rgbtGreen + 0.11 * triple.rgbtBlue;
  return brightness > 127.5 ? clBlack : clWhite;
}

QString ColorToHtml1(TColor color)
{
  const tyRGBTriple triple = ColorToRGBTriple(color);
  return QStringLiteral("#%1%2%3")
      .arg(triple.rgbtRed, 2, 16, QChar(u'0'))
      .arg(triple.rgbtGreen, 2, 16, QChar(u'0'))
      .arg(triple.rgbtBlue, 2, 16, QChar(u'0'))
      .toUpper();
}

TColor HtmlToColor(const QString &value)
{
  // Reorder RRGGBB into the colour's BBGGRR byte order before converting.
  const QString digits = value.mid(4, 2) + value.mid(2, 2) + value.mid(0, 2);
  const QString text = u'$' + digits;
  bool ok = !digits.isEmpty();
  for (const QChar c : digits)
    ok = ok && ((c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F'));
  if (!ok)
    throw EConvertError(QStringLiteral("'%1' is not a valid integer value").arg(text));
  return static_cast<TColor>(digits.toUInt(nullptr, 16));
}

std::optional<QDateTime> RestTimestamp2DateTime(const QString &value)
{
  // Qt's ISO 8601 reading: a zone designator gives the absolute moment, its
  // absence local time, as the service means it.
  const QDateTime moment = QDateTime::fromString(value.trimmed(), Qt::ISODateWithMs);
  if (!moment.isValid())
    return std::nullopt;
  return moment.toLocalTime();
}

namespace {
QString DateAndTimeToStr(QDate day, QTime time)
{
  const QLocale locale;
  const QString date = locale.toString(day, QLocale::ShortFormat);
  if (time == QTime(0, 0))
    return date;
  // The long time format without its time-zone name: the time is local. Kept
  // for the last locale format seen, as a report formats thousands of dates.
  static thread_local QString longFormat;
  static thread_local QString timeFormat;
  if (const QString format = locale.timeFormat(QLocale::LongFormat); format != longFormat) {
    static const QRegularExpression zoneName(QStringLiteral("\\s*\\bt+\\b\\s*"));
    longFormat = format;
    timeFormat = QString(format).remove(zoneName).trimmed();
  }
  return date + u' ' + locale.toString(time, timeFormat);
}
} // namespace

QString DateTimeToStr(const QDateTime &moment) { return DateAndTimeToStr(moment.date(), moment.time()); }

QString Timestamp() { return QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd_HHmmss")); }
