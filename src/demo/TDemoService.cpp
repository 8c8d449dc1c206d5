#include "TDemoService.h"

#include <QHostAddress>
#include <QHttpServer>
#include <QHttpServerRequest>
#include <QHttpServerResponder>
#include <QJsonDocument>
#include <QPointer>
#include <QRegularExpression>
#include <QSslCertificate>
#include <QSslKey>
#include <QTcpSocket>
#include <QTimer>
#include <QUrlQuery>
#include <QUuid>
#include <algorithm>
#include <stdexcept>

namespace {

QByteArray JsonBytes(const QJsonValue &value)
{
  return value.isArray() ? QJsonDocument(value.toArray()).toJson(QJsonDocument::Compact)
                         : QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact);
}

QByteArray ErrorBody(const QString &error, const QString &description)
{
  return JsonBytes(QJsonObject{{QStringLiteral("error"), error}, {QStringLiteral("error_description"), description}});
}

QByteArray MethodName(QHttpServerRequest::Method method)
{
  switch (method) {
  case QHttpServerRequest::Method::Get: return "GET";
  case QHttpServerRequest::Method::Post: return "POST";
  case QHttpServerRequest::Method::Put: return "PUT";
  case QHttpServerRequest::Method::Delete: return "DELETE";
  case QHttpServerRequest::Method::Head: return "HEAD";
  case QHttpServerRequest::Method::Patch: return "PATCH";
  case QHttpServerRequest::Method::Options: return "OPTIONS";
  default: return "OTHER";
  }
}

// Values of an application/x-www-form-urlencoded body.
QUrlQuery FormOf(QByteArray body)
{
  body.replace('+', "%20");
  return QUrlQuery(QString::fromLatin1(body));
}

QString FormValue(const QUrlQuery &form, const char *key)
{
  return form.queryItemValue(QLatin1String(key), QUrl::FullyDecoded);
}

bool Matches(const QJsonObject &ticket, const QString &search)
{
  if (search.isEmpty())
    return true;
  if (ticket.value(QStringLiteral("title")).toString().contains(search, Qt::CaseInsensitive) ||
      ticket.value(QStringLiteral("description")).toString().contains(search, Qt::CaseInsensitive))
    return true;
  const QJsonArray exchanges = ticket.value(QStringLiteral("exchanges")).toArray();
  return std::any_of(exchanges.begin(), exchanges.end(), [&search](const QJsonValue &exchange) {
    return exchange.toString().contains(search, Qt::CaseInsensitive);
  });
}

// "delivery": "never" or "cut" ("whole" when absent).
TDemoFaults::TDelivery DeliveryOf(const QJsonObject &body)
{
  const QString delivery = body.value(QStringLiteral("delivery")).toString();
  if (delivery == QLatin1String("never"))
    return TDemoFaults::TDelivery::Never;
  if (delivery == QLatin1String("cut"))
    return TDemoFaults::TDelivery::CutMidBody;
  return TDemoFaults::TDelivery::Whole;
}

} // namespace

TDemoFaults TDemoFaults::FromJson(const QJsonObject &object)
{
  TDemoFaults faults;
  faults.RefuseToken = object.value(QStringLiteral("refuseToken")).toBool();
  faults.DelayMs = object.value(QStringLiteral("delayMs")).toInt();
  faults.Surplus = object.value(QStringLiteral("surplus")).toInt();
  faults.TooManyOnce = object.value(QStringLiteral("tooManyOnce")).toBool();
  for (const QJsonValue &value : object.value(QStringLiteral("bodies")).toArray()) {
    const QJsonObject body = value.toObject();
    faults.Bodies.append({body.value(QStringLiteral("path")).toString(), body.value(QStringLiteral("page")).toInt(-1),
                          body.value(QStringLiteral("body")).toString().toUtf8(),
                          body.value(QStringLiteral("status")).toInt(200), DeliveryOf(body)});
  }
  return faults;
}

QByteArray TDemoRequest::Header(const QByteArray &name) const
{
  for (const auto &[key, value] : Headers)
    if (key.compare(name, Qt::CaseInsensitive) == 0)
      return value;
  return {};
}

