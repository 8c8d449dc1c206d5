#include "dRest.h"

#include "RestErrors.h"
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

TRestResult<> TdmRest::GetToken(tyQuorvexITSM &settings)
{
  const TraceScope trace(lcRest(), "TdmRest.GetToken");
  BeginCall();
  const QString url = GetQuorvexItsmUrl(settings) + QStringLiteral("/oauth/token");
  TraceValue(lcRest(), "URL", url);

  tyAPIAccess &api = settings.API;
  const TDateTime expiry = TokenExpiry(api);
  if (!api.Token.isEmpty() && expiry > NowDateTime()) {
    FToken = api.Token;
    qCDebug(lcRest()).noquote() << QStringLiteral("Utilisation du précédent Token: ") + MaskToken(FToken);
    return Finish(std::monostate());
  }

  const QByteArray body = "grant_type=password&client_id=" + FormValue(api.ClientID) + '&' +
                          "client_secret=" + FormValue(api.ClientSecret) + '&' +
                          "username=" + FormValue(api.Username) + '&' +
                          "password=" + FormValue(api.Password) + '&' +
                          "scope=" + FormValue(QStringLiteral("public-api"));
  TRestTransport::TAnswer answer;
  try {
    answer = FTransport.Send({"POST", QUrl(url), {{"Content-Type", "application/x-www-form-urlencoded"}}, body, true});
  } catch (const ERestTransportError &error) {
    TraceFailure(lcRest(), QStringLiteral("Erreur OAuth2: ") + error.Message());
    Remember(error.Message(), error.Details());
    return Finish(std::monostate());
  }
  api.TokenRequest = NowDateTime();
  FLastUrl = url;
  FLastStatus = answer.Status;
  FLastStatusText = answer.StatusText;
  FLastBodyStart = AnswerStart(answer.Body);

  if (answer.Status != 200) {
    Fail(QStringLiteral("Erreur OAuth2: %1 - %2").arg(answer.Status).arg(answer.StatusText));
    return Finish(std::monostate());
  }
  const QJsonValue token = QJsonDocument::fromJson(answer.Body).object().value(QStringLiteral("access_token"));
  if (!token.isString() || token.toString().isEmpty()) {
    Fail(QStringLiteral("Erreur : Token non trouvé dans la réponse"));
    return Finish(std::monostate());
  }
  FToken = token.toString();
  api.Token = FToken;
  qCDebug(lcRest()).noquote() << QStringLiteral("Token reçu : ") + MaskToken(FToken);
  return Finish(std::monostate());
}

bool TdmRest::TokenOk() const
{
  const TraceScope trace(lcRest(), "TdmRest.TokenOk");
  const bool result = !FToken.isEmpty();
  qCDebug(lcRest()).noquote() << "Result =" << (result ? "True" : "False");
  return result;
}

void TdmRest::BeginCall()
{
  FCallFailure.reset();
  FLastUrl.clear();
  FLastStatus = 0;
  FLastStatusText.clear();
  FLastBodyStart.clear();
}

void TdmRest::Remember(const QString &reason, const QString &details)
{
  if (!FCallFailure)
    FCallFailure = TRestFailure{reason, details};
}

void TdmRest::Fail(const QString &message)
{
  TraceFailure(lcRest(), message);
  // The details stay in the language of the exchange: the address, and the
  // beginning of an answer that was not understood.
  const QString server = ServerOf(FLastUrl);
  if (FLastStatus / 100 != 2)
    Remember(StatusReason(server, FLastStatus, FLastStatusText), FLastUrl);
  else
    Remember(NotUnderstoodReason(server),
             QStringLiteral("%1 answered: %2").arg(FLastUrl, FLastBodyStart.isEmpty() ? QStringLiteral("(nothing)")
                                                                                      : FLastBodyStart));
}

void TdmRest::FailOn(const EQuorvexError &error)
{
  TraceFailure(lcRest(), QStringLiteral("Erreur API : ") + error.Message());
  if (dynamic_cast<const ERestTransportError *>(&error))
    Remember(error.Message(), error.Details());
  else
    Remember(NotUnderstoodReason(ServerOf(FLastUrl)), error.Message());
}

QString TdmRest::QueryUrl(const tyQuorvexITSM &settings, const QString &path)
{
  const QString url = GetQuorvexItsmUrl(settings) + path;
  TraceValue(lcRest(), "BaseURL", url);
  return url;
}

TRestTransport::TRequest TdmRest::ApiRequest(const QString &url, const QByteArray &method,
                                             const QByteArray *jsonBody) const
{
  TRestTransport::TRequest request;
  request.Method = method;
  request.Url = QUrl(url);
  request.Headers = {{"Authorization", "Bearer " + FToken.toUtf8()}};
  if (jsonBody) {
    request.Headers.append({QByteArrayLiteral("Content-Type"), QByteArrayLiteral("application/json")});
    request.Body = *jsonBody;
    request.WithBody = true;
  }
  return request;
}

bool TdmRest::RenewRefusedToken()
{
  qCDebug(lcRest()) << "The service refused the token (HTTP 401); it is dropped";
  FToken.clear();
  if (!FTokenRefused)
    return false;
  // The token request starts a call of its own; the query under way keeps its state.
  const std::optional<TRestFailure> failure = FCallFailure;
  FRenewing = true;
  const bool renewed = FTokenRefused();
  FRenewing = false;
  FCallFailure = failure;
  // The requests refused meanwhile waited for this renewal.
  for (auto &waiting : std::exchange(FAfterRenewal, {}))
    waiting();
  return renewed;
}

QByteArray TdmRest::Execute(const QString &url, const QByteArray &method, const QByteArray *jsonBody)
{
  return Execute(url, method, jsonBody, *FTransport.StartAhead(ApiRequest(url, method, jsonBody)), FToken);
}

QByteArray TdmRest::Execute(const QString &url, const QByteArray &method, const QByteArray *jsonBody,
                            TRestTransport::TPending &sent, const QString &sentWith)
{
  TRestTransport::TAnswer answer = FTransport.Wait(sent);
  if (answer.Status == 401 && ((!FToken.isEmpty() && sentWith != FToken) || (sentWith == FToken && RenewRefusedToken())))
    answer = FTransport.Send(ApiRequest(url, method, jsonBody));
  FLastUrl = url;
  FLastStatus = answer.Status;
  FLastStatusText = answer.StatusText;
  FLastBodyStart = AnswerStart(answer.Body);
  return answer.Body;
}
