#include "RestTransport.h"

#include "RestErrors.h"
#include "core/Trace.h"

#include <QEventLoop>
#include <QHostAddress>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QSslCertificate>
#include <QSslError>
#include <QTimer>

namespace {

const char *const CExtraCaVariable = "QUORVEX_EXTRA_CA_CERTS";

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
  const QString extraPath = qEnvironmentVariable(CExtraCaVariable);
  if (extraPath.isEmpty())
    return ssl;
  const QList<QSslCertificate> extra = QSslCertificate::fromPath(extraPath, QSsl::Pem);
  if (extra.isEmpty())
    TraceError(lcRest(), QStringLiteral("%1 names \"%2\", which holds no readable PEM certificate")
                             .arg(QLatin1String(CExtraCaVariable), extraPath));
  ssl.addCaCertificates(extra);
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

QString TransportErrorText(const QUrl &url, const QNetworkReply &reply, const QList<QSslError> &sslErrors)
{
  const QString address = url.toString();
  switch (reply.error()) {
  case QNetworkReply::ConnectionRefusedError:
    return QStringLiteral("Connection refused by %1 (%2): is the service running?").arg(HostOf(url), address);
  case QNetworkReply::RemoteHostClosedError:
    return QStringLiteral("%1 closed the connection before the whole answer came (%2)").arg(HostOf(url), address);
  case QNetworkReply::HostNotFoundError:
    return QStringLiteral("Host \"%1\" not found (%2): check the instance name").arg(url.host(), address);
  case QNetworkReply::SslHandshakeFailedError: {
    QStringList reasons;
    for (const QSslError &error : sslErrors)
      reasons.append(error.errorString());
    if (reasons.isEmpty())
      reasons.append(reply.errorString());
    return QStringLiteral("The certificate of %1 is not trusted (%2): %3")
        .arg(HostOf(url), address, reasons.join(QLatin1String("; ")));
  }
  default:
    return QStringLiteral("Network error on %1: %2").arg(address, reply.errorString());
  }
}

} // namespace

TRestTransport::TRestTransport(QNetworkAccessManager &manager) : FManager(manager), FSsl(MakeSslConfiguration())
{
  FManager.setProxyFactory(new TSystemProxyFactory); // the manager takes ownership
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

TRestTransport::TAnswer TRestTransport::Send(const TRequest &request)
{
  std::optional<TReply> reply;
  QEventLoop loop;
  Start(request, [&reply, &loop](TReply answered) {
    reply = std::move(answered);
    loop.quit();
  });
  if (!reply)
    loop.exec(QEventLoop::ExcludeUserInputEvents);
  if (!reply->Answer)
    throw ERestTransportError(reply->Error);
  return *std::move(reply->Answer);
}

void TRestTransport::Start(const TRequest &request, TDone done)
{
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
  };
  const auto state = std::make_shared<TState>();
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
  timer->start(FTimeout);

  const auto timeout = FTimeout;
  const QUrl url = request.Url;
  QObject::connect(reply, &QNetworkReply::finished, reply, [=, this, done = std::move(done)] {
    --FPending;
    timer->stop();
    reply->deleteLater();
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (state->TimedOut || state->TooBig || !status.isValid() || BrokenOff(reply->error())) {
      done({std::nullopt, state->TimedOut ? QStringLiteral("No answer from %1 within %2 s (%3)")
                                                .arg(HostOf(url))
                                                .arg(timeout.count() / 1000.0)
                                                .arg(url.toString())
                          : state->TooBig ? QStringLiteral("The answer of %1 exceeds %2 MiB and was refused")
                                                .arg(url.toString())
                                                .arg(CMaxAnswerBytes >> 20)
                                          : TransportErrorText(url, *reply, state->SslErrors)});
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
    done({std::move(answer), QString()});
  });
}

QString RefusalText(const QString &url, const TRestTransport::TAnswer &answer)
{
  return answer.Status / 100 == 2
             ? QString()
             : QStringLiteral("%1 answered HTTP %2 %3").arg(url).arg(answer.Status).arg(answer.StatusText);
}
