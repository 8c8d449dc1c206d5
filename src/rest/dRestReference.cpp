// Reference data of the service: statuses and priorities, organizations, teams,
// operators.

#include "RestErrors.h"
#include "RestMapping.h"
#include "RestParse.h"
#include "core/Trace.h"
#include "dRest.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <utility>

namespace {

const QString CEmptyAnswer = QStringLiteral("Réponse API vide.");
const QString CInvalidJson = QStringLiteral("Réponse JSON invalide.");
const QString CArrayExpected = QStringLiteral("Format JSON incorrect, tableau attendu.");
const QString CObjectExpected = QStringLiteral("Format JSON incorrect, objet attendu.");
const QString CEmptyArray = QStringLiteral("Le tableau JSON est vide.");
// One page of 500 operators only: larger accounts are not expected.
const QByteArray COperatorsRequest = R"({"pageRequest":{"page":0,"pageSize":500}})";
const QString COperatorsPath = QStringLiteral("/api/operators/list");

QJsonValue RequiredMember(const QJsonObject &item, const QString &key, qsizetype index, const QString &url)
{
  const QJsonValue value = item.value(key);
  if (value.isUndefined())
    throw ERestFormatError(
        QStringLiteral("Member \"%1\" missing in item %2 of %3").arg(key).arg(index).arg(url));
  return value;
}

QString RequiredString(const QJsonObject &item, const QString &key, qsizetype index, const QString &url)
{
  const QJsonValue value = RequiredMember(item, key, index, url);
  if (!value.isString())
    throw ERestFormatError(
        QStringLiteral("Member \"%1\" of item %2 of %3 is not a text").arg(key).arg(index).arg(url));
  return value.toString();
}

bool RequiredBoolean(const QJsonObject &item, const QString &key, qsizetype index, const QString &url)
{
  const QJsonValue value = RequiredMember(item, key, index, url);
  if (!value.isBool())
    throw ERestFormatError(
        QStringLiteral("Member \"%1\" of item %2 of %3 is not a boolean").arg(key).arg(index).arg(url));
  return value.toBool();
}

// "id" of an organization: -1 when absent, an error when not a whole number (64 bits).
TRestId StrictId(const QJsonObject &item, qsizetype index, const QString &url)
{
  if (!item.contains(QStringLiteral("id")))
    return -1;
  TRestId id = 0;
  if (!ReadInteger(item, QStringLiteral("id"), id))
    throw ERestFormatError(QStringLiteral("Member \"id\" of item %1 of %2 is not an integer").arg(index).arg(url));
  return id;
}

} // namespace

QJsonArray TdmRest::ArrayAnswer(TRestCall &call, const QByteArray &body)
{
  if (body.isEmpty()) {
    call.Fail(CEmptyAnswer);
    return {};
  }
  QJsonParseError error;
  const QJsonDocument document = QJsonDocument::fromJson(body, &error);
  if (error.error != QJsonParseError::NoError) {
    call.Fail(CInvalidJson);
    return {};
  }
  if (!document.isArray()) {
    call.Fail(CArrayExpected);
    return {};
  }
  if (document.array().isEmpty())
    qCDebug(lcRest()).noquote() << CEmptyArray; // an empty list, not a failure to get it
  return document.array();
}

