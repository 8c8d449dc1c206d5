// The two workbooks the program writes, the mail's attachment and "Save the
// grid", read back with openpyxl as a spreadsheet reads them.

#include "SmtpTestServer.h"
#include "ReportTestData.h"
#include "report/ReportWorkbook.h"
#include "support/Raised.h"
#include "support/TempConfig.h"
#include "tickets/ColourStore.h"
#include "tickets/GridExport.h"
#include "tickets/TicketsModel.h"

#include <QFile>
#include <QJsonDocument>
#include <QSortFilterProxyModel>
#include <gtest/gtest.h>

// Readable JSON in failure messages.
void PrintTo(const QJsonArray &value, std::ostream *out)
{
  *out << QJsonDocument(value).toJson(QJsonDocument::Compact).toStdString();
}

namespace {

// The tickets of both workbooks, made at 14 November 2026, 06:00 in Paris: 4521
// unassigned, 17 stale with ten exchanges, 99 of a team not followed.
tyRestTickets Tickets()
{
  tyRestTicket stale = ReportTicket(17, "REQUEST", "2026-10-01T08:00:00.000Z", "2026-10-20T10:00:00.000Z");
  stale.assignedUser = {5, "Ann Lee"};
  stale.tenExchangesAdded = true;
  stale.status._reference = "Waiting";
  tyRestTicket other = ReportTicket(99, "CHANGE", "2026-11-14T04:00:00.000Z", "2026-11-14T04:30:00.000Z");
  other.assignedTeam = {20, "Network"};
  other.assignedUser = {6, "Bob"};
  return {ReportTicket(4521, "INCIDENT", "2026-11-14T01:30:00.000Z", "2026-11-13T23:00:00.000Z"), stale, other};
}

struct TExpectedSheet
{
  QString Name;
  QJsonArray Headers;
  QJsonArray FirstRow; // as read back: dates in ISO form, flags as booleans; empty: not checked
  qsizetype Rows;
  QString Link; // of the first row's ticket
};

class Workbooks : public ::testing::Test
{
protected:
  const TScopedTimeZone FZone{"Europe/Paris"};
  TTempConfig FConfig;
  TColourStore FColours{FConfig.File("q.ini")};
};

} // namespace

