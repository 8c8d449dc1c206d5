#include "TicketRetrieval.h"

#include "core/Trace.h"

#include <QDateTime>
#include <QSet>
#include <QThreadPool>
#include <QTimer>
#include <optional>
#include <algorithm>

namespace {

// Marks of the trace lines that are not a page number.
constexpr std::int32_t CFailureLine = -1;
constexpr std::int32_t CPlainLine = -2;

// Room made at once for the announced tickets, up to this many: beyond it the
// list grows as the pages come (an announced total is no promise).
constexpr qsizetype CMaxReserved = 50000;

} // namespace

int RetryAfterSeconds(const QByteArray &header)
{
  bool isNumber = false;
  qint64 seconds = header.trimmed().toLongLong(&isNumber);
  if (!isNumber) {
    const QDateTime when = QDateTime::fromString(QString::fromLatin1(header.trimmed()), Qt::RFC2822Date);
    seconds = when.isValid() ? QDateTime::currentDateTimeUtc().secsTo(when) : 0;
  }
  return static_cast<int>(std::clamp<qint64>(seconds, 0, TTicketRetrieval::CMaxRetryAfterSeconds));
}

// One page as it came back: no answer, or the answer read.
struct TTicketRetrieval::TPageOutcome
{
  std::optional<TFailure> NoAnswer; // why no answer came
  int Status = 0;
  QString StatusText;
  QString BodyStart; // the beginning of the answer, for an answer not understood
  TTicketPage Page;
};

struct TTicketRetrieval::TQueryState
{
  TTicketQuery Query;
  std::int32_t Started = 0;  // pages asked for so far
  std::int32_t Wanted = 1;   // pages thought to exist
  bool FirstAnswered = false; // the pages after the first may start
  bool Refused = false;       // an answer's status said the query failed: no page starts after it
  QSet<qint64> Ids;           // of the tickets kept: a ticket that comes again is kept once
  std::map<std::int32_t, std::shared_ptr<TPageOutcome>> Ready; // read, not yet judged
  std::int32_t Next = 0;     // the page to judge next
  std::int32_t TotalPages = -1;
  std::int32_t TotalElements = -1; // unknown until a page tells it
  bool Ended = false;
  // The query's trace, written when it is delivered so that it never mixes
  // with another query's: a page number, a failure, or a plain line.
  QList<std::pair<std::int32_t, QString>> Trace;
  TRestResult<tyRestTickets> Result;
};

TTicketRetrieval::TTicketRetrieval(QString url, QList<TTicketQuery> queries, int parallel, TStartPage startPage,
                                   TQueryDone queryDone)
    : FUrl(std::move(url)), FParallel(std::clamp(parallel, 1, CMaxParallel)), FStartPage(std::move(startPage)),
      FQueryDone(std::move(queryDone)), FPageParser(std::make_unique<TTicketPageParser>()),
      FWorker(std::make_unique<QThreadPool>()), FContext(std::make_unique<QObject>())
{
  FWorker->setMaxThreadCount(1); // one parser, pages in the order they came
  FQueries.resize(queries.size());
  for (qsizetype i = 0; i < queries.size(); ++i)
    FQueries[i].Query = std::move(queries[i]);
}

TTicketRetrieval::~TTicketRetrieval()
{
  FWorker->waitForDone();
}

TTask<> TTicketRetrieval::Run()
{
  Pump();
  if (!Finished())
    co_await TCallback<bool>([this](auto done) { FEnded = [done] { done(true); }; });
  FEnded = nullptr;
}

bool TTicketRetrieval::Finished() const
{
  return FDelivered == static_cast<qsizetype>(FQueries.size()) && FInFlight == 0 && FParsing == 0;
}

void TTicketRetrieval::Pump()
{
  while (FInFlight < FParallel) {
    const auto next = std::find_if(FQueries.begin(), FQueries.end(), [](const TQueryState &query) {
      return !query.Ended && !query.Refused && query.Started < query.Wanted &&
             (query.Started == 0 || query.FirstAnswered);
    });
    if (next == FQueries.end())
      break;
    StartPage(next - FQueries.begin(), next->Started++, false);
  }
  if (FEnded && Finished())
    FEnded();
}

void TTicketRetrieval::StartPage(qsizetype index, std::int32_t page, bool repeated)
{
  ++FInFlight;
  FStartPage(FQueries[index].Query, page, [this, index, page, repeated](TRestTransport::TReply reply) {
    Answered(index, page, repeated, std::move(reply));
  });
}

