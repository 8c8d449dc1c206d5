#include "core/Trace.h"
#include "state/TMainState.h"
#include "support/OfflineRest.h"
#include "support/TempConfig.h"

#include <QDir>
#include <gtest/gtest.h>

// The start reads the settings file beside the run log, and tells the person of
// a damaged secret, naming key and file.
TEST(MainState, DamagedSecretIsReportedToThePerson)
{
  TTempConfig config;
  Trace::Install(false);
  const QString ini = config.SettingsFolder() + "quorvex-followup.ini";
  QDir().mkpath(config.SettingsFolder());
  WriteTextFile(ini, "[QuorvexITSM]\nPassword=garbage!\nInstance=blue\n");
  QStringList warnings;
  TOfflineRest offline;
  TMainState state("quorvex-followup", offline.Rest, [&](const QString &w) { warnings << w; });
  state.FormCreate();
  EXPECT_EQ(state.SettingsFile(), ini);
  EXPECT_TRUE(state.LogFile().startsWith(config.SettingsFolder() + "quorvex-followup_"));
  EXPECT_EQ(state.Service().Instance, "blue");
  ASSERT_EQ(warnings.size(), 1);
  EXPECT_TRUE(warnings[0].contains("\"Password\"") && warnings[0].contains(ini)) << warnings[0].toStdString();
  state.FormDestroy();
  EXPECT_TRUE(ReadTextFile(config.SettingsFolder() + "quorvex-followup.log").contains("Entering Session.FormCreate"));
}

// A settings dialog edits a copy: Cancel leaves the session and the file as they
// were, OK keeps the change and saves it for the next start.
TEST(MainState, SettingsDialogsKeepAndSaveOnlyWhatIsAccepted)
{
  TTempConfig config;
  TOfflineRest offline;
  for (const bool ok : {false, true}) {
    TMainState state("quorvex-followup", offline.Rest);
    state.FormCreate();
    state.EditMailSettings([ok](tySMTPserver &smtp, tyDelivery &delivery) {
      smtp.DefaultTo = "lead@vellmor.example";
      delivery.Mode = TDeliveryMode::Personal;
      return ok;
    });
    state.EditFilters([ok](std::int32_t &, std::int32_t &, QStringList &ignored) { ignored = {"Done"}; return ok; });
    state.EditTexts([ok](tyHtmlTexts &texts) { texts.More10 = {"Busy"}; return ok; });
    TMainState next("quorvex-followup", offline.Rest);
    next.FormCreate();
    for (const TMainState *session : {&state, &next}) {
      EXPECT_EQ(session->Smtp().DefaultTo == "lead@vellmor.example", ok);
      EXPECT_EQ(session->Delivery().Mode == TDeliveryMode::Personal, ok);
      EXPECT_EQ(session->StatusToIgnore() == QStringList{"Done"}, ok);
      EXPECT_EQ(session->Texts().More10 == QStringList{"Busy"}, ok);
    }
  }
}
