#include "ReportTestData.h"
#include "report/ReportFiles.h"
#include "support/TempConfig.h"
#include "tickets/ColourStore.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStringEncoder>
#include <gtest/gtest.h>

namespace {

// 14 November 2026, 06:00 local time: the moment of every report below, in the
// zone the test runs in.
QDateTime Now() { return QDateTime(QDate(2026, 11, 14), QTime(6, 0)); }

// A moment as the service writes it, in UTC.
QString Stamp(const QDateTime &moment) { return moment.toUTC().toString("yyyy-MM-ddTHH:mm:ss.zzzZ"); }
QString MinutesAgo(double minutes) { return Stamp(Now().addMSecs(qint64(-minutes * 60000))); }
QString DaysAgo(double days) { return Stamp(Now().addMSecs(qint64(-days * 86400000))); }

tyRestTicket Ticket(TRestId id, const QString &type = "INCIDENT")
{
  return ReportTicket(id, type, MinutesAgo(60), MinutesAgo(30));
}

// An assigned ticket last updated `days` ago.
tyRestTicket Stale(TRestId id, double days)
{
  tyRestTicket ticket = Ticket(id);
  ticket.assignedUser = {100 + id, QStringLiteral("User %1").arg(id)};
  ticket.lastUpdate = DaysAgo(days);
  return ticket;
}

class MailReportTest : public ::testing::Test
{
protected:
  MailReportTest()
  {
    FIn.StatusToIgnore = {"Planned (without SLA)"};
    FIn.SelectedOrganizations = {{1, "Acme", false, false, true}, {2, "Beta", false, false, true}};
    FIn.HtmlTexts.Unassigned_Title = {"<h2>Unassigned after %nbminutes% minutes</h2>"};
    FIn.HtmlTexts.Unassigned_With = {"<p>U-with</p>"};
    FIn.HtmlTexts.Unassigned_Without = {"<p>U-without %NBMINUTES%</p>"};
    FIn.HtmlTexts.WithoutUpdate_Title = {"<h2>W-title %NBDAYS%</h2>"};
    FIn.HtmlTexts.WithoutUpdate_With = {"<p>W-with %NbDays%</p>"};
    FIn.HtmlTexts.WithoutUpdate_Without = {"<p>W-without</p>"};
    FIn.HtmlTexts.More10 = {"<h2>M10</h2>"};
    FIn.HtmlTexts.Why = {"<p>Why <a href=\"%QUORVEX_ITSM%\">x</a></p>"};
  }

  TReportOutput Generate()
  {
    TMailReport report(FIn, FColours, [this] { return FNow.isValid() ? FNow : Now(); });
    return report.Generate();
  }

  const TScopedTimeZone FZone{"Europe/Paris"}; // a machine in CET, unless a test says otherwise
  TTempConfig FConfig;
  TColourStore FColours{FConfig.File("q.ini")};
  TReportInput FIn = ReportInput(Now());
  QDateTime FNow; // the report's clock when set, else Now()
  const TScopedLocale FLocale{QLocale(QLocale::French, QLocale::France)};
};

} // namespace