void TTicketRetrieval::Answered(qsizetype index, std::int32_t page, bool repeated, TRestTransport::TReply reply)
{
  TQueryState &query = FQueries[index];
  if (reply.Answer && !repeated && (reply.Answer->Status == 429 || reply.Answer->Status == 503)) {
    // The service asks for less: one request at a time from now on, and this
    // one once more when it says. The slot stays taken meanwhile.
    FParallel = 1;
    const int seconds = RetryAfterSeconds(reply.Answer->RetryAfter);
    TraceValue(lcRest(), "Retry-After", seconds);
    QTimer::singleShot(seconds * 1000, FContext.get(), [this, index, page] {
      --FInFlight;
      StartPage(index, page, true);
    });
    return;
  }
  --FInFlight;
  const auto outcome = std::make_shared<TPageOutcome>();
  if (!reply.Answer) {
    outcome->NoAnswer = std::move(reply.Failure);
  } else {
    outcome->Status = reply.Answer->Status;
    outcome->StatusText = reply.Answer->StatusText;
    outcome->BodyStart = AnswerStart(reply.Answer->Body);
    if (page == 0)
      query.Wanted = std::max(1, FHeadParser.AnnouncedPages(reply.Answer->Body).value_or(1));
    // Judged later, but already known to fail the query: nothing more is asked.
    query.Refused = query.Refused || reply.Answer->Status / 100 != 2;
  }
  if (page == 0)
    query.FirstAnswered = true;
  Pump(); // the next request travels while this answer is read
  if (!reply.Answer || query.Ended) {
    Parsed(index, page, outcome);
    return;
  }
  ++FParsing;
  FWorker->start([this, index, page, outcome, body = std::move(reply.Answer->Body)]() mutable {
    outcome->Page = FPageParser->Parse(body);
    body = QByteArray(); // the page's text goes as soon as it is read
    QMetaObject::invokeMethod(
        FContext.get(),
        [this, index, page, outcome] {
          --FParsing;
          Parsed(index, page, outcome);
        },
        Qt::QueuedConnection);
  });
}

void TTicketRetrieval::Parsed(qsizetype index, std::int32_t page, std::shared_ptr<TPageOutcome> outcome)
{
  TQueryState &query = FQueries[index];
  query.Ready.emplace(page, std::move(outcome));
  while (!query.Ended) {
    const auto ready = query.Ready.find(query.Next);
    if (ready == query.Ready.end())
      break;
    const std::shared_ptr<TPageOutcome> judged = ready->second;
    query.Ready.erase(ready);
    Judge(query, query.Next, *judged);
  }
  if (query.Ended)
    query.Ready.clear();
  Deliver();
  Pump();
}

