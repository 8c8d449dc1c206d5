#include "RestMapping.h"

#include "RestParse.h"

#include <QHash>
#include <QJsonArray>

namespace {

void ReadStatus(const QJsonValue &member, tyRestStatus &status)
{
  const QJsonObject object = member.toObject();
  ReadInteger(object, QStringLiteral("id"), status.id);
  ReadString(object, QStringLiteral("reference"), status._reference);
  ReadString(object, QStringLiteral("category"), status.category);
}

void ReadCustomProperties(const QJsonValue &member, tyRestCustomProperties &properties)
{
  const QJsonArray array = member.toArray();
  properties.resize(array.size());
  for (qsizetype i = 0; i < array.size(); ++i) {
    const QJsonObject property = array.at(i).toObject();
    ParseSubRef(property, QStringLiteral("customProperty"), properties[i].customProperty);
    ParseSubDesc(property, QStringLiteral("selectedOption"), properties[i].selectedOption);
  }
}

void ReadChange(const QJsonValue &member, tyRestChange &change)
{
  const QJsonObject object = member.toObject();
  ReadString(object, QStringLiteral("changelogDescription"), change.changelogDescription);
  ReadString(object, QStringLiteral("changelogType"), change.changelogType);
  ReadString(object, QStringLiteral("deploymentPlan"), change.deploymentPlan);
  ReadString(object, QStringLiteral("impact"), change.impact);
  ReadString(object, QStringLiteral("reason"), change.reason);
  ReadString(object, QStringLiteral("risks"), change.risks);
  ReadString(object, QStringLiteral("rollbackPlan"), change.rollbackPlan);
}

void ReadChecks(const QJsonValue &member, tyRestchecks &checks)
{
  const QJsonArray array = member.toArray();
  checks.resize(array.size());
  for (qsizetype i = 0; i < array.size(); ++i) {
    const QJsonObject check = array.at(i).toObject();
    ReadInteger(check, QStringLiteral("id"), checks[i].id);
    ReadString(check, QStringLiteral("description"), checks[i].description);
  }
}

void ReadIncident(const QJsonValue &member, tyRestIncident &incident)
{
  const QJsonObject object = member.toObject();
  ReadString(object, QStringLiteral("incidentImpact"), incident.incidentImpact);
  ReadString(object, QStringLiteral("incidentUrgency"), incident.incidentUrgency);
}

void ReadValidationLevel(const QJsonValue &member, tyRestValidationLevel &level)
{
  const QJsonObject object = member.toObject();
  ReadString(object, QStringLiteral("description"), level.description);
  ReadInteger(object, QStringLiteral("id"), level.id);
  ReadInteger(object, QStringLiteral("level"), level.level);
}

// The field each member of a ticket item fills, by member name.
using TTicketReader = void (*)(const QJsonValue &member, tyRestTicket &ticket);

const QHash<QString, TTicketReader> &TicketReaders()
{
  using T = tyRestTicket;
  using V = QJsonValue;
  static const QHash<QString, TTicketReader> readers{
      {QStringLiteral("id"), [](const V &m, T &t) { ReadInteger(m, t.id); }},
      {QStringLiteral("type"), [](const V &m, T &t) { ReadString(m, t._type); }},
      {QStringLiteral("organization"), [](const V &m, T &t) { ParseSubName(m, t.organization); }},
      {QStringLiteral("assignedTeam"), [](const V &m, T &t) { ParseSubName(m, t.assignedTeam); }},
      {QStringLiteral("assignedUser"), [](const V &m, T &t) { ParseSubName(m, t.assignedUser); }},
      {QStringLiteral("title"), [](const V &m, T &t) { ReadString(m, t.title); }},
      {QStringLiteral("description"), [](const V &m, T &t) { ReadString(m, t.description); }},
      {QStringLiteral("creationDate"), [](const V &m, T &t) { ReadString(m, t.creationDate); }},
      {QStringLiteral("lastUpdate"), [](const V &m, T &t) { ReadString(m, t.lastUpdate); }},
      {QStringLiteral("author"), [](const V &m, T &t) { ParseSubName(m, t.author); }},
      {QStringLiteral("authorName"), [](const V &m, T &t) { ReadString(m, t.authorName); }},
      {QStringLiteral("authorEmail"), [](const V &m, T &t) { ReadString(m, t.authorEmail); }},
      {QStringLiteral("createdBy"), [](const V &m, T &t) { ParseSubName(m, t.createdBy); }},
      {QStringLiteral("authorSite"), [](const V &m, T &t) { ParseSubName(m, t.authorSite); }},
      {QStringLiteral("authorEmailNotify"), [](const V &m, T &t) { ReadBoolean(m, t.authorEmailNotify); }},
      {QStringLiteral("ticketOrigin"), [](const V &m, T &t) { ReadString(m, t.ticketOrigin); }},
      {QStringLiteral("resolutionDelay"), [](const V &m, T &t) { ReadInteger(m, t.resolutionDelay); }},
      {QStringLiteral("slaResolutionDelay"), [](const V &m, T &t) { ReadInteger(m, t.slaResolutionDelay); }},
      {QStringLiteral("slaCompletionStatus"), [](const V &m, T &t) { ReadString(m, t.slaCompletionStatus); }},
      {QStringLiteral("actualAcknowledgeDate"), [](const V &m, T &t) { ReadString(m, t.actualAcknowledgeDate); }},
      {QStringLiteral("slaAcknowledgementStatus"),
       [](const V &m, T &t) { ReadString(m, t.slaAcknowledgementStatus); }},
      {QStringLiteral("priority"), [](const V &m, T &t) { ParseSubRef(m, t.priority); }},
      {QStringLiteral("status"), [](const V &m, T &t) { ReadStatus(m, t.status); }},
      {QStringLiteral("application"), [](const V &m, T &t) { ParseSubName(m, t.application); }},
      {QStringLiteral("customProperties"), [](const V &m, T &t) { ReadCustomProperties(m, t.customProperties); }},
      {QStringLiteral("tasksPublic"), [](const V &m, T &t) { ReadBoolean(m, t.tasksPublic); }},
      {QStringLiteral("access"), [](const V &m, T &t) { ReadBoolean(m, t.access); }},
      {QStringLiteral("writeAccess"), [](const V &m, T &t) { ReadBoolean(m, t.writeAccess); }},
      {QStringLiteral("waitingDate"), [](const V &m, T &t) { ReadString(m, t.waitingDate); }},
      {QStringLiteral("waitingDelay"), [](const V &m, T &t) { ReadInteger(m, t.waitingDelay); }},
      {QStringLiteral("flagApi"), [](const V &m, T &t) { ReadBoolean(m, t.flagApi); }},
      {QStringLiteral("archived"), [](const V &m, T &t) { ReadBoolean(m, t.archived); }},
      {QStringLiteral("actualResolutionDate"), [](const V &m, T &t) { ReadString(m, t.actualResolutionDate); }},
      {QStringLiteral("change"), [](const V &m, T &t) { ReadChange(m, t.change); }},
      {QStringLiteral("checks"), [](const V &m, T &t) { ReadChecks(m, t.checks); }},
      {QStringLiteral("incident"), [](const V &m, T &t) { ReadIncident(m, t.incident); }},
      {QStringLiteral("sla"), [](const V &m, T &t) { ParseSubDesc(m, t.sla); }},
      {QStringLiteral("startDate"), [](const V &m, T &t) { ReadString(m, t.startDate); }},
      {QStringLiteral("supplier"), [](const V &m, T &t) { ParseSubName(m, t.supplier); }},
      {QStringLiteral("task"), [](const V &m, T &t) { ParseSubDesc(m, t.task); }},
      {QStringLiteral("template"), [](const V &m, T &t) { ParseSubDesc(m, t.template_); }},
      {QStringLiteral("theoreticalAcknowledgeDate"),
       [](const V &m, T &t) { ReadString(m, t.theoreticalAcknowledgeDate); }},
      {QStringLiteral("theoreticalResolutionDate"),
       [](const V &m, T &t) { ReadString(m, t.theoreticalResolutionDate); }},
      {QStringLiteral("validationLevel"), [](const V &m, T &t) { ReadValidationLevel(m, t.validationLevel); }},
      {QStringLiteral("validationWorkflow"), [](const V &m, T &t) { ParseSubDesc(m, t.validationWorkflow); }},
  };
  return readers;
}

} // namespace

