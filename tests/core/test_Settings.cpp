#include "core/Settings.h"
#include "support/TempConfig.h"
#include "tickets/ColourSettings.h"
#include "tickets/SelectionSettings.h"

#include <QFile>
#include <tuple>
#include <gtest/gtest.h>

namespace {

class SettingsTest : public ::testing::Test
{
protected:
  TTempConfig FConfig;
  QString FPath = FConfig.File("quorvex-followup.ini");
  TSettingsWarnings FWarnings;
};

} // namespace

// A missing file and values of the wrong type give the defaults: no made-up
// server, mailbox or address; a parallel count beyond the most gives the most,
// with a warning naming the key. Reading never writes.
TEST_F(SettingsTest, MissingFileOrWrongTypesGiveTheDefaults)
{
  tyRestOrganizations organizations{tyRestOrganization{}};
  tyRestTeams teams{tyRestTeam{}};
  ReadConfigOrgaAndTeams(FPath, organizations, teams);
  EXPECT_TRUE(organizations.isEmpty() && teams.isEmpty());
  for (const bool wrong : {false, true}) {
    SCOPED_TRACE(wrong);
    if (wrong)
      WriteTextFile(FPath, "[QuorvexITSM]\nSaaS=yes\nTokenValidity=12h\nTokenRequest=yesterday\nParallelRequests=20\n"
                           "[SMTP]\nPort=twenty-five\nUseSSL=7\n[Filters]\nNbMinutes=\nNbDays=3.5\n");
    tyQuorvexITSM ici;
    ReadConfigITSM(FPath, ici, FWarnings);
    EXPECT_EQ(std::tie(ici.SaaS, ici.Instance, ici.API.ClientID, ici.API.ClientSecret, ici.API.Password,
                       ici.API.TokenRequest, ici.API.TokenValidity, ici.API.Token, ici.ParallelRequests),
              std::make_tuple(true, QString("acme"), QString(), QString(), QString(), 0.0, 24, QString(), wrong ? 8 : 1));
    EXPECT_EQ(FWarnings.join('\n').contains("ParallelRequests"), wrong) << FWarnings.join('\n').toStdString();
    EXPECT_EQ(FWarnings.size(), wrong ? 1 : 0);
    tySMTPserver smtp;
    ReadConfigSMTP(FPath, smtp, FWarnings);
    EXPECT_EQ(smtp.Server + smtp.UserName + smtp.Password + smtp.DefaultTo + smtp.DefaultCC + smtp.From, "");
    EXPECT_EQ(std::tie(smtp.Port, smtp.UseSSL), std::make_tuple(465, true)); // UseSSL=7 is non-zero
    std::int32_t minutes = 0, days = 0;
    QStringList ignored{"stale"};
    ReadConfigFilters(FPath, minutes, days, ignored);
    EXPECT_EQ(std::tie(minutes, days, ignored), std::make_tuple(15, 14, QStringList{"Planned (without SLA)"}));
    EXPECT_EQ(QFile::exists(FPath), wrong);
  }
}

TEST_F(SettingsTest, ServiceAndMailGroupsRoundTripWithSecretsEnciphered)
{
  // The client secret is long, with a trailing blank.
  const tyAPIAccess api{QString::fromUtf8("client-42-ß"), QString(200, u'z') + " with trailing blank ",
                        QString::fromUtf8("jürgen"), " pass word ", 46341.2534722222, 33,
                        QString::fromUtf8("eyJhbGciOi.token.valeur-été")};
  const tyQuorvexITSM ici{false, QString::fromUtf8("itsm.société.example"), {}, {}, {}, api, 4};
  tySMTPserver smtp{QString::fromUtf8("smtp.bücher.example"), 587, false, QString::fromUtf8("boîte@example.org"),
                    "S3cret%_", QString::fromUtf8("a@example.org;zoë@example.org"), "",
                    QString::fromUtf8("équipe@example.org")};
  SaveConfigITSM(FPath, ici);
  SaveConfigSMTP(FPath, smtp);

  const QString text = ReadTextFile(FPath);
  for (const char *clear : {"zzzzzzzz", "pass word", "S3cret"})
    EXPECT_FALSE(text.contains(clear)) << clear << " stored in clear";
  tyQuorvexITSM readIci;
  ReadConfigITSM(FPath, readIci, FWarnings);
  const auto ITSM = [](const tyQuorvexITSM &i) {
    return std::tie(i.SaaS, i.Instance, i.API.ClientID, i.API.ClientSecret, i.API.Username, i.API.Password,
                    i.API.TokenValidity, i.API.Token, i.ParallelRequests);
  };
  EXPECT_EQ(ITSM(readIci), ITSM(ici));
  EXPECT_DOUBLE_EQ(readIci.API.TokenRequest, ici.API.TokenRequest);
  tySMTPserver readSmtp;
  const auto SMTP = [](const tySMTPserver &m) {
    return std::tie(m.Server, m.Port, m.UseSSL, m.UserName, m.Password, m.DefaultTo, m.DefaultCC, m.From);
  };
  ReadConfigSMTP(FPath, readSmtp, FWarnings);
  EXPECT_EQ(SMTP(readSmtp), SMTP(smtp));
  EXPECT_TRUE(FWarnings.isEmpty());

  // An empty password stays empty: it is not replaced by the built-in one.
  smtp.Password.clear();
  SaveConfigSMTP(FPath, smtp);
  ReadConfigSMTP(FPath, readSmtp, FWarnings);
  EXPECT_EQ(readSmtp.Password, "");
}

