#include "core/SecretCodec.h"
#include "core/Trace.h"
#include "state/TMainState.h"
#include "support/OfflineRest.h"
#include "support/TempConfig.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

TEST(MainState, FormCreateOnAFreshAccountRunsWithDefaults)
{
  TTempConfig config;
  Trace::Install(false);
  QStringList warnings;
  TOfflineRest offline;
  TMainState state("quorvex-followup", offline.Rest, [&](const QString &w) { warnings << w; });
  state.FormCreate();
  const QString base = config.Root() + "/Vellmor/vlmQuorvexITSM/";
  EXPECT_EQ(state.FFichINI, base + "quorvex-followup.ini");
  EXPECT_TRUE(state.FLogFile.startsWith(base + "quorvex-followup_"));
  EXPECT_FALSE(state.FAutomatic);
  EXPECT_EQ(state.FICI.Instance, "acme");
  EXPECT_EQ(state.FSmtp.Port, 465);
  EXPECT_EQ(state.FNbMinutes, 15);
  EXPECT_EQ(state.FStatusToIgnore, QStringList{"Planned (without SLA)"});
  EXPECT_TRUE(warnings.isEmpty());
  state.FormDestroy();
  EXPECT_TRUE(ReadTextFile(base + "quorvex-followup.log").contains("Entering TfrmMain.FormCreate")); // the trace
}

TEST(MainState, DamagedSecretIsReportedToThePerson)
{
  TTempConfig config;
  const QString base = config.Root() + "/Vellmor/vlmQuorvexITSM/";
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

TEST(MainState, SavedGroupsAreReadBackByTheNextStart)
{
  TTempConfig config;
  {
    TOfflineRest offline;
    TMainState state("quorvex-followup", offline.Rest);
    state.FormCreate();
    state.FICI.API.Password = "pw";
    state.FICI.Instance = QString::fromUtf8("zürich");
    state.FNbDays = 3;
    state.FStatusToIgnore = QStringList{"On hold"};
    state.FSelectedTeams = {tyRestTeam{9, {}, "Desk", {}, {}}};
    state.SaveConfigITSM();
    state.SaveConfigFilters();
    state.SaveConfigOrgaAndTeams();
    state.FormDestroy();
  }
  TOfflineRest offlineNext;
  TMainState next("quorvex-followup", offlineNext.Rest);
  next.FormCreate();
  EXPECT_EQ(next.FICI.API.Password, "pw");
  EXPECT_EQ(next.FICI.Instance, QString::fromUtf8("zürich"));
  EXPECT_EQ(next.FNbDays, 3);
  EXPECT_EQ(next.FStatusToIgnore, QStringList{"On hold"});
  ASSERT_EQ(next.FSelectedTeams.size(), 1);
  EXPECT_EQ(next.FSelectedTeams[0].name, "Desk");
  next.FormDestroy();
}
