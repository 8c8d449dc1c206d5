#include "RestFixture.h"
#include "support/Await.h"

#include "core/Trace.h"

#include <QStringList>

namespace {

const QByteArray CNotObject = "NOT Assigned(JSONResponse) OR NOT (JSONResponse IS TJSONObject)";
const QByteArray CNoContent = "NOT JSONObject.TryGetValue<TJSONArray>('content', ContentArray)";

// The ticket numbers, in the order of the list.
QList<qint64> Ids(const tyRestTickets &tickets)
{
  QList<qint64> ids;
  for (const tyRestTicket &ticket : tickets)
    ids << ticket.id;
  return ids;
}

} // namespace

using TicketsList = RestFixture;

// Each page is asked with its body in the GET, a search text as pure ASCII with
// escapes that the service reads back.
TEST_F(TicketsList, PagesAreAskedWithTheirBodyInTheGetAndASearchTextInAscii)
{
  SignIn();
  const TRestResult<tyRestTickets> result = Await(FRest->GET_TicketsListOpen(FSettings, 7, ""));
  EXPECT_FALSE(result.Failed());
  EXPECT_EQ(result.Value.size(), 1203);
  EXPECT_EQ(Ids(Await(FRest->GET_TicketsListOpen(FSettings, 1, QString::fromUtf8("contrôle"))).Value), QList<qint64>{2});
  QStringList asked;
  for (const TDemoRequest &request : FService.Requests()) {
    asked << request.Method + ' ' + request.Target + ' ' + request.Body;
    EXPECT_EQ(std::make_pair(request.Header("Content-Type"), request.Header("Authorization")),
              std::make_pair(QByteArray("application/json"), "Bearer " + FSettings.API.Token.toUtf8()));
  }
  const auto get = [](int organization, int page, const char *search = "") {
    return QString(R"(GET /api/ticket/list/open {"organizationId":%1,"page":%2,"pageSize":500,%3)"
                   R"("sort":[{"column":"assignedUser","dir":"ASC"}]})")
        .arg(organization)
        .arg(page)
        .arg(search);
  };
  EXPECT_EQ(asked, (QStringList{get(7, 0), get(7, 1), get(7, 2), get(1, 0, R"("search":"contr\u00f4le",)")}));
}

TEST_F(TicketsList, SurplusBeyondTheAnnouncedTotalIsDropped)
{
  SignIn();
  TDemoFaults faults;
  faults.Surplus = 2;
  FService.SetFaults(faults);
  const tyRestTickets tickets = Await(FRest->GET_TicketsListOpen(FSettings, 1, "")).Value;
  ASSERT_EQ(tickets.size(), 3);
  for (const tyRestTicket &ticket : tickets)
    EXPECT_LT(ticket.id, 900000);
}

// A bad first page gives nothing, a bad later page keeps the pages before it;
// either is a failure with its own error line. An organization without tickets
// is neither.
TEST_F(TicketsList, BadPagesFailWithTheirOwnErrorLines)
{
  const struct
  {
    int page;
    QByteArray body;
    QByteArray error; // the only error line, or empty for none
  } rows[] = {
      {-1, "", R"(RESTResponse.Content = "")"},
      {-1, "<html>gateway</html>", CNotObject},
      {-1, R"({"totalNumberOfPages":1})", CNoContent},
      {-1, R"({"content":[],"totalNumberOfElements":500000000,"totalNumberOfPages":1})",
       "ContentArray.Count = 0, totalNumberOfElements = 500000000"},
      {-1, R"({"content":[1,"x",{"title":"no id"},{"id":"7"}],"totalNumberOfElements":4,"totalNumberOfPages":1})",
       R"(4 items of page 0 are not tickets (not an object, or no integer "id"))"},
      {-1, R"({"content":[],"totalNumberOfElements":0,"totalNumberOfPages":0})", ""},
      {1, "", R"(RESTResponse.Content = "")"},
      {1, R"({"totalNumberOfPages":3})", CNoContent},
      {1, R"({"content":[]})", "ContentArray.Count = 0, totalNumberOfElements = 1203"},
  };
  SignIn();
  for (const auto &row : rows) {
    RestartTrace();
    ReplaceBody("/api/ticket/list/open", row.body, row.page);
    const TRestResult<tyRestTickets> result = Await(FRest->GET_TicketsListOpen(FSettings, 7, ""));
    const auto context = QString("page %1: %2").arg(row.page).arg(QString::fromUtf8(row.body)).toStdString();
    EXPECT_EQ(result.Value.size(), row.page == 1 ? 500 : 0) << context;
    EXPECT_EQ(result.Failed(), !row.error.isEmpty()) << context;
    EXPECT_EQ(ErrorLines(), row.error.isEmpty() ? QStringList() : QStringList{QString::fromUtf8(row.error)}) << context;
  }
}

