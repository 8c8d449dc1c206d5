#include "RestFixture.h"
#include "core/Trace.h"

namespace {
const QByteArray CAnyBody[] = {"", "not json", "{}", "[]"};
// An empty list is no error at all: a clean run has no error line.
const QStringList CExpectedErrors[] = {{"Réponse API vide."}, {"Réponse JSON invalide."},
                                       {"Format JSON incorrect, tableau attendu."}, {}};
} // namespace

class ReferenceQueries : public RestFixture
{
protected:
  void SetUp() override { SignIn(); }
  void RestartTrace()
  {
    Trace::Clear();
    Trace::AttachFile(FConfig.File("trace.log"));
  }
};

TEST_F(ReferenceQueries, ObjectsAreAskedByModuleAndTypesWithAnEmptyJsonBody)
{
  const tyRestObjects statuses = FRest->GET_Objects(FSettings, "TICKETING", "TICKET_STATUS");
  ASSERT_EQ(statuses.size(), 1);
  const tyRestObject &status = statuses[0];
  EXPECT_EQ(std::tie(status.id, status.module, status.organization.name, status._reference, status.subType, status._type),
            std::make_tuple(5, QString("TICKETING"), QString("One"), QString("NEW"), QString("S"),
                            QString("TICKET_STATUS")));

  const TDemoRequest &request = FService.Requests().first();
  EXPECT_EQ(request.Method, "GET");
  EXPECT_EQ(request.Target, "/api/repository/objects?module=TICKETING&types=TICKET_STATUS");
  EXPECT_EQ(request.Body, "{}");
  EXPECT_EQ(request.Header("Content-Type"), "application/json");
  EXPECT_TRUE(TraceText().contains("ContentArray.Count = 1"));

  const tyRestObjects priorities = FRest->GET_Objects(FSettings, "TICKETING", "TICKET_PRIORITY");
  ASSERT_EQ(priorities.size(), 1);
  EXPECT_EQ(priorities[0].organization.id, 0) << "an absent sub-object reads as 0 and empty";
  EXPECT_EQ(priorities[0].subType, "");
}

TEST_F(ReferenceQueries, ObjectsAnswerThatIsNotAListGivesNothingWithoutAnErrorLine)
{
  ReplaceBody("/api/repository/objects", R"({"id":5})");
  EXPECT_TRUE(FRest->GET_Objects(FSettings, "TICKETING", "TICKET_STATUS").isEmpty());
  EXPECT_TRUE(ErrorLines().isEmpty());
  EXPECT_TRUE(FRest->LastCallFailed());

  ReplaceBody("/api/repository/objects", "");
  EXPECT_TRUE(FRest->GET_Objects(FSettings, "TICKETING", "TICKET_STATUS").isEmpty());
  EXPECT_EQ(ErrorLines(), QStringList{"Réponse API vide."});
}

TEST_F(ReferenceQueries, OrganizationsAreReadWithAPlainGet)
{
  const tyRestOrganizations organizations = FRest->GET_OrganizationsList(FSettings);
  EXPECT_FALSE(FRest->LastCallFailed());
  ASSERT_EQ(organizations.size(), 2);
  const tyRestOrganization &one = organizations[0];
  EXPECT_EQ(std::tie(one.id, one.name, one.monitoringAndInfrastructureModuleEnabled, one.passwordModuleEnabled,
                     one.ticketingModuleEnabled),
            std::make_tuple(1, QString("One"), true, false, true));
  EXPECT_FALSE(organizations[1].ticketingModuleEnabled);
  const TDemoRequest &request = FService.Requests().first();
  EXPECT_EQ(request.Method, "GET");
  EXPECT_TRUE(request.Body.isEmpty());
  EXPECT_TRUE(request.Header("Content-Type").isEmpty());
  EXPECT_TRUE(TraceText().contains("JSONArray.Count = 2"));
}

TEST_F(ReferenceQueries, OrganizationLackingAMemberStopsTheReadingThere)
{
  ReplaceBody("/api/organization/list",
              R"([{"name":"A","monitoringAndInfrastructureModuleEnabled":false,"passwordModuleEnabled":false,)"
              R"("ticketingModuleEnabled":true},)"
              R"({"id":2,"name":"B","monitoringAndInfrastructureModuleEnabled":false,"passwordModuleEnabled":false},)"
              R"({"id":3,"name":"C","monitoringAndInfrastructureModuleEnabled":false,"passwordModuleEnabled":false,)"
              R"("ticketingModuleEnabled":true}])");
  const tyRestOrganizations organizations = FRest->GET_OrganizationsList(FSettings);
  ASSERT_EQ(organizations.size(), 3);
  EXPECT_EQ(organizations[0].id, -1) << "an absent id reads as -1";
  EXPECT_EQ(organizations[0].name, "A");
  EXPECT_EQ(organizations[1].id, 0);
  EXPECT_TRUE(organizations[1].name.isEmpty());
  EXPECT_TRUE(organizations[2].name.isEmpty()) << "items after the faulty one stay blank";
  EXPECT_TRUE(FRest->LastCallFailed());
  ASSERT_EQ(ErrorLines().size(), 1);
  EXPECT_TRUE(ErrorLines().first().startsWith("Erreur API : Member \"ticketingModuleEnabled\" missing in item 1 of https://"));
}

TEST_F(ReferenceQueries, BadListAnswersGiveTheirOwnErrorLines)
{
  for (int i = 0; i < 4; ++i) {
    RestartTrace();
    ReplaceBody("/api/organization/list", CAnyBody[i]);
    EXPECT_TRUE(FRest->GET_OrganizationsList(FSettings).isEmpty());
    EXPECT_EQ(ErrorLines(), CExpectedErrors[i]);
    EXPECT_EQ(FRest->LastCallFailed(), i < 3) << "an empty list is not a failure";

    RestartTrace();
    ReplaceBody("/api/teams", CAnyBody[i]);
    EXPECT_TRUE(FRest->GET_Teams(FSettings, true).isEmpty());
    EXPECT_EQ(ErrorLines(), CExpectedErrors[i]);
  }
}

