// The open-ticket list, read page by page.

#include "RestJson.h"
#include "RestMapping.h"
#include "RestParse.h"
#include "core/Errors.h"
#include "core/Trace.h"
#include "dRest.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

namespace {

constexpr std::int32_t CPageSize = 500;
// Room made at once for the announced tickets, up to this many: beyond it the
// list grows as the pages come (an announced total is no promise).
constexpr qsizetype CMaxReserved = 50000;

// Pages needed for `totalElements` tickets, plus one.
std::int32_t MaxPagesFor(std::int32_t totalElements)
{
  return static_cast<std::int32_t>((qint64(totalElements) + CPageSize - 1) / CPageSize + 1);
}

// The paging request travels in the body of the GET, as the service expects.
QByteArray PageRequest(std::int32_t organizationId, std::int32_t page, const QString &search)
{
  QJsonObject body{{QStringLiteral("organizationId"), organizationId},
                   {QStringLiteral("page"), page},
                   {QStringLiteral("pageSize"), CPageSize}};
  if (!search.isEmpty())
    body.insert(QStringLiteral("search"), search);
  body.insert(QStringLiteral("sort"),
              QJsonArray{QJsonObject{{QStringLiteral("column"), QStringLiteral("assignedUser")},
                                     {QStringLiteral("dir"), QStringLiteral("ASC")}}});
  return AsciiJson(body); // QJsonObject keeps its members sorted, which is the order wanted
}

} // namespace

tyRestTickets TdmRest::GET_TicketsListOpen(const tyQuorvexITSM &settings, std::int32_t organizationId,
                                           const QString &search)
{
  const TraceScope trace(lcRest(), "TdmRest.GET_TicketsListOpen");
  BeginCall();
  TraceValue(lcRest(), "organizationId", organizationId);
  TraceValue(lcRest(), "Search", search);
  const QString url = QueryUrl(settings, QStringLiteral("/api/ticket/list/open"));

  tyRestTickets result;
  std::int32_t page = 0;
  qsizetype stored = 0;
  std::int32_t totalPages = -1;
  std::int32_t totalElements = -1; // unknown until a page tells it
  for (;;) {
    TraceValue(lcRest(), "Page", page);
    try {
      const QByteArray request = PageRequest(organizationId, page, search);
      const QByteArray body = Execute(url, "GET", &request);
      if (body.isEmpty()) {
        Fail(QStringLiteral("RESTResponse.Content = \"\""));
        return result;
      }
      const QJsonDocument document = QJsonDocument::fromJson(body);
      if (!document.isObject()) {
        Fail(QStringLiteral("NOT Assigned(JSONResponse) OR NOT (JSONResponse IS TJSONObject)"));
        return result;
      }
      const QJsonObject answer = document.object();
      ReadInteger(answer, QStringLiteral("totalNumberOfPages"), totalPages);
      ReadInteger(answer, QStringLiteral("totalNumberOfElements"), totalElements);
      const QJsonValue content = answer.value(QStringLiteral("content"));
      if (!content.isArray()) {
        Fail(QStringLiteral("NOT JSONObject.TryGetValue<TJSONArray>('content', ContentArray)"));
        return result;
      }
      const QJsonArray items = content.toArray();
      if (items.isEmpty()) {
        // On the first page it only means that the organization has no open
        // ticket, unless the page announced some; a later page announced but
        // empty leaves the list incomplete.
        if (page == 0 && totalElements <= 0)
          qCDebug(lcRest()) << "ContentArray.Count = 0";
        else
          Fail(QStringLiteral("ContentArray.Count = 0, totalNumberOfElements = %1").arg(totalElements));
        return result;
      }
      if (page == 0 && totalElements > 0)
        result.reserve(std::min<qsizetype>(totalElements, CMaxReserved));
      result.resize(stored + items.size());
      // An item that is not a ticket (not an object, no integer "id") is left
      // out: it would show as a ticket 0 of 1899.
      qsizetype kept = 0;
      std::int32_t id = 0;
      for (const QJsonValue &item : items)
        if (item.isObject() && ReadInteger(item.toObject(), QStringLiteral("id"), id))
          TicketFromJson(item.toObject(), result[stored + kept++]);
      result.resize(stored + kept);
      if (kept < items.size())
        Fail(QStringLiteral("%1 of the %2 items of page %3 are not tickets (an object with an integer \"id\")")
                 .arg(items.size() - kept)
                 .arg(items.size())
                 .arg(page));
    } catch (const EQuorvexError &error) {
      FailOn(error);
    }
    ++page;
    if (page <= totalPages)
      stored = result.size();
    // Every announced ticket is in: further pages could only be dropped.
    if (totalElements >= 0 && result.size() >= totalElements)
      break;
    if (page + 1 > totalPages)
      break;
    // Pages beyond what the announced tickets can fill (one spare) mean an
    // answer that cannot be trusted, not a longer wait.
    if (totalElements >= 0 && page >= MaxPagesFor(totalElements)) {
      Fail(QStringLiteral("the service announced %1 pages for %2 tickets; paging stopped after %3 pages with %4 "
                          "tickets")
               .arg(totalPages)
               .arg(totalElements)
               .arg(page)
               .arg(result.size()));
      break;
    }
  }
  if (totalElements >= 0 && result.size() > totalElements)
    result.resize(totalElements);
  return result;
}