// Which tickets each section lists: thresholds strict in whole minutes and days,
// a blank assignee is none, exempt statuses (any case) and teams not followed
// stay out of "without update", every flagged ticket is in the last.
TEST_F(MailReportTest, EachSectionListsTheTicketsOfItsRule)
{
  tyRestTicket exactly = Ticket(1);
  exactly.creationDate = MinutesAgo(15);
  tyRestTicket oneMore = Ticket(2);
  oneMore.creationDate = MinutesAgo(16);
  tyRestTicket assigned = Ticket(3);
  assigned.assignedUser = {7, "Ann"};
  tyRestTicket blankUser = Ticket(4);
  blankUser.assignedUser = {0, " \t"};
  tyRestTicket ignored = Stale(7, 20);
  ignored.status._reference = "planned (WITHOUT sla)";
  tyRestTicket otherTeam = Stale(8, 20);
  otherTeam.assignedTeam = {99, "Other"};
  tyRestTicket flagged = Stale(9, 2.9);
  flagged.tenExchangesAdded = true;
  flagged.creationDate = DaysAgo(40.2);
  FIn.Tickets = {exactly, oneMore, assigned, blankUser, Stale(5, 14.0 + 1.0 / 1440), Stale(6, 14.0), ignored,
                 otherTeam, flagged};
  const TReportOutput out = Generate();
  QList<QList<TRestId>> listed;
  for (const TReportRows &rows : out.Rows) {
    listed.emplaceBack();
    for (const tyRestTicket &ticket : rows)
      listed.last().append(ticket.id);
  }
  EXPECT_EQ(listed, (QList<QList<TRestId>>{{2, 4}, {5}, {9}}));
  const QString html = out.HtmlContent.join('\n');
  for (const char *shown : {"<p>W-with 14</p>", "<h2>M10</h2>", "(14&nbsp;days)", "(40&nbsp;days)", "(2&nbsp;days)"})
    EXPECT_TRUE(html.contains(shown)) << shown;
}

// Ids are 64-bit: the operators, the Network team and the stale ticket lie beyond 2^31.
TEST_F(MailReportTest, RecipientsFromTeamsAndAssigneesWithCopiesNeverRepeated)
{
  // Two unassigned tickets of the Desk team (members 1, 2, 3), a stale ticket of
  // user 4, and operator 3 inactive; addresses come in no order and leave sorted.
  constexpr TRestId big = 3000000000;
  const char *const emails[] = {"Zoe@Example.org", "bob@example.org",  "carl@example.org",
                                "dee@example.org", "eve@example.org", "abe@example.org"};
  for (TRestId n = 1; n <= 6; ++n) {
    FIn.TeamsOperators.append({n <= 3 ? 10 : big + 20, big + n});
    FIn.Operators.append(ReportOperator(big + n, emails[n - 1], n == 3 ? "INACTIVE" : "ACTIVE"));
  }
  FIn.Operators.append(ReportOperator(4, "x@example.org"));
  FIn.SelectedTeams.append(tyRestTeam{big + 20, {}, "Network", {}, {}});
  tyRestTicket stale = Ticket(big + 3);
  stale.assignedTeam = {big + 20, "Network"};
  stale.assignedUser = {big + 4, "Dee"};
  stale.lastUpdate = DaysAgo(30);
  FIn.Tickets = {Ticket(1), Ticket(2), stale};

  const TReportOutput out = Generate();
  EXPECT_EQ(out.SlRecipientTo, (QStringList{"bob@example.org", "dee@example.org", "zoe@example.org"}));
  EXPECT_EQ(out.SlRecipientCc, (QStringList{"abe@example.org", "eve@example.org"})); // 1-4 are primary
  EXPECT_TRUE(out.HtmlContent.join('\n').contains("/all/3000000003\""));

  // No team selected: nobody is copied.
  FIn.SelectedTeams.clear();
  EXPECT_TRUE(Generate().SlRecipientCc.isEmpty());
}

