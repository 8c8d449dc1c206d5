#pragma once

#include "RestFailure.h"
#include "RestResult.h"
#include "RestTransport.h"
#include "TicketRetrieval.h"
#include "uTypes.h"

#include <QJsonArray>
#include <QString>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

class EQuorvexError;
class QNetworkAccessManager;

// The service client: builds the service's address, obtains and keeps the OAuth2
// access token, and runs the queries that fill the service records. It is used
// from the user-interface thread only; each call blocks until the service has
// answered (windows keep painting meanwhile).
//
// No call raises for a bad answer or a network failure (unknown host, refused
// connection, untrusted certificate, time-out): it writes the failure to the
// trace and returns a TRestResult with what it has, usually an empty list, and
// the failure, so that the caller can tell "nothing there" from "could not
// retrieve" where it makes the call.
//
// A service that answers 401 to a query no longer accepts the token, whatever
// its age: the module drops it, asks the token-refused handler for a new one and,
// when one came, sends the refused request once more.
class TdmRest
{
public:
  // Called after a 401 answer, once the module has dropped its token: drops the
  // saved one and may obtain a new one (GetToken). Returns whether a new token is
  // in force.
  using TTokenRefused = std::function<bool()>;

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
  // as it is a fault of the settings, not of the service.
  TRestResult<> GetToken(tyQuorvexITSM &settings);

  // True when the module holds a token; a failed renewal does not clear it.
  bool TokenOk() const;
  // Forgets the token in force, so that the next GetToken decides anew.
  void DropToken()
  {
    FToken.clear();
    FOperatorsAhead = {};
  }
  void SetTokenRefusedHandler(TTokenRefused handler) { FTokenRefused = std::move(handler); }

  // Every open ticket of the organization, 500 a page; `search` restricts them
  // to the service's matches of that text when not empty.
  TRestResult<tyRestTickets> GET_TicketsListOpen(const tyQuorvexITSM &settings, TRestId organizationId,
                                                 const QString &search);
  // The same for several queries, settings.ParallelRequests requests at a time
  // (see TTicketRetrieval); `done` gets each query's result in the order of the
  // queries, failures included.
  void GET_TicketsListsOpen(const tyQuorvexITSM &settings, const QList<TTicketQuery> &queries,
                            const TTicketRetrieval::TQueryDone &done);
  // Repository objects of a module and type list, e.g. "TICKETING" and "TICKET_STATUS".
  TRestResult<tyRestObjects> GET_Objects(const tyQuorvexITSM &settings, const QString &module, const QString &types);
  TRestResult<tyRestOrganizations> GET_OrganizationsList(const tyQuorvexITSM &settings);
  // With WithOrganizations, one more request per team fills its organizations.
  TRestResult<tyRestTeams> GET_Teams(const tyQuorvexITSM &settings, bool WithOrganizations);
  // The first 500 operators.
  TRestResult<tyRestOperators> GET_OperatorsList(const tyQuorvexITSM &settings);
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
  void BeginCall();
  // The call's value with the failure it met, which the next call no longer sees.
  template <class T> TRestResult<T> Finish(T value)
  {
    return {std::move(value), std::exchange(FCallFailure, std::nullopt), {}};
  }
  // Writes the error trace and remembers the failure: an answer refused by its
  // HTTP status, or else an answer not understood.
  void Fail(const QString &message);
  // The same for an error raised while sending or reading: a transport error
  // gives its own reason, any other means that the answer was not understood.
  void FailOn(const EQuorvexError &error);
  // Drops the refused token and asks the handler for a new one; the state of
  // the call under way is kept.
  bool RenewRefusedToken();
  // Base address + `path`, traced as the query's address.
  static QString QueryUrl(const tyQuorvexITSM &settings, const QString &path);
  // A request with the bearer token (and a JSON body when `jsonBody` is not null):
  // every request to the service's API is made here.
  TRestTransport::TRequest ApiRequest(const QString &url, const QByteArray &method, const QByteArray *jsonBody) const;
  // Sends one request made by ApiRequest and returns the body of the answer.
  QByteArray Execute(const QString &url, const QByteArray &method, const QByteArray *jsonBody);
  // The same for a request already sent with the token `sentWith`: a 401 renews
  // the token unless another request already did, then the request goes again.
  QByteArray Execute(const QString &url, const QByteArray &method, const QByteArray *jsonBody,
                     TRestTransport::TPending &sent, const QString &sentWith);
  // Body of a list answer as a JSON array, or an empty array after the matching
  // failure trace.
  QJsonArray ArrayAnswer(const QByteArray &body);

  // Remembers the failure unless the call under way already failed.
  void Remember(const QString &reason, const QString &details);

  TRestTransport FTransport;
  QString FToken;
  // The operators query sent ahead: its address, the token it carried, its answer.
  struct TOperatorsAhead
  {
    QString Url;
    QString SentWith;
    std::shared_ptr<TRestTransport::TPending> Sent;
  } FOperatorsAhead;
  TTokenRefused FTokenRefused;
  // A renewal is under way (the token request waits in an event loop): the
  // requests refused meanwhile wait for it instead of asking their own.
  bool FRenewing = false;
  QList<std::function<void()>> FAfterRenewal;
  // The first failure of the call under way.
  std::optional<TRestFailure> FCallFailure;
  // Address, HTTP status and beginning of the last answer, which a failure
  // then names.
  QString FLastUrl;
  int FLastStatus = 0;
  QString FLastStatusText;
  QString FLastBodyStart;
};
