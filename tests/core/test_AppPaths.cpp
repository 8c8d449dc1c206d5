#include "core/AppPaths.h"

#include "support/TempConfig.h"

#include <QDir>
#include <gtest/gtest.h>

TEST(AppPaths, NamesDeriveFromTheExecutableAndDebugBuildsShareTheSettingsOnly)
{
  const std::pair<QString, QString> settings[] = {{"/opt/bin/quorvex-followup", "quorvex-followup.ini"},
                                                  {"tool.exe", "tool.ini"}, {"tool.v2.bin", "tool.v2.ini"},
                                                  {"X_DEBUG", "X.ini"}, {"a_Debug_b_debug", "a_b.ini"}};
  for (const auto &[executable, ini] : settings)
    EXPECT_EQ(IniFileNameFor(executable), ini) << executable.toStdString();
  EXPECT_EQ(LogFileNameFor("X_DEBUG", "20261114_060509"), "X_DEBUG_20261114_060509.log");
  EXPECT_EQ(TraceLogPathFor("/home/u/.config/Vellmor/vlmQuorvexITSM/x.ini", "x_debug"),
            "/home/u/.config/Vellmor/vlmQuorvexITSM/x_debug.log");
}

// A relative XDG_CONFIG_HOME is ignored, as the XDG base directory rules say:
// the settings never land under the folder the program was started from.
TEST(AppPaths, ARelativeConfigHomeIsIgnored)
{
  const TTempConfig config; // restores XDG_CONFIG_HOME afterwards
  EXPECT_EQ(BaseFolder(), config.Root() + "/Vellmor/vlmQuorvexITSM/");
  qputenv("XDG_CONFIG_HOME", "relative/config");
  EXPECT_EQ(BaseFolder(), QDir::homePath() + "/.config/Vellmor/vlmQuorvexITSM/");
}