// The tickets were extracted a day before the report is made: the unassigned
// rule counts from the extraction, the without-update rule and the ages from now.
// The sections hold whatever the machine's zone and however the service writes
// its zone: ages are measured in absolute time.
TEST_F(MailReportTest, RulesMeasureFromTheirOwnClock)
{
  const std::pair<const char *, const char *> zones[] = {
      {"UTC", "UTC"}, {"Europe/Paris", "CET"}, {"America/New_York", "EST"}, {"Pacific/Kiritimati", "+14"}};
  // A moment as a service two hours east of UTC writes it.
  const auto eastStamp = [](const QDateTime &moment) {
    return moment.toOffsetFromUtc(7200).toString("yyyy-MM-ddTHH:mm:ss.zzz") + "+02:00";
  };
  for (const auto &[zone, abbreviation] : zones) {
    const TScopedTimeZone scoped(zone);
    SCOPED_TRACE(zone);
    FIn.ExtractionTickets = Now().addDays(-1);
    tyRestTicket recent = Ticket(1);
    recent.creationDate = MinutesAgo(1440 + 10); // not yet late against 15 minutes
    tyRestTicket late = Ticket(2);
    late.creationDate = eastStamp(Now().addSecs(-(26 * 3600 + 600))); // 26 h 10 min
    tyRestTicket fresh = Stale(3, 13 + 20.0 / 24); // 13 days 20 hours: not yet 14 days
    tyRestTicket stale = Stale(4, 14 + 1.0 / 24);
    stale.lastUpdate = eastStamp(Now().addSecs(-(14 * 86400 + 3600)));
    FIn.Tickets = {recent, late, fresh, stale};
    const TReportOutput out = Generate();
    EXPECT_EQ(std::tie(out.NbUnassigned, out.NbWithoutUpdate), std::make_tuple(1, 1));
    const QString html = out.HtmlContent.join('\n');
    EXPECT_TRUE(html.contains("(26&nbsp;hours)") && html.contains("(14&nbsp;days)")) << html.toStdString();
    EXPECT_TRUE(html.contains(QString("    13.11.2026 - 06:00&nbsp;%1</p>").arg(abbreviation))) << html.toStdString();
  }
}

// Across a change of the clocks (Paris, 29 March 2026 at 02:00) a ticket keeps
// its section and its age: the hour the clock skipped is not counted.
TEST_F(MailReportTest, ADstChangeMovesNoTicketBetweenSections)
{
  FNow = QDateTime::fromString("2026-03-29T12:00:00+02:00", Qt::ISODate).toLocalTime();
  FIn.ExtractionTickets = QDateTime::fromString("2026-03-29T03:05:00+02:00", Qt::ISODate).toLocalTime();
  tyRestTicket created = Ticket(1);
  created.creationDate = "2026-03-29T01:55:00+01:00"; // 10 minutes before the extraction, an hour on the clock's face
  tyRestTicket hours = Ticket(2);
  hours.creationDate = "2026-03-29T01:45:00+01:00"; // 20 minutes before the extraction
  tyRestTicket notYet = Stale(3, 0);
  notYet.lastUpdate = "2026-03-15T11:30:00+01:00"; // 13 days 23 h 30 min before now, 14 days on the face
  tyRestTicket stale = Stale(4, 0);
  stale.lastUpdate = "2026-03-15T10:30:00+01:00";
  FIn.Tickets = {created, hours, notYet, stale};
  const TReportOutput out = Generate();
  EXPECT_EQ(std::tie(out.NbUnassigned, out.NbWithoutUpdate), std::make_tuple(1, 1));
  const QString html = out.HtmlContent.join('\n');
  EXPECT_TRUE(html.contains("29/03/2026&nbsp;01:45:00<br><strong>(9&nbsp;hours)")) << html.toStdString();
  EXPECT_TRUE(html.contains("15/03/2026&nbsp;10:30:00<br><strong>(14&nbsp;days)"));
}

// A stamp that cannot be read leaves its date unknown: the ticket is in no
// section by that date, its cell says so, and the rest of the report stands.
TEST_F(MailReportTest, AnUnreadableStampPutsItsTicketInNoSectionByThatDate)
{
  tyRestTicket garbage = Ticket(1);
  garbage.creationDate = "-999999999-01-01T00:00:00";
  garbage.lastUpdate = "not a date";
  garbage.assignedUser = {5, "Bob"};
  garbage.tenExchangesAdded = true;
  tyRestTicket empty = Ticket(2);
  empty.creationDate.clear();
  FIn.Tickets = {garbage, empty, Stale(3, 20), Ticket(4)};
  const TReportOutput out = Generate();
  EXPECT_EQ(std::tie(out.NbUnassigned, out.NbWithoutUpdate, out.NbGt10Exch), std::make_tuple(1, 1, 1));
  const QString html = out.HtmlContent.join('\n');
  // Ticket 1's both dates, never a day-zero date.
  EXPECT_EQ(html.count("<td align=\"center\">unknown</td>"), 2) << html.toStdString();
}

