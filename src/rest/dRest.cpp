#include "dRest.h"

#include "core/Errors.h"
#include "core/Trace.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

namespace {

// The token never appears in clear in a trace: its first characters are enough
// to tell two tokens apart.
QString MaskToken(const QString &token)
{
  return token.left(6) + QChar(0x2026);
}

QByteArray FormValue(const QString &value)
{
  return QUrl::toPercentEncoding(value);
}

// Expiry of the stored token: (TokenValidity - 9) hours after the last request.
// The arithmetic is that of 32-bit integers, and an overflow is an error.
TDateTime TokenExpiry(const tyAPIAccess &api)
{
  std::int32_t hours = 0;
  std::int32_t minutes = 0;
  if (__builtin_sub_overflow(api.TokenValidity, 9, &hours) || __builtin_mul_overflow(hours, 60, &minutes))
    throw ERangeError(QStringLiteral("Token validity of %1 hours is out of range").arg(api.TokenValidity));
  return api.TokenRequest + minutes / (24.0 * 60.0);
}

} // namespace

TdmRest::TdmRest(QNetworkAccessManager &manager) : FTransport(manager)
{
  const TraceScope trace(lcRest(), "TdmRest.DataModuleCreate");
}

TdmRest::~TdmRest()
{
  const TraceScope trace(lcRest(), "TdmRest.DataModuleDestroy");
}

QString TdmRest::GetQuorvexItsmUrl(const tyQuorvexITSM &settings)
{
  if (settings.SaaS)
    return QStringLiteral("https://") + settings.Instance + u'.' + QStringLiteral(QUORVEX_SAAS_DOMAIN);
  return QStringLiteral("https://") + settings.Instance;
}

TTask<TRestResult<>> TdmRest::GetToken(tyQuorvexITSM &settings)
{
  const TraceScope trace(lcRest(), "TdmRest.GetToken");
  TRestCall call;
  const QString url = GetQuorvexItsmUrl(settings) + QStringLiteral("/oauth/token");
  TraceValue(lcRest(), "URL", url);

  tyAPIAccess &api = settings.API;
  const TDateTime expiry = TokenExpiry(api);
  if (!api.Token.isEmpty() && expiry > NowDateTime()) {
    FTokens.Set(api.Token);
    qCDebug(lcRest()).noquote() << QStringLiteral("Utilisation du précédent Token: ") + MaskToken(api.Token);
    co_return call.Finish(std::monostate());
  }

  const QByteArray body = "grant_type=password&client_id=" + FormValue(api.ClientID) + '&' +
                          "client_secret=" + FormValue(api.ClientSecret) + '&' +
                          "username=" + FormValue(api.Username) + '&' +
                          "password=" + FormValue(api.Password) + '&' +
                          "scope=" + FormValue(QStringLiteral("public-api"));
  const TRestTransport::TRequest request{
      "POST", QUrl(url), {{"Content-Type", "application/x-www-form-urlencoded"}}, body, true};
  TRestTransport::TReply reply = co_await FTransport.Send(request);
  if (!reply.Answer) {
    TraceFailure(lcRest(), QStringLiteral("Erreur OAuth2: ") + reply.Failure.Reason);
    call.Remember(reply.Failure.Reason, reply.Failure.Details);
    co_return call.Finish(std::monostate());
  }
  api.TokenRequest = NowDateTime();
  const QString statusText = reply.Answer->StatusText;
  const QByteArray answer = call.Took(url, std::move(reply));

  if (call.LastStatus() != 200) {
    call.Fail(QStringLiteral("Erreur OAuth2: %1 - %2").arg(call.LastStatus()).arg(statusText));
    co_return call.Finish(std::monostate());
  }
  const QJsonValue token = QJsonDocument::fromJson(answer).object().value(QStringLiteral("access_token"));
  if (!token.isString() || token.toString().isEmpty()) {
    call.Fail(QStringLiteral("Erreur : Token non trouvé dans la réponse"));
    co_return call.Finish(std::monostate());
  }
  FTokens.Set(token.toString());
  api.Token = token.toString();
  qCDebug(lcRest()).noquote() << QStringLiteral("Token reçu : ") + MaskToken(api.Token);
  co_return call.Finish(std::monostate());
}

bool TdmRest::TokenOk() const
{
  const TraceScope trace(lcRest(), "TdmRest.TokenOk");
  const bool result = !FTokens.Token().isEmpty();
  qCDebug(lcRest()).noquote() << "Result =" << (result ? "True" : "False");
  return result;
}

QString TdmRest::QueryUrl(const tyQuorvexITSM &settings, const QString &path)
{
  const QString url = GetQuorvexItsmUrl(settings) + path;
  TraceValue(lcRest(), "BaseURL", url);
  return url;
}

TRestTransport::TRequest TdmRest::ApiRequest(const QString &url, const QByteArray &method,
                                             const std::optional<QByteArray> &jsonBody) const
{
  TRestTransport::TRequest request;
  request.Method = method;
  request.Url = QUrl(url);
  request.Headers = {{"Authorization", "Bearer " + FTokens.Token().toUtf8()}};
  if (jsonBody) {
    request.Headers.append({QByteArrayLiteral("Content-Type"), QByteArrayLiteral("application/json")});
    request.Body = *jsonBody;
    request.WithBody = true;
  }
  return request;
}

TTask<TRestTransport::TReply> TdmRest::SendApi(QString url, QByteArray method, std::optional<QByteArray> jsonBody)
{
  const QString sentWith = FTokens.Token();
  TRestTransport::TReply reply = co_await FTransport.Send(ApiRequest(url, method, jsonBody));
  // (No co_await inside a condition that may skip it: the compiler mishandles it.)
  if (reply.Answer && reply.Answer->Status == 401) {
    const bool renewed = co_await FTokens.Refused(sentWith);
    if (renewed)
      reply = co_await FTransport.Send(ApiRequest(url, method, jsonBody));
  }
  co_return reply;
}

TTask<QByteArray> TdmRest::Execute(TRestCall &call, QString url, QByteArray method, std::optional<QByteArray> jsonBody)
{
  co_return call.Took(url, co_await SendApi(url, method, std::move(jsonBody)));
}
