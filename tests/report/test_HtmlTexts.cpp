#include "core/Errors.h"
#include "report/HtmlTexts.h"
#include "support/TempConfig.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStringEncoder>
#include <gtest/gtest.h>

namespace {

const QString CExe = QStringLiteral("/opt/quorvex/quorvex-followup");

class HtmlTextsTest : public ::testing::Test
{
protected:
  QString Ini() const { return FConfig.File(QStringLiteral("quorvex-followup.ini")); }
  QString Block(int number) const { return HtmlTextFileName(Ini(), CExe, number); }
  QByteArray Bytes(int number) const
  {
    QFile file(Block(number));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }
  tyHtmlTexts Read() const
  {
    tyHtmlTexts texts;
    texts.Why = {QStringLiteral("left over")};
    ReadHtmlTexts(Ini(), CExe, texts);
    return texts;
  }

  TTempConfig FConfig;
};

QString Link(const QString &text)
{
  return QStringLiteral("<a href=\"https://support.quorvex-itsm.example/kb/[a-z-]+\" target=\"_blank\">") + text +
         QStringLiteral("</a>");
}

} // namespace

TEST(HtmlTextFileNameTest, FolderOfTheSettingsAndExecutableNameWithoutExtension)
{
  EXPECT_EQ(HtmlTextFileName("/home/u/.config/V/q/quorvex-followup.ini", "/usr/bin/quorvex-followup", 1),
            "/home/u/.config/V/q/quorvex-followup_1.html");
  EXPECT_EQ(HtmlTextFileName("/f/tool.ini", "C/tool.exe", 8), "/f/tool_8.html");
}

TEST(DefaultHtmlTextsTest, ShortBlocksAreExact)
{
  const tyHtmlTexts texts = DefaultHtmlTexts();
  EXPECT_EQ(texts.Unassigned_Title, QStringList{"<h2>Unassigned</h2>"});
  EXPECT_EQ(texts.Unassigned_With, QStringList{"<p>These tickets are not yet assigned.</p>"});
  EXPECT_EQ(texts.Unassigned_Without, QStringList{"<p>All tickets have been assigned.</p>"});
  EXPECT_EQ(texts.WithoutUpdate_Title, QStringList{"<h2>Without update</h2>"});
  EXPECT_EQ(texts.WithoutUpdate_With,
            (QStringList{"<p>These tickets have not been updated for more than %NBDAYS% days.</p>",
                         "<p>If the task associated with the ticket is scheduled, change the ticket status from "
                         "\"Waiting\" to \"Planned (without SLA)\" and it will no longer appear in this list.</p>"}));
  EXPECT_EQ(texts.WithoutUpdate_Without, QStringList{"<p>All tickets have been updated recently.</p>"});
}

TEST(DefaultHtmlTextsTest, TenExchangesBlockLinksTheArticles)
{
  const QStringList lines = DefaultHtmlTexts().More10;
  ASSERT_EQ(lines.size(), 5);
  EXPECT_EQ(lines[0], "<h2>&gt; 10 exchanges</h2>");
  EXPECT_EQ(lines[1], "<p>10 exchanges have been added automatically by the supervisor, no exchanges will be added "
                      "to this ticket during the next executions of the control.</p>");
  EXPECT_TRUE(QRegularExpression("^<p>The explanation for this message is described in " + Link("this article") +
                                 "\\.</p>$")
                  .match(lines[2])
                  .hasMatch())
      << lines[2].toStdString();
  EXPECT_TRUE(QRegularExpression("^<p>Was this ticket managed in accordance with the recommendations in the article " +
                                 Link("How do I manage tickets created following a monitoring alert\\?") + "\\.</p>$")
                  .match(lines[3])
                  .hasMatch())
      << lines[3].toStdString();
  EXPECT_EQ(lines[4], "<p>Would it be wise to set up a maintenance window until the issue is resolved?</p>");
}

TEST(DefaultHtmlTextsTest, WhyBlockHasItsElevenLines)
{
  const QStringList lines = DefaultHtmlTexts().Why;
  ASSERT_EQ(lines.size(), 11);
  EXPECT_EQ(lines[0], "<h2>Why did I receive this email?</h2>");
  EXPECT_EQ(lines[1], "<p>The first reason: you have an active account in the <a href=\"%QUORVEX_ITSM%\" "
                      "target=\"_blank\">Quorvex ITSM</a> application.</p>");
  EXPECT_TRUE(QRegularExpression(
                  "^<p>If you no longer use this application or no longer work for the organizations listed at the "
                  "beginning of the email, request that your account be deactivated or modified by creating " +
                  Link("a ticket") +
                  "\\. Create a new request for the Vellmor organization and select the template "
                  "\"Operator creation / deletion request\"\\.</p>$")
                  .match(lines[2])
                  .hasMatch())
      << lines[2].toStdString();
  EXPECT_EQ(lines[3], "<h3>You received the email as the primary recipient.</h3>");
  EXPECT_EQ(lines[4], "<p>There are two possibilities:</p>");
  EXPECT_EQ(lines[5], "<ol>");
  EXPECT_EQ(lines[6], "  <li>If there are unassigned tickets and you are part of the team to which the ticket is "
                      "assigned, you will receive this email because someone on the team needs to assign the "
                      "ticket.</li>");
  EXPECT_EQ(lines[7], "  <li>Or one of the tickets without updates, or one of the tickets with more than 10 "
                      "automatic exchanges is assigned to you.</li>");
  EXPECT_EQ(lines[8], "</ol>");
  EXPECT_EQ(lines[9], "<h3>You are copied on the email.</h3>");
  EXPECT_EQ(lines[10], "<p>If you are copied on this email, it means that you are part of one of the teams for which "
                       "tickets are analyzed (see the list at the top of the page). You are receiving this email "
                       "for informational purposes only.</p>");
}