void TicketFromJson(const QJsonObject &item, tyRestTicket &ticket)
{
  // One walk over the item's members, each sent to the field it fills: looking
  // 45 members up by name would search the object 45 times for every ticket.
  const QHash<QString, TTicketReader> &readers = TicketReaders();
  for (auto member = item.constBegin(); member != item.constEnd(); ++member)
    if (const TTicketReader read = readers.value(member.key()))
      read(member.value(), ticket);
}

tyRestOperator OperatorFromJson(const QJsonObject &item)
{
  tyRestOperator op;
  ParseString(item, QStringLiteral("authenticationMode"), op.authenticationMode);
  ParseSubDesc(item, QStringLiteral("authenticationService"), op.authenticationService);
  ParseString(item, QStringLiteral("creationTimestamp"), op.creationTimestamp);
  ParseString(item, QStringLiteral("creationUser"), op.creationUser);
  ParseString(item, QStringLiteral("dateFormat"), op.dateFormat);
  ParseSubName(item, QStringLiteral("department"), op.department);
  ParseString(item, QStringLiteral("email"), op.email);
  ParseString(item, QStringLiteral("externalReference"), op.externalReference);
  ParseString(item, QStringLiteral("firstName"), op.firstName);
  ParseInteger(item, QStringLiteral("hourFormat"), op.hourFormat);
  ParseInteger(item, QStringLiteral("id"), op.id);
  ParseString(item, QStringLiteral("language"), op.language);
  ParseString(item, QStringLiteral("lastConnectionTimestamp"), op.lastConnectionTimestamp);
  ParseString(item, QStringLiteral("lastName"), op.lastName);
  ParseString(item, QStringLiteral("lastUpdateTimestamp"), op.lastUpdateTimestamp);
  ParseString(item, QStringLiteral("lastUpdateUser"), op.lastUpdateUser);
  ParseString(item, QStringLiteral("login"), op.login);
  ParseSubName(item, QStringLiteral("manager"), op.manager);
  ParseString(item, QStringLiteral("mobileNumber"), op.mobileNumber);
  ParseString(item, QStringLiteral("notificationEmail"), op.notificationEmail);
  ParseString(item, QStringLiteral("phoneNumber"), op.phoneNumber);
  ParseString(item, QStringLiteral("position"), op.position);
  ParseSubDesc(item, QStringLiteral("profile"), op.profile);
  ParseString(item, QStringLiteral("remarks"), op.remarks);
  ParseSubDesc(item, QStringLiteral("serviceDeskProfile"), op.serviceDeskProfile);
  ParseSubName(item, QStringLiteral("site"), op.site);
  ParseString(item, QStringLiteral("status"), op.status);
  op.teams = ReadSubNames(item, QStringLiteral("teams"));
  ParseString(item, QStringLiteral("timeZone"), op.timeZone);
  ParseBoolean(item, QStringLiteral("twoFactorAuthActive"), op.twoFactorAuthActive);
  return op;
}
