#include "core/Errors.h"
#include "core/uTools.h"
#include "support/TempConfig.h"

#include <QDateTime>
#include <QRegularExpression>
#include <gtest/gtest.h>

namespace {
constexpr double CMillisecond = 1.0 / 86400000.0;

TColor Rgb(int red, int green, int blue) { return red | (green << 8) | (blue << 16); }
} // namespace

TEST(Str2Html, BlankTextKeepsTheCellHeight)
{
  EXPECT_EQ(Str2Html(QString()), "&nbsp;");
  EXPECT_EQ(Str2Html("  "), "&nbsp;");
  EXPECT_EQ(Str2Html(" \t\r\n"), "&nbsp;");
}

TEST(Str2Html, BlanksBecomeNonBreakingAndHtmlPassesThrough)
{
  EXPECT_EQ(Str2Html("a b"), "a&nbsp;b");
  EXPECT_EQ(Str2Html(" a "), "&nbsp;a&nbsp;");
  EXPECT_EQ(Str2Html("a<b"), "a<b");
  EXPECT_EQ(Str2Html("<b>R&D</b>"), "<b>R&D</b>");
}

TEST(NumStr, PadsWithZerosInFront)
{
  EXPECT_EQ(NumStr(7, 3), "007");
  EXPECT_EQ(NumStr(1234, 2), "1234");
  EXPECT_EQ(NumStr(42, 2), "42");
  EXPECT_EQ(NumStr(0, 0), "0");
  EXPECT_EQ(NumStr(-5, 4), "00-5");
}

TEST(Colours, SplitsRedGreenBlueFromTheLowByteUp)
{
  std::uint8_t red = 0, green = 0, blue = 0;
  ExtractRGB(Rgb(0x12, 0x34, 0x56) | 0x7F000000, red, green, blue); // high byte ignored
  EXPECT_EQ(red, 0x12);
  EXPECT_EQ(green, 0x34);
  EXPECT_EQ(blue, 0x56);
  const tyRGBTriple triple = ColorToRGBTriple(clBlue);
  EXPECT_EQ(triple.rgbtBlue, 255);
  EXPECT_EQ(triple.rgbtGreen, 0);
  EXPECT_EQ(triple.rgbtRed, 0);
}

TEST(Colours, ContrastedColourFollowsTheBrightnessThreshold)
{
  EXPECT_EQ(GetContrastedColor(clYellow), clBlack);          // 226.95
  EXPECT_EQ(GetContrastedColor(clRed), clWhite);             // 76.5
  EXPECT_EQ(GetContrastedColor(Rgb(128, 128, 128)), clBlack); // 128.0
  EXPECT_EQ(GetContrastedColor(Rgb(127, 128, 128)), clBlack); // 127.7
  EXPECT_EQ(GetContrastedColor(Rgb(127, 127, 127)), clWhite); // 127.0
  EXPECT_EQ(GetContrastedColor(clWhite), clBlack);
  EXPECT_EQ(GetContrastedColor(clBlack), clWhite);
}

TEST(Colours, HtmlFormIsRedGreenBlueInUpperCase)
{
  EXPECT_EQ(ColorToHtml1(clRed), "#FF0000");
  EXPECT_EQ(ColorToHtml1(clBlue), "#0000FF");
  EXPECT_EQ(ColorToHtml1(Rgb(0xAB, 0x0C, 0xDE)), "#AB0CDE");
}

TEST(Colours, SystemColoursAreResolvedNotTheirIndex)
{
  EXPECT_EQ(ColorToHtml1(clBtnFace), "#F0F0F0");
  EXPECT_EQ(ColorToHtml1(clHighlight), "#0078D7");
  EXPECT_EQ(ColorToHtml1(clWindowText), "#000000");
  EXPECT_EQ(GetContrastedColor(clHighlight), clWhite);
  EXPECT_EQ(GetContrastedColor(clInfoBk), clBlack);
}

TEST(Colours, HtmlToColorReordersTheBytes)
{
  EXPECT_EQ(HtmlToColor("FF0000"), clRed);
  EXPECT_EQ(HtmlToColor("0000FF"), clBlue);
  EXPECT_EQ(HtmlToColor("abcdef"), Rgb(0xAB, 0xCD, 0xEF));
  EXPECT_EQ(ColorToHtml1(HtmlToColor("12A4C6")), "#12A4C6");
}

TEST(Colours, HtmlToColorRejectsTextThatDoesNotConvert)
{
  EXPECT_THROW(HtmlToColor("#FF0000"), EConvertError);
  EXPECT_THROW(HtmlToColor("GG0000"), EConvertError);
  EXPECT_THROW(HtmlToColor(""), EConvertError);
}

TEST(RestTimestamp, ReadsFixedPositionsWithoutTimeZone)
{
  const TDateTime expected = EncodeDate(2024, 3, 15) + EncodeTime(8, 30, 0, 123);
  EXPECT_NEAR(RestTimestamp2DateTime("2024-03-15T08:30:00.123Z"), expected, CMillisecond / 10);
  EXPECT_NEAR(RestTimestamp2DateTime("2024-03-15T08:30:00.123+02:00"), expected, CMillisecond / 10);
  // Separators are never looked at.
  EXPECT_NEAR(RestTimestamp2DateTime("2024/03/15 08h30m00s123"), expected, CMillisecond / 10);
}