TEST_F(SettingsTest, DeliveryModesRoundTripAndAnUnknownOneReadsAsReportWithAWarning)
{
  for (const TDeliveryMode mode : {TDeliveryMode::Concerned, TDeliveryMode::Personal, TDeliveryMode::Report}) {
    const tyDelivery written{mode, mode != TDeliveryMode::Report, mode == TDeliveryMode::Personal, {}};
    SaveConfigDelivery(FPath, written);
    tyDelivery read;
    ReadConfigDelivery(FPath, read, FWarnings);
    EXPECT_EQ(std::tie(read.Mode, read.SkipWhenClear, read.AttachWorkbook),
              std::tie(written.Mode, written.SkipWhenClear, written.AttachWorkbook));
  }
  EXPECT_TRUE(FWarnings.isEmpty());
  EXPECT_TRUE(ReadTextFile(FPath).contains("[Delivery]\nMode=report\n")) << ReadTextFile(FPath).toStdString();

  WriteTextFile(FPath, "[Delivery]\nMode=Everyone\nSkipWhenClear=1\n");
  tyDelivery read{TDeliveryMode::Personal, false, false, {}};
  ReadConfigDelivery(FPath, read, FWarnings);
  EXPECT_EQ(read.Mode, TDeliveryMode::Report);
  EXPECT_TRUE(read.SkipWhenClear);
  ASSERT_EQ(FWarnings.size(), 1);
  for (const QString &part : {QString("\"Everyone\""), QString("\"Mode\""), QString("[Delivery]"), FPath})
    EXPECT_TRUE(FWarnings[0].contains(part)) << FWarnings[0].toStdString();
}

TEST_F(SettingsTest, OrganizationAndTeamListsCountFromOne)
{
  const tyRestOrganizations organizations{{12, QString::fromUtf8("Müller AG"), false, false, false},
                                          {7, "Beta & Co", false, false, true}};
  tyRestTeams teams(1);
  teams[0].id = 3;
  teams[0].name = "N2 Réseau";
  SaveConfigOrgaAndTeams(FPath, organizations, teams);
  const QString text = ReadTextFile(FPath);
  EXPECT_TRUE(text.contains("[Organizations]\nNb=2\nid_1=12\nname_1=Müller AG\nticketingModuleEnabled_1=0\n"
                            "id_2=7\nname_2=Beta & Co\nticketingModuleEnabled_2=1"))
      << text.toStdString();
  EXPECT_TRUE(text.contains("[Teams]\nNb=1\nid_1=3\nname_1=N2 Réseau"));

  // A shorter list than a smaller count: the old entries do not come back.
  SaveConfigOrgaAndTeams(FPath, organizations.mid(1), {});
  tyRestOrganizations read;
  ReadConfigOrgaAndTeams(FPath, read, teams);
  ASSERT_EQ(read.size(), 1);
  EXPECT_EQ(std::tie(read[0].id, read[0].name, read[0].ticketingModuleEnabled),
            std::make_tuple(7, QString("Beta & Co"), true));
  EXPECT_TRUE(teams.isEmpty());
}

TEST_F(SettingsTest, IgnoredStatusesCountFromZero)
{
  SaveConfigFilters(FPath, 30, 7, {"Waiting", QString::fromUtf8("Résolu")});
  EXPECT_TRUE(ReadTextFile(FPath).contains("[Filters]\nNbMinutes=30\nNbDays=7\nNbIgnore=2\nStatus_0=Waiting\n"
                                           "Status_1=Résolu"));
  std::int32_t minutes = 0, days = 0;
  QStringList ignored;
  ReadConfigFilters(FPath, minutes, days, ignored);
  EXPECT_EQ(std::tie(minutes, days, ignored), std::make_tuple(30, 7, QStringList{"Waiting", QString::fromUtf8("Résolu")}));

  // No status at all cannot be kept: the default one comes back.
  SaveConfigFilters(FPath, 30, 7, {});
  ReadConfigFilters(FPath, minutes, days, ignored);
  EXPECT_EQ(ignored, QStringList{"Planned (without SLA)"});
  // Nor can a negative count written by hand, whatever entries follow it.
  WriteTextFile(FPath, "[Filters]\nNbIgnore=-2\nStatus_0=Waiting\n");
  ReadConfigFilters(FPath, minutes, days, ignored);
  EXPECT_EQ(ignored, QStringList{"Planned (without SLA)"});
}

TEST_F(SettingsTest, ColourSectionsAreErasedBeforeBeingRewritten)
{
  // A priority's long text is its reference, its two-character code its text.
  const auto object = [](const QString &reference, const QString &text, TColor colour) {
    return tyRestObject{._reference = reference, .Text = text, .BgColor = colour};
  };
  SavePriorities(FPath, {object("INCIDENT - P1", "P1", 255)});
  SaveStatus(FPath, {object("OPEN", "", 16711680), object("OLD_CODE", "", 65280)});
  SaveStatus(FPath, {object("OPEN", "", 16711680), object("NEW_CODE", "", 65280)});
  SavePriorities(FPath, {object("REQUEST - P2", "P2", 128)});
  const QString text = ReadTextFile(FPath);
  for (const char *kept : {"[Status]\nOPEN=16711680\nNEW_CODE=65280\n", "[PriorityLong]\nREQUEST - P2=P2\n",
                           "[Priority]\nP2=128\n"})
    EXPECT_TRUE(text.contains(kept)) << text.toStdString();
  for (const char *stale : {"OLD_CODE", "INCIDENT - P1", "P1="})
    EXPECT_FALSE(text.contains(stale)) << stale;
}
