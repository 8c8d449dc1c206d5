#include "RestFixture.h"

#include "core/Trace.h"

#include <QStringList>
#include <algorithm>

namespace {

QByteArray PageBody(int organizationId, int page)
{
  return QString(R"({"organizationId":%1,"page":%2,"pageSize":500,"sort":[{"column":"assignedUser","dir":"ASC"}]})")
      .arg(organizationId)
      .arg(page)
      .toUtf8();
}

const QByteArray CNotObject = "NOT Assigned(JSONResponse) OR NOT (JSONResponse IS TJSONObject)";
const QByteArray CNoContent = "NOT JSONObject.TryGetValue<TJSONArray>('content', ContentArray)";

} // namespace

using TicketsList = RestFixture;

TEST_F(TicketsList, ThreePagesAreAskedWithTheirBodyInTheGetAndJoinedInOrder)
{
  SignIn();
  const tyRestTickets tickets = FRest->GET_TicketsListOpen(FSettings, 7, "");
  EXPECT_FALSE(FRest->LastCallFailed());

  ASSERT_EQ(tickets.size(), 1203);
  EXPECT_EQ(tickets.first().organization.id, 7);
  ASSERT_EQ(FService.Requests().size(), 3);
  for (int page = 0; page < 3; ++page) {
    const TDemoRequest &request = FService.Requests().at(page);
    EXPECT_EQ(request.Method, "GET");
    EXPECT_EQ(request.Target, "/api/ticket/list/open");
    EXPECT_EQ(request.Body, PageBody(7, page));
    EXPECT_EQ(request.Header("Content-Type"), "application/json");
    EXPECT_EQ(request.Header("Authorization"), "Bearer " + FSettings.API.Token.toUtf8());
  }
  const QString trace = TraceText();
  EXPECT_TRUE(trace.contains("organizationId = 7"));
  EXPECT_TRUE(trace.contains("Search = \"\""));
  EXPECT_TRUE(trace.contains(QString("BaseURL = \"https://%1/api/ticket/list/open\"").arg(FService.Instance())));
  EXPECT_TRUE(trace.contains("Page = 2"));
}

TEST_F(TicketsList, SearchTextTravelsAsPureAsciiWithEscapes)
{
  SignIn();
  const tyRestTickets tickets = FRest->GET_TicketsListOpen(FSettings, 1, QString::fromUtf8(CNoticeFrench));
  ASSERT_EQ(tickets.size(), 1);
  EXPECT_EQ(tickets.first().id, 2);

  const QByteArray body = FService.Requests().first().Body;
  EXPECT_EQ(body, R"({"organizationId":1,"page":0,"pageSize":500,"search":"10 \u00e9changes ont \u00e9t\u00e9 )"
                  R"(ajout\u00e9s automatiquement par le superviseur, aucun \u00e9change ne sera ajout\u00e9 lors )"
                  R"(des prochaines ex\u00e9cutions du contr\u00f4le pour ce ticket",)"
                  R"("sort":[{"column":"assignedUser","dir":"ASC"}]})");
  EXPECT_TRUE(std::all_of(body.begin(), body.end(), [](char c) { return c >= 32 && c < 127; }));
}

TEST_F(TicketsList, ItemsAreMappedAndAnUnassignedTicketHasNoUser)
{
  SignIn();
  const tyRestTickets tickets = FRest->GET_TicketsListOpen(FSettings, 1, "");
  ASSERT_EQ(tickets.size(), 3);
  const auto unassigned = std::find_if(tickets.begin(), tickets.end(), [](const tyRestTicket &t) { return t.id == 1; });
  ASSERT_NE(unassigned, tickets.end());
  EXPECT_EQ(unassigned->assignedUser.id, 0);
  EXPECT_TRUE(unassigned->assignedUser.name.isEmpty());
  EXPECT_EQ(unassigned->_type, "INCIDENT");
  EXPECT_EQ(unassigned->status._reference, "NEW");
  EXPECT_EQ(unassigned->status.category, "OPEN");
  EXPECT_EQ(unassigned->priority.reference, "P1");
  EXPECT_EQ(unassigned->resolutionDelay, 0) << "an absent ticket integer stays 0";
}

TEST_F(TicketsList, SurplusBeyondTheAnnouncedTotalIsDropped)
{
  SignIn();
  TDemoFaults faults;
  faults.Surplus = 2;
  FService.SetFaults(faults);
  const tyRestTickets tickets = FRest->GET_TicketsListOpen(FSettings, 1, "");
  ASSERT_EQ(tickets.size(), 3);
  for (const tyRestTicket &ticket : tickets)
    EXPECT_LT(ticket.id, 900000);
}

TEST_F(TicketsList, OrganizationWithoutTicketsIsEmptyButNotAFailure)
{
  SignIn();
  EXPECT_TRUE(FRest->GET_TicketsListOpen(FSettings, 2, "").isEmpty());
  EXPECT_FALSE(FRest->LastCallFailed());
  EXPECT_TRUE(ErrorLines().isEmpty()) << "a routine answer, not an error";
}