TEST(RestTimestamp, DayCountsStartOn30December1899)
{
  EXPECT_DOUBLE_EQ(RestTimestamp2DateTime("1899-12-30T00:00:00.000"), 0.0);
  EXPECT_DOUBLE_EQ(RestTimestamp2DateTime("1900-01-01T12:00:00.000"), 2.5);
  EXPECT_DOUBLE_EQ(RestTimestamp2DateTime(""), -363.0); // 1 January 1899
}

TEST(RestTimestamp, MissingOrNonNumericFieldsTakeTheirDefaults)
{
  EXPECT_DOUBLE_EQ(RestTimestamp2DateTime("2024-03-15"), EncodeDate(2024, 3, 15));
  EXPECT_NEAR(RestTimestamp2DateTime("2024-03-15T08:30"), EncodeDate(2024, 3, 15) + EncodeTime(8, 30, 0, 0),
              CMillisecond / 10);
  EXPECT_DOUBLE_EQ(RestTimestamp2DateTime("abcd-03-15"), EncodeDate(1899, 3, 15));
  EXPECT_DOUBLE_EQ(RestTimestamp2DateTime("2024-xx-yy"), EncodeDate(2024, 1, 1));
}

TEST(RestTimestamp, InvalidDateOrTimePartCountsAsZero)
{
  // 30 February: the date part is 0, the time is kept.
  EXPECT_NEAR(RestTimestamp2DateTime("2024-02-30 10:00:00"), EncodeTime(10, 0, 0, 0), CMillisecond / 10);
  // 25 o'clock: the time part is 0, the date is kept.
  EXPECT_DOUBLE_EQ(RestTimestamp2DateTime("2024-02-29T25:00:00.000"), EncodeDate(2024, 2, 29));
  EXPECT_DOUBLE_EQ(RestTimestamp2DateTime("2023-02-29T00:00:00.000"), 0.0); // not a leap year
  EXPECT_DOUBLE_EQ(RestTimestamp2DateTime("0000-01-01T00:00:00.000"), 0.0);
}

TEST(RestTimestamp, NumbersOutsideSixteenBitsRaiseARangeError)
{
  EXPECT_THROW(RestTimestamp2DateTime("2024--1-15"), ERangeError);
  EXPECT_NO_THROW(RestTimestamp2DateTime("2024-+1-15"));
  // 99999 cannot stand in four positions, but a negative year can.
  EXPECT_THROW(RestTimestamp2DateTime("-999-01-01"), ERangeError);
}

TEST(Timestamp, FormatsLocalTimeForFileNames)
{
  const QString before = QDateTime::currentDateTime().toString("yyyyMMdd_HHmmss");
  const QString plain = Timestamp(false);
  const QString after = QDateTime::currentDateTime().toString("yyyyMMdd_HHmmss");
  EXPECT_TRUE(QRegularExpression("^\\d{8}_\\d{6}$").match(plain).hasMatch()) << plain.toStdString();
  EXPECT_LE(before, plain);
  EXPECT_LE(plain, after);
  EXPECT_TRUE(QRegularExpression("^\\d{8}_\\d{6}\\.\\d{3}$").match(Timestamp(true)).hasMatch());
}

TEST(DateTime, ConvertsBothWays)
{
  const QDateTime moment(QDate(2026, 11, 14), QTime(6, 5, 9, 42));
  const TDateTime days = DateTimeFromQDateTime(moment);
  EXPECT_NEAR(days, EncodeDate(2026, 11, 14) + EncodeTime(6, 5, 9, 42), CMillisecond / 10);
  EXPECT_EQ(QDateTimeFromDateTime(days), moment);
}

TEST(TrimBlanks, RemovesControlCharactersAndBlanksAtBothEnds)
{
  EXPECT_EQ(TrimBlanks("\t a b \r\n"), "a b");
  EXPECT_EQ(TrimBlanks("\x01x\x1f"), "x");
  EXPECT_EQ(TrimBlanks(QString::fromUtf8("\u00A0x")), QString::fromUtf8("\u00A0x")); // not a blank
}

TEST(DateTimeToStr, LocaleShortDateAndLongTimeWithoutMidnight)
{
  const TScopedLocale french(QLocale(QLocale::French, QLocale::France));
  EXPECT_EQ(DateTimeToStr(QDateTime(QDate(2026, 11, 14), QTime(6, 0, 1))), "14/11/2026 06:00:01");
  EXPECT_EQ(DateTimeToStr(QDateTime(QDate(2026, 11, 14), QTime(0, 0))), "14/11/2026");
  // A day count reads the same, with its time rounded to the millisecond.
  EXPECT_EQ(DateTimeToStr(EncodeDate(2026, 11, 14) + EncodeTime(6, 0, 1, 0)), "14/11/2026 06:00:01");
  EXPECT_EQ(DateTimeToStr(EncodeDate(2026, 11, 14) + EncodeTime(23, 59, 59, 999) + 0.6 / 86400000.0), "15/11/2026");
}
