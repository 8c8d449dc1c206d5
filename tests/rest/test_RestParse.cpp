#include "rest/RestJson.h"
#include "rest/RestParse.h"
#include "rest/TicketPage.h"
#include "support/TempConfig.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <gtest/gtest.h>

namespace {
QJsonObject Json(const char *text)
{
  return QJsonDocument::fromJson(text).object();
}

// The ticket that a page holding just this item gives.
tyRestTicket Ticket(const char *item)
{
  const TTicketPage page = TTicketPageParser().Parse(QByteArray(R"({"content":[)") + item + "]}");
  return page.Tickets.value(0);
}
} // namespace

TEST(ParseHelpers, AbsentOrMistypedMembersLeaveThePreset)
{
  const QJsonObject object = Json(R"({"n":42,"f":1.5,"s":"text","b":true,"nul":null,"big":3000000000})");
  std::int32_t number = 7;
  ParseInteger(object, "n", number);
  EXPECT_EQ(number, 42);
  for (const char *key : {"missing", "s", "nul", "f", "big"}) {
    number = 7;
    ParseInteger(object, key, number);
    EXPECT_EQ(number, -1) << key;
  }
  bool flag = true;
  ParseBoolean(object, "n", flag);
  EXPECT_FALSE(flag);
  ParseBoolean(object, "b", flag);
  EXPECT_TRUE(flag);
  QString text = "old";
  ParseString(object, "n", text);
  EXPECT_TRUE(text.isEmpty());
  ParseString(object, "s", text);
  EXPECT_EQ(text, "text");
}

TEST(ParseHelpers, SubRecordsAreEmptiedFirstThenFilledFromAnObject)
{
  const QJsonObject object =
      Json(R"({"team":{"id":3,"name":"Desk"},"none":null,"sla":{"id":4,"description":"48 h"},"p":{"reference":"P1"}})");
  tyRestSubName name{9, "old"};
  ParseSubName(object, "none", name);
  EXPECT_EQ(name.id, 0);
  EXPECT_TRUE(name.name.isEmpty());
  ParseSubName(object, "team", name);
  EXPECT_EQ(name.id, 3);
  EXPECT_EQ(name.name, "Desk");
  tyRestSubDescription description{9, "old"};
  ParseSubDesc(object, "sla", description);
  EXPECT_EQ(description.id, 4);
  EXPECT_EQ(description.description, "48 h");
  tyRestSubReference reference{9, "old"};
  ParseSubRef(object, "p", reference);
  EXPECT_EQ(reference.id, 0) << "an absent id inside a sub-object is 0, not -1";
  EXPECT_EQ(reference.reference, "P1");
}