TDemoService::TDemoService(QJsonObject data, QObject *parent)
    : QObject(parent), FData(std::move(data)), FCertificate(MakeDemoCertificate()),
      FServer(std::make_unique<QHttpServer>())
{
  FServer->sslSetup(QSslCertificate(FCertificate.CertificatePem, QSsl::Pem),
                    QSslKey(FCertificate.KeyPem, QSsl::Ec, QSsl::Pem));
  FServer->setMissingHandler([this](const QHttpServerRequest &request, QHttpServerResponder &&responder) {
    TDemoRequest received{MethodName(request.method()), request.url().path(), request.headers(), request.body()};
    if (request.url().hasQuery())
      received.Target += u'?' + request.url().query();
    FRequests.append(received);
    const TAnswer answer = Dispatch(received);
    FRequests.last().Status = answer.Status;
    if (answer.Delivery == TDemoFaults::TDelivery::Never) {
      FUnanswered.push_back(std::make_unique<QHttpServerResponder>(std::move(responder)));
      return;
    }
    if (FFaults.DelayMs <= 0) {
      Deliver(answer, responder);
      return;
    }
    // Answer later; the client may have given up and closed the socket by then.
    auto later = std::make_shared<QHttpServerResponder>(std::move(responder));
    QPointer<QTcpSocket> socket = later->socket();
    QTimer::singleShot(FFaults.DelayMs, this, [this, later, socket, answer] {
      if (socket && socket->state() == QAbstractSocket::ConnectedState)
        Deliver(answer, *later);
    });
  });
}

void TDemoService::Deliver(const TAnswer &answer, QHttpServerResponder &responder)
{
  const auto status = static_cast<QHttpServerResponder::StatusCode>(answer.Status);
  if (!answer.RetryAfter.isEmpty()) {
    responder.write(answer.Body, {{"Content-Type", "application/json"}, {"Retry-After", answer.RetryAfter}}, status);
    return;
  }
  if (answer.Delivery != TDemoFaults::TDelivery::CutMidBody) {
    responder.write(answer.Body, "application/json", status);
    return;
  }
  // The head announces the whole body, then the connection closes halfway.
  QTcpSocket *const socket = responder.socket();
  socket->write("HTTP/1.1 " + QByteArray::number(answer.Status) +
                " Cut\r\nContent-Type: application/json\r\nContent-Length: " +
                QByteArray::number(answer.Body.size()) + "\r\n\r\n");
  socket->write(answer.Body.left(answer.Body.size() / 2));
  socket->disconnectFromHost();
}

TDemoService::~TDemoService() = default;

quint16 TDemoService::Listen(quint16 port)
{
  FPort = FServer->listen(QHostAddress::LocalHost, port);
  if (FPort == 0)
    throw std::runtime_error("The demo service cannot listen on 127.0.0.1:" + std::to_string(port));
  return FPort;
}

QString TDemoService::Instance() const
{
  return QStringLiteral("127.0.0.1:%1").arg(FPort);
}

const TDemoFaults::TBody *TDemoService::ReplacedBody(const QString &path, int page, int organizationId) const
{
  for (const TDemoFaults::TBody &body : FFaults.Bodies)
    if (body.Path == path && (body.Page < 0 || body.Page == page) &&
        (body.OrganizationId < 0 || body.OrganizationId == organizationId))
      return &body;
  return nullptr;
}

bool TDemoService::Authorized(const TDemoRequest &request) const
{
  const QByteArray authorization = request.Header("Authorization");
  return authorization.startsWith("Bearer ") && FTokens.contains(authorization.mid(7));
}