// Each sheet named after what it holds, with the grid's or the section's
// headers, each column defined once, typed cells (links, numbers, dates, flags)
// and one date format in both workbooks; the grid export holds what the view
// shows, in its order.
TEST_F(Workbooks, SheetsAreNamedTypedAndEachColumnDefinedOnce)
{
  const QDateTime now(QDate(2026, 11, 14), QTime(6, 0));
  TReportInput input = ReportInput(now);
  input.Tickets = Tickets();
  input.FollowUp = std::make_shared<TFollowUpMemory>(); // the first report: every row is new
  TMailReport report(input, FColours, [now] { return now; });
  const QByteArray attachment = ReportWorkbook(report.Generate(), FColours);

  TTicketsModel grid;
  grid.SetTickets(Tickets());
  QSortFilterProxyModel shown; // as a view shows it: the Desk team's, sorted by id
  shown.setSourceModel(&grid);
  shown.setSortRole(Qt::EditRole);
  shown.setFilterKeyColumn(TTicketsModel::colAssignedTeam);
  shown.setFilterFixedString("Desk");
  shown.sort(TTicketsModel::colId);
  ExportGridToXlsx(shown, FConfig.File("grid.xlsx"));
  QFile saved(FConfig.File("grid.xlsx"));
  ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
  const QByteArray gridFile = saved.readAll();

  const QString link = "https://acme.itsm.example/operators/tickets/all/";
  const QList<std::pair<QByteArray, QList<TExpectedSheet>>> workbooks{
      {attachment,
       {{"Unassigned",
         {"Organization", "Ticket", "Title", "Assigned Team", "Creation Date", "Hours since creation", "Last Update",
          "Priority", "Status", "Listed since", "Reports in a row"},
         {"Acme", "Incident 4521", "Ticket 4521", "Desk", "2026-11-14T02:30:00", 3, "2026-11-14T00:00:00", "P1", "New",
          "2026-11-14T06:00:00", 1},
         1,
         link + "4521"},
        {"Without update",
         {"Organization", "Ticket", "Title", "Assigned Team", "Assigned User", "Creation Date", "Last Update",
          "Days since update", "Priority", "Status", "Listed since", "Reports in a row"},
         {}, // its cells: those of the next sheet but "Days since creation"
         1,
         link + "17"},
        {"More than 10 exchanges",
         {"Organization", "Ticket", "Title", "Assigned Team", "Assigned User", "Creation Date", "Days since creation",
          "Last Update", "Days since update", "Priority", "Status", "Listed since", "Reports in a row"},
         {"Acme", "Request 17", "Ticket 17", "Desk", "Ann Lee", "2026-10-01T10:00:00", 43, "2026-10-20T12:00:00", 24,
          "P1", "Waiting", "2026-11-14T06:00:00", 1},
         1,
         link + "17"}}},
      {gridFile,
       {{"Open tickets",
         {"Type", "Id", "Organization", "Priority", "Title", "CreationDate", "Status", "Assigned Team",
          "Assigned User", "Last Update", "10 exchanges", "Listed"},
         {"REQUEST", 17, "Acme", "INCIDENT - Critical P1", "Ticket 17", "2026-10-01T10:00:00", "Waiting", "Desk",
          "Ann Lee", "2026-10-20T12:00:00", true, QJsonValue()},
         2,
         {}}}},
  };
  QSet<QString> dateFormats;
  for (const auto &[workbook, expected] : workbooks) {
    const QJsonArray sheets = ReadWorkbook(workbook);
    ASSERT_EQ(sheets.size(), expected.size());
    for (qsizetype i = 0; i < sheets.size(); ++i) {
      const QJsonObject sheet = sheets[i].toObject();
      const TExpectedSheet &want = expected[i];
      SCOPED_TRACE(want.Name.toStdString());
      EXPECT_EQ(sheet["name"].toString(), want.Name);
      const QJsonArray rows = sheet["rows"].toArray();
      ASSERT_EQ(rows.size(), want.Rows + 1);
      EXPECT_EQ(rows[0].toArray(), want.Headers);
      if (!want.FirstRow.isEmpty()) {
        EXPECT_EQ(rows[1].toArray(), want.FirstRow);
      }
      EXPECT_EQ(sheet["links"].toObject()["B2"].toString(), want.Link);
      EXPECT_EQ(std::tuple(sheet["freeze"].toString(), sheet["bold"].toBool(), sheet["filter"].toString().left(3)),
                std::tuple(QString("A2"), true, QString("A1:")));
      QJsonArray once; // one definition per column, in order, none over another
      for (qsizetype c = 1; c <= want.Headers.size(); ++c)
        once.append(QJsonArray{c, c});
      EXPECT_EQ(sheet["columns"].toArray(), once);
      for (const QJsonValue format : sheet["dateFormats"].toArray())
        dateFormats.insert(format.toString());
    }
  }
  EXPECT_EQ(dateFormats.size(), 1) << QStringList(dateFormats.values()).join(" / ").toStdString();
  // The rows the view shows, in its order.
  EXPECT_EQ(ReadWorkbook(gridFile).first().toObject()["rows"][2][1].toInt(), 4521);
}

TEST_F(Workbooks, AnUnwritablePlaceIsAnErrorNamingTheFile)
{
  WriteTextFile(FConfig.File("blocker"), "x");
  TTicketsModel model;
  const QString path = FConfig.File("blocker") + "/out.xlsx";
  const QString error = MessageRaised<EWriteError>([&] { ExportGridToXlsx(model, path); });
  EXPECT_TRUE(error.startsWith("Unable to write the workbook " + path)) << error.toStdString();
}
