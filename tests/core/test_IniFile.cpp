#include "support/Raised.h"
#include "core/IniFile.h"
#include "support/TempConfig.h"

#include <QDir>
#include <QStringEncoder>
#include <gtest/gtest.h>

TEST(IniFile, ProfileSemanticsOnReading)
{
  TTempConfig config;
  WriteTextFile(config.File("a.ini"), "; a comment\n[Main]\nName =  value with spaces  \nname=second\n"
                                      "Count=12\nFlag=2\nOff=0\nBad=twelve\n[main]\nExtra=x\n");
  const TIniFile ini(config.File("a.ini"));
  EXPECT_EQ(ini.ReadString("MAIN", "NAME", ""), "value with spaces"); // case-insensitive, trimmed, first wins
  EXPECT_EQ(ini.ReadInteger("Main", "Count", 0), 12);
  EXPECT_TRUE(ini.ReadBool("Main", "Flag", false)); // any non-zero integer
  EXPECT_FALSE(ini.ReadBool("Main", "Off", true));
  EXPECT_EQ(ini.ReadInteger("Main", "Bad", -1), -1); // not a number: default
  EXPECT_TRUE(ini.ReadBool("Main", "Bad", true));
  EXPECT_EQ(ini.ReadString("Main", "Extra", ""), "x"); // repeated section merges
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

TEST(IniFile, ByteOrderMarkSelectsTheEncoding)
{
  TTempConfig config;
  const QString path = config.File("utf16.ini");
  QStringEncoder utf16(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
  WriteTextFile(path, utf16(QString::fromUtf8("[S]\nName=Zoë\n")));
  EXPECT_EQ(TIniFile(path).ReadString("S", "Name", ""), QString::fromUtf8("Zoë"));

  WriteTextFile(path, "\xEF\xBB\xBF[S]\nName=Zoë\n");
  EXPECT_EQ(TIniFile(path).ReadString("S", "Name", ""), QString::fromUtf8("Zoë"));
}

TEST(IniFile, FloatsFollowTheLocale)
{
  TTempConfig config;
  const QString path = config.File("f.ini");
  {
    const TScopedLocale french(QLocale(QLocale::French, QLocale::France));
    TIniFile ini(path);
    ini.WriteFloat("S", "F", 46341.2534722222);
    ini.UpdateFile();
    EXPECT_TRUE(ReadTextFile(path).contains("F=46341,2534722222")) << ReadTextFile(path).toStdString();
    EXPECT_DOUBLE_EQ(TIniFile(path).ReadFloat("S", "F", 0), 46341.2534722222);
  }
  const TScopedLocale english(QLocale(QLocale::English, QLocale::UnitedStates));
  EXPECT_DOUBLE_EQ(TIniFile(path).ReadFloat("S", "F", 0), 0.0); // comma under a point locale
  TIniFile ini(path);
  ini.WriteFloat("S", "F", 46341.2534722222);
  ini.UpdateFile();
  EXPECT_TRUE(ReadTextFile(path).contains("F=46341.2534722222")); // no group separator
}

TEST(IniFile, AFileThatExistsButCannotBeReadIsAnErrorNotDefaults)
{
  TTempConfig config;
  const QString path = config.File("folder.ini");
  QDir().mkpath(path); // a folder where the file should be: unreadable as a file, even for root
  const QString error = MessageRaised<EReadError>([&] { const TIniFile ini(path); });
  EXPECT_TRUE(error.startsWith("Unable to read " + path)) << error.toStdString();
}