TEST_F(ReferenceQueries, TeamsComeFromOnePostAndEachDetailFromAGetWhenAsked)
{
  tyRestTeams teams = FRest->GET_Teams(FSettings, false);
  ASSERT_EQ(FService.Requests().size(), 1);
  EXPECT_EQ(FService.Requests().first().Method, "POST");
  EXPECT_TRUE(FService.Requests().first().Body.isEmpty());
  ASSERT_EQ(teams.size(), 3);
  EXPECT_EQ(teams[0].name, "Desk");
  EXPECT_EQ(teams[0].remarks, "first line");
  ASSERT_EQ(teams[0].members.size(), 2);
  EXPECT_EQ(teams[0].members[1].name, "User 1");
  EXPECT_TRUE(teams[0].organizations.isEmpty());
  EXPECT_TRUE(teams[2].remarks.isEmpty());

  FService.ClearRequests();
  teams = FRest->GET_Teams(FSettings, true);
  EXPECT_FALSE(FRest->LastCallFailed());
  ASSERT_EQ(FService.Requests().size(), 4);
  EXPECT_EQ(FService.Requests()[2].Method, "GET");
  EXPECT_EQ(FService.Requests()[2].Target, "/api/teams/12");
  ASSERT_EQ(teams[1].organizations.size(), 2);
  EXPECT_EQ(teams[1].organizations[1].name, "Two");
}

TEST_F(ReferenceQueries, TeamDetailThatCannotBeReadHasItsOwnErrorLine)
{
  const QList<QPair<QByteArray, QString>> rows{
      {"", "Réponse API vide."}, {"{oops", "Réponse JSON invalide."}, {"[]", "Format JSON incorrect, objet attendu."}};
  for (const auto &[body, error] : rows) {
    RestartTrace();
    TDemoFaults faults;
    faults.Bodies.append({"/api/teams/12", -1, body, 200});
    FService.SetFaults(faults);
    const tyRestTeams teams = FRest->GET_Teams(FSettings, true);
    ASSERT_EQ(teams.size(), 3);
    EXPECT_EQ(teams[0].organizations.size(), 1);
    EXPECT_TRUE(teams[1].organizations.isEmpty());
    EXPECT_EQ(ErrorLines(), QStringList{error});
    EXPECT_TRUE(FRest->LastCallFailed());
  }
}

TEST_F(ReferenceQueries, ServiceThatDoesNotAnswerIsAnApiErrorOfEachQuery)
{
  TDemoFaults faults;
  faults.DelayMs = 1500;
  FService.SetFaults(faults);
  FRest->SetTimeout(std::chrono::milliseconds(200));
  EXPECT_TRUE(FRest->GET_Objects(FSettings, "TICKETING", "TICKET_STATUS").isEmpty());
  EXPECT_TRUE(FRest->GET_OrganizationsList(FSettings).isEmpty());
  EXPECT_TRUE(FRest->GET_Teams(FSettings, false).isEmpty());
  EXPECT_TRUE(FRest->GET_OperatorsList(FSettings).isEmpty());
  EXPECT_TRUE(FRest->LastCallFailed());
  const QStringList errors = ErrorLines();
  ASSERT_EQ(errors.size(), 4);
  for (const QString &error : errors)
    EXPECT_TRUE(error.startsWith("Erreur API : no answer from")) << error.toStdString();
}

TEST_F(ReferenceQueries, OperatorsFirstPageWithHelpersPresets)
{
  const tyRestOperators operators = FRest->GET_OperatorsList(FSettings);
  const TDemoRequest &request = FService.Requests().first();
  EXPECT_EQ(request.Method, "POST");
  EXPECT_EQ(request.Body, R"({"pageRequest":{"page":0,"pageSize":500}})");
  EXPECT_EQ(request.Header("Content-Type"), "application/json");
  ASSERT_EQ(operators.size(), 3);
  EXPECT_EQ(operators[0].hourFormat, 24);
  EXPECT_EQ(operators[1].hourFormat, -1) << "an absent operator integer reads as -1";
  EXPECT_EQ(operators[0].manager.name, "User 2");
  EXPECT_TRUE(operators[0].twoFactorAuthActive);
  ASSERT_EQ(operators[0].teams.size(), 1);
  EXPECT_EQ(operators[0].teams[0].id, 11);
  EXPECT_EQ(operators[1].status, "INACTIVE");
}

TEST_F(ReferenceQueries, OperatorAnswersWithoutAListAreEmpty)
{
  ReplaceBody("/api/operators/list", R"({"totalNumberOfElements":0})");
  EXPECT_TRUE(FRest->GET_OperatorsList(FSettings).isEmpty());
  EXPECT_TRUE(ErrorLines().isEmpty());

  ReplaceBody("/api/operators/list", "[1]");
  EXPECT_TRUE(FRest->GET_OperatorsList(FSettings).isEmpty());
  ASSERT_EQ(ErrorLines().size(), 1);
  EXPECT_TRUE(ErrorLines().first().startsWith("Erreur API : The answer of https://"));
  EXPECT_TRUE(FRest->LastCallFailed());

  RestartTrace();
  ReplaceBody("/api/operators/list", "{oops");
  EXPECT_TRUE(FRest->GET_OperatorsList(FSettings).isEmpty());
  EXPECT_EQ(ErrorLines(), QStringList{"Réponse JSON invalide."});
}
