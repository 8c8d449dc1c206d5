#pragma once

#include "RestCall.h"
#include "RestFailure.h"
#include "RestResult.h"
#include "RestTransport.h"
#include "TicketRetrieval.h"
#include "TokenProvider.h"
#include "uTypes.h"

#include <QJsonArray>
#include <QString>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

class QNetworkAccessManager;

// The service client: builds the service's address, obtains and keeps the OAuth2
// access token, and runs the queries that fill the service records. It is used
// from one thread; each call is a TTask that goes on when the service has
// answered, without blocking the thread or running an event loop of its own.
// Several calls may overlap: each keeps its state to itself.
//
// No call raises for a bad answer or a network failure (unknown host, refused
// connection, untrusted certificate, time-out): it writes the failure to the
// trace and gives a TRestResult with what it has, usually an empty list, and
// the failure, so that the caller can tell "nothing there" from "could not
// retrieve" where it makes the call.
//
// A service that answers 401 to a query no longer accepts the token, whatever
// its age: the token provider drops it and renews it once for every request
// refused with it (see TTokenProvider), and each refused request goes once more.
class TdmRest
{
public:
  // Called after a 401 answer, once the token was dropped: drops the saved one
  // and may obtain a new one (GetToken). Gives whether a new token is in force.
  using TTokenRefused = TTokenProvider::TRenew;

  // The manager is used for every request and must outlive the module.
  explicit TdmRest(QNetworkAccessManager &manager);
  ~TdmRest();
  TdmRest(const TdmRest &) = delete;
  TdmRest &operator=(const TdmRest &) = delete;

  // "https://" + Instance, followed by "." and the hosted service's domain when
  // SaaS is set. No trailing slash. An on-premise Instance may carry a port
  // ("host.example:8443").
  static QString GetQuorvexItsmUrl(const tyQuorvexITSM &settings);

  // Reuses settings.API.Token while it is younger than TokenValidity - 9 hours,
  // otherwise asks the service for a new one with the password grant. Sets
  // TokenRequest whenever a request was answered, and Token when a new one came.
  // Fails when no token came (a refusal, an answer without one, a transport
  // failure); only a token validity whose hours overflow raises (ERangeError),
  // as it is a fault of the settings, not of the service. `settings` must
  // outlive the call.
  TTask<TRestResult<>> GetToken(tyQuorvexITSM &settings);

  // True when the module holds a token; a failed renewal does not clear it.
  bool TokenOk() const;
  // Forgets the token in force, so that the next GetToken decides anew.
  void DropToken()
  {
    FTokens.Drop();
    FOperatorsAhead = {};
  }
  void SetTokenRefusedHandler(TTokenRefused handler) { FTokens.SetRenewal(std::move(handler)); }

  // Every open ticket of the organization, 500 a page; `search` restricts them
  // to the service's matches of that text when not empty.
  TTask<TRestResult<tyRestTickets>> GET_TicketsListOpen(tyQuorvexITSM settings, TRestId organizationId,
                                                        QString search);
  // The same for several queries, settings.ParallelRequests requests at a time
  // (see TTicketRetrieval); `done` gets each query's result in the order of the
  // queries, failures included; `pageKept`, when given, each page's new tickets
  // as they come.
  TTask<> GET_TicketsListsOpen(tyQuorvexITSM settings, QList<TTicketQuery> queries,
                               TTicketRetrieval::TQueryDone done, TTicketRetrieval::TPageKept pageKept = {});
  // Repository objects of a module and type list, e.g. "TICKETING" and "TICKET_STATUS".
  TTask<TRestResult<tyRestObjects>> GET_Objects(tyQuorvexITSM settings, QString module, QString types);
  TTask<TRestResult<tyRestOrganizations>> GET_OrganizationsList(tyQuorvexITSM settings);
  // With WithOrganizations, one more request per team fills its organizations.
  TTask<TRestResult<tyRestTeams>> GET_Teams(tyQuorvexITSM settings, bool WithOrganizations);
  // The first 500 operators.
  TTask<TRestResult<tyRestOperators>> GET_OperatorsList(tyQuorvexITSM settings);
  // Sends the operators query now, so that its answer travels while other
  // requests are under way; the next GET_OperatorsList of the same service reads
  // that answer instead of asking again. DropToken forgets it.
  void StartOperatorsListAhead(const tyQuorvexITSM &settings);

  void SetTimeout(std::chrono::milliseconds timeout) { FTransport.SetTimeout(timeout); }
  // No request starts after `deadline` (the call fails as for a network error).
  void SetDeadline(QDeadlineTimer deadline) { FTransport.SetDeadline(deadline); }
  // Once `stop` is requested no request starts and those in flight are cut.
  void SetStopRequest(const TStopRequest *stop) { FTransport.SetStopRequest(stop); }

private:
  // Base address + `path`, traced as the query's address.
  static QString QueryUrl(const tyQuorvexITSM &settings, const QString &path);
  // A request with the bearer token (and a JSON body when there is one): every
  // request to the service's API is made here.
  TRestTransport::TRequest ApiRequest(const QString &url, const QByteArray &method,
                                      const std::optional<QByteArray> &jsonBody) const;
  // Sends one request made by ApiRequest; after a 401, once more when the token
  // provider has a newer token.
  TTask<TRestTransport::TReply> SendApi(QString url, QByteArray method, std::optional<QByteArray> jsonBody);
  // The same, giving the body of the answer (see TRestCall::Took).
  TTask<QByteArray> Execute(TRestCall &call, QString url, QByteArray method, std::optional<QByteArray> jsonBody);
  // Body of a list answer as a JSON array, or an empty array after the matching
  // failure trace.
  static QJsonArray ArrayAnswer(TRestCall &call, const QByteArray &body);

  TRestTransport FTransport;
  TTokenProvider FTokens;
  // The operators query sent ahead: its address and, once it came, its reply.
  struct TAhead
  {
    std::optional<TRestTransport::TReply> Reply;
    std::function<void(TRestTransport::TReply)> Waiting;
  };
  struct TOperatorsAhead
  {
    QString Url;
    std::shared_ptr<TAhead> Sent;
  } FOperatorsAhead;
};
