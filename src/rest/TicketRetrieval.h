#pragma once

#include "RestResult.h"
#include "RestTransport.h"
#include "TicketPage.h"
#include "core/Task.h"

#include <QList>
#include <QString>
#include <functional>
#include <map>
#include <vector>
#include <memory>

class QThreadPool;

// One open-ticket query: an organization and a search text (empty for none).
struct TTicketQuery
{
  TRestId OrganizationId = 0;
  QString Search;
};

// Runs open-ticket queries page by page with up to `parallel` requests in
// flight. Requests start in the order of the queries, and within a query in page
// order; a query's pages after the first start once the first told how many
// there are; none starts after an answer whose HTTP status already failed the
// query. Within a query a ticket that comes again is kept once. Pages are parsed on a worker thread while the next requests
// travel, and each query's pages are judged in page order exactly as one page
// after the other would be, so the results, failures and trace lines do not
// depend on `parallel`. An answer 429 or 503 makes the rest of the run go one
// request at a time and is asked once more after its Retry-After (at most 30 s).
// Seconds to wait before asking again after a 429 or 503: the answer's
// Retry-After, a number of seconds or an HTTP date, between 0 and
// TTicketRetrieval::CMaxRetryAfterSeconds (0 when it cannot be read).
int RetryAfterSeconds(const QByteArray &header);

class TTicketRetrieval
{
public:
  // Starts the request of one page of a query; `done` gets its answer.
  using TStartPage =
      std::function<void(const TTicketQuery &query, std::int32_t page, TRestTransport::TDone done)>;
  // Gets each query's result, in the order of the queries, as soon as it and
  // every query before it are complete.
  // A query's result is its tickets and, when it could not retrieve them all,
  // the first failure.
  using TQueryDone = std::function<void(qsizetype index, TRestResult<tyRestTickets> &&result)>;
  // Gets a query's tickets as soon as a page added some, the new ones from
  // position `from` on, before the query is complete: for a view that shows
  // rows as they come. A query that fails later keeps what it was given.
  using TPageKept = std::function<void(qsizetype index, const tyRestTickets &tickets, qsizetype from)>;

  static constexpr int CMaxParallel = 8;
  static constexpr int CMaxRetryAfterSeconds = 30;

  // `url` is the address of the query, for the trace and failure texts.
  TTicketRetrieval(QString url, QList<TTicketQuery> queries, int parallel, TStartPage startPage,
                   TQueryDone queryDone);
  ~TTicketRetrieval();
  TTicketRetrieval(const TTicketRetrieval &) = delete;
  TTicketRetrieval &operator=(const TTicketRetrieval &) = delete;

  void OnPageKept(TPageKept kept) { FPageKept = std::move(kept); }

  // Ends once every query's result has been given.
  TTask<> Run();

private:
  struct TPageOutcome;
  struct TQueryState;

  bool Finished() const;
  // Starts requests while slots are free, the first ready in the start order.
  void Pump();
  void StartPage(qsizetype index, std::int32_t page, bool repeated);
  void Answered(qsizetype index, std::int32_t page, bool repeated, TRestTransport::TReply reply);
  // Takes a page that has been read and judges the query's pages that are in,
  // in page order.
  void Parsed(qsizetype index, std::int32_t page, std::shared_ptr<TPageOutcome> outcome);
  void Judge(TQueryState &query, std::int32_t page, TPageOutcome &outcome);
  void End(TQueryState &query, bool trim);
  // Traces the program's own words and remembers the first failure of the
  // query, in plain words: `reason` when given, else what the page's answer
  // says (no answer, a refusing status, an answer not understood).
  void Fail(TQueryState &query, const QString &message, const TPageOutcome &outcome,
            const QString &reason = QString());
  // Hands the complete queries at the front of the list to the caller.
  void Deliver();

  QString FUrl;
  std::vector<TQueryState> FQueries;
  int FParallel;
  TStartPage FStartPage;
  TQueryDone FQueryDone;
  TPageKept FPageKept;
  int FInFlight = 0;
  int FParsing = 0;
  qsizetype FDelivered = 0;
  bool FDelivering = false;
  TTicketPageParser FHeadParser; // on this thread, for the first pages' totals
  std::unique_ptr<TTicketPageParser> FPageParser; // on the worker thread only
  std::unique_ptr<QThreadPool> FWorker;
  std::unique_ptr<QObject> FContext; // receives the worker's results on this thread
  std::function<void()> FEnded; // resumes Run once the last result was given
};