TEST_F(TicketsList, BadFirstPageGivesNothingAndReportsTheFailure)
{
  const QList<QPair<QByteArray, QByteArray>> rows{
      {"", R"(RESTResponse.Content = "")"},
      {"<html>gateway</html>", CNotObject},
      {"[1,2]", CNotObject},
      {R"({"totalNumberOfPages":1})", CNoContent},
      {R"({"content":{}})", CNoContent},
      {R"({"content":[],"totalNumberOfElements":500000000,"totalNumberOfPages":1})",
       "ContentArray.Count = 0, totalNumberOfElements = 500000000"},
      {R"({"content":[1,"x",{"title":"no id"},{"id":"7"}],"totalNumberOfElements":4,"totalNumberOfPages":1})",
       R"(4 items of page 0 are not tickets (not an object, or no integer "id"))"},
  };
  SignIn();
  for (const auto &[body, error] : rows) {
    Trace::Clear();
    Trace::AttachFile(FConfig.File("trace.log"));
    ReplaceBody("/api/ticket/list/open", body);
    EXPECT_TRUE(FRest->GET_TicketsListOpen(FSettings, 1, "").isEmpty()) << body.constData();
    EXPECT_TRUE(FRest->LastCallFailed()) << body.constData();
    EXPECT_EQ(ErrorLines(), QStringList{QString::fromUtf8(error)}) << body.constData();
  }
}

TEST_F(TicketsList, BadLaterPageKeepsTheEarlierPages)
{
  SignIn();
  const QList<QPair<QByteArray, QByteArray>> rows{
      {"", R"(RESTResponse.Content = "")"},
      {"garbage", CNotObject},
      {R"({"totalNumberOfPages":3})", CNoContent},
      {R"({"content":[]})", "ContentArray.Count = 0, totalNumberOfElements = 1203"},
  };
  for (const auto &[body, error] : rows) {
    Trace::Clear();
    Trace::AttachFile(FConfig.File("trace.log"));
    ReplaceBody("/api/ticket/list/open", body, 1);
    EXPECT_EQ(FRest->GET_TicketsListOpen(FSettings, 7, "").size(), 500) << body.constData();
    EXPECT_TRUE(FRest->LastCallFailed()) << body.constData();
    EXPECT_EQ(ErrorLines(), QStringList{QString::fromUtf8(error)}) << body.constData();
  }
}

TEST_F(TicketsList, FirstPageThatCannotBeFetchedEndsTheQuery)
{
  SignIn();
  TDemoFaults faults;
  faults.DelayMs = 1500;
  FService.SetFaults(faults);
  FRest->SetTimeout(std::chrono::milliseconds(200));
  EXPECT_TRUE(FRest->GET_TicketsListOpen(FSettings, 7, "").isEmpty()) << "a failed first page ends the query";
  EXPECT_TRUE(FRest->LastCallFailed());
  ASSERT_EQ(ErrorLines().size(), 1);
  EXPECT_TRUE(ErrorLines().first().startsWith("Erreur API : no answer from")) << ErrorLines().first().toStdString();
}

TEST_F(TicketsList, LaterPageCutOffIsSkippedAndTheNextPagesStillCome)
{
  SignIn();
  const tyRestTickets all = FRest->GET_TicketsListOpen(FSettings, 7, "");
  ASSERT_EQ(all.size(), 1203);
  FService.ClearRequests();
  TDemoFaults faults;
  faults.Bodies.append({"/api/ticket/list/open", 1, QByteArray(4000, ' '), 200, TDemoFaults::TDelivery::CutMidBody});
  FService.SetFaults(faults);
  const tyRestTickets tickets = FRest->GET_TicketsListOpen(FSettings, 7, "");
  EXPECT_EQ(FService.Requests().size(), 3);
  ASSERT_EQ(tickets.size(), 703) << "pages 0 and 2";
  EXPECT_EQ(tickets[499].id, all[499].id);
  EXPECT_EQ(tickets[500].id, all[1000].id) << "page 2 follows page 0 directly";
  EXPECT_EQ(tickets[702].id, all[1202].id);
  EXPECT_TRUE(FRest->LastCallFailed());
  ASSERT_EQ(ErrorLines().size(), 1);
  EXPECT_TRUE(ErrorLines().first().startsWith("Erreur API : ")) << ErrorLines().first().toStdString();
}

TEST_F(TicketsList, WithoutTokenTheRefusalIsAFailure)
{
  EXPECT_TRUE(FRest->GET_TicketsListOpen(FSettings, 1, "").isEmpty());
  EXPECT_TRUE(FRest->LastCallFailed());
}

