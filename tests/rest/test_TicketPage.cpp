// Reading ticket pages: each member into its own field, and what odd or damaged
// pages give (wrong types, missing members, nulls, huge numbers, escapes, JSON
// that simdjson refuses as a whole).

#include "rest/TicketRetrieval.h"

#include <QDateTime>
#include <QStringList>
#include <gtest/gtest.h>

namespace {

// Every field a page can fill, written field by field (not from the reader's
// table, so that a member read into the wrong field shows).
QList<std::pair<const char *, QString>> FieldTexts(const tyRestTicket &t)
{
  const auto sub = [](TRestId id, const QString &text) { return QStringLiteral("%1:%2").arg(id).arg(text); };
  const auto number = [](auto value) { return QString::number(value); };
  QStringList checks;
  for (const tyRestSubDescription &check : t.checks)
    checks << sub(check.id, check.description);
  QStringList properties;
  for (const tyRestCustomProperty &p : t.customProperties)
    properties << sub(p.customProperty.id, p.customProperty.reference) + u'/' +
                      sub(p.selectedOption.id, p.selectedOption.description);
  const tyRestChange &c = *t.change;
  return {{"access", number(t.access)}, {"actualAcknowledgeDate", t.actualAcknowledgeDate},
          {"actualResolutionDate", t.actualResolutionDate}, {"application", sub(t.application.id, t.application.name)},
          {"archived", number(t.archived)}, {"assignedTeam", sub(t.assignedTeam.id, t.assignedTeam.name)},
          {"assignedUser", sub(t.assignedUser.id, t.assignedUser.name)}, {"author", sub(t.author.id, t.author.name)},
          {"authorEmail", t.authorEmail}, {"authorEmailNotify", number(t.authorEmailNotify)},
          {"authorName", t.authorName}, {"authorSite", sub(t.authorSite.id, t.authorSite.name)},
          {"change", QStringList{c.changelogDescription, c.changelogType, c.deploymentPlan, c.impact, c.reason,
                                 c.risks, c.rollbackPlan}.join(u'/')},
          {"checks", checks.join(u',')}, {"createdBy", sub(t.createdBy.id, t.createdBy.name)},
          {"creationDate", t.creationDate}, {"customProperties", properties.join(u',')},
          {"description", t.description}, {"flagApi", number(t.flagApi)}, {"id", number(t.id)},
          {"incident", t.incident->incidentImpact + u'/' + t.incident->incidentUrgency},
          {"lastUpdate", t.lastUpdate}, {"organization", sub(t.organization.id, t.organization.name)},
          {"priority", sub(t.priority.id, t.priority.reference)}, {"resolutionDelay", number(t.resolutionDelay)},
          {"sla", sub(t.sla.id, t.sla.description)}, {"slaAcknowledgementStatus", t.slaAcknowledgementStatus},
          {"slaCompletionStatus", t.slaCompletionStatus}, {"slaResolutionDelay", number(t.slaResolutionDelay)},
          {"startDate", t.startDate}, {"status", sub(t.status.id, t.status._reference) + u':' + t.status.category},
          {"supplier", sub(t.supplier.id, t.supplier.name)}, {"task", sub(t.task.id, t.task.description)},
          {"tasksPublic", number(t.tasksPublic)}, {"template", sub(t.template_.id, t.template_.description)},
          {"theoreticalAcknowledgeDate", t.theoreticalAcknowledgeDate},
          {"theoreticalResolutionDate", t.theoreticalResolutionDate}, {"ticketOrigin", t.ticketOrigin},
          {"title", t.title}, {"type", t._type},
          {"validationLevel", sub(t.validationLevel->id, t.validationLevel->description) + u':' +
                                  number(t.validationLevel->level)},
          {"validationWorkflow", sub(t.validationWorkflow.id, t.validationWorkflow.description)},
          {"waitingDate", t.waitingDate}, {"waitingDelay", number(t.waitingDelay)},
          {"writeAccess", number(t.writeAccess)}, {"tenExchangesAdded", number(t.tenExchangesAdded)}};
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

TEST(TicketPage, EveryMemberLandsInItsOwnField)
{
  const QByteArray item =
      R"({"id":1,"type":"s-type","title":"s-title","description":"s-description",)"
      R"("creationDate":"s-creationDate","lastUpdate":"s-lastUpdate","authorName":"s-authorName",)"
      R"("authorEmail":"s-authorEmail","ticketOrigin":"s-ticketOrigin","slaCompletionStatus":"s-slaCompletion",)"
      R"("actualAcknowledgeDate":"s-actualAck","slaAcknowledgementStatus":"s-slaAck","waitingDate":"s-waitingDate",)"
      R"("actualResolutionDate":"s-actualRes","startDate":"s-startDate","theoreticalAcknowledgeDate":"s-theoAck",)"
      R"("theoreticalResolutionDate":"s-theoRes","resolutionDelay":2,"slaResolutionDelay":3,"waitingDelay":4,)"
      R"("authorEmailNotify":true,"tasksPublic":true,"access":true,"writeAccess":true,"flagApi":true,"archived":true,)"
      R"("organization":{"id":10,"name":"n-org"},"assignedTeam":{"id":11,"name":"n-team"},)"
      R"("assignedUser":{"id":12,"name":"n-user"},"author":{"id":13,"name":"n-author"},)"
      R"("createdBy":{"id":14,"name":"n-createdBy"},"authorSite":{"id":15,"name":"n-site"},)"
      R"("application":{"id":16,"name":"n-application"},"supplier":{"id":17,"name":"n-supplier"},)"
      R"("priority":{"id":20,"reference":"r-priority"},"sla":{"id":30,"description":"d-sla"},)"
      R"("task":{"id":31,"description":"d-task"},"template":{"id":32,"description":"d-template"},)"
      R"("validationWorkflow":{"id":33,"description":"d-workflow"},)"
      R"("status":{"id":40,"reference":"r-status","category":"c-status"},)"
      R"("validationLevel":{"id":41,"level":2,"description":"d-level"},)"
      R"("customProperties":[{"customProperty":{"id":2,"reference":"CP"},)"
      R"("selectedOption":{"id":3,"description":"Y"}}],)"
      R"("checks":[{"id":4,"description":"Backup"}],"incident":{"incidentImpact":"i","incidentUrgency":"u"},)"
      R"("change":{"changelogDescription":"cd","changelogType":"ct","deploymentPlan":"dp","impact":"im",)"
      R"("reason":"re","risks":"ri","rollbackPlan":"rb"},"unknownMember":"ignored"})";
  TTicketPageParser parser;
  EXPECT_EQ(Dump(parser.Parse(Items(item))).toStdString(),
            (CItems + u'\n' +
             "access=1 actualAcknowledgeDate=s-actualAck actualResolutionDate=s-actualRes "
             "application=16:n-application archived=1 assignedTeam=11:n-team assignedUser=12:n-user "
             "author=13:n-author authorEmail=s-authorEmail authorEmailNotify=1 authorName=s-authorName "
             "authorSite=15:n-site change=cd/ct/dp/im/re/ri/rb checks=4:Backup createdBy=14:n-createdBy "
             "creationDate=s-creationDate customProperties=2:CP/3:Y description=s-description flagApi=1 id=1 "
             "incident=i/u lastUpdate=s-lastUpdate organization=10:n-org priority=20:r-priority resolutionDelay=2 "
             "sla=30:d-sla slaAcknowledgementStatus=s-slaAck slaCompletionStatus=s-slaCompletion "
             "slaResolutionDelay=3 startDate=s-startDate status=40:r-status:c-status supplier=17:n-supplier "
             "task=31:d-task tasksPublic=1 template=32:d-template theoreticalAcknowledgeDate=s-theoAck "
             "theoreticalResolutionDate=s-theoRes ticketOrigin=s-ticketOrigin title=s-title type=s-type "
             "validationLevel=41:d-level:2 validationWorkflow=33:d-workflow waitingDate=s-waitingDate "
             "waitingDelay=4 writeAccess=1")
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
      {"blank", " ", CNotObject},
      {"an array", "[]", CNotObject},
      {"null", "null", CNotObject},
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
             R"("status":"s","access":true,"access":1,"waitingDelay":4,"waitingDelay":"4","checks":[{"id":4}],)"
             R"("checks":5,"change":{"impact":"i"},"change":null,"sla":{"id":5,"description":"x"},"sla":{"id":6}})"),
       "items pages=- elements=- bad=1\nid=2 sla=6: type=u"},
      // Members of another type, null or out of range: their zero value.
      {"nulls", Items(R"({"id":1,"title":null,"organization":null,"checks":null,"change":null,"access":null})"),
       CItems + "\nid=1"},
      {"booleans and integers",
       Items(R"({"id":1,"flagApi":1,"access":true,"archived":"true","waitingDelay":99999999999,)"
             R"("resolutionDelay":-2.0})"),
       CItems + "\naccess=1 id=1 resolutionDelay=-2"},
      {"objects of the wrong type",
       Items(R"({"id":1,"assignedUser":{"id":2,"name":null,"id":"3"},"priority":[],"incident":[],)"
             R"("validationLevel":{"level":2.0}})"),
       CItems + "\nid=1 validationLevel=0::2"},
      {"lists with odd items",
       Items(R"({"id":1,"checks":[{"id":4,"description":"d"},7,{"id":true}],"customProperties":{}},)"
             R"({"id":2,"customProperties":[{"customProperty":{"id":2,"reference":"r"},"selectedOption":3},5]})"),
       CItems + "\nchecks=4:d,0:,0: id=1\ncustomProperties=2:r/0:,0:/0: id=2"},
      {"part members of another type", Items(R"({"id":1,"change":{"impact":"i","risks":9}})"),
       CItems + "\nchange=///i/// id=1"},
      // Texts and names: escapes, non-ASCII.
      {"escapes and non-ASCII",
       Items(R"({"id":1,"title":"\u00e9\ud83d\ude00\n\"\\/","\u0074ype":"Incident – 東京",)"
             R"("description":"bloquée"})"),
       CItems + "\ndescription=bloquée id=1 title=é😀\n\"\\/ type=Incident – 東京"},
      // What is not JSON fails the page as a whole.
      {"cut short", R"({"content":[{"id":1,"title":"a)", CNotObject},
      {"cut short after the items", R"({"content":[{"id":1}],"totalNumberOfPages":)", CNotObject},
      {"an escape JSON does not have", Items(R"({"id":1,"title":"\x"})"), CNotObject},
      {"a lone surrogate", Items(R"({"id":1,"title":"\ud83d"})"), CNotObject},
      {"invalid UTF-8", Items("{\"id\":1,\"title\":\"\xff\"}"), CNotObject},
      {"an integer beyond 64 bits", Items(R"({"id":123456789012345678901})"), CNotObject},
      {"numbers JSON does not have", Items(R"({"id":01},{"id":.5},{"id":1.})"), CNotObject},
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
