#include "core/Trace.h"
#include "core/TextFiles.h"
#include "support/Raised.h"
#include "core/IniFile.h"
#include "support/TempConfig.h"

#include <QDir>
#include <gtest/gtest.h>

TEST(IniFile, ProfileSemanticsOnReading)
{
  TTempConfig config;
  WriteTextFile(config.File("a.ini"), "; a comment\n[Main]\nName =  value with spaces  \nname=second\n"
                                      "Count=12\nFlag=2\nOff=0\nBad=twelve\n[main]\nExtra=x\n");
  const TIniFile ini(config.File("a.ini"));
  // Names in any case, values trimmed, the first wins, a repeated section merges.
  EXPECT_EQ(ini.ReadString("MAIN", "NAME", "") + "|" + ini.ReadString("Main", "Extra", ""), "value with spaces|x");
  // Any non-zero integer is true; what is not a number gives the default.
  EXPECT_EQ(std::tuple(ini.ReadInteger("Main", "Count", 0), ini.ReadBool("Main", "Flag", false),
                       ini.ReadBool("Main", "Off", true), ini.ReadInteger("Main", "Bad", -1), ini.ReadBool("Main", "Bad", true)),
            std::tuple(12, true, false, -1, true));
}

TEST(IniFile, WritesKeyEqualsValueAndKeepsWhatItDoesNotKnow)
{
  TTempConfig config;
  const QString path = config.File("b.ini");
  WriteTextFile(path, "[Other]\nKeep=me\n; note\n[Main]\nOld=1\n");
  {
    TIniFile ini(path);
    ini.WriteString("Main", "Old", "2");
    ini.WriteString("Main", "New", QString::fromUtf8("été"));
    ini.WriteBool("Main", "Flag", true);
    ini.WriteString("Main", "Lines", "two\nlines\r\nhere"); // a line break cannot break the file
    ini.UpdateFile();
  }
  const QString text = ReadTextFile(path);
  EXPECT_TRUE(text.contains("Keep=me")) << text.toStdString();
  EXPECT_TRUE(text.contains("; note"));
  EXPECT_TRUE(text.contains("Old=2\nNew=été\nFlag=1\nLines=two lines here\n")) << text.toStdString();
  const TIniFile again(path);
  EXPECT_EQ(again.ReadString("main", "new", ""), QString::fromUtf8("été"));
  EXPECT_EQ(again.ReadSection("Main"), (QStringList{"Old", "New", "Flag", "Lines"}));
}

// Two instances on one settings file (a window left open and the unattended run
// beside it) each write what they changed, and neither loses the other's values.
TEST(IniFile, TwoWritersKeepEachOthersValues)
{
  TTempConfig config;
  const QString path = config.File("c.ini");
  WriteTextFile(path, "[QuorvexITSM]\nToken=old\nInstance=acme\n[Status]\nNew=1\nGone=2\n");
  TIniFile window(path);
  TIniFile run(path);
  run.WriteString("QuorvexITSM", "Token", "renewed");
  run.UpdateFile();
  window.WriteString("QuorvexITSM", "Instance", "acme2");
  window.EraseSection("Status");
  window.WriteString("Status", "New", "3");
  window.UpdateFile();
  const TIniFile saved(path);
  EXPECT_EQ((QStringList{saved.ReadString("QuorvexITSM", "Token", ""), saved.ReadString("QuorvexITSM", "Instance", ""),
                         saved.ReadSection("Status").join(','), saved.ReadString("Status", "New", "")}),
            (QStringList{"renewed", "acme2", "New", "3"}));
  EXPECT_EQ(window.ReadString("QuorvexITSM", "Token", ""), "renewed"); // the file as it is now
}

// A settings file travels between machines and locales (a cron run in C.UTF-8,
// a desktop in French or Arabic): its numbers keep their value.
TEST(IniFile, FloatsAreWrittenInAsciiAndReadInAnyLocalesForm)
{
  TTempConfig config;
  const QString path = config.File("f.ini");
  const QLocale locales[] = {QLocale::c(), QLocale(QLocale::French, QLocale::France),
                             QLocale(QLocale::German, QLocale::Germany), QLocale(QLocale::Arabic, QLocale::Egypt)};
  // As written by this program, or by an older one under a comma or Arabic locale.
  const QString written[] = {"46341.2534722222", "46341,2534722222", QString::fromUtf8("٤٦٣٤١٫٢٥٣٤٧٢٢٢٢٢"),
                             " 46341.2534722222 "};
  for (const QLocale &locale : locales) {
    const TScopedLocale scoped(locale);
    SCOPED_TRACE(locale.name().toStdString());
    TIniFile ini(path);
    ini.WriteFloat("S", "F", 46341.2534722222);
    ini.WriteFloat("S", "Small", 1.5);
    ini.UpdateFile();
    EXPECT_TRUE(ReadTextFile(path).contains("F=46341.2534722222\nSmall=1.5\n")) << ReadTextFile(path).toStdString();
    for (const QString &text : written) {
      WriteTextFile(path, ("[S]\nF=" + text + "\nSmall=1,5\nBad=1.2.3\n").toUtf8());
      const TIniFile read(path);
      EXPECT_DOUBLE_EQ(read.ReadFloat("S", "F", 0), 46341.2534722222) << text.toStdString();
      EXPECT_DOUBLE_EQ(read.ReadFloat("S", "Small", 0), 1.5) << "a comma is never a group separator";
      EXPECT_DOUBLE_EQ(read.ReadFloat("S", "Bad", 7), 7.0);
    }
  }
}

// A settings file or text block saved by the Windows program in its code page
// keeps every character, and is UTF-8 from its next save on.
TEST(IniFile, AFileInWindows1252IsReadSoAndSavedAsUtf8)
{
  TTempConfig config;
  const QString path = config.File("w.ini");
  Trace::Install(false);
  Trace::Clear();
  Trace::AttachFile(config.File("trace.log"));
  WriteTextFile(path, "[Filters]\nNbIgnore=1\nStatus_0=Planifi\xe9 (sans SLA) \x80 \x9c\n");
  const QString status = QString::fromUtf8("Planifié (sans SLA) € œ");
  TIniFile ini(path);
  EXPECT_EQ(ini.ReadString("Filters", "Status_0", ""), status);
  EXPECT_EQ(ReadText(path).count(QChar(0xFFFD)), 0);
  ini.WriteInteger("Filters", "NbDays", 14);
  ini.UpdateFile();
  QFile saved(path);
  ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
  EXPECT_TRUE(saved.readAll().contains(status.toUtf8()));
  EXPECT_EQ(TIniFile(path).ReadString("Filters", "Status_0", ""), status);
  EXPECT_TRUE(ReadTextFile(Trace::FilePath()).contains("Not UTF-8, read as Windows-1252 = \"" + path + "\""));
  Trace::Clear();
}

TEST(IniFile, AFileThatExistsButCannotBeReadIsAnErrorNotDefaults)
{
  TTempConfig config;
  const QString path = config.File("folder.ini");
  QDir().mkpath(path); // a folder where the file should be: unreadable as a file, even for root
  const QString error = MessageRaised<EReadError>([&] { const TIniFile ini(path); });
  EXPECT_TRUE(error.startsWith("Unable to read " + path)) << error.toStdString();
}