// A first page that cannot be fetched (no token, no answer, the deadline passed)
// ends the query: nothing comes, and the failure says why.
TEST_F(TicketsList, AFirstPageThatCannotBeFetchedEndsTheQueryWithItsReason)
{
  const auto reason = [this](qsizetype requests) {
    FService.ClearRequests();
    const TRestResult<tyRestTickets> result = Await(FRest->GET_TicketsListOpen(FSettings, 7, ""));
    EXPECT_TRUE(result.Value.isEmpty());
    EXPECT_EQ(FService.Requests().size(), requests);
    return result.Failure.value_or(TFailure{.Reason = "no failure"}).Reason;
  };
  EXPECT_TRUE(reason(1).contains("answered HTTP 401"));
  SignIn();
  TDemoFaults faults;
  faults.DelayMs = 1500;
  FService.SetFaults(faults);
  FRest->SetTimeout(std::chrono::milliseconds(200));
  EXPECT_TRUE(reason(1).startsWith("no answer from"));
  FRest->SetDeadline(QDeadlineTimer(0));
  EXPECT_TRUE(reason(0).contains("time limit"));
}

TEST_F(TicketsList, LaterPageCutOffIsSkippedAndTheNextPagesStillCome)
{
  SignIn();
  const tyRestTickets all = Await(FRest->GET_TicketsListOpen(FSettings, 7, "")).Value;
  ASSERT_EQ(all.size(), 1203);
  FService.ClearRequests();
  TDemoFaults faults;
  faults.Bodies.append({"/api/ticket/list/open", 1, QByteArray(4000, ' '), 200, TDemoFaults::TDelivery::CutMidBody});
  FService.SetFaults(faults);
  const TRestResult<tyRestTickets> result = Await(FRest->GET_TicketsListOpen(FSettings, 7, ""));
  const tyRestTickets &tickets = result.Value;
  EXPECT_EQ(FService.Requests().size(), 3);
  EXPECT_EQ(Ids(tickets), Ids(all.mid(0, 500)) + Ids(all.mid(1000))) << "page 2 follows page 0 directly";
  EXPECT_TRUE(result.Failed());
  ASSERT_EQ(ErrorLines().size(), 1);
  EXPECT_TRUE(ErrorLines().first().startsWith("Erreur API : ")) << ErrorLines().first().toStdString();
}

TEST_F(TicketsList, TooManyRequestsIsAskedAgainAfterItsDelay)
{
  SignIn();
  TDemoFaults faults;
  faults.TooManyOnce = true;
  FService.SetFaults(faults);
  FSettings.ParallelRequests = 4;
  const TRestResult<tyRestTickets> result = Await(FRest->GET_TicketsListOpen(FSettings, 7, ""));
  EXPECT_FALSE(result.Failed()) << result.Failure.value_or(TFailure()).Reason.toStdString();
  EXPECT_EQ(result.Value.size(), 1203);
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
    TDemoFaults faults;
    for (int page : {0, 1, -1}) // a ticket of its own on each page
      faults.Bodies.append(
          {"/api/ticket/list/open", page,
           QString(R"({"totalNumberOfPages":1000000,"totalNumberOfElements":%1,"content":[{"id":%2}]})")
               .arg(announced)
               .arg(page + 2)
               .toUtf8(),
           200});
    FService.SetFaults(faults);
    const TRestResult<tyRestTickets> result = Await(FRest->GET_TicketsListOpen(FSettings, 1, ""));
    EXPECT_EQ(result.Value.size(), requests) << announced;
    EXPECT_EQ(FService.Requests().size(), requests) << announced;
    EXPECT_EQ(result.Failed(), announced > requests) << announced;
  }
}