// An empty report says all is clear, each title filled in (the link of "Why"
// names the service); after an incomplete retrieval it never does.
TEST_F(MailReportTest, IncompleteRetrievalIsNeverAnAllClear)
{
  const QStringList clear = Generate().HtmlContent;
  for (const char *line : {"<h2>Unassigned after 15 minutes</h2>", "<p>U-without %NBMINUTES%</p>",
                           "<h2>W-title %NBDAYS%</h2>", "<p>W-without</p>",
                           "<p>Why <a href=\"https://acme.itsm.example\">x</a></p>"})
    EXPECT_TRUE(clear.contains(line)) << line;
  EXPECT_FALSE(clear.contains("<h2>M10</h2>") || clear.join('\n').contains("<table"));

  const QString warning = "WARNING: the retrieval was incomplete: the tickets of Beta could not be read";
  const QString notChecked = "This could not be checked: the retrieval of the tickets was incomplete.";
  FIn.RetrievalWarning = warning.mid(9);
  FIn.ExtractionTickets = QDateTime(); // no retrieval ever gave tickets
  FIn.RetrievalAttempt = Now().addSecs(-3600);
  const TReportOutput out = Generate();
  const QStringList &html = out.HtmlContent;
  EXPECT_TRUE(out.Text.contains("\n\n" + warning + "\n\n"));
  EXPECT_EQ(out.Text.count(notChecked), 2);
  const qsizetype title = html.indexOf("<h2>Unassigned after 15 minutes</h2>");
  const qsizetype warned = html.indexOf("    <p><strong>" + warning + "</strong></p>");
  EXPECT_TRUE(warned >= 0 && warned < title);
  EXPECT_TRUE(html.contains("    14.11.2026 - 05:00&nbsp;CET (incomplete)</p>"));
  EXPECT_FALSE(html.contains("<p>U-without %NBMINUTES%</p>") || html.contains("<p>W-without</p>"));
  EXPECT_EQ(html.count("    <p><strong>" + notChecked + "</strong></p>"), 2);
  EXPECT_EQ(html.indexOf("    <p><strong>" + notChecked + "</strong></p>"), title + 1);

  // Tickets that were retrieved are listed all the same.
  FIn.Tickets = {Stale(1, 30)};
  const QStringList listed = Generate().HtmlContent;
  EXPECT_TRUE(listed.contains("<p>W-with 14</p>"));
  EXPECT_EQ(listed.count("    <p><strong>" + notChecked + "</strong></p>"), 1);
}

