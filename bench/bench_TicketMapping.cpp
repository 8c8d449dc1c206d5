// How fast one page of 500 tickets, as the service sends it, becomes records:
// parsing the JSON text and mapping every item, as the open-ticket query does.

#include "rest/TicketPage.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <benchmark/benchmark.h>

namespace {

QJsonObject Name(int id, const QString &name)
{
  return {{"id", id}, {"name", name}};
}

QByteArray GeneratedPage()
{
  QJsonArray content;
  for (int i = 0; i < 500; ++i)
    content.append(QJsonObject{
        {"id", 24000 + i}, {"type", i % 2 ? "INCIDENT" : "REQUEST"}, {"organization", Name(101, "Northwind")},
        {"assignedTeam", Name(11, "Service Desk")}, {"assignedUser", Name(1000 + i % 40, "Alice Martin")},
        {"title", QString("Printer on floor %1 jams").arg(i)},
        {"description", "<p>Reported by phone.</p><p>Paper tray 2 jams on every second sheet.</p>"},
        {"creationDate", "2024-03-15T08:30:00.123Z"}, {"lastUpdate", "2024-03-18T14:02:11.000Z"},
        {"author", Name(5000 + i, "Customer")}, {"authorName", "Customer"}, {"authorEmail", "customer@example.org"},
        {"createdBy", Name(1000, "Alice Martin")}, {"authorSite", Name(60, "Paris")}, {"authorEmailNotify", true},
        {"ticketOrigin", "EMAIL"}, {"resolutionDelay", 1200}, {"slaResolutionDelay", 2880},
        {"slaCompletionStatus", "IN_PROGRESS"}, {"slaAcknowledgementStatus", "ACHIEVED"},
        {"priority", QJsonObject{{"id", 302}, {"reference", "P2"}}},
        {"status", QJsonObject{{"id", 203}, {"reference", "IN_PROGRESS"}, {"category", "OPEN"}}},
        {"customProperties", QJsonArray{QJsonObject{{"customProperty", QJsonObject{{"id", 1}, {"reference", "SITE"}}},
                                                    {"selectedOption", QJsonObject{{"id", 2}, {"description", "HQ"}}}}}},
        {"incident", QJsonObject{{"incidentImpact", "SERVICE"}, {"incidentUrgency", "HIGH"}}},
        {"sla", QJsonObject{{"id", 80}, {"description", "Standard 48 h"}}},
        {"theoreticalResolutionDate", "2024-03-17T08:30:00.123Z"}});
  return QJsonDocument(QJsonObject{{"content", content}, {"totalNumberOfElements", 500}, {"totalNumberOfPages", 1}})
      .toJson(QJsonDocument::Compact);
}

void MapTicketPage(benchmark::State &state)
{
  const QByteArray page = GeneratedPage();
  TTicketPageParser parser;
  for (auto _ : state) {
    const TTicketPage tickets = parser.Parse(page);
    benchmark::DoNotOptimize(tickets.Tickets.data());
  }
  state.counters["tickets/s"] = benchmark::Counter(500.0 * state.iterations(), benchmark::Counter::kIsRate);
  state.SetBytesProcessed(state.iterations() * page.size());
}

} // namespace

BENCHMARK(MapTicketPage)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
