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

void TdmRest::GET_TicketsListsOpen(const tyQuorvexITSM &settings, const QList<TTicketQuery> &queries,
                                   const TTicketRetrieval::TQueryDone &done)
{
  const QString url = GetQuorvexItsmUrl(settings) + QStringLiteral("/api/ticket/list/open");
  TTicketRetrieval retrieval(
      url, queries, settings.ParallelRequests,
      [this, url](const TTicketQuery &query, std::int32_t page, TRestTransport::TDone answered) {
        const QByteArray body = PageRequest(query.OrganizationId, page, query.Search);
        const QString sentWith = FToken;
        FTransport.Start(ApiRequest(url, "GET", &body),
                         [this, url, body, sentWith, answered = std::move(answered)](TRestTransport::TReply reply) {
                           if (!reply.Answer || reply.Answer->Status != 401) {
                             answered(std::move(reply));
                             return;
                           }
                           // A refused token is renewed once, by the first page that met the
                           // refusal; the others wait for that renewal. Each is then asked once
                           // more with the new token, or answered with its 401 when none came.
                           auto again = [this, url, body, answered, reply]() mutable {
                             if (FToken.isEmpty())
                               answered(std::move(reply));
                             else
                               FTransport.Start(ApiRequest(url, "GET", &body), answered);
                           };
                           if (FRenewing) {
                             FAfterRenewal.append(std::move(again));
                             return;
                           }
                           if (FToken == sentWith)
                             RenewRefusedToken();
                           again();
                         });
      },
      done);
  retrieval.Run();
}

TRestResult<tyRestTickets> TdmRest::GET_TicketsListOpen(const tyQuorvexITSM &settings, TRestId organizationId,
                                                        const QString &search)
{
  TTicketQueryResult result;
  GET_TicketsListsOpen(settings, {{organizationId, search}},
                       [&result](qsizetype, TTicketQueryResult &&answered) { result = std::move(answered); });
  TRestResult<tyRestTickets> tickets{std::move(result.Tickets), std::nullopt, {}};
  if (result.Failed)
    tickets.Failure = std::move(result.Failure);
  return tickets;
}
