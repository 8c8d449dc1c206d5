#include "RestMapping.h"

#include "RestParse.h"

#include <QJsonArray>

namespace {

void ReadStatus(const QJsonObject &item, tyRestStatus &status)
{
  const QJsonObject object = item.value(QStringLiteral("status")).toObject();
  ReadInteger(object, QStringLiteral("id"), status.id);
  ReadString(object, QStringLiteral("reference"), status._reference);
  ReadString(object, QStringLiteral("category"), status.category);
}

void ReadCustomProperties(const QJsonObject &item, tyRestCustomProperties &properties)
{
  const QJsonArray array = item.value(QStringLiteral("customProperties")).toArray();
  properties.resize(array.size());
  for (qsizetype i = 0; i < array.size(); ++i) {
    const QJsonObject property = array.at(i).toObject();
    ParseSubRef(property, QStringLiteral("customProperty"), properties[i].customProperty);
    ParseSubDesc(property, QStringLiteral("selectedOption"), properties[i].selectedOption);
  }
}

void ReadChange(const QJsonObject &item, tyRestChange &change)
{
  const QJsonObject object = item.value(QStringLiteral("change")).toObject();
  ReadString(object, QStringLiteral("changelogDescription"), change.changelogDescription);
  ReadString(object, QStringLiteral("changelogType"), change.changelogType);
  ReadString(object, QStringLiteral("deploymentPlan"), change.deploymentPlan);
  ReadString(object, QStringLiteral("impact"), change.impact);
  ReadString(object, QStringLiteral("reason"), change.reason);
  ReadString(object, QStringLiteral("risks"), change.risks);
  ReadString(object, QStringLiteral("rollbackPlan"), change.rollbackPlan);
}

void ReadChecks(const QJsonObject &item, tyRestchecks &checks)
{
  const QJsonArray array = item.value(QStringLiteral("checks")).toArray();
  checks.resize(array.size());
  for (qsizetype i = 0; i < array.size(); ++i) {
    const QJsonObject check = array.at(i).toObject();
    ReadInteger(check, QStringLiteral("id"), checks[i].id);
    ReadString(check, QStringLiteral("description"), checks[i].description);
  }
}

void ReadIncident(const QJsonObject &item, tyRestIncident &incident)
{
  const QJsonObject object = item.value(QStringLiteral("incident")).toObject();
  ReadString(object, QStringLiteral("incidentImpact"), incident.incidentImpact);
  ReadString(object, QStringLiteral("incidentUrgency"), incident.incidentUrgency);
}

void ReadValidationLevel(const QJsonObject &item, tyRestValidationLevel &level)
{
  const QJsonObject object = item.value(QStringLiteral("validationLevel")).toObject();
  ReadString(object, QStringLiteral("description"), level.description);
  ReadInteger(object, QStringLiteral("id"), level.id);
  ReadInteger(object, QStringLiteral("level"), level.level);
}

} // namespace

void TicketFromJson(const QJsonObject &item, tyRestTicket &ticket)
{
  ReadInteger(item, QStringLiteral("id"), ticket.id);
  ReadString(item, QStringLiteral("type"), ticket._type);
  ParseSubName(item, QStringLiteral("organization"), ticket.organization);
  ParseSubName(item, QStringLiteral("assignedTeam"), ticket.assignedTeam);
  ParseSubName(item, QStringLiteral("assignedUser"), ticket.assignedUser);
  ReadString(item, QStringLiteral("title"), ticket.title);
  ReadString(item, QStringLiteral("description"), ticket.description);
  ReadString(item, QStringLiteral("creationDate"), ticket.creationDate);
  ReadString(item, QStringLiteral("lastUpdate"), ticket.lastUpdate);
  ParseSubName(item, QStringLiteral("author"), ticket.author);
  ReadString(item, QStringLiteral("authorName"), ticket.authorName);
  ReadString(item, QStringLiteral("authorEmail"), ticket.authorEmail);
  ParseSubName(item, QStringLiteral("createdBy"), ticket.createdBy);
  ParseSubName(item, QStringLiteral("authorSite"), ticket.authorSite);
  ReadBoolean(item, QStringLiteral("authorEmailNotify"), ticket.authorEmailNotify);
  ReadString(item, QStringLiteral("ticketOrigin"), ticket.ticketOrigin);
  ReadInteger(item, QStringLiteral("resolutionDelay"), ticket.resolutionDelay);
  ReadInteger(item, QStringLiteral("slaResolutionDelay"), ticket.slaResolutionDelay);
  ReadString(item, QStringLiteral("slaCompletionStatus"), ticket.slaCompletionStatus);
  ReadString(item, QStringLiteral("actualAcknowledgeDate"), ticket.actualAcknowledgeDate);
  ReadString(item, QStringLiteral("slaAcknowledgementStatus"), ticket.slaAcknowledgementStatus);
  ParseSubRef(item, QStringLiteral("priority"), ticket.priority);
  ReadStatus(item, ticket.status);
  ParseSubName(item, QStringLiteral("application"), ticket.application);
  ReadCustomProperties(item, ticket.customProperties);
  ReadBoolean(item, QStringLiteral("tasksPublic"), ticket.tasksPublic);
  ReadBoolean(item, QStringLiteral("access"), ticket.access);
  ReadBoolean(item, QStringLiteral("writeAccess"), ticket.writeAccess);
  ReadString(item, QStringLiteral("waitingDate"), ticket.waitingDate);
  ReadInteger(item, QStringLiteral("waitingDelay"), ticket.waitingDelay);
  ReadBoolean(item, QStringLiteral("flagApi"), ticket.flagApi);
  ReadBoolean(item, QStringLiteral("archived"), ticket.archived);
  ReadString(item, QStringLiteral("actualResolutionDate"), ticket.actualResolutionDate);
  ReadChange(item, ticket.change);
  ReadChecks(item, ticket.checks);
  ReadIncident(item, ticket.incident);
  ParseSubDesc(item, QStringLiteral("sla"), ticket.sla);
  ReadString(item, QStringLiteral("startDate"), ticket.startDate);
  ParseSubName(item, QStringLiteral("supplier"), ticket.supplier);
  ParseSubDesc(item, QStringLiteral("task"), ticket.task);
  ParseSubDesc(item, QStringLiteral("template"), ticket.template_);
  ReadString(item, QStringLiteral("theoreticalAcknowledgeDate"), ticket.theoreticalAcknowledgeDate);
  ReadString(item, QStringLiteral("theoreticalResolutionDate"), ticket.theoreticalResolutionDate);
  ReadValidationLevel(item, ticket.validationLevel);
  ParseSubDesc(item, QStringLiteral("validationWorkflow"), ticket.validationWorkflow);
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
