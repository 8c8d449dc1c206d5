// The grid shows a retrieval's rows as its pages come, and goes back to the
// last complete retrieval when the new one is cancelled: the requests in flight
// are cut at once, the step says that it ended incomplete, the next one runs as
// usual.

#include "StepsFixture.h"
#include "support/Await.h"

#include <QTimer>

class GridDuringRetrieval : public StepsFixture
{
protected:
  GridDuringRetrieval() : StepsFixture(1200) // Acme's plain list takes three pages
  {
    SelectAll();
  }

  // The grid's row count each time rows came, and whether the step had ended.
  QList<int> CountsWhileRunning(const std::function<void(int rows)> &onRows = {})
  {
    QList<int> counts;
    bool ended = false;
    const QMetaObject::Connection watch =
        QObject::connect(&FState->Grid(), &QAbstractItemModel::rowsInserted, [&] {
          if (!ended)
            counts << FState->Grid().rowCount();
          if (onRows)
            onRows(FState->Grid().rowCount());
        });
    Await(FState->RetrieveTickets(FProgress));
    ended = true;
    QObject::disconnect(watch);
    return counts;
  }
};

TEST_F(GridDuringRetrieval, RowsComePageByPageAndACancelBringsBackTheLastGrid)
{
  FService.SetFaults({.DelayMs = 30});
  // Acme's three pages of open tickets, then Beta's one.
  EXPECT_EQ(CountsWhileRunning(), (QList<int>{500, 1000, 1203, 1204}));
  EXPECT_EQ(FState->Grid().rowCount(), 1204);

  // The second page never comes: Cancel once the first is shown.
  FService.SetFaults({.DelayMs = 30, .Bodies = {{"/api/ticket/list/open", 1, {}, 200, TDemoFaults::TDelivery::Never, 1}}});
  const QList<int> counts = CountsWhileRunning([this](int) { QTimer::singleShot(0, [this] { FState->Cancel(); }); });
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
