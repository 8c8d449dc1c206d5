// Three consecutive unattended runs over the demo service and a real relay:
// what the report remembers of the last one it sent.

#include "RelayStepsFixture.h"
#include "report/FollowUpHistory.h"
#include "report/FollowUpStore.h"

#include <QJsonArray>

namespace {

class FollowUpTest : public RelayStepsFixture
{
protected:
  FollowUpTest()
  {
    FState->EditMailSettings([](tySMTPserver &, tyDelivery &delivery) {
      delivery.AttachWorkbook = true;
      delivery.FollowUp.EscalateAfter = 2;
      delivery.FollowUp.EscalateTo = "boss@vellmor.example";
      return true;
    });
    // Besides 11 (unassigned, stale), 12 and 13 (notices) and 21 (fresh):
    // 15 stale, 16 unassigned, 17 and 18 stale, 22 stale at Beta & Co.
    AddTicket(DemoTicket(15, 1, "Bob", 40, 30));
    AddTicket(DemoTicket(16, 1, "", 3, 0.1));
    AddTicket(DemoTicket(17, 1, "Ann", 40, 30));
    AddTicket(DemoTicket(18, 1, "Ann", 40, 30));
    AddTicket(DemoTicket(22, 2, "Ann", 40, 30));
  }

  TFollowUpHistory History()
  {
    QStringList warnings;
    FStore = TFollowUpStore::Open(FState->ReportFile().chopped(5) + ".db", warnings);
    return TFollowUpHistory(*FStore);
  }

