#include "core/Trace.h"
#include "state/TMainState.h"
#include "support/OfflineRest.h"
#include "support/TempConfig.h"

#include <QDir>
#include <gtest/gtest.h>

// The start reads the settings file beside the run log, with the defaults for
// what it lacks, and tells the person of a damaged secret, naming key and file.
TEST(MainState, DamagedSecretIsReportedToThePerson)
{
  for (const bool damaged : {false, true}) {
    TTempConfig config;
    Trace::Install(false);
    const QString ini = config.SettingsFolder() + "quorvex-followup.ini";
    if (damaged) {
      QDir().mkpath(config.SettingsFolder());
      WriteTextFile(ini, "[QuorvexITSM]\nPassword=garbage!\nInstance=blue\n");
    }
    QStringList warnings;
    TOfflineRest offline;
    TMainState state("quorvex-followup", offline.Rest, [&](const QString &w) { warnings << w; });
    state.FormCreate();
    EXPECT_EQ(state.SettingsFile(), ini);
    EXPECT_TRUE(state.LogFile().startsWith(config.SettingsFolder() + "quorvex-followup_"));
    EXPECT_EQ(state.StatusToIgnore(), QStringList{"Planned (without SLA)"});
    EXPECT_EQ(state.Service().Instance, damaged ? "blue" : "acme");
    ASSERT_EQ(warnings.size(), damaged ? 1 : 0);
    if (damaged) {
      EXPECT_TRUE(warnings[0].contains("\"Password\"") && warnings[0].contains(ini)) << warnings[0].toStdString();
    }
    state.FormDestroy();
    const QString trace = ReadTextFile(config.SettingsFolder() + "quorvex-followup.log");
    EXPECT_TRUE(trace.contains("Entering Session.FormCreate"));
  }
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
