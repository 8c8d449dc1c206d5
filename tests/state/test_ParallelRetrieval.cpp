// Several requests in flight give the run that one request at a time gives:
// the same tickets, grid, report and run log, apart from the times.

#include "StepsFixture.h"

#include "state/UnattendedRun.h"

#include <QRegularExpression>
#include <algorithm>

namespace {

QString WithoutTimes(QString text)
{
  static const QRegularExpression times(
      QStringLiteral(R"(\d{1,4}[/.-]\d{1,2}[/.-]\d{1,4}|\d{1,2}:\d{2}(:\d{2})?(\.\d+)?(\s?[AP]M)?)"));
  return text.replace(times, QStringLiteral("#"));
}

} // namespace

class ParallelRetrieval : public StepsFixture
{
protected:
  ParallelRetrieval() : StepsFixture(1200) // Acme's plain list takes three pages
  {
    SelectAll();
    TDemoFaults faults;
    faults.DelayMs = 20;
    FService.SetFaults(faults);
  }

  // Tickets with their flags, grid, report and run log of a dry run.
  QStringList Run(int parallel, int exitCode = CExitOk)
  {
    FState->FICI.ParallelRequests = parallel;
    TUnattendedOptions options;
    options.DryRun = true;
    EXPECT_EQ(TimerTimer(*FState, FProgress, options), exitCode);
    QStringList tickets;
    for (const tyRestTicket &ticket : std::as_const(FState->FTickets))
      tickets << QStringLiteral("%1%2").arg(ticket.id).arg(ticket.tenExchangesAdded ? "*" : "");
    QStringList grid;
    const TTicketsModel &model = FState->FTicketsGrid;
    for (int row = 0; row < model.rowCount(); ++row)
      for (int column = 0; column < model.columnCount(); ++column)
        grid << model.data(model.index(row, column)).toString();
    return {tickets.join(u' '), WithoutTimes(grid.join(u'|')), WithoutTimes(FState->FHtmlContent.join(u'\n')),
            WithoutTimes(ReadTextFile(FState->FLogFile))};
  }
};

TEST_F(ParallelRetrieval, FourAtATimeGiveWhatOneAtATimeGives)
{
  const QStringList sequential = Run(1);
  ASSERT_EQ(FState->FTickets.size(), 1204);
  EXPECT_EQ(std::count_if(FState->FTickets.cbegin(), FState->FTickets.cend(),
                          [](const tyRestTicket &ticket) { return ticket.tenExchangesAdded; }),
            2 + 13 + 13);
  const QStringList parallel = Run(4);
  for (int i = 0; i < sequential.size(); ++i)
    EXPECT_EQ(parallel[i], sequential[i]) << "part " << i;
}
