#include "RestFixture.h"
#include "support/Await.h"

class ReferenceQueries : public RestFixture
{
protected:
  void SetUp() override { SignIn(); }

  // How many records the query of `path` gave, and its failure.
  std::pair<qsizetype, std::optional<TFailure>> Ask(const QString &path)
  {
    const auto outcome = [](const auto &result) { return std::make_pair(result.Value.size(), result.Failure); };
    if (path.startsWith("/api/repository/"))
      return outcome(Await(FRest->GET_Objects(FSettings, "TICKETING", "TICKET_STATUS")));
    if (path.startsWith("/api/organization/"))
      return outcome(Await(FRest->GET_OrganizationsList(FSettings)));
    if (path.startsWith("/api/teams"))
      return outcome(Await(FRest->GET_Teams(FSettings, true)));
    return outcome(Await(FRest->GET_OperatorsList(FSettings)));
  }
};

// Each query's first request: method, target, body and content type.
TEST_F(ReferenceQueries, EachQueryAsksWithItsOwnMethodAndBody)
{
  const struct
  {
    QString Path;
    QByteArray Method, Body, ContentType;
  } rows[] = {
      {"/api/repository/objects?module=TICKETING&types=TICKET_STATUS", "GET", "{}", "application/json"},
      {"/api/organization/list", "GET", "", ""},
      {"/api/teams", "POST", "", ""},
      {"/api/operators/list", "POST", R"({"pageRequest":{"page":0,"pageSize":500}})", "application/json"},
  };
  for (const auto &row : rows) {
    FService.ClearRequests();
    EXPECT_FALSE(Ask(row.Path).second.has_value()) << row.Path.toStdString();
    const TDemoRequest &request = FService.Requests().first();
    EXPECT_EQ(std::make_tuple(request.Target, request.Method, request.Body, request.Header("Content-Type")),
              std::make_tuple(row.Path, row.Method, row.Body, row.ContentType));
  }
}

// The members the program reads of each record; the teams' organizations come
// from one GET per team, and only when asked for.
TEST_F(ReferenceQueries, RecordsAreReadAndTeamDetailsOnlyWhenAsked)
{
  const tyRestObject status = Await(FRest->GET_Objects(FSettings, "TICKETING", "TICKET_STATUS")).Value.value(0);
  EXPECT_EQ(std::tie(status.id, status._reference, status.subType), std::make_tuple(5, QString("NEW"), QString("S")));
  const tyRestOrganizations organizations = Await(FRest->GET_OrganizationsList(FSettings)).Value;
  ASSERT_EQ(organizations.size(), 2);
  EXPECT_EQ(std::tie(organizations[0].id, organizations[0].name, organizations[0].ticketingModuleEnabled,
                     organizations[1].ticketingModuleEnabled),
            std::make_tuple(1, QString("One"), true, false));
  const tyRestOperators operators = Await(FRest->GET_OperatorsList(FSettings)).Value;
  ASSERT_EQ(operators.size(), 3);
  EXPECT_EQ(std::make_tuple(operators[0].id, operators[0].login, operators[0].teams.value(0).id, operators[1].status),
            std::make_tuple(100, QString("u0"), 11, QString("INACTIVE")));

  FService.ClearRequests();
  const tyRestTeams teams = Await(FRest->GET_Teams(FSettings, false)).Value;
  EXPECT_EQ(FService.Requests().size(), 1);
  ASSERT_EQ(teams.size(), 3);
  EXPECT_EQ(std::make_tuple(teams[0].id, teams[0].name, teams[1].organizations.size()),
            std::make_tuple(11, QString("Desk"), qsizetype(0)));
  FService.ClearRequests();
  const TRestResult<tyRestTeams> detailed = Await(FRest->GET_Teams(FSettings, true));
  EXPECT_FALSE(detailed.Failed());
  ASSERT_EQ(FService.Requests().size(), 4);
  EXPECT_EQ(std::tie(FService.Requests()[2].Method, FService.Requests()[2].Target),
            std::make_tuple(QByteArray("GET"), QString("/api/teams/12")));
  EXPECT_EQ(detailed.Value[1].organizations.value(1).name, "Two");
}