// The paging of one query, page after page: each page is judged as if it were
// the only one asked so far.
void TTicketRetrieval::Judge(TQueryState &query, std::int32_t page, TPageOutcome &outcome)
{
  query.Trace.append({page, QString()});
  const TTicketPage &answer = outcome.Page;
  if (!outcome.NoAnswer) {
    switch (answer.Shape) {
    case TTicketPage::TShape::Empty:
      Fail(query, QStringLiteral("RESTResponse.Content = \"\""), outcome);
      return End(query, false);
    case TTicketPage::TShape::NotObject:
      Fail(query, QStringLiteral("NOT Assigned(JSONResponse) OR NOT (JSONResponse IS TJSONObject)"), outcome);
      return End(query, false);
    default: break;
    }
    if (outcome.Status / 100 != 2) {
      Fail(query, QStringLiteral("HTTP %1 %2").arg(outcome.Status).arg(outcome.StatusText), outcome);
      return End(query, false);
    }
    query.TotalPages = answer.TotalPages.value_or(query.TotalPages);
    query.TotalElements = answer.TotalElements.value_or(query.TotalElements);
    if (answer.Shape == TTicketPage::TShape::NoContent) {
      Fail(query, QStringLiteral("NOT JSONObject.TryGetValue<TJSONArray>('content', ContentArray)"), outcome);
      return End(query, false);
    }
    if (answer.Tickets.isEmpty() && answer.BadItems == 0) {
      // A first page without tickets means that the organization has none,
      // unless it announced some; a later page announced but empty leaves the
      // list incomplete.
      if (page == 0 && query.TotalElements <= 0)
        query.Trace.append({CPlainLine, QStringLiteral("ContentArray.Count = 0")});
      else
        Fail(query, QStringLiteral("ContentArray.Count = 0, totalNumberOfElements = %1").arg(query.TotalElements),
             outcome);
      return End(query, false);
    }
    tyRestTickets &tickets = query.Result.Value;
    if (page == 0 && query.TotalElements > 0)
      tickets.reserve(std::min<qsizetype>(query.TotalElements, CMaxReserved));
    // Offset paging while tickets are reassigned can bring a ticket on two
    // pages: it is kept once, where it came first.
    qsizetype repeated = 0;
    const qsizetype before = tickets.size();
    for (tyRestTicket &ticket : outcome.Page.Tickets) {
      if (query.Ids.contains(ticket.id)) {
        ++repeated;
        continue;
      }
      query.Ids.insert(ticket.id);
      tickets.append(std::move(ticket));
    }
    outcome.Page.Tickets = tyRestTickets(); // mapped and moved: nothing of the page stays
    if (FPageKept && tickets.size() > before)
      FPageKept(&query - FQueries.data(), tickets, before);
    if (repeated > 0)
      query.Trace.append({CPlainLine, QStringLiteral("%1 tickets of page %2 came on an earlier page already and are "
                                                     "kept once")
                                          .arg(repeated)
                                          .arg(page)});
    if (answer.BadItems > 0)
      Fail(query,
           QStringLiteral("%1 items of page %2 are not tickets (not an object, or no integer \"id\")")
               .arg(answer.BadItems)
               .arg(page),
           outcome);
  } else {
    Fail(query, QStringLiteral("Erreur API : ") + outcome.NoAnswer->Reason, outcome);
  }
  query.Next = page + 1;
  // Every announced ticket is in: further pages could only be dropped.
  if (query.TotalElements >= 0 && query.Result.Value.size() >= query.TotalElements)
    return End(query, true);
  if (query.Next + 1 > query.TotalPages)
    return End(query, true);
  // Pages beyond what the announced tickets can fill (one spare) mean an
  // answer that cannot be trusted, not a longer wait.
  const std::int32_t bound = query.TotalElements >= 0 ? MaxPagesFor(query.TotalElements) : query.TotalPages;
  if (query.Next >= bound) {
    const QString stop = QStringLiteral("%1 announced %2 pages for %3 tickets; paging stopped after %4 pages with %5 "
                                        "tickets, as the answers cannot be trusted; tell the service's administrator")
                             .arg(ServerOf(FUrl))
                             .arg(query.TotalPages)
                             .arg(query.TotalElements)
                             .arg(query.Next)
                             .arg(query.Result.Value.size());
    Fail(query, stop, outcome, stop);
    return End(query, true);
  }
  query.Wanted = std::min(query.TotalPages, bound);
}

void TTicketRetrieval::End(TQueryState &query, bool trim)
{
  tyRestTickets &tickets = query.Result.Value;
  if (trim && query.TotalElements >= 0 && tickets.size() > query.TotalElements)
    tickets.resize(query.TotalElements);
  query.Ended = true;
}

void TTicketRetrieval::Fail(TQueryState &query, const QString &message, const TPageOutcome &outcome,
                            const QString &reason)
{
  query.Trace.append({CFailureLine, message});
  if (query.Result.Failed())
    return;
  const QString server = ServerOf(FUrl);
  if (!reason.isEmpty())
    query.Result.Failure = TFailure{.Reason = reason, .Details = FUrl};
  else if (outcome.NoAnswer)
    query.Result.Failure = *outcome.NoAnswer;
  else if (outcome.Status / 100 != 2)
    query.Result.Failure =
        TFailure{.Reason = StatusReason(server, outcome.Status, outcome.StatusText), .Details = FUrl};
  else
    query.Result.Failure =
        TFailure{.Reason = NotUnderstoodReason(server),
                 .Details = QStringLiteral("%1 answered: %2")
                                .arg(FUrl, outcome.BodyStart.isEmpty() ? QStringLiteral("(nothing)") : outcome.BodyStart)};
}

void TTicketRetrieval::Deliver()
{
  if (FDelivering)
    return; // a caller that processes events lands here; the loop below goes on
  FDelivering = true;
  while (FDelivered < static_cast<qsizetype>(FQueries.size()) && FQueries[FDelivered].Ended) {
    TQueryState &query = FQueries[FDelivered];
    {
      const TraceScope trace(lcRest(), "TdmRest.GET_TicketsListOpen");
      TraceValue(lcRest(), "organizationId", query.Query.OrganizationId);
      TraceValue(lcRest(), "Search", query.Query.Search);
      TraceValue(lcRest(), "BaseURL", FUrl);
      for (const auto &[page, line] : std::as_const(query.Trace))
        if (page == CFailureLine)
          TraceFailure(lcRest(), line);
        else if (page == CPlainLine)
          qCDebug(lcRest()).noquote() << line;
        else
          TraceValue(lcRest(), "Page", page);
    }
    query.Trace.clear();
    FQueryDone(FDelivered++, std::move(query.Result));
    query.Result = {};
  }
  FDelivering = false;
}
