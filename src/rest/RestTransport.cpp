#include "RestTransport.h"

#include "RestErrors.h"
#include "core/Errors.h"
#include "core/ExtraAuthorities.h"
#include "core/Trace.h"

#include <QBuffer>
#include <algorithm>
#include <QEventLoop>
#include <QHostAddress>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QSslCertificate>
#include <QSslError>
#include <QTimer>

namespace {

// The system's proxy settings, except for the loopback interface that no proxy
// can serve.
class TSystemProxyFactory : public QNetworkProxyFactory
{
public:
  QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery &query) override
  {
    const QString host = query.peerHostName();
    if (host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0 || QHostAddress(host).isLoopback())
      return {QNetworkProxy(QNetworkProxy::NoProxy)};
    return systemProxyForQuery(query);
  }
};

QSslConfiguration MakeSslConfiguration()
{
  QSslConfiguration ssl = QSslConfiguration::defaultConfiguration();
  ssl.setPeerVerifyMode(QSslSocket::VerifyPeer);
  return ssl;
}

QString HostOf(const QUrl &url)
{
  return url.port() > 0 ? QStringLiteral("%1:%2").arg(url.host()).arg(url.port()) : url.host();
}

// Network and proxy failures, as opposed to the errors Qt derives from an HTTP
// status: with a status already read they mean that the body was cut short.
bool BrokenOff(QNetworkReply::NetworkError error)
{
  return error != QNetworkReply::NoError && error < QNetworkReply::ContentAccessDenied;
}

// Why no answer came, for a person: the reason with what to do.
QString TransportReason(const QUrl &url, const QNetworkReply &reply)
{
  switch (reply.error()) {
  case QNetworkReply::ConnectionRefusedError:
    return QStringLiteral("the connection was refused by %1; check that the service is running and the instance "
                          "name in \"Quorvex ITSM API\"")
        .arg(HostOf(url));
  case QNetworkReply::RemoteHostClosedError:
    return QStringLiteral("%1 closed the connection before the whole answer came; try again later").arg(HostOf(url));
  case QNetworkReply::HostNotFoundError:
    return QStringLiteral("the host \"%1\" was not found; check the instance name in \"Quorvex ITSM API\" and "
                          "the network connection")
        .arg(url.host());
  case QNetworkReply::SslHandshakeFailedError:
    return QStringLiteral("the certificate of %1 is not trusted; if the service uses a certificate authority of "
                          "its own, name its PEM file in %2")
        .arg(HostOf(url), QLatin1String(CExtraCaVariable));
  default:
    return QStringLiteral("the network failed on the way to %1; check the network connection").arg(HostOf(url));
  }
}

// The library's own words, with the certificate's faults when there are some.
QString TransportDetails(const QNetworkReply &reply, const QList<QSslError> &sslErrors)
{
  QStringList reasons;
  for (const QSslError &error : sslErrors)
    reasons.append(error.errorString());
  if (reasons.isEmpty())
    reasons.append(reply.errorString());
  return reasons.join(QLatin1String("; "));
}

} // namespace

TRestTransport::TRestTransport(QNetworkAccessManager &manager) : FManager(manager), FSsl(MakeSslConfiguration())
{
  // An unreadable file of extra authorities fails each request with its own words
  // rather than as a certificate that is not trusted.
  try {
    FSsl.addCaCertificates(ExtraAuthorities());
  } catch (const EReadError &error) {
    FAuthoritiesError = error.Message();
  }
  FManager.setProxyFactory(new TSystemProxyFactory); // the manager takes ownership
}

TRestTransport::TAnswer TRestTransport::Send(const QByteArray &method, const QUrl &url, const THeaders &headers,
                                             const QByteArray &body, bool withBody)
{
  if (FDeadline.hasExpired())
    throw ERestTransportError(
        QStringLiteral("the run's time limit had passed, so it was not requested; allow more time with --deadline "
                       "MINUTES"),
        url.toString());
  if (!FAuthoritiesError.isEmpty())
    throw ERestTransportError(FAuthoritiesError, url.toString());
  const std::chrono::milliseconds wait =
      FDeadline.isForever() ? FTimeout : std::min(FTimeout, std::chrono::milliseconds(FDeadline.remainingTime()));

  QNetworkRequest request(url);
  request.setSslConfiguration(FSsl);
  request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
  for (const auto &[name, value] : headers)
    request.setRawHeader(name, value);

  QBuffer outgoing;
  outgoing.setData(body);
  outgoing.open(QIODevice::ReadOnly);
  QNetworkReply *const reply = FManager.sendCustomRequest(request, method, withBody ? &outgoing : nullptr);

  QList<QSslError> sslErrors;
  QObject::connect(reply, &QNetworkReply::sslErrors, reply,
                   [&sslErrors](const QList<QSslError> &errors) { sslErrors.append(errors); });
  bool tooBig = false;
  QObject::connect(reply, &QNetworkReply::downloadProgress, reply, [&tooBig, reply](qint64 received, qint64 announced) {
    if (received > CMaxAnswerBytes || announced > CMaxAnswerBytes) {
      tooBig = true;
      reply->abort();
    }
  });
  bool timedOut = false;
  QEventLoop loop;
  QTimer timer;
  timer.setSingleShot(true);
  QObject::connect(&timer, &QTimer::timeout, reply, [&timedOut, reply] {
    timedOut = true;
    reply->abort();
  });
  QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
  if (!reply->isFinished()) {
    timer.start(wait);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    timer.stop();
  }

  const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
  if (timedOut || tooBig || !status.isValid() || BrokenOff(reply->error())) {
    const QString reason =
        timedOut ? QStringLiteral("no answer from %1 within %2 s (time-out); check the network, or try again later")
                       .arg(HostOf(url))
                       .arg(wait.count() / 1000.0)
        : tooBig ? QStringLiteral("the answer of %1 exceeds %2 MiB and was refused; tell the service's administrator")
                       .arg(HostOf(url))
                       .arg(CMaxAnswerBytes >> 20)
                 : TransportReason(url, *reply);
    const QString details = timedOut || tooBig
                                ? url.toString()
                                : url.toString() + QStringLiteral(": ") + TransportDetails(*reply, sslErrors);
    reply->deleteLater();
    throw ERestTransportError(reason, details);
  }
  TAnswer answer;
  answer.Status = status.toInt();
  answer.StatusText = reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString();
  // HTTP/2 carries no reason phrase; Qt's own words for the status stand in.
  if (answer.StatusText.isEmpty() && reply->error() != QNetworkReply::NoError)
    answer.StatusText = reply->errorString();
  answer.Body = reply->readAll();
  reply->deleteLater();
  return answer;
}
