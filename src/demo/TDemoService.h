#pragma once

#include "DemoCertificate.h"

#include <QByteArray>
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QPair>
#include <QSet>
#include <QString>
#include <memory>
#include <vector>

class QHttpServer;
class QHttpServerRequest;
class QHttpServerResponder;

// Faults the demo service can be told to make, for tests and demonstrations.
struct TDemoFaults
{
  bool RefuseToken = false; // the token endpoint answers 401
  int DelayMs = 0;          // every answer waits this long
  int Surplus = 0;          // items added to each ticket page beyond its announced total
  bool TooManyOnce = false; // the next ticket-list request is answered 429, Retry-After 1 s
  // How a replaced answer reaches the client: whole, never (the request hangs
  // until the client gives up), or cut after half of its body (the connection
  // closes although the announced length is not reached).
  enum class TDelivery
  {
    Whole,
    Never,
    CutMidBody
  };
  // Raw bodies given instead of the real answer: for a path ("/api/teams"), and
  // for the open-ticket list optionally one page only (-1: every page).
  struct TBody
  {
    QString Path;
    int Page = -1;
    QByteArray Body;
    int Status = 200;
    TDelivery Delivery = TDelivery::Whole;
    int OrganizationId = -1; // for the open-ticket list: that organization's only (-1: every one)
  };
  QList<TBody> Bodies;

  static TDemoFaults FromJson(const QJsonObject &object);
};

// One request as the service received it.
struct TDemoRequest
{
  QByteArray Method;
  QString Target; // path and query
  QList<QPair<QByteArray, QByteArray>> Headers;
  QByteArray Body;
  int Status = 0; // of the answer given

  QByteArray Header(const QByteArray &name) const;
};

// A small stand-in for the Quorvex ITSM service: the token endpoint and the
// queries of the follow-up tool, over HTTPS on 127.0.0.1, from one JSON data set
// (see DemoData.h for its shape). Bearer tokens are checked; the paging request
// of the ticket list is read from the body of the GET. Faults are set from code
// or by POSTing them as JSON to /demo/faults; GET /demo/requests tells how many
// requests came so far and lists them as "METHOD path status" (for benchmarks
// and for tests that run the program as a separate process).
class TDemoService : public QObject
{
public:
  explicit TDemoService(QJsonObject data, QObject *parent = nullptr);
  ~TDemoService() override;

  // Starts listening on 127.0.0.1 (port 0: any free one) and returns the port.
  // Raises std::runtime_error when the port cannot be had.
  quint16 Listen(quint16 port = 0);
  quint16 Port() const { return FPort; }
  QString Instance() const; // "127.0.0.1:<port>", the on-premise instance name
  const QByteArray &CertificatePem() const { return FCertificate.CertificatePem; }

  void SetFaults(const TDemoFaults &faults) { FFaults = faults; }
  // Serves `data` from now on, as if the desk had worked on its tickets.
  void SetData(QJsonObject data)
  {
    FData = std::move(data);
    FFound.clear();
    FPages.clear();
  }
  const QJsonObject &Data() const { return FData; }
  const QList<TDemoRequest> &Requests() const { return FRequests; }
  void ClearRequests() { FRequests.clear(); }

private:
  struct TAnswer
  {
    int Status = 200;
    QByteArray Body;
    TDemoFaults::TDelivery Delivery = TDemoFaults::TDelivery::Whole;
    QByteArray RetryAfter;
  };

  // Sends the answer as its delivery says.
  void Deliver(const TAnswer &answer, QHttpServerResponder &responder);

  TAnswer Dispatch(const TDemoRequest &request);
  TAnswer Token(const TDemoRequest &request);
  TAnswer TicketsOpen(const TDemoRequest &request);
  // The open tickets of an organization that match a search, in the order of
  // the answer; worked out once per organization and search while the data
  // set stays the same.
  QJsonArray Found(int organizationId, const QString &search);
  TAnswer Objects(const TDemoRequest &request) const;
  TAnswer Team(int id) const;
  TAnswer Operators(const TDemoRequest &request) const;
  bool Authorized(const TDemoRequest &request) const;
  const TDemoFaults::TBody *ReplacedBody(const QString &path, int page, int organizationId = -1) const;

  QJsonObject FData;
  QHash<QPair<int, QString>, QJsonArray> FFound;
  // Organization, search, page and page size of an answered page.
  struct TPageKey
  {
    int OrganizationId;
    QString Search;
    int Page;
    int PageSize;
    bool operator==(const TPageKey &) const = default;
    friend size_t qHash(const TPageKey &key, size_t seed = 0)
    {
      return qHashMulti(seed, key.OrganizationId, key.Search, key.Page, key.PageSize);
    }
  };
  QHash<TPageKey, QByteArray> FPages;
  TDemoCertificate FCertificate;
  std::unique_ptr<QHttpServer> FServer;
  quint16 FPort = 0;
  TDemoFaults FFaults;
  QList<TDemoRequest> FRequests;
  QSet<QByteArray> FTokens;
  std::vector<std::unique_ptr<QHttpServerResponder>> FUnanswered; // requests left hanging on purpose
};
