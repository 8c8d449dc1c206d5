#include "StepsFixture.h"

#include "core/Errors.h"
#include "core/IniFile.h"
#include "core/SecretCodec.h"
#include "core/uTools.h"
#include "state/FailureSummary.h"
#include "tickets/ColourStore.h"

#include <QDir>

TEST_F(StepsFixture, GetTicketsQueriesEachOrganizationThreeTimesAndFlagsTheNotices)
{
  SelectAll();
  Await(FState->RetrieveTickets(FProgress));

  // 12 carries the English notice, 13 the French one.
  EXPECT_EQ(TicketIds(FState->Tickets()), (QStringList{"11", "12*", "13*", "21"}));
  EXPECT_TRUE(FState->RetrievalFailures().isEmpty());
  EXPECT_EQ(FProgress.Calls.filter("bar ").first(), "bar 8/0");
  EXPECT_EQ(FProgress.Calls.mid(FProgress.Calls.size() - 2), (QStringList{"bar 8/8", "hide"}));

  // The renewed token is kept for the next start.
  const TIniFile ini(FState->SettingsFile());
  EXPECT_FALSE(ini.ReadString("QuorvexITSM", "Token", "").isEmpty());
  EXPECT_EQ(Decrypt(ini.ReadString("QuorvexITSM", "Password", "")), "pw");
}

TEST_F(StepsFixture, NothingSelectedOrNoTokenLeavesTheTicketsAndSaysWhy)
{
  // A person is pointed to the dialog that chooses the organizations.
  try {
    Await(FState->RetrieveTickets(FProgress));
    ADD_FAILURE() << "no guidance";
  } catch (const EGuidance &guidance) {
    EXPECT_EQ(guidance.Dialog(), "Organizations & Teams");
  }
  EXPECT_TRUE(FProgress.Calls.isEmpty());
  ASSERT_EQ(FState->RetrievalFailures().size(), 1);
  EXPECT_TRUE(FState->RetrievalFailures()[0].Text().contains("no organization"));

  SelectAll();
  FState->EditServiceSettings([](tyQuorvexITSM &s) { s.API.Password = "wrong"; return true; });
  Await(FState->RetrieveTickets(FProgress));
  EXPECT_EQ(FProgress.Calls, (QStringList{"show 1", "hide"})); // Cancel is there while the token is asked for
  EXPECT_TRUE(FState->Tickets().isEmpty());
  EXPECT_EQ(FState->RetrievalFailures().size(), 1); // its text: AFailedRetrievalKeepsThePreviousGridAndSaysSinceWhen
  // Without a token the colours dialog does not open.
  Await(FState->EditStatusColours(FProgress, [](tyRestObjects &, tyRestObjects &, TColourStore &) {
    ADD_FAILURE() << "the dialog must not open";
    return false;
  }));
  EXPECT_FALSE(IniText().contains("[Status]"));
}

TEST_F(StepsFixture, OrganizationsStepLinksTheListsAndSavesTheChoice)
{
  bool asked = false;
  Await(FState->ChooseOrganizations(
      FProgress, [&](const tyRestOrganizations &organizations, tyRestOrganizations &selectedOrganizations,
                     const tyRestTeams &teams, tyRestTeams &selectedTeams, const tyRestOrganizationsTeams &links) {
        asked = true;
        EXPECT_EQ(organizations.size(), 3);
        EXPECT_EQ(teams.size(), 2);
        EXPECT_EQ(links.size(), 3); // Desk serves two organizations, Network one
        selectedOrganizations = {organizations[1]};
        selectedTeams = {teams[1]};
        return true;
      }));
  ASSERT_TRUE(asked);
  EXPECT_EQ(FState->TeamsOperators().size(), 3);
  EXPECT_TRUE(FProgress.Calls.contains("title Get Operators / Teams"));
  EXPECT_TRUE(IniText().contains("[Organizations]\nNb=1\nid_1=2\nname_1=Beta & Co\n")) << IniText().toStdString();
  EXPECT_TRUE(IniText().contains("[Teams]\nNb=1\nid_1=20\nname_1=Network\n"));
}

