// How long the report takes for 20,000 retrieved tickets, with the colours and
// priority codes read through the settings file's cache, as an unattended run
// builds it. A tenth of the tickets is unassigned, a third without update, a
// twentieth carries the supervisor's notice; priorities and statuses vary.

#include "report/MailReport.h"
#include "tickets/ColourStore.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

constexpr int CTickets = 20000;
const QDateTime CNow(QDate(2026, 11, 14), QTime(6, 0));

QString DaysAgo(double days)
{
  return CNow.addMSecs(qint64(-days * 86400000)).toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzzZ"));
}

TReportInput Input()
{
  static const QStringList priorities{"INCIDENT - Critical P1", "INCIDENT - High P2", "REQUEST - Normal P3",
                                      "REQUEST - Low P4"};
  static const QStringList statuses{"New", "In progress", "Waiting", "Planned (without SLA)", "Resolved"};
  TReportInput input;
  input.ExtractionTickets = CNow;
  input.NbMinutes = 15;
  input.NbDays = 5;
  input.StatusToIgnore = {QStringLiteral("Planned (without SLA)")};
  input.ServiceUrl = QStringLiteral("https://bench.quorvex-itsm.example");
  for (int team = 1; team <= 8; ++team) {
    tyRestTeam selected;
    selected.id = team;
    selected.name = QStringLiteral("Team %1").arg(team);
    input.SelectedTeams.append(selected);
  }
  for (int op = 1; op <= 200; ++op) {
    tyRestOperator person;
    person.id = op;
    person.notificationEmail = QStringLiteral("operator%1@bench.example").arg(op);
    person.status = QStringLiteral("ACTIVE");
    input.Operators.append(person);
  }
  input.Tickets.resize(CTickets);
  for (int i = 0; i < CTickets; ++i) {
    tyRestTicket &ticket = input.Tickets[i];
    ticket.id = 100000 + i;
    ticket._type = i % 2 ? QStringLiteral("INCIDENT") : QStringLiteral("REQUEST");
    ticket.organization = {101 + i % 8, QStringLiteral("Organization %1").arg(i % 8)};
    ticket.title = QStringLiteral("Printer on floor %1 jams & <stops>").arg(i % 40);
    ticket.assignedTeam = {1 + i % 8, QStringLiteral("Team %1").arg(1 + i % 8)};
    ticket.assignedUser = i % 10 == 0 ? tyRestSubName{0, QString()}
                                      : tyRestSubName{1 + i % 200, QStringLiteral("Operator %1").arg(1 + i % 200)};
    ticket.creationDate = DaysAgo(1 + i % 30);
    ticket.lastUpdate = DaysAgo(i % 3 == 0 ? 10 : 0.5);
    ticket.priority.reference = priorities[i % priorities.size()];
    ticket.status._reference = statuses[i % statuses.size()];
    ticket.tenExchangesAdded = i % 20 == 0;
  }
  return input;
}

void GenerateReport(benchmark::State &state)
{
  QTemporaryDir folder;
  TColourStore colours(folder.filePath(QStringLiteral("quorvex-followup.ini")));
  const TReportInput input = Input();
  qsizetype lines = 0;
  for (auto _ : state) {
    TMailReport report(input, colours, [] { return CNow; });
    lines = report.Generate().HtmlContent.size();
    benchmark::DoNotOptimize(lines);
  }
  state.counters["lines"] = static_cast<double>(lines);
}

} // namespace

BENCHMARK(GenerateReport)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