TTask<TRestResult<tyRestObjects>> TdmRest::GET_Objects(tyQuorvexITSM settings, QString module, QString types)
{
  const TraceScope trace(lcRest(), "TdmRest.GET_Objects");
  TRestCall call;
  qCDebug(lcRest()).noquote() << QStringLiteral("module = ") + module;
  qCDebug(lcRest()).noquote() << QStringLiteral("types = ") + types;
  tyRestObjects result;
  try {
    // module and types go into the address as they are: callers pass capitals
    // and underscores only.
    const QString url =
        QueryUrl(settings, QStringLiteral("/api/repository/objects?module=") + module + QStringLiteral("&types=") + types);
    const QByteArray body = co_await Execute(call, url, "GET", QByteArray("{}"));
    if (body.isEmpty()) {
      call.Fail(CEmptyAnswer);
      co_return call.Finish(std::move(result));
    }
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isArray()) {
      // Not a list of objects: nothing to show. Kept out of the error lines, but
      // the caller still learns that nothing could be read.
      qCDebug(lcRest()) << "The answer is not a JSON array";
      call.Remember(NotUnderstoodReason(ServerOf(url)), QStringLiteral("The answer of %1 is not a JSON array").arg(url));
      co_return call.Finish(std::move(result));
    }
    const QJsonArray items = document.array();
    if (items.isEmpty())
      co_return call.Finish(std::move(result));
    TraceValue(lcRest(), "ContentArray.Count", items.size());
    result.resize(items.size());
    for (qsizetype i = 0; i < items.size(); ++i) {
      const QJsonObject item = items.at(i).toObject();
      tyRestObject &object = result[i];
      ParseInteger(item, QStringLiteral("id"), object.id);
      ParseString(item, QStringLiteral("module"), object.module);
      ParseSubName(item, QStringLiteral("organization"), object.organization);
      ParseString(item, QStringLiteral("reference"), object._reference);
      ParseString(item, QStringLiteral("subType"), object.subType);
      ParseString(item, QStringLiteral("type"), object._type);
    }
  } catch (const EQuorvexError &error) {
    call.FailOn(error);
  }
  co_return call.Finish(std::move(result));
}

TTask<TRestResult<tyRestOrganizations>> TdmRest::GET_OrganizationsList(tyQuorvexITSM settings)
{
  const TraceScope trace(lcRest(), "TdmRest.GET_OrganizationsList");
  TRestCall call;
  tyRestOrganizations result;
  try {
    const QString url = QueryUrl(settings, QStringLiteral("/api/organization/list"));
    const QJsonArray items = ArrayAnswer(call, co_await Execute(call, url, "GET", std::nullopt));
    if (items.isEmpty())
      co_return call.Finish(std::move(result));
    TraceValue(lcRest(), "JSONArray.Count", items.size());
    // Read strictly: the first item that lacks a member stops the reading, and
    // the items after it stay blank.
    result.resize(items.size());
    for (qsizetype i = 0; i < items.size(); ++i) {
      const QJsonObject item = items.at(i).toObject();
      tyRestOrganization organization;
      organization.id = StrictId(item, i, url);
      organization.name = RequiredString(item, QStringLiteral("name"), i, url);
      organization.monitoringAndInfrastructureModuleEnabled =
          RequiredBoolean(item, QStringLiteral("monitoringAndInfrastructureModuleEnabled"), i, url);
      organization.passwordModuleEnabled = RequiredBoolean(item, QStringLiteral("passwordModuleEnabled"), i, url);
      organization.ticketingModuleEnabled = RequiredBoolean(item, QStringLiteral("ticketingModuleEnabled"), i, url);
      result[i] = organization;
    }
  } catch (const EQuorvexError &error) {
    call.FailOn(error);
  }
  co_return call.Finish(std::move(result));
}

TTask<TRestResult<tyRestTeams>> TdmRest::GET_Teams(tyQuorvexITSM settings, bool WithOrganizations)
{
  const TraceScope trace(lcRest(), "TdmRest.GET_Teams");
  TRestCall call;
  qCDebug(lcRest()).noquote() << "WithOrganizations =" << (WithOrganizations ? "True" : "False");
  tyRestTeams result;
  try {
    const QJsonArray items = ArrayAnswer(call, co_await Execute(call, QueryUrl(settings, QStringLiteral("/api/teams")), "POST", std::nullopt));
    result.resize(items.size());
    for (qsizetype i = 0; i < items.size(); ++i) {
      const QJsonObject item = items.at(i).toObject();
      ParseInteger(item, QStringLiteral("id"), result[i].id);
      ParseString(item, QStringLiteral("name"), result[i].name);
      ParseString(item, QStringLiteral("remarks"), result[i].remarks);
      result[i].members = ReadSubNames(item, QStringLiteral("members"));
    }
    if (!WithOrganizations)
      co_return call.Finish(std::move(result));
    for (tyRestTeam &team : result) {
      const QByteArray body = co_await Execute(
          call, QueryUrl(settings, QStringLiteral("/api/teams/") + QString::number(team.id)), "GET", std::nullopt);
      if (body.isEmpty()) {
        call.Fail(CEmptyAnswer);
        continue;
      }
      QJsonParseError error;
      const QJsonDocument document = QJsonDocument::fromJson(body, &error);
      if (error.error != QJsonParseError::NoError) {
        call.Fail(CInvalidJson);
        continue;
      }
      if (!document.isObject()) {
        call.Fail(CObjectExpected);
        continue;
      }
      TRestId detailId = 0;
      ParseInteger(document.object(), QStringLiteral("id"), detailId);
      TraceValue(lcRest(), "id", detailId);
      team.organizations = ReadSubNames(document.object(), QStringLiteral("organizations"));
    }
  } catch (const EQuorvexError &error) {
    call.FailOn(error);
  }
  co_return call.Finish(std::move(result));
}

