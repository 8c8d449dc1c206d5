#include "core/SecretCodec.h"
#include "core/Trace.h"
#include "state/TMainState.h"
#include "support/OfflineRest.h"
#include "support/TempConfig.h"

#include <QDir>
#include <gtest/gtest.h>

TEST(MainState, FormCreateOnAFreshAccountRunsWithDefaults)
{
  TTempConfig config;
  Trace::Install(false);
  QStringList warnings;
  TOfflineRest offline;
  TMainState state("quorvex-followup", offline.Rest, [&](const QString &w) { warnings << w; });
  state.FormCreate();
  const QString base = config.SettingsFolder();
  EXPECT_EQ(state.FFichINI, base + "quorvex-followup.ini");
  EXPECT_TRUE(state.FLogFile.startsWith(base + "quorvex-followup_"));
  EXPECT_EQ(state.FStatusToIgnore, QStringList{"Planned (without SLA)"});
  EXPECT_TRUE(warnings.isEmpty());
  state.FormDestroy();
  EXPECT_TRUE(ReadTextFile(base + "quorvex-followup.log").contains("Entering TfrmMain.FormCreate")); // the trace
}

TEST(MainState, DamagedSecretIsReportedToThePerson)
{
  TTempConfig config;
  const QString base = config.SettingsFolder();
  QDir().mkpath(base);
  WriteTextFile(base + "quorvex-followup.ini", "[QuorvexITSM]\nPassword=garbage!\nInstance=blue\n");
  QStringList warnings;
  TOfflineRest offline;
  TMainState state("quorvex-followup", offline.Rest, [&](const QString &w) { warnings << w; });
  state.FormCreate();
  ASSERT_EQ(warnings.size(), 1);
  EXPECT_TRUE(warnings[0].contains("\"Password\""));
  EXPECT_TRUE(warnings[0].contains(base + "quorvex-followup.ini"));
  EXPECT_EQ(state.FICI.Instance, "blue");
  state.FormDestroy();
}
