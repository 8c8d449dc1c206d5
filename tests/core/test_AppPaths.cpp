#include "core/AppPaths.h"
#include "support/TempConfig.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <gtest/gtest.h>

TEST(AppPaths, NamesDeriveFromTheExecutable)
{
  EXPECT_EQ(IniFileNameFor("quorvex-followup"), "quorvex-followup.ini");
  EXPECT_EQ(IniFileNameFor("/opt/bin/quorvex-followup"), "quorvex-followup.ini");
  EXPECT_EQ(IniFileNameFor("tool.exe"), "tool.ini");
  EXPECT_EQ(IniFileNameFor("tool.v2.bin"), "tool.v2.ini");
  EXPECT_EQ(LogFileNameFor("quorvex-followup", "20261114_060509"), "quorvex-followup_20261114_060509.log");
  EXPECT_EQ(TraceLogPathFor("/home/u/.config/Vellmor/vlmQuorvexITSM/x.ini", "x_debug"),
            "/home/u/.config/Vellmor/vlmQuorvexITSM/x_debug.log");
}

TEST(AppPaths, DebugBuildsShareTheSettingsButNotTheLogs)
{
  EXPECT_EQ(IniFileNameFor("X_DEBUG"), "X.ini");
  EXPECT_EQ(IniFileNameFor("tool_debug"), "tool.ini");
  EXPECT_EQ(IniFileNameFor("a_Debug_b_debug"), "a_b.ini");
  EXPECT_EQ(LogFileNameFor("X_DEBUG", "20261114_060509"), "X_DEBUG_20261114_060509.log");
}

TEST(AppPaths, FirstStartCreatesTheFolders)
{
  TTempConfig config;
  const QString base = config.Root() + "/Vellmor/vlmQuorvexITSM/";
  EXPECT_EQ(BaseFolder(), base);
  ASSERT_FALSE(QDir(base).exists());

  const tyAppPaths paths = InitFichIniLocation("X_DEBUG");
  EXPECT_TRUE(QDir(base).exists());
  EXPECT_EQ(paths.FFichINI, base + "X.ini");
  EXPECT_TRUE(QRegularExpression("^" + QRegularExpression::escape(base) + "X_DEBUG_\\d{8}_\\d{6}\\.log$")
                  .match(paths.FLogFile)
                  .hasMatch())
      << paths.FLogFile.toStdString();
  EXPECT_FALSE(QFileInfo::exists(paths.FFichINI)); // nothing written yet
}