TEST(TicketMapping, EachMemberFillsItsOwnFieldAndAbsentOrMistypedOnesStayZero)
{
  const tyRestTicket ticket = Ticket(R"({
    "id":1, "type":"s-type", "title":"s-title", "description":"s-description", "creationDate":"s-creationDate",
    "lastUpdate":"s-lastUpdate", "authorName":"s-authorName", "authorEmail":"s-authorEmail",
    "ticketOrigin":"s-ticketOrigin", "slaCompletionStatus":"s-slaCompletionStatus",
    "actualAcknowledgeDate":"s-actualAcknowledgeDate", "slaAcknowledgementStatus":"s-slaAcknowledgementStatus",
    "waitingDate":"s-waitingDate", "actualResolutionDate":"s-actualResolutionDate", "startDate":"s-startDate",
    "theoreticalAcknowledgeDate":"s-theoreticalAcknowledgeDate",
    "theoreticalResolutionDate":"s-theoreticalResolutionDate",
    "resolutionDelay":2, "slaResolutionDelay":3, "waitingDelay":4,
    "authorEmailNotify":true, "tasksPublic":true, "access":true, "writeAccess":true, "flagApi":true, "archived":true,
    "organization":{"id":10,"name":"n-organization"}, "assignedTeam":{"id":11,"name":"n-assignedTeam"},
    "assignedUser":{"id":12,"name":"n-assignedUser"}, "author":{"id":13,"name":"n-author"},
    "createdBy":{"id":14,"name":"n-createdBy"}, "authorSite":{"id":15,"name":"n-authorSite"},
    "application":{"id":16,"name":"n-application"}, "supplier":{"id":17,"name":"n-supplier"},
    "priority":{"id":20,"reference":"r-priority"},
    "sla":{"id":30,"description":"d-sla"}, "task":{"id":31,"description":"d-task"},
    "template":{"id":32,"description":"d-template"}, "validationWorkflow":{"id":33,"description":"d-workflow"},
    "status":{"id":40,"reference":"r-status","category":"c-status"}, "validationLevel":{"id":41,"level":2},
    "customProperties":[{"customProperty":{"id":2,"reference":"CP"},"selectedOption":{"id":3,"description":"Yes"}}],
    "checks":[{"id":4,"description":"Backup"}], "change":{"reason":"r","rollbackPlan":"rb"},
    "incident":{"incidentImpact":"i","incidentUrgency":"u"},
    "unknownMember":"ignored"})");
  const QList<std::pair<QString, QString>> texts{
      {ticket._type, "s-type"},
      {ticket.title, "s-title"},
      {ticket.description, "s-description"},
      {ticket.creationDate, "s-creationDate"},
      {ticket.lastUpdate, "s-lastUpdate"},
      {ticket.authorName, "s-authorName"},
      {ticket.authorEmail, "s-authorEmail"},
      {ticket.ticketOrigin, "s-ticketOrigin"},
      {ticket.slaCompletionStatus, "s-slaCompletionStatus"},
      {ticket.actualAcknowledgeDate, "s-actualAcknowledgeDate"},
      {ticket.slaAcknowledgementStatus, "s-slaAcknowledgementStatus"},
      {ticket.waitingDate, "s-waitingDate"},
      {ticket.actualResolutionDate, "s-actualResolutionDate"},
      {ticket.startDate, "s-startDate"},
      {ticket.theoreticalAcknowledgeDate, "s-theoreticalAcknowledgeDate"},
      {ticket.theoreticalResolutionDate, "s-theoreticalResolutionDate"},
      {ticket.organization.name, "n-organization"},
      {ticket.assignedTeam.name, "n-assignedTeam"},
      {ticket.assignedUser.name, "n-assignedUser"},
      {ticket.author.name, "n-author"},
      {ticket.createdBy.name, "n-createdBy"},
      {ticket.authorSite.name, "n-authorSite"},
      {ticket.application.name, "n-application"},
      {ticket.supplier.name, "n-supplier"},
      {ticket.priority.reference, "r-priority"},
      {ticket.sla.description, "d-sla"},
      {ticket.task.description, "d-task"},
      {ticket.template_.description, "d-template"},
      {ticket.validationWorkflow.description, "d-workflow"},
      {ticket.status._reference, "r-status"},
      {ticket.status.category, "c-status"},
      {ticket.customProperties.value(0).customProperty.reference, "CP"},
      {ticket.customProperties.value(0).selectedOption.description, "Yes"},
      {ticket.checks.value(0).description, "Backup"},
      {ticket.change->rollbackPlan, "rb"},
      {ticket.incident->incidentUrgency, "u"}};
  for (const auto &[field, expected] : texts)
    EXPECT_EQ(field, expected);
  EXPECT_EQ((QList<std::int32_t>{ticket.id, ticket.resolutionDelay, ticket.slaResolutionDelay, ticket.waitingDelay}),
            (QList<std::int32_t>{1, 2, 3, 4}));
  EXPECT_EQ((QList<std::int32_t>{ticket.organization.id, ticket.assignedTeam.id, ticket.assignedUser.id,
                                 ticket.author.id, ticket.createdBy.id, ticket.authorSite.id, ticket.application.id,
                                 ticket.supplier.id, ticket.priority.id, ticket.sla.id, ticket.task.id,
                                 ticket.template_.id, ticket.validationWorkflow.id, ticket.status.id,
                                 ticket.validationLevel->level}),
            (QList<std::int32_t>{10, 11, 12, 13, 14, 15, 16, 17, 20, 30, 31, 32, 33, 40, 2}));
  EXPECT_TRUE(ticket.authorEmailNotify && ticket.tasksPublic && ticket.access && ticket.writeAccess &&
              ticket.flagApi && ticket.archived);
  EXPECT_FALSE(ticket.tenExchangesAdded);

  const tyRestTicket sparse = Ticket(R"({"id":12,"assignedTeam":null,"waitingDelay":"5","flagApi":1})");
  EXPECT_EQ(
      (QList<std::int32_t>{sparse.assignedTeam.id, sparse.waitingDelay, sparse.resolutionDelay, sparse.status.id}),
      (QList<std::int32_t>{0, 0, 0, 0}));
  EXPECT_FALSE(sparse.flagApi);
  EXPECT_TRUE(sparse.title.isEmpty() && sparse.customProperties.isEmpty());
}

TEST(AsciiJson, CharactersOutsideAsciiBecomeEscapes)
{
  const QJsonObject object{{"a", QString::fromUtf8("é\x7f\t😀\n\x01\\\"")}};
  EXPECT_EQ(AsciiJson(object), "{\"a\":\"\\u00e9\x7f\\u0009\\ud83d\\ude00\\u000a\\u0001\\\\\\\"\"}");
  EXPECT_EQ(QJsonDocument::fromJson(AsciiJson(object)).object(), object);
}
