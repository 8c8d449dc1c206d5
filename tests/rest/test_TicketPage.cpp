// Reading ticket pages: each member the program reads into its own field, and
// what odd or damaged pages give (wrong types, missing members, nulls, huge
// numbers, escapes, JSON that simdjson refuses as a whole).

#include "rest/TicketRetrieval.h"

#include <QDateTime>
#include <QStringList>
#include <gtest/gtest.h>

namespace {

// The fields the program reads, written field by field (not from the reader's
// table, so that a member read into the wrong field shows).
QList<std::pair<const char *, QString>> FieldTexts(const tyRestTicket &t)
{
  const auto sub = [](TRestId id, const QString &text) { return QStringLiteral("%1:%2").arg(id).arg(text); };
  return {{"assignedTeam", sub(t.assignedTeam.id, t.assignedTeam.name)},
          {"assignedUser", sub(t.assignedUser.id, t.assignedUser.name)}, {"creationDate", t.creationDate},
          {"id", QString::number(t.id)}, {"lastUpdate", t.lastUpdate},
          {"organization", sub(t.organization.id, t.organization.name)},
          {"priority", sub(t.priority.id, t.priority.reference)},
          {"status", sub(t.status.id, t.status._reference)}, {"title", t.title}, {"type", t._type}};
}

// The fields of a ticket away from their zero value, as "name=value".
QString Fields(const tyRestTicket &ticket)
{
  static const auto zero = FieldTexts(tyRestTicket());
  const auto texts = FieldTexts(ticket);
  QStringList shown;
  for (qsizetype i = 0; i < texts.size(); ++i)
    if (texts[i].second != zero[i].second)
      shown << QStringLiteral("%1=%2").arg(QLatin1String(texts[i].first), texts[i].second);
  return shown.join(u' ');
}

// The page as shape, totals and bad items, then one line per ticket.
QString Dump(const TTicketPage &page)
{
  static const char *const shapes[] = {"empty", "not an object", "no content", "items"};
  const auto total = [](std::optional<std::int32_t> value) {
    return value ? QString::number(*value) : QStringLiteral("-");
  };
  QStringList lines{QStringLiteral("%1 pages=%2 elements=%3 bad=%4")
                        .arg(QLatin1String(shapes[static_cast<int>(page.Shape)]), total(page.TotalPages),
                             total(page.TotalElements))
                        .arg(page.BadItems)};
  for (const tyRestTicket &ticket : page.Tickets)
    lines << Fields(ticket);
  return lines.join(u'\n');
}

// A page around these items.
QByteArray Items(const QByteArray &items)
{
  return R"({"content":[)" + items + "]}";
}

const QString CItems = QStringLiteral("items pages=- elements=- bad=0");
const QString CNotObject = QStringLiteral("not an object pages=- elements=- bad=0");

} // namespace

TEST(TicketPage, EveryMemberTheProgramReadsLandsInItsOwnField)
{
  const QByteArray item =
      R"({"id":1,"type":"s-type","title":"s-title","creationDate":"s-created","lastUpdate":"s-updated",)"
      R"("organization":{"id":10,"name":"n-org"},"assignedTeam":{"id":11,"name":"n-team"},)"
      R"("assignedUser":{"id":12,"name":"n-user"},"priority":{"id":20,"reference":"r-priority"},)"
      R"("status":{"id":40,"reference":"r-status","category":"c"},"unknownMember":"ignored",)"
      // Members of the same kinds that nobody reads: none may land in a field above.
      R"("actualAcknowledgeDate":"x","actualResolutionDate":"x","authorEmail":"x","authorName":"x",)"
      R"("description":"x","slaAcknowledgementStatus":"x","slaCompletionStatus":"x","startDate":"x",)"
      R"("theoreticalAcknowledgeDate":"x","theoreticalResolutionDate":"x","ticketOrigin":"x","waitingDate":"x",)"
      R"("application":{"id":9,"name":"x"},"author":{"id":9,"name":"x"},"authorSite":{"id":9,"name":"x"},)"
      R"("createdBy":{"id":9,"name":"x"},"supplier":{"id":9,"name":"x"},"sla":{"id":9,"description":"x"},)"
      R"("task":{"id":9,"description":"x"},"template":{"id":9,"description":"x"},)"
      R"("validationWorkflow":{"id":9,"description":"x"}})";
  TTicketPageParser parser;
  EXPECT_EQ(Dump(parser.Parse(Items(item))).toStdString(),
            (CItems + "\nassignedTeam=11:n-team assignedUser=12:n-user creationDate=s-created id=1 "
                      "lastUpdate=s-updated organization=10:n-org priority=20:r-priority status=40:r-status "
                      "title=s-title type=s-type")
                .toStdString());
}

