#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QList>
#include <QPair>
#include <QSslConfiguration>
#include <QString>
#include <QUrl>

#include "RestFailure.h"
#include "core/Task.h"
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

class QNetworkAccessManager;
class TStopRequest;

// HTTP exchanges with the service, answered through the event loop: nothing
// waits in a loop of its own, so windows stay responsive and any exchange can be
// cut.
// Every request has a time-out, uses the system proxy and verifies TLS, trusting
// the system's certificate authorities plus those of the PEM file named by the
// environment variable QUORVEX_EXTRA_CA_CERTS or the settings (ExtraAuthorities),
// read again when the file named changes.
class TRestTransport
{
public:
  using THeaders = QList<QPair<QByteArray, QByteArray>>;

  struct TAnswer
  {
    int Status = 0;        // HTTP status code
    QString StatusText;    // HTTP reason phrase
    QByteArray Body;
    QByteArray RetryAfter; // the header of a 429 or 503 answer
  };

  struct TRequest
  {
    QByteArray Method;
    QUrl Url;
    THeaders Headers;
    QByteArray Body;
    bool WithBody = false; // `Body` is sent only then, whatever the method
  };

  // The answer, or why there is none.
  struct TReply
  {
    std::optional<TAnswer> Answer;
    // Without an answer: what went wrong and what to do, with the address and
    // the network library's own words as details.
    TFailure Failure;
  };
  using TDone = std::function<void(TReply reply)>;

  static constexpr std::chrono::milliseconds CDefaultTimeout{60000};
  // Largest answer accepted: a page of 500 tickets with long descriptions stays
  // far below it, and a runaway answer cannot fill the memory.
  static constexpr qint64 CMaxAnswerBytes = qint64(32) << 20;

  explicit TRestTransport(QNetworkAccessManager &manager);
  ~TRestTransport();

  // Sends the request; the awaiting work goes on with the answer or why there
  // is none. Any HTTP status is an answer; without one, Failure tells a refused
  // connection, an unknown host, an untrusted certificate, a time-out, a
  // connection lost mid-answer, an answer above CMaxAnswerBytes and an
  // unreadable file of extra authorities apart, with what to do.
  TTask<TReply> Send(TRequest request);

  // The same through a callback, which runs from the event loop. Several
  // requests may be pending.
  void Start(const TRequest &request, TDone done);

  void SetTimeout(std::chrono::milliseconds timeout) { FTimeout = timeout; }
  // After `deadline` no request starts (it fails at once, as for a network
  // error), and none waits for its answer beyond it. Forever by default.
  void SetDeadline(QDeadlineTimer deadline) { FDeadline = deadline; }
  // Once `stop` is requested no request starts, and those in flight are cut;
  // their failure says why. The request outlives the transport.
  void SetStopRequest(const TStopRequest *stop) { FStop = stop; }

private:
  // Qt's manager opens at most six connections to a host and queues the rest:
  // requests beyond six pending go through a second manager of our own.
  static constexpr int CConnectionsPerManager = 6;
  QNetworkAccessManager &ManagerForNext();

  QNetworkAccessManager &FManager;
  std::unique_ptr<QNetworkAccessManager> FOverflow;
  int FPending = 0;
  // The TLS set-up with the extra authorities of FAuthoritiesFile.
  void TrustNamedAuthorities();
  bool FSslReady = false;
  QString FAuthoritiesFile;
  QSslConfiguration FSsl;
  QString FAuthoritiesError;
  std::chrono::milliseconds FTimeout = CDefaultTimeout;
  QDeadlineTimer FDeadline{QDeadlineTimer::Forever};
  const TStopRequest *FStop = nullptr;
};