// The plain-text alternative: the parts of the HTML in the same order, one line
// per row with its ages, the text blocks read as HTML, the service's text as it is.
TEST_F(MailReportTest, PlainTextHasThePartsOfTheReportAndOneLinePerRow)
{
  FIn.HtmlTexts.Unassigned_With = {"<p>U-with <a href=\"https://kb.example/a\">kb</a></p>", "<ol><li>one</li></ol>"};
  FIn.TeamsOperators = {{10, 1}};
  FIn.Operators = {ReportOperator(1, "ann@example.org")};
  tyRestTicket urgent = Ticket(7, "REQUEST");
  urgent.title = "Password reset <urgent>";
  urgent.creationDate = "2026-11-14T02:30:00.000"; // local time, as a stamp without zone is read
  urgent.lastUpdate = "2026-11-13T23:00:00.000Z";   // midnight in Paris: the date alone
  tyRestTicket broken = Stale(8, 20.5);
  broken.title = "Line one\r\nline two\tand more";
  broken.assignedUser = {1, "Ann Lee"};
  FIn.Tickets = {urgent, broken};
  const TReportOutput out = Generate();
  // In the HTML, priority and status in their colours (escaping: the browser's test below).
  const qsizetype priority = out.HtmlContent.indexOf("<ol><li>one</li></ol>") + 22;
  EXPECT_EQ(out.HtmlContent.mid(priority, 2),
            (QStringList{"          <td align=\"center\" color=#FFFFFF bgcolor=#F4511E>P1</td>",
                         "          <td align=\"center\" nowrap color=#000000 bgcolor=#E57373>New</td>"}));
  const QString &text = out.Text;
  // Each part where it belongs: after the one before it.
  qsizetype at = 0;
  for (const QString &part :
       {QStringLiteral("Quorvex ITSM tickets follow-up\n==============================\n\nParameters\n"),
        QStringLiteral("\n\nExtraction\n14.11.2026 - 06:00 CET\n\nUnassigned after 15 minutes\n"
                       "---------------------------\n\nU-with kb <https://kb.example/a>\n\n1. one\n\n"),
        QStringLiteral("Acme | Request 7 <https://acme.itsm.example/operators/tickets/all/7> | Password reset <urgent> | "
                       "Desk | 14/11/2026 02:30:00 (3 hours) | 14/11/2026 | P1 | New\n\nW-title %NBDAYS%\n"),
        QStringLiteral("\nAcme | Incident 8 <https://acme.itsm.example/operators/tickets/all/8> | Line one  line two and "
                       "more | Desk | Ann Lee | 14/11/2026 05:00:00 | 24/10/2026 19:00:00 (20 days) | P1 | New\n\n"
                       "Why x <https://acme.itsm.example>\n"),
        QStringLiteral("\nSendTo:\nann@example.org\n\nCC:\n\nThis email was generated by Quorvex ITSM tickets "
                       "follow-up <" QUORVEX_DOC_URL ">.")}) {
    const qsizetype found = text.indexOf(part, at);
    ASSERT_GE(found, at) << part.toStdString() << "\nin\n" << text.toStdString();
    at = found + part.size();
  }
  EXPECT_EQ(at, text.size()); // and nothing after
}

