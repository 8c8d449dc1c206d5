#include "core/Errors.h"
#include "core/uTools.h"
#include "support/TempConfig.h"

#include <QDateTime>
#include <QRegularExpression>
#include <array>
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
  EXPECT_EQ(NumStr(7, 3), "007");
  EXPECT_EQ(NumStr(1234, 2), "1234");
  EXPECT_EQ(NumStr(-5, 4), "00-5");
  EXPECT_EQ(TrimBlanks("\t a b \r\n"), "a b");
  EXPECT_EQ(TrimBlanks("\x01x\x1f"), "x");
  EXPECT_EQ(TrimBlanks(QString::fromUtf8("\u00A0x")), QString::fromUtf8("\u00A0x")); // not a blank
}

TEST(Colours, HtmlFormsContrastAndSystemColours)
{
  std::uint8_t red = 0, green = 0, blue = 0;
  ExtractRGB(Rgb(0x12, 0x34, 0x56) | 0x7F000000, red, green, blue); // high byte ignored
  EXPECT_EQ((std::array{red, green, blue}), (std::array<std::uint8_t, 3>{0x12, 0x34, 0x56}));
  const std::pair<TColor, QString> html[] = {{clRed, "#FF0000"},   {clBlue, "#0000FF"},
                                             {Rgb(0xAB, 0x0C, 0xDE), "#AB0CDE"}, {clBtnFace, "#F0F0F0"},
                                             {clHighlight, "#0078D7"}, {clWindowText, "#000000"}};
  for (const auto &[colour, text] : html) {
    EXPECT_EQ(ColorToHtml1(colour), text);
    EXPECT_EQ(ColorToHtml1(HtmlToColor(text.mid(1).toLower())), text);
  }
  // Brightness 128 and above takes black.
  const std::pair<TColor, TColor> contrast[] = {{clYellow, clBlack},           {clRed, clWhite},
                                                {Rgb(127, 128, 128), clBlack}, {Rgb(127, 127, 127), clWhite},
                                                {clHighlight, clWhite},        {clInfoBk, clBlack}};
  for (const auto &[colour, expected] : contrast)
    EXPECT_EQ(GetContrastedColor(colour), expected) << colour;
  for (const char *bad : {"#FF0000", "GG0000", ""})
    EXPECT_THROW(HtmlToColor(bad), EConvertError) << bad;
}

TEST(RestTimestamp, FixedPositionsDefaultsAndInvalidParts)
{
  const struct
  {
    const char *text;
    TDateTime expected;
  } cases[] = {
      {"2024-03-15T08:30:00.123Z", EncodeDate(2024, 3, 15) + EncodeTime(8, 30, 0, 123)},
      {"2024-03-15T08:30:00.123+02:00", EncodeDate(2024, 3, 15) + EncodeTime(8, 30, 0, 123)}, // no time zone
      {"2024/03/15 08h30m00s123", EncodeDate(2024, 3, 15) + EncodeTime(8, 30, 0, 123)}, // separators unread
      {"1899-12-30T00:00:00.000", 0.0},
      {"1900-01-01T12:00:00.000", 2.5},
      {"", -363.0}, // 1 January 1899
      {"2024-03-15", EncodeDate(2024, 3, 15)},
      {"abcd-03-15", EncodeDate(1899, 3, 15)},
      {"2024-xx-yy", EncodeDate(2024, 1, 1)},
      {"2024-02-30 10:00:00", EncodeTime(10, 0, 0, 0)},        // invalid date counts as 0
      {"2024-02-29T25:00:00.000", EncodeDate(2024, 2, 29)},    // invalid time counts as 0
      {"2023-02-29T00:00:00.000", 0.0},                        // not a leap year
  };
  for (const auto &c : cases)
    EXPECT_NEAR(RestTimestamp2DateTime(c.text), c.expected, CMillisecond / 10) << c.text;
  EXPECT_THROW(RestTimestamp2DateTime("2024--1-15"), ERangeError);
  EXPECT_NO_THROW(RestTimestamp2DateTime("2024-+1-15"));
  EXPECT_THROW(RestTimestamp2DateTime("-999-01-01"), ERangeError); // 99999 does not fit, a negative year does
}

TEST(DateTime, ConversionsFileStampsAndLocaleText)
{
  const QDateTime moment(QDate(2026, 11, 14), QTime(6, 5, 9, 42));
  const TDateTime days = DateTimeFromQDateTime(moment);
  EXPECT_NEAR(days, EncodeDate(2026, 11, 14) + EncodeTime(6, 5, 9, 42), CMillisecond / 10);
  EXPECT_EQ(QDateTimeFromDateTime(days), moment);

  EXPECT_TRUE(QRegularExpression("^\\d{8}_\\d{6}$").match(Timestamp(false)).hasMatch());
  EXPECT_TRUE(QRegularExpression("^\\d{8}_\\d{6}\\.\\d{3}$").match(Timestamp(true)).hasMatch());

  const TScopedLocale french(QLocale(QLocale::French, QLocale::France));
  EXPECT_EQ(DateTimeToStr(QDateTime(QDate(2026, 11, 14), QTime(6, 0, 1))), "14/11/2026 06:00:01");
  EXPECT_EQ(DateTimeToStr(QDateTime(QDate(2026, 11, 14), QTime(0, 0))), "14/11/2026"); // no midnight
  EXPECT_EQ(DateTimeToStr(EncodeDate(2026, 11, 14) + EncodeTime(23, 59, 59, 999) + 0.6 / 86400000.0), "15/11/2026");
}