  std::unique_ptr<TFollowUpStore> FStore;
};

TEST_F(FollowUpTest, ThreeRunsTellWhatIsNewWhatLeftWhatIsSnoozedAndWhatIsEscalated)
{
  ASSERT_TRUE(FRelay.Started()) << FRelay.Failure().toStdString();
  const QString today = QDate::currentDate().toString("dd.MM.yyyy");
  const QString inTwoDays = QDate::currentDate().addDays(2).toString("dd.MM.yyyy");
  const QString subject = "Quorvex ITSM tickets follow-up - " + today + ": ";
  const QString since2 = "since " + today + ", 2 reports";
  const struct
  {
    std::function<void()> Before;
    int Exit;
    QString Subject;
    QStringList Text; // lines of the text part; the HTML shows each cell too
    QStringList Cc;
    QList<QVariantList> UnassignedSheet; // Ticket, Reports in a row
  } runs[] = {
      {[] {}, CExitOk, subject + "2 unassigned, 5 without update, 2 with ten exchanges",
       {"2 unassigned\n5 without update\n2 with ten exchanges\nFirst report: nothing to compare with",
        "New | new"},
       {"leads@vellmor.example"},
       {{"Incident 11", 1}, {"Incident 16", 1}}},
      {[this] {
         // A dry run between two reports is not one: nothing is recorded.
         ASSERT_EQ(Run({.DryRun = true}), CExitOk);
         AddTicket(DemoTicket(14, 1, "", 1, 0.1));
         ChangeTicket(16, [](QJsonObject &t) { t["assignedUser"] = QJsonObject{{"id", 2}, {"name", "Bob"}}; });
         ChangeTicket(15, [](QJsonObject &t) { t["lastUpdate"] = Stamp(0.01); });
         ChangeTicket(13, [](QJsonObject &t) { t = {}; });
         FService.SetFaults({.Bodies = {{"/api/ticket/list/open", -1, R"({"error":"internal"})", 500, {}, 2}}});
         TFollowUpHistory history = History();
         history.Snooze({17, QDate::currentDate().addDays(2), false, false, {}, {}, 0, "lead", QDateTime::currentDateTime()});
         history.Snooze({18, {}, true, false, {}, {}, 0, "lead", QDateTime::currentDateTime()});
       },
       CExitIncomplete, subject + "2 unassigned, 1 without update, 1 with ten exchanges (incomplete)",
       {"2 unassigned (1 new)\n1 without update (0 new)\n1 with ten exchanges (0 new)\n"
        "5 left the report since " + today,
        "2 snoozed\n2 escalated",
        "Escalated (on 2 reports or more)", "Acme | Incident 11 | Ticket 11 | Unassigned | " + since2,
        "Ticket 14 | Desk |", "| " + since2 + " (escalated)",
        "Not compared, their tickets could not be retrieved this time: Beta & Co",
        "Acme | Incident 16 | Ticket 16 | Unassigned | assigned",
        "Acme | Incident 15 | Ticket 15 | Without update | updated",
        "Acme | Incident 17 | Ticket 17 | Without update | snoozed until " + inTwoDays,
        "Acme | Incident 18 | Ticket 18 | Without update | snoozed until it changes",
        "Acme | Incident 13 | Ticket 13 | More than 10 exchanges | no longer open"},
       {"leads@vellmor.example", "boss@vellmor.example"},
       {{"Incident 11", 2}, {"Incident 14", 1}}},
      {[this] {
         FService.SetFaults({});
         ChangeTicket(18, [](QJsonObject &t) { t["status"] = QJsonObject{{"id", 2}, {"reference", "Waiting"}}; });
       },
       CExitOk, subject + "2 unassigned, 3 without update, 1 with ten exchanges",
       {"2 unassigned (0 new)\n3 without update (1 new)\n1 with ten exchanges (0 new)\n1 snoozed\n4 escalated",
        "Acme | Incident 11 | Ticket 11 | Unassigned | since " + today + ", 3 reports",
        "Ticket 22 | Desk | Ann |", "| Waiting | new", "No ticket left the report."},
       {"leads@vellmor.example", "boss@vellmor.example"},
       {{"Incident 11", 3}, {"Incident 14", 2}}},
  };
  int number = 0;
  for (const auto &run : runs) {
    SCOPED_TRACE(++number);
    run.Before();
    const qsizetype before = FRelay.Messages().size();
    EXPECT_EQ(Run(), run.Exit);
    ASSERT_EQ(FRelay.Messages().size(), before + 1);
    const QJsonObject mail = FRelay.Messages().last();
    EXPECT_EQ(mail["headers"]["Subject"].toString(), run.Subject);
    EXPECT_EQ(mail["headers"]["Cc"].toString().split(", "), run.Cc);
    const QString text = mail["parts"][0]["text"].toString().replace("\r\n", "\n");
    const QString html = mail["parts"][1]["text"].toString();
    for (const QString &expected : run.Text) {
      EXPECT_TRUE(text.contains(expected)) << expected.toStdString() << "\n" << text.toStdString();
      for (const QString &cell : expected.split(QRegularExpression("\\s*\\|\\s*|\n| \\("), Qt::SkipEmptyParts))
        EXPECT_TRUE(html.contains(cell.trimmed().toHtmlEscaped())) << cell.toStdString();
    }
    for (const QJsonValue sheet : ReadWorkbook(QByteArray::fromBase64(mail["parts"][2]["data"].toString().toLatin1())))
      if (sheet["name"] == "Unassigned") {
        const QJsonArray rows = sheet["rows"].toArray();
        QList<QVariantList> shown;
        for (qsizetype i = 1; i < rows.size(); ++i)
          shown.append({rows[i][1].toString(), rows[i].toArray().last().toInt()});
        EXPECT_EQ(shown, run.UnassignedSheet);
      }
  }
  EXPECT_TRUE(ReadTextFile(FState->LogFile()).contains(" - * Escalated: 4"));
  const QStringList history = HistoryLines(History().LastRuns(10));
  ASSERT_EQ(history.size(), 3);
  EXPECT_TRUE(history[0].contains("concerned  complete  2 unassigned, 3 without update, 1 with ten exchanges  1 new, "
                                  "0 left  mails: 1 sent, 0 not sent  exit status: 0"))
      << history[0].toStdString();
  EXPECT_TRUE(history[1].contains("incomplete") && history[1].contains("5 left") &&
              history[1].contains("exit status: 3"))
      << history[1].toStdString();
}

// A report nobody received is not one the next report compares with.
TEST_F(FollowUpTest, AReportWhoseEveryMailFailedIsNotRemembered)
{
  FState->EditMailSettings([](tySMTPserver &smtp, tyDelivery &) { smtp.Port = UnusedPort(); return true; });
  EXPECT_EQ(Run(), CExitStepFailed);
  EXPECT_TRUE(History().LastRuns(10).isEmpty());
}

} // namespace
