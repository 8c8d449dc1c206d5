// A retrieval of several pages per query. The grid shows its rows as its pages
// come, and goes back to the last complete retrieval when the new one is
// cancelled: the requests in flight are cut at once, the step says that it
// ended incomplete, the next one runs as usual. Several requests in flight give
// the run that one request at a time gives: the same tickets, grid, report and
// run log, apart from the times.

#include "StepsFixture.h"

#include <QRegularExpression>
#include <QTimer>
#include <algorithm>

namespace {

QString WithoutTimes(QString text)
{
  static const QRegularExpression times(
      QStringLiteral(R"(\d{1,4}[/.-]\d{1,2}[/.-]\d{1,4}|\d{1,2}:\d{2}(:\d{2})?(\.\d+)?(\s?[AP]M)?)"));
  return text.replace(times, QStringLiteral("#"));
}

} // namespace

class LargeRetrieval : public StepsFixture
{
protected:
  LargeRetrieval() : StepsFixture(1200) // Acme's plain list takes three pages
  {
    SelectAll();
  }

  // The grid's row count each time rows came during a retrieval.
  QList<int> CountsWhileRunning(const std::function<void()> &onRows = {})
  {
    QList<int> counts;
    const QMetaObject::Connection watch =
        QObject::connect(&FState->Grid(), &QAbstractItemModel::rowsInserted, [&] {
          counts << FState->Grid().rowCount();
          if (onRows)
            onRows();
        });
    Await(FState->RetrieveTickets(FProgress));
    QObject::disconnect(watch);
    return counts;
  }

  // How many requests for `path` came before the last request for tickets.
  qsizetype AskedBeforeTheLastTicketPage(const QString &path) const
  {
    const QList<TDemoRequest> &requests = FService.Requests();
    qsizetype last = requests.size();
    while (last > 0 && !requests[last - 1].Target.startsWith(QLatin1String("/api/ticket/list/open")))
      --last;
    return std::count_if(requests.cbegin(), requests.cbegin() + last,
                         [&path](const TDemoRequest &request) { return request.Target.startsWith(path); });
  }

  // Tickets with their flags, grid, report and run log of a dry run with
  // `parallel` requests in flight.
  QStringList DryRunWith(int parallel)
  {
    FService.ClearRequests();
    FState->EditServiceSettings([parallel](tyQuorvexITSM &s) { s.ParallelRequests = parallel; return true; });
    Restart(); // the operators asked anew, as by a run of its own
    EXPECT_EQ(Run({.DryRun = true}), CExitIncomplete);
    QStringList grid;
    const TTicketsModel &model = FState->Grid();
    for (int row = 0; row < model.rowCount(); ++row)
      for (int column = 0; column < model.columnCount(); ++column)
        grid << model.data(model.index(row, column)).toString();
    return {TicketIds(FState->Tickets()).join(u' '), WithoutTimes(grid.join(u'|')),
            WithoutTimes(FState->ReportHtml().join(u'\n')), WithoutTimes(ReadTextFile(FState->LogFile()))};
  }
};
class GridDuringRetrieval : public LargeRetrieval {};
class ParallelRetrieval : public LargeRetrieval {};

TEST_F(GridDuringRetrieval, RowsComePageByPageAndACancelBringsBackTheLastGrid)
{
  FService.SetFaults({.DelayMs = 30});
  // Acme's three pages of open tickets, then Beta's one.
  EXPECT_EQ(CountsWhileRunning(), (QList<int>{500, 1000, 1203, 1204}));

  // The second page never comes: Cancel once the first is shown.
  FService.SetFaults({.DelayMs = 30, .Bodies = {{"/api/ticket/list/open", 1, {}, 200, TDemoFaults::TDelivery::Never, 1}}});
  const QList<int> counts = CountsWhileRunning([this] { QTimer::singleShot(0, [this] { FState->Cancel(); }); });
  EXPECT_EQ(counts, QList<int>{500});
  EXPECT_EQ(FState->Grid().rowCount(), 1204);
  const TFailures failures = FState->TakeStepFailures();
  ASSERT_FALSE(failures.isEmpty());
  EXPECT_EQ(failures.first().Text(), "Get tickets: cancelled before its end; nothing more was asked");
  EXPECT_TRUE(failures.last().Reason.startsWith("the step was cancelled")) << failures.last().Text().toStdString();
  EXPECT_TRUE(FState->RetrievalStatusText().startsWith("Get tickets cancelled before its end; the grid still shows the "
                                                       "1204 ticket(s)"))
      << FState->RetrievalStatusText().toStdString();

  FService.SetFaults({});
  Await(FState->RetrieveTickets(FProgress));
  EXPECT_TRUE(FState->TakeStepFailures().isEmpty());
  EXPECT_EQ(FState->RetrievalStatusText(), "1204 open ticket(s) retrieved");
}

TEST_F(ParallelRetrieval, FourAtATimeGiveWhatOneAtATimeGives)
{
  // Beta & Co's queries fail: a failure among the results is assembled in its place too.
  FService.SetFaults({.DelayMs = 20, .Bodies = {{"/api/ticket/list/open", -1, R"({"error":"internal"})", 500, {}, 2}}});
  const QStringList sequential = DryRunWith(1);
  ASSERT_EQ(FState->Tickets().size(), 1203);
  EXPECT_TRUE(sequential[3].contains(" - ERROR Beta & Co / open tickets: ")) << sequential[3].toStdString();
  EXPECT_EQ(std::count_if(FState->Tickets().cbegin(), FState->Tickets().cend(),
                          [](const tyRestTicket &ticket) { return ticket.tenExchangesAdded; }),
            2 + 13 + 13);
  EXPECT_EQ(AskedBeforeTheLastTicketPage(QStringLiteral("/api/operators/list")), 0);
  const QStringList parallel = DryRunWith(4);
  for (int i = 0; i < sequential.size(); ++i)
    EXPECT_EQ(parallel[i], sequential[i]) << "part " << i;
  // The report's operators query travels with the tickets', and only once.
  EXPECT_EQ(AskedBeforeTheLastTicketPage(QStringLiteral("/api/operators/list")), 1);
  EXPECT_EQ(std::count_if(FService.Requests().cbegin(), FService.Requests().cend(),
                          [](const TDemoRequest &request) { return request.Target.startsWith("/api/operators/"); }),
            1);
}