TEST_F(ReferenceQueries, OrganizationLackingAMemberStopsTheReadingThere)
{
  ReplaceBody("/api/organization/list",
              R"([{"name":"A","monitoringAndInfrastructureModuleEnabled":false,"passwordModuleEnabled":false,)"
              R"("ticketingModuleEnabled":true},)"
              R"({"id":2,"name":"B","monitoringAndInfrastructureModuleEnabled":false,"passwordModuleEnabled":false},)"
              R"({"id":3,"name":"C"}])");
  const TRestResult<tyRestOrganizations> result = Await(FRest->GET_OrganizationsList(FSettings));
  const tyRestOrganizations &organizations = result.Value;
  ASSERT_EQ(organizations.size(), 3);
  // An absent id reads as -1; the items after the faulty one stay blank.
  EXPECT_EQ((QStringList{QString::number(organizations[0].id), organizations[0].name,
                         QString::number(organizations[1].id), organizations[1].name, organizations[2].name}),
            (QStringList{"-1", "A", "0", "", ""}));
  EXPECT_TRUE(result.Failed());
  ASSERT_EQ(ErrorLines().size(), 1);
  EXPECT_TRUE(ErrorLines().first().startsWith("Erreur API : Member \"ticketingModuleEnabled\" missing in item 1 of https://"));
}

// Each answer that cannot be read has its own error line (none when it is merely
// not a list of objects) and makes the query fail; an empty list does neither.
// Organizations and teams share the reading of a list: the teams keep one row.
// An operators answer refused by its status is never an empty list of people.
TEST_F(ReferenceQueries, BadAnswersFailWithTheirOwnErrorLines)
{
  const struct
  {
    QString path;
    QByteArray body;
    QString error; // beginning of the only error line, or empty for none
    bool failed;
    qsizetype records;
    int status = 200;
  } rows[] = {
      {"/api/repository/objects", R"({"id":5})", "", true, 0},
      {"/api/repository/objects", "", "Réponse API vide.", true, 0},
      {"/api/organization/list", "", "Réponse API vide.", true, 0},
      {"/api/organization/list", "not json", "Réponse JSON invalide.", true, 0},
      {"/api/organization/list", "{}", "Format JSON incorrect, tableau attendu.", true, 0},
      {"/api/organization/list", "[]", "", false, 0},
      {"/api/teams", "not json", "Réponse JSON invalide.", true, 0},
      // A team whose detail cannot be read stays without organizations.
      {"/api/teams/12", "", "Réponse API vide.", true, 3},
      {"/api/teams/12", "{oops", "Réponse JSON invalide.", true, 3},
      {"/api/teams/12", "[]", "Format JSON incorrect, objet attendu.", true, 3},
      {"/api/operators/list", R"({"totalNumberOfElements":0})", "", false, 0},
      {"/api/operators/list", "[1]", "Erreur API : The answer of https://", true, 0},
      {"/api/operators/list", "{oops", "Réponse JSON invalide.", true, 0},
      {"/api/operators/list", R"({"totalNumberOfElements":3})", "Erreur API : The answer of https://", true, 0},
      {"/api/operators/list", R"({"error":"internal"})", "Erreur API : HTTP 500", true, 0, 500},
      {"/api/operators/list", R"({"content":[]})", "Erreur API : HTTP 404", true, 0, 404},
  };
  for (const auto &row : rows) {
    RestartTrace();
    ReplaceBody(row.path, row.body, -1, row.status);
    const auto [records, failure] = Ask(row.path);
    const std::string context = (row.path + " answering " + row.body).toStdString();
    EXPECT_EQ(records, row.records) << context;
    EXPECT_EQ(failure.has_value(), row.failed) << context;
    if (failure) {
      EXPECT_TRUE(row.status == 200 ? failure->Reason.startsWith("the answer of " + FService.Instance() + " was not understood")
                                    : failure->Reason.contains(QString::number(row.status)))
          << context << ": " << failure->Reason.toStdString();
    }
    const QStringList errors = ErrorLines();
    EXPECT_EQ(errors.size(), row.error.isEmpty() ? 0 : 1) << context;
    if (!errors.isEmpty()) {
      EXPECT_TRUE(errors.first().startsWith(row.error)) << context << ": " << errors.first().toStdString();
    }
  }
}