TEST_F(StepsFixture, StatusStepColoursAndSavesOnOk)
{
  // The lists themselves (one "New" whatever its case, long priority names): ColoursTest.
  Await(FState->EditStatusColours(FProgress, [](tyRestObjects &statuses, tyRestObjects &, TColourStore &) {
    statuses[0].BgColor = 42;
    return true;
  }));
  const QString ini = IniText();
  EXPECT_TRUE(ini.contains("[Status]\nNew=42\nWaiting=")) << ini.toStdString();
  EXPECT_TRUE(ini.contains("[PriorityLong]\nINCIDENT - Critical [P1]=P1\n"));
}

TEST_F(StepsFixture, AFailedRetrievalKeepsThePreviousGridAndSaysSinceWhen)
{
  SelectAll();
  Await(FState->RetrieveTickets(FProgress));
  ASSERT_EQ(FState->Grid().rowCount(), 4);
  const QDateTime extraction = FState->TicketsRetrievedAt();

  // The service refuses the token in force and any new one: a single token
  // request in the step, and every query fails.
  FService.SetFaults({.RefuseToken = true, .Bodies = {{"/api/ticket/list/open", -1, R"({"error":"unauthorized"})", 401}}});
  FService.ClearRequests();
  Await(FState->RetrieveTickets(FProgress));

  EXPECT_EQ(FState->Grid().rowCount(), 4);
  EXPECT_EQ(TicketIds(FState->Tickets()), (QStringList{"11", "12*", "13*", "21"}));
  EXPECT_EQ(FState->TicketsRetrievedAt(), extraction);
  EXPECT_EQ(std::count_if(FService.Requests().cbegin(), FService.Requests().cend(),
                          [](const TDemoRequest &request) { return request.Target == "/oauth/token"; }),
            1);
  const QString status = FState->RetrievalStatusText();
  EXPECT_TRUE(status.startsWith("Retrieval failed, the grid still shows the 4 ticket(s) retrieved on " +
                                DateTimeToStr(extraction) + ". Access token from https://" + FService.Instance() +
                                " and 6 more: " + FService.Instance() + " answered HTTP 401 Unauthorized: the service refused"))
      << status.toStdString();
  FState->ReadConfigITSM();
  EXPECT_TRUE(FState->Service().API.Token.isEmpty()) << "the refused token is not kept for the next start";

  // Its report is the report of the retrieval the grid shows: its time, its
  // organizations, and that it is not today's.
  ASSERT_TRUE(Await(FState->GenerateReport()));
  const QString report = FState->Report().Text;
  EXPECT_TRUE(report.contains("WARNING: this report shows the tickets retrieved on " + DateTimeToStr(extraction) +
                              ", not today's: the last retrieval failed"))
      << report.toStdString();
  EXPECT_TRUE(report.contains(extraction.toString("dd.MM.yyyy - HH:mm"))) << report.toStdString();
}

TEST_F(StepsFixture, ChangingTheAccountInTheApiDialogDropsTheSavedToken)
{
  const QList<QPair<std::function<void(tyQuorvexITSM &)>, bool>> rows{
      {[](tyQuorvexITSM &) {}, false},
      {[](tyQuorvexITSM &settings) { settings.API.TokenValidity += 1; }, false},
      {[](tyQuorvexITSM &settings) { settings.Instance += "x"; }, true},
      {[](tyQuorvexITSM &settings) { settings.SaaS = !settings.SaaS; }, true},
      {[](tyQuorvexITSM &settings) { settings.API.ClientID += "x"; }, true},
      {[](tyQuorvexITSM &settings) { settings.API.ClientSecret += "x"; }, true},
      {[](tyQuorvexITSM &settings) { settings.API.Username += "x"; }, true},
      {[](tyQuorvexITSM &settings) { settings.API.Password += "x"; }, true},
  };
  for (qsizetype row = 0; row < rows.size(); ++row) {
    FState->ReadConfigITSM();
    FState->EditServiceSettings([](tyQuorvexITSM &s) { s.API.Token = "saved-token"; return true; });
    FState->EditServiceSettings([&](tyQuorvexITSM &settings) { rows[row].first(settings); return true; });
    FState->ReadConfigITSM();
    EXPECT_EQ(FState->Service().API.Token.isEmpty(), rows[row].second) << "row " << row;
  }
}