TTask<TRestResult<tyRestOperators>> TdmRest::GET_OperatorsList(tyQuorvexITSM settings)
{
  const TraceScope trace(lcRest(), "TdmRest.GET_OperatorsList");
  TRestCall call;
  tyRestOperators result;
  qint64 leftOut = 0;
  try {
    const QString url = QueryUrl(settings, COperatorsPath);
    const TOperatorsAhead ahead = std::exchange(FOperatorsAhead, {});
    QByteArray body;
    if (!ahead.Sent || ahead.Url != url)
      body = co_await Execute(call, url, "POST", COperatorsRequest);
    else if (ahead.Sent->Reply)
      body = call.Took(url, *std::move(ahead.Sent->Reply));
    else
      body = call.Took(url, co_await TCallback<TRestTransport::TReply>(
                                [&ahead](auto done) { ahead.Sent->Waiting = std::move(done); }));
    if (body.isEmpty()) {
      call.Fail(CEmptyAnswer);
      co_return call.Finish(std::move(result));
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError) {
      call.Fail(CInvalidJson);
      co_return call.Finish(std::move(result));
    }
    // An error answer in JSON is not an empty list: nobody could be computed.
    if (call.LastStatus() / 100 != 2) {
      call.Fail(QStringLiteral("Erreur API : HTTP %1").arg(call.LastStatus()));
      co_return call.Finish(std::move(result));
    }
    if (!document.isObject())
      throw ERestFormatError(QStringLiteral("The answer of %1 is not a JSON object").arg(url));
    const QJsonValue content = document.object().value(QStringLiteral("content"));
    const qint64 announced = document.object().value(QStringLiteral("totalNumberOfElements")).toInteger(0);
    // No list is an empty one only when no operator is announced either.
    if (!content.isArray() && announced != 0)
      throw ERestFormatError(QStringLiteral("The answer of %1 has no operator list (\"content\")").arg(url));
    const QJsonArray items = content.toArray();
    TraceValue(lcRest(), "ContentArray.Count", items.size());
    result.reserve(items.size());
    for (const QJsonValue &item : items)
      result.append(OperatorFromJson(item.toObject()));
    leftOut = announced - items.size();
  } catch (const EQuorvexError &error) {
    call.FailOn(error);
  }
  TRestResult<tyRestOperators> finished = call.Finish(std::move(result));
  if (leftOut > 0)
    finished.Warnings.append(QStringLiteral("The operator list of %1 announces %2 more operator(s) than its page of "
                                            "%3 holds: they were left out, and are not mailed")
                                 .arg(ServerOf(QueryUrl(settings, COperatorsPath)))
                                 .arg(leftOut)
                                 .arg(finished.Value.size()));
  co_return finished;
}

void TdmRest::StartOperatorsListAhead(const tyQuorvexITSM &settings)
{
  const TraceScope trace(lcRest(), "TdmRest.StartOperatorsListAhead");
  const QString url = QueryUrl(settings, COperatorsPath);
  const auto sent = std::make_shared<TAhead>();
  FOperatorsAhead = {url, sent};
  Launch(SendApi(url, "POST", COperatorsRequest), [sent](TRestTransport::TReply reply) {
    if (sent->Waiting)
      sent->Waiting(std::move(reply));
    else
      sent->Reply = std::move(reply);
  });
}
