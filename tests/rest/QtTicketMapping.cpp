// The ticket mapping as it was written with Qt's JSON classes, kept as the
// reference that the simdjson page parser must match member for member.

#include "QtTicketMapping.h"

#include "rest/RestParse.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>

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
      {QStringLiteral("change"), [](const V &m, T &t) { ReadChange(m, t.change.Edit()); }},
      {QStringLiteral("checks"), [](const V &m, T &t) { ReadChecks(m, t.checks); }},
      {QStringLiteral("incident"), [](const V &m, T &t) { ReadIncident(m, t.incident.Edit()); }},
      {QStringLiteral("sla"), [](const V &m, T &t) { ParseSubDesc(m, t.sla); }},
      {QStringLiteral("startDate"), [](const V &m, T &t) { ReadString(m, t.startDate); }},
      {QStringLiteral("supplier"), [](const V &m, T &t) { ParseSubName(m, t.supplier); }},
      {QStringLiteral("task"), [](const V &m, T &t) { ParseSubDesc(m, t.task); }},
      {QStringLiteral("template"), [](const V &m, T &t) { ParseSubDesc(m, t.template_); }},
      {QStringLiteral("theoreticalAcknowledgeDate"),
       [](const V &m, T &t) { ReadString(m, t.theoreticalAcknowledgeDate); }},
      {QStringLiteral("theoreticalResolutionDate"),
       [](const V &m, T &t) { ReadString(m, t.theoreticalResolutionDate); }},
      {QStringLiteral("validationLevel"), [](const V &m, T &t) { ReadValidationLevel(m, t.validationLevel.Edit()); }},
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


TTicketPage QtTicketPage(const QByteArray &body)
{
  TTicketPage page;
  if (body.isEmpty())
    return page;
  page.Shape = TTicketPage::TShape::NotObject;
  const QJsonDocument document = QJsonDocument::fromJson(body);
  if (!document.isObject())
    return page;
  const QJsonObject answer = document.object();
  std::int32_t total = 0;
  if (ReadInteger(answer, QStringLiteral("totalNumberOfPages"), total))
    page.TotalPages = total;
  if (ReadInteger(answer, QStringLiteral("totalNumberOfElements"), total))
    page.TotalElements = total;
  const QJsonValue content = answer.value(QStringLiteral("content"));
  if (!content.isArray()) {
    page.Shape = TTicketPage::TShape::NoContent;
    return page;
  }
  page.Shape = TTicketPage::TShape::Items;
  const QJsonArray items = content.toArray();
  for (qsizetype i = 0; i < items.size(); ++i) {
    TRestId id = 0;
    if (!items.at(i).isObject() || !ReadInteger(items.at(i).toObject(), QStringLiteral("id"), id)) {
      ++page.BadItems;
      continue;
    }
    page.Tickets.emplace_back();
    TicketFromJson(items.at(i).toObject(), page.Tickets.back());
  }
  return page;
}

namespace {

QString Sub(TRestId id, const QString &text)
{
  return QStringLiteral("%1:%2").arg(id).arg(text);
}

QString DumpTicket(const tyRestTicket &t)
{
  QStringList fields{QString::number(t.tenExchangesAdded), QString::number(t.access), t.actualAcknowledgeDate,
                     t.actualResolutionDate, Sub(t.application.id, t.application.name), QString::number(t.archived),
                     Sub(t.assignedTeam.id, t.assignedTeam.name), Sub(t.assignedUser.id, t.assignedUser.name),
                     Sub(t.author.id, t.author.name), t.authorEmail, QString::number(t.authorEmailNotify),
                     t.authorName, Sub(t.authorSite.id, t.authorSite.name)};
  fields << t.change->changelogDescription << t.change->changelogType << t.change->deploymentPlan << t.change->impact
         << t.change->reason << t.change->risks << t.change->rollbackPlan;
  for (const tyRestSubDescription &check : t.checks)
    fields << QStringLiteral("check ") + Sub(check.id, check.description);
  fields << Sub(t.createdBy.id, t.createdBy.name) << t.creationDate;
  for (const tyRestCustomProperty &property : t.customProperties)
    fields << QStringLiteral("property ") + Sub(property.customProperty.id, property.customProperty.reference) +
                  u' ' + Sub(property.selectedOption.id, property.selectedOption.description);
  fields << t.description << QString::number(t.flagApi) << QString::number(t.id) << t.incident->incidentImpact
         << t.incident->incidentUrgency << t.lastUpdate << Sub(t.organization.id, t.organization.name)
         << Sub(t.priority.id, t.priority.reference) << QString::number(t.resolutionDelay)
         << Sub(t.sla.id, t.sla.description) << t.slaAcknowledgementStatus << t.slaCompletionStatus
         << QString::number(t.slaResolutionDelay) << t.startDate
         << Sub(t.status.id, t.status._reference) + u':' + t.status.category << Sub(t.supplier.id, t.supplier.name)
         << Sub(t.task.id, t.task.description) << QString::number(t.tasksPublic)
         << Sub(t.template_.id, t.template_.description) << t.theoreticalAcknowledgeDate
         << t.theoreticalResolutionDate << t.ticketOrigin << t.title << t._type
         << Sub(t.validationLevel->id, t.validationLevel->description) + u':' +
                QString::number(t.validationLevel->level)
         << Sub(t.validationWorkflow.id, t.validationWorkflow.description) << t.waitingDate
         << QString::number(t.waitingDelay) << QString::number(t.writeAccess);
  return fields.join(u'|');
}

} // namespace

QString DumpTicketPage(const TTicketPage &page)
{
  QStringList lines{QStringLiteral("shape %1 pages %2 elements %3 bad %4")
                        .arg(static_cast<int>(page.Shape))
                        .arg(page.TotalPages ? QString::number(*page.TotalPages) : QStringLiteral("-"))
                        .arg(page.TotalElements ? QString::number(*page.TotalElements) : QStringLiteral("-"))
                        .arg(page.BadItems)};
  for (const tyRestTicket &ticket : page.Tickets)
    lines << DumpTicket(ticket);
  return lines.join(u'\n');
}