TEST_F(StepsFixture, AStepErrorIsLoggedAndTheLogStillSaved)
{
  SelectAll();
  // The report files cannot be written: a folder stands where the page goes.
  QDir().mkpath(FState->ReportFile());
  EXPECT_EQ(Run({.DryRun = true}), CExitStepFailed);
  const QString log = ReadTextFile(FState->LogFile());
  EXPECT_TRUE(log.contains(" - ERROR Unable to write to " + FState->ReportFile())) << log.toStdString();
  EXPECT_FALSE(log.contains(" - END"));
}

// A service that cannot be reached: the organizations step fails in plain words
// and hides its progress window all the same.
TEST_F(StepsFixture, UnreachableServiceIsAFailureInPlainWords)
{
  FState->EditServiceSettings([](tyQuorvexITSM &s) { s.Instance = "127.0.0.1:1"; return true; }); // nothing listens there
  Await(FState->ChooseOrganizations(FProgress, [](auto &&...) -> bool {
    ADD_FAILURE() << "the dialog must not open";
    return false;
  }));
  const TFailures failures = FState->TakeStepFailures();
  ASSERT_EQ(failures.size(), 1);
  EXPECT_TRUE(failures[0].Text().contains(": the connection was refused by 127.0.0.1:1; check that the service is "
                                          "running and the instance name in \"Quorvex ITSM API\""))
      << failures[0].Text().toStdString();
  EXPECT_EQ(FProgress.Calls.value(0), "show 2");
  EXPECT_EQ(FProgress.Calls.value(FProgress.Calls.size() - 1), "hide");
}

// Stored entries without a usable id are never queried (a count without its
// entries could mean a hundred thousand queries) but named as settings errors.
TEST_F(StepsFixture, AStoredSelectionWithoutValidIdsIsASettingsErrorNotAQuery)
{
  SelectAll();
  WriteTextFile(FState->SettingsFile(), "[Organizations]\nNb=1000000\nid_1=1\nname_1=Acme\n[Teams]\nNb=1\nid_1=0\n");
  FState->ReadConfigOrgaAndTeams();
  FService.ClearRequests();
  Await(FState->RetrieveTickets(FProgress));
  EXPECT_EQ(FService.Requests().size(), 4); // the token, and the three queries of Acme
  const QStringList failures = FailureLines(FState->RetrievalFailures());
  ASSERT_EQ(failures.size(), 2) << failures.join('\n').toStdString();
  EXPECT_TRUE(failures[0].contains("id_2, id_3, id_4 and 99996 more of [Organizations] in " + FState->SettingsFile()))
      << failures[0].toStdString();
  EXPECT_TRUE(failures[1].contains("id_1 of [Teams]")) << failures[1].toStdString();
  EXPECT_EQ(FState->Tickets().size(), 3);
}

// One ticket whose date cannot be read costs neither the report nor the other
// tickets: it is listed, named in a WARNING, and the retrieval is incomplete.
TEST_F(StepsFixture, AnUnreadableStampIsAWarningAndTheRestIsReported)
{
  SelectAll();
  ChangeTicket(11, [](QJsonObject &t) { t["lastUpdate"] = "-999999999-01-01T00:00:00"; });
  EXPECT_EQ(Run({.DryRun = true}), CExitIncomplete);
  const QString log = ReadTextFile(FState->LogFile());
  EXPECT_TRUE(log.contains(" - WARNING Acme / ticket 11: its lastUpdate \"-999999999-01-01T00:00:00\" is not a date"))
      << log.toStdString();
  EXPECT_FALSE(log.contains("ERROR")) << log.toStdString();
  EXPECT_TRUE(log.contains(" - * Unassigned: 1\n")) << "ticket 11 all the same";
  EXPECT_TRUE(log.contains(" - END"));
  EXPECT_EQ(FState->Grid().rowCount(), 4);
}
