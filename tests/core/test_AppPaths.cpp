#include "core/AppPaths.h"

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