namespace {

// The trace lines without their times.
QStringList TraceMessages(const QString &trace)
{
  QStringList messages;
  for (const QString &line : trace.split(u'\n'))
    messages.append(line.mid(line.indexOf(QLatin1String(" ")) + 1));
  return messages;
}

} // namespace

TEST_F(TicketsList, ParallelRequestsGiveWhatOneAtATimeGives)
{
  SignIn();
  TDemoFaults faults;
  faults.DelayMs = 20;
  faults.Bodies.append({"/api/ticket/list/open", 2, "{\"content\":[]}", 200});
  FService.SetFaults(faults);
  const QList<TTicketQuery> queries{{7, ""}, {1, ""}, {1, QString::fromUtf8(CNoticeFrench)}, {2, ""}, {7, "x"}};
  auto run = [&](int parallel) {
    Trace::Clear();
    Trace::AttachFile(FConfig.File("trace.log"));
    FService.ClearRequests();
    FSettings.ParallelRequests = parallel;
    QStringList results;
    FRest->GET_TicketsListsOpen(FSettings, queries, [&](qsizetype index, TTicketQueryResult &&result) {
      QStringList ids;
      for (const tyRestTicket &ticket : result.Tickets)
        ids << QString::number(ticket.id);
      results << QStringLiteral("%1 %2 %3 %4").arg(index).arg(result.Failed).arg(result.Failure.Reason, ids.join(u','));
    });
    return std::make_pair(results, TraceMessages(TraceText()));
  };
  const auto [sequential, sequentialTrace] = run(1);
  QStringList order;
  for (const TDemoRequest &request : FService.Requests())
    order << QString::fromUtf8(request.Body.left(request.Body.indexOf(",\"pageSize\"")));
  EXPECT_EQ(order, (QStringList{R"({"organizationId":7,"page":0)", R"({"organizationId":7,"page":1)",
                                R"({"organizationId":7,"page":2)", R"({"organizationId":1,"page":0)",
                                R"({"organizationId":1,"page":0)", R"({"organizationId":2,"page":0)",
                                R"({"organizationId":7,"page":0)"}));
  ASSERT_EQ(sequential.size(), 5);
  EXPECT_TRUE(sequential[0].startsWith("0 1 the answer of")) << "page 2 announced but empty";
  const auto [parallel, parallelTrace] = run(4);
  EXPECT_EQ(parallel, sequential);
  EXPECT_EQ(parallelTrace, sequentialTrace);
}

TEST_F(TicketsList, TooManyRequestsIsAskedAgainAfterItsDelay)
{
  SignIn();
  const tyRestTickets all = FRest->GET_TicketsListOpen(FSettings, 7, "");
  FService.ClearRequests();
  TDemoFaults faults;
  faults.TooManyOnce = true;
  FService.SetFaults(faults);
  FSettings.ParallelRequests = 4;
  const tyRestTickets tickets = FRest->GET_TicketsListOpen(FSettings, 7, "");
  EXPECT_FALSE(FRest->LastCallFailed()) << FRest->LastFailure().Reason.toStdString();
  EXPECT_EQ(tickets.size(), all.size());
  EXPECT_EQ(FService.Requests().size(), 4) << "three pages, the first twice";
  EXPECT_TRUE(TraceText().contains("Retry-After = 1"));
}

// However many pages the service announces, a query reads no more than its
// announced tickets can fill, plus one.
TEST_F(TicketsList, PagingStopsAtWhatTheAnnouncedTicketsCanFill)
{
  SignIn();
  const QList<QPair<int, int>> rows{
      // announced tickets, requests made (one ticket per page)
      {2, 2},   // every announced ticket is in: a complete query
      {1000, 3} // ceil(1000 / 500) + 1 pages and still short: cut, and a failure
  };
  for (const auto &[announced, requests] : rows) {
    FService.ClearRequests();
    ReplaceBody("/api/ticket/list/open",
                QString(R"({"totalNumberOfPages":1000000,"totalNumberOfElements":%1,"content":[{"id":1}]})")
                    .arg(announced)
                    .toUtf8());
    EXPECT_EQ(FRest->GET_TicketsListOpen(FSettings, 1, "").size(), requests) << announced;
    EXPECT_EQ(FService.Requests().size(), requests) << announced;
    EXPECT_EQ(FRest->LastCallFailed(), announced > requests) << announced;
  }
}

TEST_F(TicketsList, NoRequestStartsOnceTheDeadlineHasPassed)
{
  SignIn();
  FRest->SetDeadline(QDeadlineTimer(0));
  EXPECT_TRUE(FRest->GET_TicketsListOpen(FSettings, 1, "").isEmpty());
  EXPECT_TRUE(FRest->LastCallFailed());
  EXPECT_TRUE(FRest->LastFailure().Reason.contains("time limit")) << FRest->LastFailure().Reason.toStdString();
  EXPECT_TRUE(FService.Requests().isEmpty());
}
