// The open-ticket lists, read page by page.

#include "RestJson.h"
#include "core/Trace.h"
#include "dRest.h"

#include <QJsonArray>
#include <QJsonObject>

namespace {

// The paging request travels in the body of the GET, as the service expects.
QByteArray PageRequest(TRestId organizationId, std::int32_t page, const QString &search)
{
  QJsonObject body{{QStringLiteral("organizationId"), static_cast<qint64>(organizationId)},
                   {QStringLiteral("page"), page},
                   {QStringLiteral("pageSize"), CTicketPageSize}};
  if (!search.isEmpty())
    body.insert(QStringLiteral("search"), search);
  body.insert(QStringLiteral("sort"),
              QJsonArray{QJsonObject{{QStringLiteral("column"), QStringLiteral("assignedUser")},
                                     {QStringLiteral("dir"), QStringLiteral("ASC")}}});
  return AsciiJson(body); // QJsonObject keeps its members sorted, which is the order wanted
}

} // namespace

TTask<> TdmRest::GET_TicketsListsOpen(tyQuorvexITSM settings, QList<TTicketQuery> queries,
                                     TTicketRetrieval::TQueryDone done, TTicketRetrieval::TPageKept pageKept)
{
  const QString url = GetQuorvexItsmUrl(settings) + QStringLiteral("/api/ticket/list/open");
  TTicketRetrieval retrieval(
      url, std::move(queries), settings.ParallelRequests,
      [this, url](const TTicketQuery &query, std::int32_t page, TRestTransport::TDone answered) {
        Launch(SendApi(url, "GET", PageRequest(query.OrganizationId, page, query.Search)), std::move(answered));
      },
      std::move(done));
  retrieval.OnPageKept(std::move(pageKept));
  co_await retrieval.Run();
}

TTask<TRestResult<tyRestTickets>> TdmRest::GET_TicketsListOpen(tyQuorvexITSM settings, TRestId organizationId,
                                                               QString search)
{
  TRestResult<tyRestTickets> tickets;
  const QList<TTicketQuery> queries{{organizationId, search}};
  co_await GET_TicketsListsOpen(std::move(settings), queries, [&tickets](qsizetype, TRestResult<tyRestTickets> &&answered) {
    tickets = std::move(answered);
  });
  co_return tickets;
}
