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

// Each block in a file of its own, as UTF-8 lines without a mark; a missing
// file gives only its block the default, an empty one an empty block.
TEST_F(HtmlTextsTest, SavedBlocksReadBackAsUtf8LinesAndAMissingFileGivesItsDefault)
{
  tyHtmlTexts texts = DefaultHtmlTexts();
  texts.Unassigned_Title = {QStringLiteral("<h2>Non assignés après %NBMINUTES% minutes</h2>")};
  texts.WithoutUpdate_Title = {"<p>edited</p>"};
  texts.More10 = {"", "<p>two</p>", ""};
  texts.Why = {};
  SaveHtmlTexts(Ini(), CExe, texts);
  EXPECT_EQ(Bytes(1), QStringLiteral("<h2>Non assignés après %NBMINUTES% minutes</h2>\n").toUtf8());
  EXPECT_EQ(Bytes(7), QByteArray("\n<p>two</p>\n\n"));
  ASSERT_TRUE(QFile::remove(Block(4)));
  const tyHtmlTexts back = Read();
  for (std::size_t i = 0; i < CHtmlTextBlocks.size(); ++i)
    EXPECT_EQ(back.*CHtmlTextBlocks[i], (i == 3 ? DefaultHtmlTexts() : texts).*CHtmlTextBlocks[i]) << i + 1;
  EXPECT_FALSE(QFile::exists(Block(4))); // reading never writes
  EXPECT_EQ(HtmlTextFileName("/f/tool.ini", "C/tool.exe", 5), "/f/tool_5.html");
}

TEST_F(HtmlTextsTest, ByteOrderMarkSelectsTheEncoding)
{
  const QString text = QStringLiteral("<p>Équipe réseau</p>\r\n<p>Ünïcode</p>\r\n");
  QStringEncoder utf16(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
  WriteTextFile(Block(1), utf16(text));
  WriteTextFile(Block(2), "\xEF\xBB\xBF" + text.toUtf8());
  WriteTextFile(Block(3), text.toUtf8());

  const tyHtmlTexts texts = Read();
  const QStringList expected{QStringLiteral("<p>Équipe réseau</p>"), QStringLiteral("<p>Ünïcode</p>")};
  EXPECT_EQ((QList<QStringList>{texts.Unassigned_Title, texts.Unassigned_With, texts.Unassigned_Without}),
            QList<QStringList>(3, expected));
}

TEST_F(HtmlTextsTest, UnreadableOrUnwritableFileRaisesNamingIt)
{
  ASSERT_TRUE(QDir().mkpath(Block(3)));
  EXPECT_THROW(Read(), EReadError);
  const QString error = MessageRaised<EWriteError>([this] { SaveHtmlTexts(Ini(), CExe, DefaultHtmlTexts()); });
  EXPECT_TRUE(error.startsWith("Unable to write to " + Block(3))) << error.toStdString();
  EXPECT_EQ(Bytes(2), DefaultHtmlTexts().Unassigned_With.join('\n').toUtf8() + '\n');
}
