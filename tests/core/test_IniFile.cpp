#include "core/Trace.h"
#include "core/TextFiles.h"
#include "support/Raised.h"
#include "core/IniFile.h"
#include "support/TempConfig.h"

#include <QDir>
#include <gtest/gtest.h>

namespace {
class IniFile : public ::testing::Test
{
protected:
  TTempConfig FConfig;
  QString FPath = FConfig.File("settings.ini");
};
} // namespace

TEST_F(IniFile, ProfileSemanticsOnReading)
{
  WriteTextFile(FPath, "; a comment\n[Main]\nName =  value with spaces  \nname=second\n[main]\nExtra=x\n");
  const TIniFile ini(FPath);
  // Names in any case, values trimmed, the first wins, a repeated section merges.
  // (Numbers and booleans of the wrong form are the settings test's.)
  EXPECT_EQ(ini.ReadString("MAIN", "NAME", "") + "|" + ini.ReadString("Main", "Extra", ""), "value with spaces|x");
}

TEST_F(IniFile, WritesKeyEqualsValueAndKeepsWhatItDoesNotKnow)
{
  WriteTextFile(FPath, "[Other]\nKeep=me\n; note\n[Main]\nOld=1\n");
  {
    TIniFile ini(FPath);
    ini.WriteString("Main", "Old", "2");
    ini.WriteString("Main", "New", QString::fromUtf8("été"));
    ini.WriteBool("Main", "Flag", true);
    ini.WriteString("Main", "Lines", "two\nlines\r\nhere"); // a line break cannot break the file
    ini.UpdateFile();
  }
  const QString text = ReadTextFile(FPath);
  EXPECT_TRUE(text.contains("Keep=me")) << text.toStdString();
  EXPECT_TRUE(text.contains("; note"));
  EXPECT_TRUE(text.contains("Old=2\nNew=été\nFlag=1\nLines=two lines here\n")) << text.toStdString();
  const TIniFile again(FPath);
  EXPECT_EQ(again.ReadString("main", "new", ""), QString::fromUtf8("été"));
  EXPECT_EQ(again.ReadSection("Main"), (QStringList{"Old", "New", "Flag", "Lines"}));
}

// Two instances on one settings file (a window left open and the unattended run
// beside it) each write what they changed, and neither loses the other's values.
TEST_F(IniFile, TwoWritersKeepEachOthersValues)
{
  WriteTextFile(FPath, "[QuorvexITSM]\nToken=old\nInstance=acme\n[Status]\nNew=1\nGone=2\n");
  TIniFile window(FPath);
  TIniFile run(FPath);
  run.WriteString("QuorvexITSM", "Token", "renewed");
  run.UpdateFile();
  window.WriteString("QuorvexITSM", "Instance", "acme2");
  window.EraseSection("Status");
  window.WriteString("Status", "New", "3");
  window.UpdateFile();
  const TIniFile saved(FPath);
  EXPECT_EQ((QStringList{saved.ReadString("QuorvexITSM", "Token", ""), saved.ReadString("QuorvexITSM", "Instance", ""),
                         saved.ReadSection("Status").join(','), saved.ReadString("Status", "New", "")}),
            (QStringList{"renewed", "acme2", "New", "3"}));
  EXPECT_EQ(window.ReadString("QuorvexITSM", "Token", ""), "renewed"); // the file as it is now
}

// A settings file travels between machines and locales (a cron run in C.UTF-8,
// a desktop in German, whose point groups digits, or Arabic): its numbers keep
// their value.
TEST_F(IniFile, FloatsAreWrittenInAsciiAndReadInAnyLocalesForm)
{
  // Written by this program, or by an older one under a comma or Arabic locale.
  const QString written[] = {"46341.2534722222", "46341,2534722222", QString::fromUtf8("٤٦٣٤١٫٢٥٣٤٧٢٢٢٢٢"),
                             " 46341.2534722222 "};
  for (const QLocale &locale : {QLocale::c(), QLocale(QLocale::German), QLocale(QLocale::Arabic, QLocale::Egypt)}) {
    const TScopedLocale scoped(locale);
    SCOPED_TRACE(locale.name().toStdString());
    TIniFile ini(FPath);
    ini.WriteFloat("S", "F", 46341.2534722222);
    ini.WriteFloat("S", "Small", 1.5);
    ini.UpdateFile();
    EXPECT_TRUE(ReadTextFile(FPath).contains("F=46341.2534722222\nSmall=1.5\n")) << ReadTextFile(FPath).toStdString();
    for (const QString &text : written) {
      WriteTextFile(FPath, ("[S]\nF=" + text + "\nSmall=1,5\nBad=1.2.3\n").toUtf8());
      const TIniFile read(FPath);
      EXPECT_DOUBLE_EQ(read.ReadFloat("S", "F", 0), 46341.2534722222) << text.toStdString();
      EXPECT_DOUBLE_EQ(read.ReadFloat("S", "Small", 0), 1.5) << "a comma is never a group separator";
      EXPECT_DOUBLE_EQ(read.ReadFloat("S", "Bad", 7), 7.0);
    }
  }
}

// A settings file or text block saved by the Windows program in its code page
// keeps every character, and is UTF-8 from its next save on.
TEST_F(IniFile, AFileInWindows1252IsReadSoAndSavedAsUtf8)
{
  Trace::Install(false);
  Trace::Clear();
  Trace::AttachFile(FConfig.File("trace.log"));
  WriteTextFile(FPath, "[Filters]\nNbIgnore=1\nStatus_0=Planifi\xe9 (sans SLA) \x80 \x9c\n");
  const QString status = QString::fromUtf8("Planifié (sans SLA) € œ");
  TIniFile ini(FPath);
  EXPECT_EQ(ini.ReadString("Filters", "Status_0", ""), status);
  ini.WriteInteger("Filters", "NbDays", 14);
  ini.UpdateFile();
  EXPECT_TRUE(ReadTextFile(FPath).contains(status)) << "saved as UTF-8";
  EXPECT_TRUE(ReadTextFile(Trace::FilePath()).contains("Not UTF-8, read as Windows-1252 = \"" + FPath + "\""));
  Trace::Clear();
}

TEST_F(IniFile, AFileThatExistsButCannotBeReadIsAnErrorNotDefaults)
{
  QDir().mkpath(FPath); // a folder where the file should be: unreadable as a file, even for root
  const QString error = MessageRaised<EReadError>([&] { const TIniFile ini(FPath); });
  EXPECT_TRUE(error.startsWith("Unable to read " + FPath)) << error.toStdString();
}
