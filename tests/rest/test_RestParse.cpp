#include "rest/RestJson.h"
#include "rest/RestMapping.h"
#include "rest/RestParse.h"
#include "support/TempConfig.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <gtest/gtest.h>

namespace {
QJsonObject Json(const char *text)
{
  return QJsonDocument::fromJson(text).object();
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

TEST(TicketMapping, EveryMemberReachesItsFieldAndAbsentOnesStayZero)
{
  tyRestTicket ticket;
  ticket.tenExchangesAdded = true;
  TicketFromJson(Json(R"({"id":12,"type":"CHANGE","assignedTeam":null,"waitingDelay":"5",
    "status":{"id":1,"reference":"NEW","category":"OPEN"},
    "customProperties":[{"customProperty":{"id":2,"reference":"CP"},"selectedOption":{"id":3,"description":"Yes"}}],
    "checks":[{"id":4,"description":"Backup"}],
    "change":{"reason":"r","rollbackPlan":"rb"},"incident":{"incidentImpact":"i","incidentUrgency":"u"},
    "validationLevel":{"description":"d","id":5,"level":2},"template":{"id":6,"description":"t"},
    "flagApi":true,"lastUpdate":"2024-03-15T08:30:00.123Z"})"),
                 ticket);
  EXPECT_TRUE(ticket.tenExchangesAdded) << "never touched by the mapping";
  EXPECT_EQ(ticket.id, 12);
  EXPECT_EQ(ticket._type, "CHANGE");
  EXPECT_EQ(ticket.assignedTeam.id, 0);
  EXPECT_EQ(ticket.waitingDelay, 0);
  EXPECT_EQ(ticket.resolutionDelay, 0);
  EXPECT_EQ(ticket.status.id, 1);
  EXPECT_EQ(ticket.status._reference, "NEW");
  ASSERT_EQ(ticket.customProperties.size(), 1);
  EXPECT_EQ(ticket.customProperties[0].customProperty.reference, "CP");
  EXPECT_EQ(ticket.customProperties[0].selectedOption.description, "Yes");
  ASSERT_EQ(ticket.checks.size(), 1);
  EXPECT_EQ(ticket.checks[0].description, "Backup");
  EXPECT_EQ(ticket.change.rollbackPlan, "rb");
  EXPECT_EQ(ticket.incident.incidentUrgency, "u");
  EXPECT_EQ(ticket.validationLevel.level, 2);
  EXPECT_EQ(ticket.template_.description, "t");
  EXPECT_TRUE(ticket.flagApi);
  EXPECT_EQ(ticket.lastUpdate, "2024-03-15T08:30:00.123Z");
}

TEST(AsciiJson, CharactersOutsideAsciiBecomeEscapes)
{
  const QJsonObject object{{"a", QString::fromUtf8("é\x7f\t😀\n\x01\\\"")}};
  EXPECT_EQ(AsciiJson(object), "{\"a\":\"\\u00e9\x7f\\u0009\\ud83d\\ude00\\u000a\\u0001\\\\\\\"\"}");
  EXPECT_EQ(QJsonDocument::fromJson(AsciiJson(object)).object(), object);
}