TEST(TicketPage, OddAndDamagedPagesGiveWhatTheyHold)
{
  const struct
  {
    const char *What;
    QByteArray Body;
    QString Expected; // Dump()
  } cases[] = {
      // The shape of the page and its announced totals.
      {"no body", "", "empty pages=- elements=- bad=0"},
      {"an array", "[]", CNotObject},
      {"a gateway's page", "<html>gateway</html>", CNotObject},
      {"text after the object", R"({"content":[]} x)", CNotObject},
      {"totals only", R"({"totalNumberOfPages":1})", "no content pages=1 elements=- bad=0"},
      {"content not an array, total as text", R"({"content":{},"totalNumberOfPages":"2"})",
       "no content pages=- elements=- bad=0"},
      {"no items", R"({"content":[],"totalNumberOfElements":4})", "items pages=- elements=4 bad=0"},
      {"totals not whole or too large", R"({"content":[],"totalNumberOfPages":2.0,"totalNumberOfElements":3000000000})",
       "items pages=2 elements=- bad=0"},
      {"a repeated page member",
       R"({"content":[{"id":1}],"content":"late","totalNumberOfPages":3,"totalNumberOfPages":null})",
       "no content pages=- elements=- bad=0"},
      // Items that are no ticket: left out and counted.
      {"items of other types", Items(R"(1,"x",null,[],{},{"title":"no id"})"), "items pages=- elements=- bad=6"},
      // "-0" is ticket 0, all of whose fields are at their zero value: an empty line.
      {"ids", Items(R"({"id":"7"},{"id":1.5},{"id":null},{"id":3000000000},{"id":-0},{"id":1e2},{"id":-2147483648})"),
       "items pages=- elements=- bad=3\nid=3000000000\n\nid=100\nid=-2147483648"},
      {"huge ids", Items(R"({"id":9223372036854775807},{"id":18446744073709551615},{"id":1e300})"),
       "items pages=- elements=- bad=2\nid=9223372036854775807"},
      // The last of a repeated member counts, even when of another type.
      {"repeated members",
       Items(R"({"id":1,"id":"x"},{"id":"x","id":2,"title":"a","title":2,"type":"t","type":"u","status":{"id":1},)"
             R"("status":"s","access":true,"access":1,"checks":[{"id":4}],"checks":5,"change":{"impact":"i"},)"
             R"("change":null,"priority":{"id":5,"reference":"x"},"priority":{"id":6}})"),
       "items pages=- elements=- bad=1\nid=2 priority=6: type=u"},
      // Members of another type, null or out of range: their zero value.
      {"nulls", Items(R"({"id":1,"title":null,"organization":null,"checks":null,"change":null,"access":null})"),
       CItems + "\nid=1"},
      {"objects of the wrong type", Items(R"({"id":1,"assignedUser":{"id":2,"name":null,"id":"3"},"priority":[]})"),
       CItems + "\nid=1"},
      {"lists with odd items", Items(R"({"id":1,"checks":[7,{"id":true}],"customProperties":{}},{"id":2})"),
       CItems + "\nid=1\nid=2"},
      // Texts and names: escapes, non-ASCII.
      {"escapes and non-ASCII",
       Items(R"({"id":1,"title":"\u00e9\ud83d\ude00\n\"\\/","\u0074ype":"Incident – 東京"})"),
       CItems + "\nid=1 title=é😀\n\"\\/ type=Incident – 東京"},
      // What simdjson refuses fails the page as a whole, the items read before included.
      {"cut short after the items", R"({"content":[{"id":1}],"totalNumberOfPages":)", CNotObject},
      {"invalid UTF-8", Items("{\"id\":1,\"title\":\"\xff\"}"), CNotObject},
      {"an integer beyond 64 bits", Items(R"({"id":123456789012345678901})"), CNotObject},
  };
  TTicketPageParser parser;
  for (const auto &c : cases)
    EXPECT_EQ(Dump(parser.Parse(c.Body)).toStdString(), c.Expected.toStdString()) << c.What;
}

// The pages started early never exceed what the announced tickets can fill
// (plus one), whatever the page count the service announces.
TEST(TicketPage, AnnouncedPagesAreCappedByTheAnnouncedTickets)
{
  const struct
  {
    QByteArray Body;
    std::optional<std::int32_t> Pages;
  } cases[] = {
      {R"({"totalNumberOfPages":1000,"totalNumberOfElements":600,"content":[{"id":1}]})", 3},
      {R"({"totalNumberOfPages":2,"totalNumberOfElements":600,"content":[{"id":1}]})", 2},
      {R"({"totalNumberOfPages":7,"content":[{"id":1}]})", 7},
      {R"({"totalNumberOfPages":7,"totalNumberOfElements":600,"content":[]})", std::nullopt},
      {R"({"totalNumberOfPages":-1,"content":[{"id":1}]})", std::nullopt},
  };
  TTicketPageParser parser;
  for (const auto &c : cases)
    EXPECT_EQ(parser.AnnouncedPages(c.Body), c.Pages) << c.Body.toStdString();
}

// A service asking to wait is waited for, but never more than 30 s.
TEST(TicketPage, RetryAfterIsReadAndCappedAtThirtySeconds)
{
  const QByteArray inAnHour = QDateTime::currentDateTimeUtc().addSecs(3600).toString(Qt::RFC2822Date).toLatin1();
  const struct
  {
    QByteArray Header;
    int Seconds;
  } cases[] = {{"1", 1}, {" 12 ", 12}, {"3600", 30}, {"-5", 0}, {"soon", 0}, {"", 0}, {inAnHour, 30}};
  for (const auto &c : cases)
    EXPECT_EQ(RetryAfterSeconds(c.Header), c.Seconds) << c.Header.toStdString();
}