// One request at a time: after an answer whose status already failed the
// query, no page of it is asked (its body is read while nothing else travels).
TEST_F(TicketsList, NoPageIsAskedAfterAnAnswerThatFailedTheQuery)
{
  SignIn();
  TDemoFaults faults;
  faults.Bodies.append({"/api/ticket/list/open", 1, "<html>502 Bad Gateway</html>", 502});
  FService.SetFaults(faults);
  const TRestResult<tyRestTickets> result = Await(FRest->GET_TicketsListOpen(FSettings, 7, ""));
  EXPECT_TRUE(result.Failed());
  EXPECT_TRUE(result.Failure->Reason.contains("answered HTTP 502")) << result.Failure->Reason.toStdString();
  EXPECT_EQ(result.Value.size(), 500);
  EXPECT_EQ(FService.Requests().size(), 2) << "pages 0 and 1, not 2";

  // A ticket page under a refusing status fails the query all the same.
  FService.ClearRequests();
  faults.Bodies = {{"/api/ticket/list/open", 0,
                    R"({"totalNumberOfPages":3,"totalNumberOfElements":1203,"content":[{"id":1}]})", 500}};
  FService.SetFaults(faults);
  EXPECT_TRUE(Await(FRest->GET_TicketsListOpen(FSettings, 7, "")).Failed());
  EXPECT_EQ(FService.Requests().size(), 1);
}

// Offset paging while tickets are reassigned: a ticket that comes on two pages
// of one query is kept once, where it came first.
TEST_F(TicketsList, ATicketThatComesAgainOnALaterPageIsKeptOnce)
{
  SignIn();
  FService.SetFaults([] {
    TDemoFaults faults;
    faults.Bodies = {{"/api/ticket/list/open", 0,
                      R"({"totalNumberOfPages":2,"totalNumberOfElements":4,"content":[{"id":3},{"id":5}]})", 200},
                     {"/api/ticket/list/open", 1,
                      R"({"totalNumberOfPages":2,"totalNumberOfElements":4,"content":[{"id":5},{"id":3},{"id":9}]})",
                      200}};
    return faults;
  }());
  EXPECT_EQ(Ids(Await(FRest->GET_TicketsListOpen(FSettings, 1, "")).Value), (QList<qint64>{3, 5, 9}));
  EXPECT_TRUE(TraceText().contains("2 tickets of page 1 came on an earlier page already and are kept once"));
}

// A saved token the service no longer knows, four requests in flight: every
// request that meets the 401 waits for one renewal and is sent once more.
TEST_F(TicketsList, ARevokedTokenIsRenewedOnceWhateverTheRequestsInFlight)
{
  FSettings.API.Token = "revoked-token";
  FSettings.API.TokenRequest = NowDateTime();
  ASSERT_FALSE(Await(FRest->GetToken(FSettings)).Failed()); // the saved token is reused
  int renewals = 0;
  FRest->SetTokenRefusedHandler([&]() -> TTask<bool> {
    ++renewals;
    FSettings.API.Token.clear();
    co_return !(co_await FRest->GetToken(FSettings)).Failed();
  });
  TDemoFaults faults;
  faults.DelayMs = 20;
  FService.SetFaults(faults);
  FSettings.ParallelRequests = 4;
  const QList<TTicketQuery> queries{{1, ""}, {2, ""}, {7, ""}, {1, "x"}, {2, "y"}};
  int failed = 0;
  Await(FRest->GET_TicketsListsOpen(FSettings, queries,
                              [&](qsizetype, TRestResult<tyRestTickets> &&result) { failed += result.Failed(); }));
  EXPECT_EQ(failed, 0);
  EXPECT_EQ(renewals, 1); // each renewal asks the service for one token
  const QList<TDemoRequest> requests = FService.Requests();
  EXPECT_GE(std::count_if(requests.begin(), requests.end(), [](const TDemoRequest &r) { return r.Status == 401; }), 4)
      << "four requests were in flight with the revoked token";
}