// Hostile texts in every field the service fills, read back by a browser's parser:
// each is shown as its own text, nothing in the report can run, and the report has
// the elements and attributes of one made from plain values.
TEST_F(MailReportTest, ServiceTextIsShownAsTextInTheReportABrowserReads)
{
  const QStringList hostile{
      "<img src=\"https://evil.example/pixel.png\">", "Password reset <urgent>", "<img/src=x/onerror=alert(36)>",
      "<a href=\"&#32;data:text/html,<script>alert(1)</script>\">x</a>", "<img src=x alt='", "' onerror=alert(10) >",
      "<svg><script>alert(1)</script>", "<style>", "<textarea>", "<!--", "-->", "<b onmouseover=alert(1)>bold",
      "\" onfocus=\"alert(1)", "<math><mtext><img src=x onerror=alert(1)>", "</td></tr></table>after",
      "R&D &amp; <b>Ops</b>"};
  const QStringList hostileAddresses{"\"<img/src=x/onerror=alert(36)>\"@example.test",
                                     "\"</p><a href='javascript:alert(1)'>x</a>\"@example.test",
                                     "\"<b>cc</b>\"@example.test"};
  const qsizetype n = hostile.size();
  const auto fill = [this, n](const QStringList &values, const QStringList &addresses) {
    FIn.Tickets.clear();
    FIn.SelectedOrganizations.clear();
    for (qsizetype i = 0; i < n; ++i) {
      tyRestTicket ticket = Stale(static_cast<std::int32_t>(i + 1), 30);
      ticket.title = values[i];
      ticket.organization.name = values[(i + 1) % n];
      ticket.assignedTeam = {10, values[(i + 2) % n]};
      ticket.status._reference = values[(i + 3) % n];
      ticket.assignedUser = {static_cast<std::int32_t>(100 + i % 2), values[(i + 4) % n]};
      ticket.priority.reference = values[(i + 5) % n];
      FIn.Tickets.append(ticket);
      FIn.SelectedOrganizations.append({static_cast<std::int32_t>(i + 1), values[i], false, false, true});
    }
    FIn.SelectedTeams = {tyRestTeam{10, {}, values[0], {}, {}}};
    FIn.TeamsOperators = {{10, 200}};
    FIn.Operators = {ReportOperator(100, addresses[0]), ReportOperator(101, addresses[1]), ReportOperator(200, addresses[2])};
  };
  const auto read = [this](const TReportOutput &out) {
    SaveReportFiles(FConfig.File("report"), out);
    QProcess checker;
    checker.start(QStringLiteral(QUORVEX_SYSTEM_PYTHON), {QStringLiteral(QUORVEX_REPORT_SAFETY_CHECK),
                                                          FConfig.File("report.html"), QStringLiteral("utf-16")});
    EXPECT_TRUE(checker.waitForFinished(60000));
    EXPECT_EQ(checker.exitCode(), 0) << checker.readAllStandardError().toStdString();
    return QJsonDocument::fromJson(checker.readAllStandardOutput()).object().toVariantMap();
  };
  QStringList plain;
  for (qsizetype i = 0; i < n; ++i)
    plain.append(QStringLiteral("Value %1").arg(i));
  fill(plain, {"a@example.test", "b@example.test", "c@example.test"});
  const QVariantMap plainReading = read(Generate());
  fill(hostile, hostileAddresses);
  const TReportOutput out = Generate();
  const QVariantMap reading = read(out);

  EXPECT_EQ(reading["active"].toStringList(), QStringList());
  EXPECT_EQ(reading["skeleton"].toStringList(), plainReading["skeleton"].toStringList());
  const QVariantList rows = reading["rows"].toList();
  ASSERT_EQ(rows.size(), n + 1); // the header row, then the tickets
  for (qsizetype i = 0; i < n; ++i) {
    const QStringList cells = rows[i + 1].toStringList();
    const QStringList shown{cells.value(0), cells.value(2), cells.value(3), cells.value(4), cells.value(8)};
    EXPECT_EQ(shown, (QStringList{hostile[(i + 1) % n], hostile[i], hostile[(i + 2) % n], hostile[(i + 4) % n],
                                  hostile[(i + 3) % n]}));
    EXPECT_TRUE(out.Text.contains(hostile[i])) << hostile[i].toStdString(); // and in the plain text
  }
  const QStringList paragraphs = reading["paragraphs"].toStringList();
  for (const QString &shown : {"Organization(s)\n    " + hostile.join(", "), "Team(s)\n    " + hostile[0],
                               "SendTo:\n    " + hostileAddresses[1] + ", " + hostileAddresses[0], "CC:\n    " + hostileAddresses[2]})
    EXPECT_TRUE(paragraphs.contains(shown)) << shown.toStdString();
}

TEST_F(MailReportTest, InteractiveFilesUseTheirOwnEncodings)
{
  FIn.TeamsOperators = {{10, 1}};
  FIn.Operators = {ReportOperator(1, QString::fromUtf8("zoë@example.org"))};
  FIn.Tickets = {Ticket(1)};
  const TReportOutput out = Generate();
  const QString base = FConfig.File("quorvex-followup");
  EXPECT_EQ(SaveReportFiles(base, out), base + ".html");

  EXPECT_EQ(ReadTextFile(base + ".to"), QString::fromUtf8("zoë@example.org\r\n"));
  EXPECT_TRUE(QFile::exists(base + ".cc") && QFileInfo(base + ".cc").size() == 0);
  QFile file(base + ".html");
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  // A whole page, from its doctype to its end, in UTF-16LE with its mark.
  EXPECT_TRUE(out.HtmlContent.first() == "<!DOCTYPE html>" && out.HtmlContent.last() == "</html>");
  QStringEncoder utf16(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
  EXPECT_EQ(file.readAll(), QByteArray(utf16(out.HtmlContent.join("\r\n") + "\r\n")));
}
