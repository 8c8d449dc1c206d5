// The time a run spends in the follow-up store when it holds 400 days of sent
// reports of 300 listed tickets each: reading what the last report listed and
// the snoozes, then recording the new report (and pruning the oldest day).

#include "report/FollowUpHistory.h"
#include "report/FollowUpStore.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

constexpr int CListed = 300;
constexpr int CDays = TFollowUpHistory::CKeptDays;
const QDateTime CStart(QDate(2025, 1, 1), QTime(7, 0));

// A report of 300 rows, a third in each section, some tickets new each day.
TReportOutput Report(int day, tyRestTickets &tickets)
{
  tickets.resize(CListed);
  TReportOutput report;
  report.Remembers = true;
  for (auto &rows : report.Rows)
    rows = TReportRows(tickets);
  for (int i = 0; i < CListed; ++i) {
    tyRestTicket &ticket = tickets[i];
    ticket.id = 100000 + day * 10 + i; // ten new tickets a day
    ticket._type = QStringLiteral("INCIDENT");
    ticket.title = QStringLiteral("Printer on floor %1 jams").arg(i % 9);
    ticket.organization = {101, QStringLiteral("Northwind Logistics")};
    ticket.assignedTeam.id = 11;
    ticket.assignedUser.id = 1000 + i % 40;
    ticket.lastUpdate = QStringLiteral("2025-01-01T07:00:00.000Z");
    ticket.status._reference = QStringLiteral("In progress");
    const std::size_t section = static_cast<std::size_t>(i % 3);
    report.Rows[section].Append(i);
    report.Listings[section].append({false, CStart, 1 + i % 30, false});
  }
  return report;
}

TRecordedRun Run(int day) { return {CStart.addDays(day), QStringLiteral("report"), true, {100, 100, 100}}; }

void StoreTimeOfOneRun(benchmark::State &state)
{
  QTemporaryDir folder;
  QStringList warnings;
  auto store = TFollowUpStore::Open(folder.filePath(QStringLiteral("bench.db")), warnings);
  TFollowUpHistory history(*store);
  tyRestTickets tickets;
  for (int day = 0; day < CDays; ++day)
    history.Record(Report(day, tickets), Run(day), tickets, {});
  int day = CDays;
  for (auto _ : state) {
    state.PauseTiming();
    const TReportOutput report = Report(day, tickets);
    state.ResumeTiming();
    const TFollowUpMemory memory = history.Memory();
    benchmark::DoNotOptimize(memory.Previous.size());
    history.Record(report, Run(day++), tickets, memory);
  }
  if (!history.Warnings().isEmpty())
    state.SkipWithError(qPrintable(history.Warnings().join(u'\n')));
  state.counters["kept reports"] = static_cast<double>(history.LastRuns(1000).size());
}

} // namespace

BENCHMARK(StoreTimeOfOneRun)->Unit(benchmark::kMillisecond)->Iterations(50);

int main(int argc, char **argv)
{
  QCoreApplication application(argc, argv); // the SQLite driver is a plugin
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
