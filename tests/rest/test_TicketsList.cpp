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
  EXPECT_EQ(Ids(Await(FRest->GET_TicketsListOpen(FSettings, 1, QStringLiteral("contrôle"))).Value), QList<qint64>{2});
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

// A first page that cannot be fetched (no token, the deadline passed) ends the
// query: nothing comes, and the failure says why. (No answer: the service-fault
// test of the steps, and the token's time-out.)
TEST_F(TicketsList, AFirstPageThatCannotBeFetchedEndsTheQueryWithItsReason)
{
  const auto reason = [this](qsizetype requests) {
    FService.ClearRequests();
    const TRestResult<tyRestTickets> result = Await(FRest->GET_TicketsListOpen(FSettings, 7, ""));
    EXPECT_TRUE(result.Value.isEmpty());
    EXPECT_EQ(FService.Requests().size(), requests);
    return result.Failure ? result.Failure->Reason : QString("no failure");
  };
  EXPECT_TRUE(reason(1).contains("answered HTTP 401"));
  SignIn();
  FRest->SetDeadline(QDeadlineTimer(0));
  EXPECT_TRUE(reason(0).contains("time limit"));
}

// A query under a fault keeps the tickets that came and fails when some are
// missing: a page cut short is skipped, the next ones still come; one request at
// a time, no page follows an answer whose status failed the query; a 429 is asked
// again; no more pages than the announced tickets fill, plus one; no surplus.
TEST_F(TicketsList, AQueryUnderAFaultKeepsWhatCameAndFailsWhenShort)
{
  SignIn();
  const QString list = "/api/ticket/list/open";
  const auto bodies = [](QList<TDemoFaults::TBody> bodies) { return TDemoFaults{.Bodies = bodies}; };
  // Pages of one ticket each, announcing `tickets` tickets in a million pages.
  const auto announcing = [&](int tickets) {
    const QString body = R"({"totalNumberOfPages":1000000,"totalNumberOfElements":%1,"content":[{"id":%2}]})";
    TDemoFaults faults;
    for (int page : {0, 1, -1})
      faults.Bodies.append({list, page, body.arg(tickets).arg(page + 2).toUtf8()});
    return faults;
  };
  const struct
  {
    const char *What;
    TDemoFaults Faults;
    int Organization; // 7: 1203 tickets in three pages; 1: three tickets
    qsizetype Tickets, Requests;
    bool Failed;
    int Parallel = 1;
  } rows[] = {
      {"page 1 cut short", bodies({{list, 1, QByteArray(4000, ' '), 200, TDemoFaults::TDelivery::CutMidBody}}), 7,
       703, 3, true},
      {"page 1 answered 502", bodies({{list, 1, "<html>502 Bad Gateway</html>", 502}}), 7, 500, 2, true},
      {"a ticket page answered 500",
       bodies({{list, 0, R"({"totalNumberOfPages":3,"totalNumberOfElements":1203,"content":[{"id":1}]})", 500}}), 7,
       0, 1, true},
      {"429 once, four in flight: the first page twice", {.TooManyOnce = true, .Bodies = {}}, 7, 1203, 4, false, 4},
      {"two tickets announced", announcing(2), 1, 2, 2, false},
      {"1000 tickets announced: ceil(1000 / 500) + 1 pages", announcing(1000), 1, 3, 3, true},
      {"two tickets beyond the announced total", {.Surplus = 2, .Bodies = {}}, 1, 3, 1, false},
  };
  for (const auto &row : rows) {
    FService.ClearRequests();
    FService.SetFaults(row.Faults);
    FSettings.ParallelRequests = row.Parallel;
    const TRestResult<tyRestTickets> result = Await(FRest->GET_TicketsListOpen(FSettings, row.Organization, ""));
    EXPECT_EQ(std::make_tuple(result.Value.size(), FService.Requests().size(), result.Failed()),
              std::make_tuple(row.Tickets, row.Requests, row.Failed))
        << row.What;
  }
}

// Offset paging while tickets are reassigned: a ticket that comes on two pages
// of one query is kept once, where it came first.
TEST_F(TicketsList, ATicketThatComesAgainOnALaterPageIsKeptOnce)
{
  SignIn();
  const QString page = R"({"totalNumberOfPages":2,"totalNumberOfElements":4,"content":[%1]})";
  FService.SetFaults({.Bodies = {{"/api/ticket/list/open", 0, page.arg(R"({"id":3},{"id":5})").toUtf8()},
                                 {"/api/ticket/list/open", 1, page.arg(R"({"id":5},{"id":3},{"id":9})").toUtf8()}}});
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
  FService.SetFaults({.DelayMs = 20, .Bodies = {}});
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
