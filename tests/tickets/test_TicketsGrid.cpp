#include "support/Raised.h"
#include "report/SmtpTestServer.h"
#include "support/TempConfig.h"
#include "tickets/GridExport.h"
#include "tickets/TicketsModel.h"

#include <QAbstractItemModelTester>
#include <QFile>
#include <QJsonArray>
#include <gtest/gtest.h>

namespace {

tyRestTicket Ticket(std::int32_t id, const QString &title, const QString &created, const QString &updated)
{
  tyRestTicket ticket;
  ticket._type = "INCIDENT";
  ticket.id = id;
  ticket.organization.name = "Acme";
  ticket.priority.reference = "Critical P1";
  ticket.title = title;
  ticket.creationDate = created;
  ticket.status._reference = "New";
  ticket.assignedTeam.name = "N1";
  ticket.assignedUser.name = "";
  ticket.lastUpdate = updated;
  return ticket;
}

} // namespace

TEST(TicketsGrid, ElevenColumnsWithTypedCells)
{
  const TScopedTimeZone paris("Europe/Paris");
  TTicketsModel model;
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
  EXPECT_EQ(model.rowCount(), 0);
  EXPECT_EQ(model.columnCount(), 11);

  model.SetTickets({Ticket(4521, "Printer <b>down</b>", "2024-03-15T08:30:00.123Z", ""),
                    Ticket(17, "VPN", "2024-03-16T09:00:00.000Z", "2024-03-17T10:15:00.000+01:00")});
  ASSERT_EQ(model.rowCount(), 2);
  EXPECT_EQ(model.data(model.index(0, TTicketsModel::colId), Qt::EditRole).typeId(), QMetaType::LongLong);
  EXPECT_EQ(model.data(model.index(0, TTicketsModel::colId)).toInt(), 4521);
  EXPECT_EQ(model.data(model.index(0, TTicketsModel::colTitle)).toString(), "Printer <b>down</b>");
  // Local time: the service's UTC moment as the clock in Paris shows it.
  EXPECT_EQ(model.data(model.index(0, TTicketsModel::colCreationDate), Qt::EditRole).toDateTime(),
            QDateTime(QDate(2024, 3, 15), QTime(9, 30, 0, 123)));
  // An empty time stamp is an unknown date: an empty cell, never 1 January 1899.
  EXPECT_FALSE(model.data(model.index(0, TTicketsModel::colLastUpdate), Qt::EditRole).toDateTime().isValid());
  EXPECT_EQ(model.data(model.index(0, TTicketsModel::colLastUpdate)).toString(), "");
  EXPECT_EQ(model.data(model.index(1, TTicketsModel::colLastUpdate), Qt::EditRole).toDateTime(),
            QDateTime(QDate(2024, 3, 17), QTime(10, 15)));
}

// What the follow-up says of each row: since when it is listed, new rows
// marked, snoozed rows with their end; the tickets themselves stay.
TEST(TicketsGrid, FollowUpMarksShowSinceWhenAndSnoozes)
{
  TTicketsModel model;
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
  model.SetTickets({Ticket(1, "a", "", ""), Ticket(2, "b", "", ""), Ticket(3, "c", "", "")});
  model.SetFollowUp({{1, {"new", true, {}}}, {2, {"since 18.11.2026, 5 reports", false, {}}},
                     {3, {"since 20.11.2026, 3 reports", false, "until 01.12.2026"}}});
  QStringList shown;
  for (int row = 0; row < 3; ++row)
    shown.append(model.data(model.index(row, TTicketsModel::colListed)).toString() + " | " +
                 QString::number(model.data(model.index(row, 0), TTicketsModel::NewRole).toBool()) +
                 QString::number(model.data(model.index(row, 0), TTicketsModel::SnoozedRole).toBool()) + " | " +
                 model.data(model.index(row, 4), TTicketsModel::TicketIdRole).toString());
  EXPECT_EQ(shown, (QStringList{"new | 10 | 1", "since 18.11.2026, 5 reports | 00 | 2",
                                "snoozed until 01.12.2026 | 01 | 3"}));
  EXPECT_EQ(model.headerData(TTicketsModel::colListed, Qt::Horizontal).toString(), "Listed");
}

TEST(TicketsGrid, ABadTimeStampIsAnUnknownDateAndTheTicketIsListed)
{
  TTicketsModel model;
  model.SetTickets({Ticket(1, "kept", "2024-03-15", ""), Ticket(2, "bad", "-999999999-01-01T00:00:00", "2024--1-01")});
  ASSERT_EQ(model.rowCount(), 2);
  EXPECT_EQ(model.data(model.index(1, TTicketsModel::colTitle)).toString(), "bad");
  EXPECT_EQ(model.data(model.index(1, TTicketsModel::colCreationDate)).toString(), "");
  EXPECT_EQ(model.data(model.index(0, TTicketsModel::colCreationDate), Qt::EditRole).toDateTime(),
            QDateTime(QDate(2024, 3, 15), QTime(0, 0)));
}

TEST(GridExport, WorkbookHoldsHeadersNumbersAndDates)
{
  const TScopedTimeZone utc("UTC");
  TTempConfig config;
  TTicketsModel model;
  model.SetTickets({Ticket(4521, QString::fromUtf8("Imprimante hors ligne – étage 2"), "2024-03-15T08:30:00.000Z",
                           "")});
  const QString path = config.File("tickets export"); // no extension: used as typed
  ExportGridToXlsx(model, path);
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const QJsonArray sheets = ReadWorkbook(file.readAll());
  ASSERT_EQ(sheets.size(), 1);
  EXPECT_EQ(sheets[0]["freeze"].toString(), "A2");
  EXPECT_EQ(sheets[0]["filter"].toString(), "A1:K2");
  const QJsonArray rows = sheets[0]["rows"].toArray();
  ASSERT_EQ(rows.size(), 2);
  EXPECT_EQ(rows[0][0].toString(), "Type");
  EXPECT_EQ(rows[0][9].toString(), "Last Update");
  EXPECT_EQ(rows[1][1].toVariant(), QVariant(4521.0));
  EXPECT_EQ(rows[1][4].toString(), QString::fromUtf8("Imprimante hors ligne – étage 2"));
  EXPECT_EQ(rows[1][5].toString(), "2024-03-15T08:30:00"); // a date, not its text
  // An unknown date: written as shown, empty.
  EXPECT_EQ(rows[1][9].toString(), "");
}

TEST(GridExport, UnwritablePlaceIsAnErrorNamingTheFile)
{
  TTempConfig config;
  WriteTextFile(config.File("blocker"), "x");
  TTicketsModel model;
  const QString path = config.File("blocker") + "/out.xlsx";
  const QString error = MessageRaised<EWriteError>([&] { ExportGridToXlsx(model, path); });
  EXPECT_TRUE(error.startsWith("Unable to write to " + path)) << error.toStdString();
}
