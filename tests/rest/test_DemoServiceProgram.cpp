#include "core/ConfigTypes.h"
#include "core/Trace.h"
#include "rest/dRest.h"
#include "support/DemoServiceProcess.h"
#include "support/TempConfig.h"

#include <QNetworkAccessManager>
#include <gtest/gtest.h>
#include <algorithm>

namespace {

// The demo service program with its sample data, started on a free port; the
// client trusts it through the certificate file it wrote.
class DemoServiceProgram : public ::testing::Test
{
protected:
  void SetUp() override
  {
    Trace::Install(false);
    const QString failure = FService.Start(FConfig.File("demo-ca.pem"));
    ASSERT_TRUE(failure.isEmpty()) << failure.toStdString();
    qputenv("QUORVEX_EXTRA_CA_CERTS", Line("CA certificate: ").toUtf8());
    FRest = std::make_unique<TdmRest>(FManager);
    FSettings.Instance = Line("Instance: ");
    FSettings.API.ClientID = Line("Client ID: ");
    FSettings.API.ClientSecret = "demo secret&=1";
    FSettings.API.Username = Line("Username: ");
    FSettings.API.Password = QString::fromUtf8("Pass word&=é");
  }

  void TearDown() override { qunsetenv("QUORVEX_EXTRA_CA_CERTS"); }

  QString Line(const QString &label) const { return FService.Printed(label); }

  TTempConfig FConfig;
  TDemoServiceProcess FService;
  QNetworkAccessManager FManager;
  std::unique_ptr<TdmRest> FRest;
  tyQuorvexITSM FSettings;
};

} // namespace

TEST_F(DemoServiceProgram, SampleDataIsServedToTheClient)
{
  EXPECT_TRUE(Line("URL: ").startsWith("https://127.0.0.1:"));
  ASSERT_FALSE(FRest->GetToken(FSettings).Failed());

  const tyRestOrganizations organizations = FRest->GET_OrganizationsList(FSettings).Value;
  ASSERT_EQ(organizations.size(), 3);
  EXPECT_EQ(std::count_if(organizations.begin(), organizations.end(),
                          [](const tyRestOrganization &o) { return o.ticketingModuleEnabled; }),
            2);
  const tyRestTeams teams = FRest->GET_Teams(FSettings, true).Value;
  ASSERT_EQ(teams.size(), 5);
  EXPECT_FALSE(teams.first().organizations.isEmpty());
  const tyRestOperators operators = FRest->GET_OperatorsList(FSettings).Value;
  EXPECT_EQ(operators.size(), 40);
  EXPECT_TRUE(std::any_of(operators.begin(), operators.end(),
                          [](const tyRestOperator &o) { return o.status == "INACTIVE"; }));
  EXPECT_EQ(FRest->GET_Objects(FSettings, "TICKETING", "TICKET_STATUS").Value.size(), 6);
  EXPECT_EQ(FRest->GET_Objects(FSettings, "TICKETING", "TICKET_PRIORITY").Value.size(), 4);

  // Its tickets are counted by the end-to-end runs.
}