TEST_F(HtmlTextsTest, MissingFilesGiveTheDefaultsAndAreNotCreated)
{
  const tyHtmlTexts texts = Read();
  const tyHtmlTexts defaults = DefaultHtmlTexts();
  for (const auto block : CHtmlTextBlocks)
    EXPECT_EQ(texts.*block, defaults.*block);
  for (int number = 1; number <= 8; ++number)
    EXPECT_FALSE(QFile::exists(Block(number))) << number;
}

TEST_F(HtmlTextsTest, SavedBlocksReadBackAsUtf8LinesWithoutMark)
{
  tyHtmlTexts texts = DefaultHtmlTexts();
  texts.Unassigned_Title = {QStringLiteral("<h2>Non assignés après %NBMINUTES% minutes</h2>")};
  texts.More10 = {"", "<p>two</p>", ""};
  texts.Why = {};
  SaveHtmlTexts(Ini(), CExe, texts);

  EXPECT_EQ(Bytes(1), QStringLiteral("<h2>Non assignés après %NBMINUTES% minutes</h2>\n").toUtf8());
  EXPECT_EQ(Bytes(7), QByteArray("\n<p>two</p>\n\n"));
  EXPECT_TRUE(QFile::exists(Block(8)));
  EXPECT_EQ(Bytes(8), QByteArray());

  const tyHtmlTexts back = Read();
  for (const auto block : CHtmlTextBlocks)
    EXPECT_EQ(back.*block, texts.*block);
}

TEST_F(HtmlTextsTest, DeletedFileRestoresOnlyItsBlock)
{
  tyHtmlTexts texts;
  for (std::size_t i = 0; i < CHtmlTextBlocks.size(); ++i)
    texts.*CHtmlTextBlocks[i] = {QStringLiteral("<p>edited %1</p>").arg(i + 1)};
  SaveHtmlTexts(Ini(), CExe, texts);
  ASSERT_TRUE(QFile::remove(Block(5)));

  const tyHtmlTexts back = Read();
  EXPECT_EQ(back.WithoutUpdate_With, DefaultHtmlTexts().WithoutUpdate_With);
  EXPECT_EQ(back.WithoutUpdate_Title, QStringList{"<p>edited 4</p>"});
  EXPECT_EQ(back.WithoutUpdate_Without, QStringList{"<p>edited 6</p>"});
  EXPECT_EQ(back.Why, QStringList{"<p>edited 8</p>"});
  EXPECT_FALSE(QFile::exists(Block(5)));
}

TEST_F(HtmlTextsTest, EmptyFileGivesAnEmptyBlock)
{
  WriteTextFile(Block(2), QByteArray());
  EXPECT_TRUE(Read().Unassigned_With.isEmpty());
  EXPECT_EQ(Read().Unassigned_Title, DefaultHtmlTexts().Unassigned_Title);
}

TEST_F(HtmlTextsTest, ByteOrderMarkSelectsTheEncoding)
{
  const QString text = QStringLiteral("<p>Équipe réseau</p>\r\n<p>Ünïcode</p>\r\n");
  QStringEncoder utf16(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
  WriteTextFile(Block(1), utf16(text));
  WriteTextFile(Block(2), "\xEF\xBB\xBF" + text.toUtf8());
  WriteTextFile(Block(3), text.toUtf8());
  QStringEncoder utf16be(QStringConverter::Utf16BE, QStringConverter::Flag::WriteBom);
  WriteTextFile(Block(4), utf16be(QStringLiteral("<p>Été</p>")));

  const tyHtmlTexts texts = Read();
  const QStringList expected{QStringLiteral("<p>Équipe réseau</p>"), QStringLiteral("<p>Ünïcode</p>")};
  EXPECT_EQ(texts.Unassigned_Title, expected);
  EXPECT_EQ(texts.Unassigned_With, expected);
  EXPECT_EQ(texts.Unassigned_Without, expected);
  EXPECT_EQ(texts.WithoutUpdate_Title, QStringList{QStringLiteral("<p>Été</p>")});
}

TEST_F(HtmlTextsTest, UnreadableFileRaisesNamingIt)
{
  ASSERT_TRUE(QDir().mkpath(Block(3)));
  try {
    Read();
    FAIL() << "no error";
  } catch (const EReadError &error) {
    EXPECT_TRUE(error.Message().startsWith("Unable to read " + Block(3))) << error.Message().toStdString();
  }
}

TEST_F(HtmlTextsTest, RefusedWriteRaisesNamingTheFile)
{
  ASSERT_TRUE(QDir().mkpath(Block(6)));
  try {
    SaveHtmlTexts(Ini(), CExe, DefaultHtmlTexts());
    FAIL() << "no error";
  } catch (const EWriteError &error) {
    EXPECT_TRUE(error.Message().startsWith("Unable to write to " + Block(6))) << error.Message().toStdString();
  }
  EXPECT_EQ(Bytes(5), DefaultHtmlTexts().WithoutUpdate_With.join('\n').toUtf8() + '\n');
}