TDemoService::TAnswer TDemoService::Dispatch(const TDemoRequest &request)
{
  const QString path = QUrl(request.Target).path();
  if (request.Method == "POST" && path == QLatin1String("/demo/faults")) {
    SetFaults(TDemoFaults::FromJson(QJsonDocument::fromJson(request.Body).object()));
    return {200, "{}"};
  }
  if (request.Method == "GET" && path == QLatin1String("/demo/requests")) { // those that came before this one
    QJsonArray answered;
    for (qsizetype i = 0; i + 1 < FRequests.size(); ++i)
      answered.append(QStringLiteral("%1 %2 %3")
                          .arg(QString::fromLatin1(FRequests[i].Method), QUrl(FRequests[i].Target).path())
                          .arg(FRequests[i].Status));
    return {200, JsonBytes(QJsonObject{{QStringLiteral("count"), answered.size()},
                                       {QStringLiteral("answered"), answered}})};
  }
  if (request.Method == "POST" && path == QLatin1String("/oauth/token"))
    return Token(request);
  if (!path.startsWith(QLatin1String("/api/")))
    return {404, ErrorBody(QStringLiteral("not_found"), path)};
  if (!Authorized(request))
    return {401, ErrorBody(QStringLiteral("unauthorized"), QStringLiteral("Full authentication is required"))};

  const QJsonObject query = QJsonDocument::fromJson(request.Body).object();
  const int page = query.value(QStringLiteral("page")).toInt();
  if (const TDemoFaults::TBody *replaced =
          ReplacedBody(path, page, query.value(QStringLiteral("organizationId")).toInt(-1)))
    return {replaced->Status, replaced->Body, replaced->Delivery};

  if (FFaults.TooManyOnce && path == QLatin1String("/api/ticket/list/open")) {
    FFaults.TooManyOnce = false;
    return {429, ErrorBody(QStringLiteral("too_many_requests"), QStringLiteral("Slow down")),
            TDemoFaults::TDelivery::Whole, "1"};
  }
  static const QRegularExpression teamPath(QStringLiteral("^/api/teams/(-?\\d+)$"));
  if (request.Method == "GET" && path == QLatin1String("/api/ticket/list/open"))
    return TicketsOpen(request);
  if (request.Method == "GET" && path == QLatin1String("/api/repository/objects"))
    return Objects(request);
  if (request.Method == "GET" && path == QLatin1String("/api/organization/list"))
    return {200, JsonBytes(FData.value(QStringLiteral("organizations")))};
  if (request.Method == "POST" && path == QLatin1String("/api/teams")) {
    QJsonArray teams;
    for (const QJsonValue &team : FData.value(QStringLiteral("teams")).toArray()) {
      QJsonObject summary = team.toObject();
      summary.remove(QStringLiteral("organizations")); // only in the detail of one team
      teams.append(summary);
    }
    return {200, JsonBytes(teams)};
  }
  if (const QRegularExpressionMatch match = teamPath.match(path); request.Method == "GET" && match.hasMatch())
    return Team(match.captured(1).toInt());
  if (request.Method == "POST" && path == QLatin1String("/api/operators/list"))
    return Operators(request);
  return {404, ErrorBody(QStringLiteral("not_found"), path)};
}

TDemoService::TAnswer TDemoService::Token(const TDemoRequest &request)
{
  if (FFaults.RefuseToken)
    return {401, ErrorBody(QStringLiteral("unauthorized"), QStringLiteral("Token requests are refused"))};
  if (const TDemoFaults::TBody *replaced = ReplacedBody(QStringLiteral("/oauth/token"), -1))
    return {replaced->Status, replaced->Body, replaced->Delivery};
  const QUrlQuery form = FormOf(request.Body);
  const QJsonObject expected = FData.value(QStringLiteral("credentials")).toObject();
  const bool granted = FormValue(form, "grant_type") == QLatin1String("password") &&
                       FormValue(form, "scope") == QLatin1String("public-api") &&
                       FormValue(form, "client_id") == expected.value(QStringLiteral("clientId")).toString() &&
                       FormValue(form, "client_secret") == expected.value(QStringLiteral("clientSecret")).toString() &&
                       FormValue(form, "username") == expected.value(QStringLiteral("username")).toString() &&
                       FormValue(form, "password") == expected.value(QStringLiteral("password")).toString();
  if (!granted)
    return {401, ErrorBody(QStringLiteral("invalid_grant"), QStringLiteral("Bad credentials"))};
  const QByteArray token = QUuid::createUuid().toByteArray(QUuid::Id128);
  FTokens.insert(token);
  return {200, JsonBytes(QJsonObject{{QStringLiteral("access_token"), QString::fromLatin1(token)},
                                     {QStringLiteral("token_type"), QStringLiteral("bearer")},
                                     {QStringLiteral("expires_in"), 43199},
                                     {QStringLiteral("scope"), QStringLiteral("public-api")}})};
}

QJsonArray TDemoService::Found(int organizationId, const QString &search)
{
  const QPair<int, QString> key(organizationId, search);
  if (const auto known = FFound.constFind(key); known != FFound.cend())
    return *known;
  QList<QJsonObject> found;
  for (const QJsonValue &value : FData.value(QStringLiteral("tickets")).toArray()) {
    QJsonObject ticket = value.toObject();
    if (ticket.value(QStringLiteral("organization")).toObject().value(QStringLiteral("id")).toInt() != organizationId ||
        !Matches(ticket, search))
      continue;
    ticket.remove(QStringLiteral("exchanges")); // kept by the data set for the searches only
    found.append(ticket);
  }
  std::stable_sort(found.begin(), found.end(), [](const QJsonObject &left, const QJsonObject &right) {
    return left.value(QStringLiteral("assignedUser")).toObject().value(QStringLiteral("name")).toString() <
           right.value(QStringLiteral("assignedUser")).toObject().value(QStringLiteral("name")).toString();
  });
  QJsonArray array;
  for (const QJsonObject &ticket : found)
    array.append(ticket);
  return *FFound.insert(key, array);
}

