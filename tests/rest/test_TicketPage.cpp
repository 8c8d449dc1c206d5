// The simdjson page parser against the Qt reading it replaced: the same records,
// totals, shape and bad items for the demo's pages, the fuzz seeds, hand-made
// edge cases and thousands of damaged variants of them. simdjson is stricter:
// a page that is not JSON (bad escapes, lone surrogates, integers beyond 64
// bits) fails as a whole where Qt read something.

#include "DemoData.h"
#include "QtTicketMapping.h"
#include "RestTestData.h"

#include "rest/TicketRetrieval.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <gtest/gtest.h>

namespace {

QByteArray Page(const QJsonArray &tickets, qsizetype first, qsizetype count)
{
  QJsonArray content;
  for (qsizetype i = first; i < tickets.size() && i < first + count; ++i)
    content.append(tickets.at(i));
  return QJsonDocument(QJsonObject{{"content", content},
                                   {"totalNumberOfElements", tickets.size()},
                                   {"totalNumberOfPages", (tickets.size() + count - 1) / count}})
      .toJson(QJsonDocument::Compact);
}

// The demo's sample data in pages of 50, the test data's small organization,
// the fuzz seeds (pages of three) and the edge cases.
QList<QByteArray> Pages()
{
  QList<QByteArray> pages;
  const QJsonArray sample = MakeSampleData(QDateTime(QDate(2024, 3, 18), QTime(9, 0))).value("tickets").toArray();
  for (qsizetype first = 0; first < sample.size(); first += 50)
    pages.append(Page(sample, first, 50));
  for (qsizetype first = 0; first < 12; first += 3)
    pages.append(Page(sample, first, 3));
  pages.append(Page(RestTestData().value("tickets").toArray(), 0, 3));
  pages += QList<QByteArray>{
      "", " ", "[]", "null", "<html>gateway</html>", R"({"content":[]} x)", R"({"totalNumberOfPages":1})",
      R"({"content":{},"totalNumberOfPages":"2"})", R"({"content":[],"totalNumberOfElements":4})",
      R"({"content":[1,"x",null,[],{}],"totalNumberOfPages":2.0,"totalNumberOfElements":2.5})",
      R"({"content":[{"id":"7"},{"id":1.5},{"id":3000000000},{"id":-0},{"id":1e2},{"id":-2147483648}]})",
      R"({"content":[{"id":1,"id":"x","title":"a","title":2,"status":{"id":1},"status":"s"}]})",
      R"({"content":[{"id":1}],"content":"late","totalNumberOfPages":3,"totalNumberOfPages":null})",
      R"({"content":[{"id":1,"title":"\u00e9\ud83d\ude00\n\"\\","assignedUser":{"id":2,"name":null,"id":"3"}}]})",
      R"({"content":[{"id":1,"checks":[{"id":4,"description":"d"},7,{"id":true}],"customProperties":{}}]})",
      R"({"content":[{"id":1,"customProperties":[{"customProperty":{"id":2,"reference":"r"},"selectedOption":3},5]}]})",
      R"({"content":[{"id":1,"change":{"impact":"i","risks":9},"incident":[],"validationLevel":{"level":2.0}}]})",
      R"({"content":[{"id":1,"flagApi":1,"access":true,"archived":"true","waitingDelay":99999999999}]})",
      // Every member with a value of its own, so that each lands in its own field.
      R"({"content":[{"id":1,"type":"s-type","title":"s-title","description":"s-description",)"
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
      R"("reason":"re","risks":"ri","rollbackPlan":"rb"},"unknownMember":"ignored"}]})",
  };
  return pages;
}

// A damaged copy: a few bytes replaced, dropped or repeated.
QByteArray Damaged(QByteArray page, QRandomGenerator &random)
{
  static const QByteArray alphabet = R"({}[]":,0123456789-.eE\u tnfalr )";
  for (int change = random.bounded(1, 4); change > 0 && !page.isEmpty(); --change) {
    const qsizetype at = random.bounded(page.size());
    switch (random.bounded(3)) {
    case 0: page[at] = alphabet[random.bounded(alphabet.size())]; break;
    case 1: page.remove(at, random.bounded(1, 8)); break;
    default: page.insert(at, page.mid(random.bounded(page.size()), random.bounded(1, 16)));
    }
  }
  return page;
}

// What Qt reads and simdjson refuses, failing the page instead: escapes that
// JSON does not have, surrogate escapes that make no character, numbers that
// start or end with a point or start with a needless zero, and integers
// beyond 64 bits.
bool OnlyQtReads(const QByteArray &page)
{
  static const QRegularExpression lenient(
      QStringLiteral(R"(\\([^"\\/bfnrtu]|u(?![0-9a-fA-F]{4})|u[dD][89a-fA-F])|\d{20}|[:,\[]\s*-?(\.|0\d)|\d\.(?!\d))"));
  return lenient.match(QString::fromLatin1(page)).hasMatch();
}

} // namespace

TEST(TicketPage, ReadsEveryPageAsTheQtReadingDid)
{
  TTicketPageParser parser;
  const QList<QByteArray> pages = Pages();
  for (const QByteArray &page : pages)
    EXPECT_EQ(DumpTicketPage(parser.Parse(page)).toStdString(), DumpTicketPage(QtTicketPage(page)).toStdString())
        << page.left(300).constData();
}

TEST(TicketPage, DamagedPagesFailOrMapAsTheQtReadingDid)
{
  TTicketPageParser parser;
  QRandomGenerator random(16);
  QList<QByteArray> pages = Pages();
  pages.remove(0, pages.size() - 23); // the small pages: the fuzz seeds and the edge cases
  for (int round = 0; round < 1000; ++round)
    for (const QByteArray &original : pages) {
      const QByteArray page = Damaged(original, random);
      const TTicketPage read = parser.Parse(page);
      if (read.Shape == TTicketPage::TShape::NotObject && OnlyQtReads(page))
        continue;
      ASSERT_EQ(DumpTicketPage(read).toStdString(), DumpTicketPage(QtTicketPage(page)).toStdString())
          << page.constData();
    }
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
