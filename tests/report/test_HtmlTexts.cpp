#include "support/Raised.h"
#include "report/HtmlTexts.h"
#include "support/TempConfig.h"

#include <QDir>
#include <QFile>
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

} // namespace

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

TEST_F(HtmlTextsTest, AMissingFileGivesOnlyItsBlockItsDefault)
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
  EXPECT_FALSE(QFile::exists(Block(5))); // reading never writes
  EXPECT_EQ(HtmlTextFileName("/f/tool.ini", "C/tool.exe", 5), "/f/tool_5.html");
  WriteTextFile(Block(2), QByteArray()); // an empty file is an empty block
  EXPECT_TRUE(Read().Unassigned_With.isEmpty());
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

TEST_F(HtmlTextsTest, UnreadableOrUnwritableFileRaisesNamingIt)
{
  ASSERT_TRUE(QDir().mkpath(Block(3)));
  EXPECT_THROW(Read(), EReadError);
  const QString error = MessageRaised<EWriteError>([this] { SaveHtmlTexts(Ini(), CExe, DefaultHtmlTexts()); });
  EXPECT_TRUE(error.startsWith("Unable to write to " + Block(3))) << error.toStdString();
  EXPECT_EQ(Bytes(2), DefaultHtmlTexts().Unassigned_With.join('\n').toUtf8() + '\n');
}