TDemoService::TAnswer TDemoService::TicketsOpen(const TDemoRequest &request)
{
  const QJsonObject query = QJsonDocument::fromJson(request.Body).object();
  const int organizationId = query.value(QStringLiteral("organizationId")).toInt(-1);
  const int page = query.value(QStringLiteral("page")).toInt();
  const int pageSize = std::max(1, query.value(QStringLiteral("pageSize")).toInt(20));
  const QString search = query.value(QStringLiteral("search")).toString();

  // A page without surplus items is the same at every request: made once.
  const TPageKey pageKey{organizationId, search, page, pageSize};
  if (FFaults.Surplus == 0)
    if (const auto known = FPages.constFind(pageKey); known != FPages.cend())
      return {200, *known};

  const QJsonArray found = Found(organizationId, search);
  QJsonArray content;
  for (qsizetype i = qsizetype(page) * pageSize; i < found.size() && i < qsizetype(page + 1) * pageSize; ++i)
    content.append(found.at(i));
  for (int i = 0; i < FFaults.Surplus; ++i) {
    QJsonObject extra{{QStringLiteral("id"), 900000 + i}, {QStringLiteral("title"), QStringLiteral("Surplus item")}};
    content.append(extra);
  }
  const qsizetype total = found.size();
  const QByteArray body = JsonBytes(QJsonObject{{QStringLiteral("content"), content},
                                                {QStringLiteral("page"), page},
                                                {QStringLiteral("pageSize"), pageSize},
                                                {QStringLiteral("totalNumberOfElements"), total},
                                                {QStringLiteral("totalNumberOfPages"), (total + pageSize - 1) / pageSize}});
  if (FFaults.Surplus == 0)
    FPages.insert(pageKey, body);
  return {200, body};
}

TDemoService::TAnswer TDemoService::Objects(const TDemoRequest &request) const
{
  const QUrlQuery query(QUrl(request.Target).query());
  const QString module = query.queryItemValue(QStringLiteral("module"));
  const QStringList types = query.queryItemValue(QStringLiteral("types")).split(u',', Qt::SkipEmptyParts);
  QJsonArray objects;
  for (const QJsonValue &value : FData.value(QStringLiteral("objects")).toArray()) {
    const QJsonObject object = value.toObject();
    if (object.value(QStringLiteral("module")).toString() == module &&
        types.contains(object.value(QStringLiteral("type")).toString()))
      objects.append(object);
  }
  return {200, JsonBytes(objects)};
}

TDemoService::TAnswer TDemoService::Team(int id) const
{
  for (const QJsonValue &team : FData.value(QStringLiteral("teams")).toArray())
    if (team.toObject().value(QStringLiteral("id")).toInt() == id)
      return {200, JsonBytes(team)};
  return {404, ErrorBody(QStringLiteral("not_found"), QStringLiteral("No team %1").arg(id))};
}

TDemoService::TAnswer TDemoService::Operators(const TDemoRequest &request) const
{
  const QJsonObject pageRequest =
      QJsonDocument::fromJson(request.Body).object().value(QStringLiteral("pageRequest")).toObject();
  const int page = pageRequest.value(QStringLiteral("page")).toInt();
  const int pageSize = std::max(1, pageRequest.value(QStringLiteral("pageSize")).toInt(20));
  const QJsonArray operators = FData.value(QStringLiteral("operators")).toArray();
  QJsonArray content;
  for (qsizetype i = qsizetype(page) * pageSize; i < operators.size() && i < qsizetype(page + 1) * pageSize; ++i)
    content.append(operators.at(i));
  return {200, JsonBytes(QJsonObject{{QStringLiteral("content"), content},
                                     {QStringLiteral("totalNumberOfElements"), operators.size()},
                                     {QStringLiteral("totalNumberOfPages"), (operators.size() + pageSize - 1) / pageSize}})};
}
