#include "core/ConfigTypes.h"
#include "support/Await.h"
#include "core/Trace.h"
#include "rest/dRest.h"
#include "support/DemoServiceProcess.h"
#include "support/TempConfig.h"

#include <QNetworkAccessManager>
#include <QScopeGuard>
#include <gtest/gtest.h>
#include <algorithm>

// The demo service program with its sample data, started on a free port; the
// client trusts it through the certificate file it wrote.
TEST(DemoServiceProgram, SampleDataIsServedToTheClient)
{
  Trace::Install(false);
  TTempConfig config;
  TDemoServiceProcess service;
  const QString failure = service.Start(config.File("demo-ca.pem"));
  ASSERT_TRUE(failure.isEmpty()) << failure.toStdString();
  EXPECT_TRUE(service.Printed("URL: ").startsWith("https://127.0.0.1:"));
  qputenv("QUORVEX_EXTRA_CA_CERTS", service.Printed("CA certificate: ").toUtf8());
  const auto untrust = qScopeGuard([] { qunsetenv("QUORVEX_EXTRA_CA_CERTS"); });
  QNetworkAccessManager manager;
  TdmRest rest(manager);
  tyQuorvexITSM settings;
  settings.Instance = service.Printed("Instance: ");
  settings.API = {service.Printed("Client ID: "), "demo secret&=1", service.Printed("Username: "),
                  QString::fromUtf8("Pass word&=é"), 0, 24, {}};
  ASSERT_FALSE(Await(rest.GetToken(settings)).Failed());

  const tyRestOrganizations organizations = Await(rest.GET_OrganizationsList(settings)).Value;
  ASSERT_EQ(organizations.size(), 3);
  EXPECT_EQ(std::count_if(organizations.begin(), organizations.end(),
                          [](const tyRestOrganization &o) { return o.ticketingModuleEnabled; }),
            2);
  const tyRestTeams teams = Await(rest.GET_Teams(settings, true)).Value;
  ASSERT_EQ(teams.size(), 5);
  EXPECT_FALSE(teams.first().organizations.isEmpty());
  const tyRestOperators operators = Await(rest.GET_OperatorsList(settings)).Value;
  EXPECT_EQ(operators.size(), 40);
  EXPECT_TRUE(std::any_of(operators.begin(), operators.end(),
                          [](const tyRestOperator &o) { return o.status == "INACTIVE"; }));
  EXPECT_EQ(Await(rest.GET_Objects(settings, "TICKETING", "TICKET_STATUS")).Value.size(), 6);
  EXPECT_EQ(Await(rest.GET_Objects(settings, "TICKETING", "TICKET_PRIORITY")).Value.size(), 4);

  // Its tickets are counted by the end-to-end runs.
}
