#include "RestTransport.h"

#include "core/StopRequest.h"

#include "RestErrors.h"
#include "core/Errors.h"
#include "core/ExtraAuthorities.h"
#include "core/Trace.h"

#include <algorithm>
#include <QHostAddress>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QSslCertificate>
#include <QSslError>
#include <QTimer>
#include <utility>

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
                          "its own, name its PEM file in \"Certificate authorities\" of \"Quorvex ITSM API\" (or "
                          "in %2)")
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

TRestTransport::TRestTransport(QNetworkAccessManager &manager) : FManager(manager)
{
  FManager.setProxyFactory(new TSystemProxyFactory); // the manager takes ownership
}

void TRestTransport::TrustNamedAuthorities()
{
  const QString file = ExtraAuthoritiesSource().File;
  if (FSslReady && file == FAuthoritiesFile)
    return;
  FSslReady = true;
  FAuthoritiesFile = file;
  FSsl = MakeSslConfiguration();
  FAuthoritiesError.clear();
  // An unreadable file of extra authorities fails each request with its own words
  // rather than as a certificate that is not trusted.
  try {
    FSsl.addCaCertificates(ExtraAuthorities());
  } catch (const EReadError &error) {
    FAuthoritiesError = error.Message();
  }
}

TRestTransport::~TRestTransport() = default;

QNetworkAccessManager &TRestTransport::ManagerForNext()
{
  if (FPending < CConnectionsPerManager)
    return FManager;
  if (!FOverflow) {
    FOverflow = std::make_unique<QNetworkAccessManager>();
    FOverflow->setProxyFactory(new TSystemProxyFactory);
  }
  return *FOverflow;
}

TTask<TRestTransport::TReply> TRestTransport::Send(TRequest request)
{
  co_return co_await TCallback<TReply>([this, &request](TDone done) { Start(request, std::move(done)); });
}

void TRestTransport::Start(const TRequest &request, TDone done)
{
  TrustNamedAuthorities();
  const QString refusal =
      FStop && FStop->IsRequested()
          ? QStringLiteral("%1, so it was not requested").arg(FStop->Happened())
      : FDeadline.hasExpired()
          ? QStringLiteral("the run's time limit had passed, so it was not requested; allow more time with "
                           "--deadline MINUTES")
          : FAuthoritiesError;
  if (!refusal.isEmpty()) {
    // Not sent, but answered from the event loop all the same, as every other request.
    QTimer::singleShot(0, &FManager, [refusal, url = request.Url.toString(), done = std::move(done)] {
      done({std::nullopt, TFailure{.Reason = refusal, .Details = url}});
    });
    return;
  }
  const std::chrono::milliseconds wait =
      FDeadline.isForever() ? FTimeout : std::min(FTimeout, std::chrono::milliseconds(FDeadline.remainingTime()));
  QNetworkRequest network(request.Url);
  network.setSslConfiguration(FSsl);
  network.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
  for (const auto &[name, value] : request.Headers)
    network.setRawHeader(name, value);

  QNetworkAccessManager &manager = ManagerForNext();
  QNetworkReply *const reply =
      request.WithBody ? manager.sendCustomRequest(network, request.Method, request.Body)
                       : manager.sendCustomRequest(network, request.Method, static_cast<QIODevice *>(nullptr));
  ++FPending;
  // What the reply's signals learn before it finishes.
  struct TState
  {
    QList<QSslError> SslErrors;
    bool TooBig = false;
    bool TimedOut = false;
    bool Stopped = false;
  };
  const auto state = std::make_shared<TState>();
  if (FStop)
    QObject::connect(FStop, &TStopRequest::Stopped, reply, [state, reply] {
      state->Stopped = true;
      reply->abort();
    });
  QObject::connect(reply, &QNetworkReply::sslErrors, reply,
                   [state](const QList<QSslError> &errors) { state->SslErrors.append(errors); });
  QObject::connect(reply, &QNetworkReply::downloadProgress, reply, [state, reply](qint64 received, qint64 announced) {
    if (received > CMaxAnswerBytes || announced > CMaxAnswerBytes) {
      state->TooBig = true;
      reply->abort();
    }
  });
  auto *const timer = new QTimer(reply);
  timer->setSingleShot(true);
  QObject::connect(timer, &QTimer::timeout, reply, [state, reply] {
    state->TimedOut = true;
    reply->abort();
  });
  timer->start(wait);

  const QUrl url = request.Url;
  QObject::connect(reply, &QNetworkReply::finished, reply, [=, this, done = std::move(done)] {
    --FPending;
    timer->stop();
    reply->deleteLater();
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (state->Stopped || state->TimedOut || state->TooBig || !status.isValid() || BrokenOff(reply->error())) {
      const QString reason =
          state->Stopped
              ? QStringLiteral("%1 before %2 answered").arg(FStop->Happened(), HostOf(url))
          : state->TimedOut
              ? QStringLiteral("no answer from %1 within %2 s (time-out); check the network, or try again later")
                    .arg(HostOf(url))
                    .arg(wait.count() / 1000.0)
          : state->TooBig
              ? QStringLiteral("the answer of %1 exceeds %2 MiB and was refused; tell the service's administrator")
                    .arg(HostOf(url))
                    .arg(CMaxAnswerBytes >> 20)
              : TransportReason(url, *reply);
      const QString details = state->Stopped || state->TimedOut || state->TooBig
                                  ? url.toString()
                                  : url.toString() + QStringLiteral(": ") + TransportDetails(*reply, state->SslErrors);
      done({std::nullopt, TFailure{.Reason = reason, .Details = details}});
      return;
    }
    TAnswer answer;
    answer.Status = status.toInt();
    answer.StatusText = reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString();
    // HTTP/2 carries no reason phrase; Qt's own words for the status stand in.
    if (answer.StatusText.isEmpty() && reply->error() != QNetworkReply::NoError)
      answer.StatusText = reply->errorString();
    answer.Body = reply->readAll();
    answer.RetryAfter = reply->rawHeader("Retry-After");
    done({std::move(answer), {}});
  });
}
