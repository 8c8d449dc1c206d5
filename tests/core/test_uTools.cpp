#include "core/Errors.h"
#include "core/TDateTime.h"
#include "core/uTools.h"
#include "support/TempConfig.h"

#include <QDateTime>
#include <QRegularExpression>
#include <gtest/gtest.h>

namespace {
constexpr double CMillisecond = 1.0 / 86400000.0;

TColor Rgb(int red, int green, int blue) { return red | (green << 8) | (blue << 16); }
} // namespace

TEST(TextHelpers, HtmlCellsPaddedNumbersAndTrimmedBlanks)
{
  const std::pair<QString, QString> cells[] = {
      {"", "&nbsp;"}, {" \t\r\n", "&nbsp;"}, {" a b ", "&nbsp;a&nbsp;b&nbsp;"}, {"<b>R&D</b>", "<b>R&D</b>"}};
  for (const auto &[text, html] : cells)
    EXPECT_EQ(Str2Html(text), html) << text.toStdString();
  EXPECT_EQ((QStringList{NumStr(7, 3), NumStr(1234, 2), NumStr(-5, 4)}), (QStringList{"007", "1234", "00-5"}));
  // A no-break space is not a blank.
  EXPECT_EQ((QStringList{TrimBlanks("\t a b \r\n"), TrimBlanks("\x01x\x1f"), TrimBlanks(QString::fromUtf8("\u00A0x"))}),
            (QStringList{"a b", "x", QString::fromUtf8("\u00A0x")}));
}

TEST(Colours, HtmlFormsContrastAndSystemColours)
{
  // Red in the low byte; a system colour as the Windows theme shows it.
  const std::pair<TColor, QString> html[] = {{Rgb(0xAB, 0x0C, 0xDE), "#AB0CDE"}, {clBtnFace, "#F0F0F0"}};
  for (const auto &[colour, text] : html) {
    EXPECT_EQ(ColorToHtml1(colour), text);
    EXPECT_EQ(ColorToHtml1(HtmlToColor(text.mid(1).toLower())), text);
  }
  // Brightness 128 and above takes black.
  const std::pair<TColor, TColor> contrast[] = {
      {Rgb(127, 128, 128), clBlack}, {Rgb(127, 127, 127), clWhite}, {clHighlight, clWhite}, {clInfoBk, clBlack}};
  for (const auto &[colour, expected] : contrast)
    EXPECT_EQ(GetContrastedColor(colour), expected) << colour;
  for (const char *bad : {"#FF0000", "GG0000", ""})
    EXPECT_THROW(HtmlToColor(bad), EConvertError) << bad;
}

// A stamp names its moment whatever the machine's zone: a zone designator is
// converted, a stamp without one is local time; one that cannot be read is an
// unknown date, never a day-zero date nor an error that ends the step.
TEST(RestTimestamp, ZoneDesignatorsAreConvertedAndBadStampsAreUnknown)
{
  const QDateTime utc(QDate(2024, 3, 15), QTime(8, 30, 0, 123), Qt::UTC);
  const std::pair<const char *, QDateTime> stamps[] = {
      {"2024-03-15T08:30:00.123Z", utc},
      {"2024-03-15T10:30:00.123+02:00", utc},
      {"2024-03-15T10:30:00.123+0200", utc},
      {"2024-03-15T03:30:00.123-05:00", utc},
      {"2024-03-15T08:30:00.123456Z", utc},
  };
  for (const char *zone : {"UTC", "Europe/Paris", "America/New_York", "Pacific/Kiritimati"}) {
    const TScopedTimeZone scoped(zone);
    SCOPED_TRACE(zone);
    for (const auto &[text, moment] : stamps) {
      const std::optional<QDateTime> read = RestTimestamp2DateTime(text);
      ASSERT_TRUE(read) << text;
      EXPECT_EQ(read->toMSecsSinceEpoch(), moment.toMSecsSinceEpoch()) << text;
      EXPECT_EQ(read->timeSpec(), Qt::LocalTime) << text;
    }
    // Without a designator: local time, as it stands on the clock's face.
    EXPECT_EQ(RestTimestamp2DateTime("2024-03-15T08:30:00.123"), QDateTime(QDate(2024, 3, 15), QTime(8, 30, 0, 123)));
    EXPECT_EQ(RestTimestamp2DateTime("2024-03-15"), QDateTime(QDate(2024, 3, 15), QTime(0, 0)));
    for (const char *bad : {"", "garbage", "-999999999-01-01T00:00:00", "2024-02-30T10:00:00", "2023-02-29T00:00:00",
                            "2024-03-15T25:00:00", "12345-01-01T00:00:00", "2024/03/15 08h30m00s123"})
      EXPECT_FALSE(RestTimestamp2DateTime(bad)) << bad;
  }
}

// The date and time of the settings file (days since 30/12/1899), and the stamp
// of a run log's name. DateTimeToStr's form is pinned by the report's dates.
TEST(DateTime, DayCountsAndFileStamps)
{
  const QDateTime moment(QDate(2026, 11, 14), QTime(6, 5, 9, 42));
  EXPECT_NEAR(DateTimeFromQDateTime(moment), QDate(1899, 12, 30).daysTo(moment.date()) + EncodeTime(6, 5, 9, 42),
              CMillisecond / 10);
  EXPECT_DOUBLE_EQ(EncodeTime(12, 0, 0, 0), 0.5);
  EXPECT_TRUE(QRegularExpression("^\\d{8}_\\d{6}$").match(Timestamp()).hasMatch());
}
