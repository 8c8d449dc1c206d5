#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QList>
#include <QPair>
#include <QSslConfiguration>
#include <QString>
#include <QUrl>
#include <chrono>

class QNetworkAccessManager;

// One HTTP exchange with the service, synchronous from the caller's view: a local
// event loop runs while the reply is pending, so windows keep painting.
// Every request has a time-out, uses the system proxy and verifies TLS, trusting
// the system's certificate authorities plus those of the PEM file named by the
// environment variable QUORVEX_EXTRA_CA_CERTS.
class TRestTransport
{
public:
  using THeaders = QList<QPair<QByteArray, QByteArray>>;

  struct TAnswer
  {
    int Status = 0;        // HTTP status code
    QString StatusText;    // HTTP reason phrase
    QByteArray Body;
  };

  static constexpr std::chrono::milliseconds CDefaultTimeout{60000};
  // Largest answer accepted: a page of 500 tickets with long descriptions stays
  // far below it, and a runaway answer cannot fill the memory.
  static constexpr qint64 CMaxAnswerBytes = qint64(32) << 20;

  explicit TRestTransport(QNetworkAccessManager &manager);

  // Sends the request and waits for the answer. Any HTTP status is an answer;
  // only a failure to get one raises ERestTransportError, whose message tells a
  // refused connection, an unknown host, an untrusted certificate, a time-out,
  // a connection lost mid-answer, an answer above CMaxAnswerBytes and an unreadable
  // file of extra authorities apart, with
  // what to do; its details give the address and the network library's words.
  // `body` is sent only when `withBody` is true, whatever the method.
  TAnswer Send(const QByteArray &method, const QUrl &url, const THeaders &headers,
               const QByteArray &body = {}, bool withBody = false);

  void SetTimeout(std::chrono::milliseconds timeout) { FTimeout = timeout; }
  // After `deadline` no request starts (Send raises ERestTransportError at
  // once), and none waits for its answer beyond it. Forever by default.
  void SetDeadline(QDeadlineTimer deadline) { FDeadline = deadline; }

private:
  QNetworkAccessManager &FManager;
  QSslConfiguration FSsl;
  QString FAuthoritiesError;
  std::chrono::milliseconds FTimeout = CDefaultTimeout;
  QDeadlineTimer FDeadline{QDeadlineTimer::Forever};
};
