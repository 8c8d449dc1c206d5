#include "core/Errors.h"
#include "support/TempConfig.h"
#include "tickets/GridExport.h"
#include "tickets/TicketsModel.h"

#include <QAbstractItemModelTester>
#include <QFile>
#include <QProcess>
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

// The first sheet read by openpyxl: a line "frozen cell|filtered range", then the
// cells as "value|type" per line, a date with its number format.
QStringList ReadWorkbook(const QString &path)
{
  QProcess python;
  python.start("/usr/bin/python3", {"-c", "import sys, openpyxl\n"
                                 "ws = openpyxl.load_workbook(sys.argv[1]).active\n"
                                 "print('%s|%s' % (ws.freeze_panes, ws.auto_filter.ref))\n"
                                 "for row in ws.iter_rows():\n"
                                 "    print(';'.join('%s|%s' % (c.value, type(c.value).__name__ + ('|' + c.number_format"
                                 " if c.is_date else '')) for c in row))\n",
                           path});
  python.waitForFinished(30000);
  EXPECT_EQ(python.exitCode(), 0) << python.readAllStandardError().toStdString();
  return QString::fromUtf8(python.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
}

} // namespace

TEST(TicketsGrid, TenColumnsWithTypedCells)
{
  TTicketsModel model;
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
  EXPECT_EQ(model.rowCount(), 0);
  EXPECT_EQ(model.columnCount(), 10);
  QStringList headers;
  for (int c = 0; c < model.columnCount(); ++c)
    headers << model.headerData(c, Qt::Horizontal).toString();
  EXPECT_EQ(headers, (QStringList{"Type", "Id", "Organization", "Priority", "Title", "CreationDate", "Status",
                                  "Assigned Team", "Assigned User", "Last Update"}));

  model.SetTickets({Ticket(4521, "Printer <b>down</b>", "2024-03-15T08:30:00.123Z", ""),
                    Ticket(17, "VPN", "2024-03-16T09:00:00.000Z", "2024-03-17T10:15:00.000+01:00")});
  ASSERT_EQ(model.rowCount(), 2);
  EXPECT_EQ(model.data(model.index(0, TTicketsModel::colId), Qt::EditRole).typeId(), QMetaType::Int);
  EXPECT_EQ(model.data(model.index(0, TTicketsModel::colId)).toInt(), 4521);
  EXPECT_EQ(model.data(model.index(0, TTicketsModel::colTitle)).toString(), "Printer <b>down</b>");
  EXPECT_EQ(model.data(model.index(0, TTicketsModel::colCreationDate), Qt::EditRole).toDateTime(),
            QDateTime(QDate(2024, 3, 15), QTime(8, 30, 0, 123)));
  // An empty time stamp shows what its conversion gives: 1 January 1899.
  EXPECT_EQ(model.data(model.index(0, TTicketsModel::colLastUpdate), Qt::EditRole).toDateTime(),
            QDateTime(QDate(1899, 1, 1), QTime(0, 0)));
  EXPECT_EQ(model.data(model.index(1, TTicketsModel::colLastUpdate), Qt::EditRole).toDateTime(),
            QDateTime(QDate(2024, 3, 17), QTime(10, 15)));
}

TEST(TicketsGrid, ABadTimeStampLeavesTheGridAsItWas)
{
  TTicketsModel model;
  model.SetTickets({Ticket(1, "kept", "2024-03-15", "")});
  EXPECT_THROW(model.SetTickets({Ticket(2, "bad", "2024--1-01", "")}), ERangeError);
  ASSERT_EQ(model.rowCount(), 1);
  EXPECT_EQ(model.data(model.index(0, TTicketsModel::colTitle)).toString(), "kept");
}

TEST(GridExport, WorkbookHoldsHeadersNumbersAndDates)
{
  TTempConfig config;
  TTicketsModel model;
  model.SetTickets({Ticket(4521, QString::fromUtf8("Imprimante hors ligne – étage 2"), "2024-03-15T08:30:00.000Z",
                           "")});
  const QString path = config.File("tickets export"); // no extension: used as typed
  ExportGridToXlsx(model, path);
  ASSERT_TRUE(QFile::exists(path));

  // The reader wants the usual extension; the workbook itself is the same.
  ASSERT_TRUE(QFile::copy(path, path + ".xlsx"));
  const QStringList rows = ReadWorkbook(path + ".xlsx");
  ASSERT_EQ(rows.size(), 3);
  EXPECT_EQ(rows[0], "A2|A1:J2");
  EXPECT_EQ(rows[1], "Type|str;Id|str;Organization|str;Priority|str;Title|str;CreationDate|str;Status|str;"
                     "Assigned Team|str;Assigned User|str;Last Update|str");
  const QStringList cells = rows[2].split(';');
  ASSERT_EQ(cells.size(), 10);
  EXPECT_EQ(cells[1], "4521|int");
  EXPECT_EQ(cells[4], QString::fromUtf8("Imprimante hors ligne – étage 2|str"));
  EXPECT_EQ(cells[5], "2024-03-15 08:30:00|datetime|yyyy-mm-dd hh:mm");
  EXPECT_TRUE(cells[9].endsWith("|str")); // before 1900: written as shown
}

TEST(GridExport, EmptyGridExportsItsHeaderRow)
{
  TTempConfig config;
  TTicketsModel model;
  ExportGridToXlsx(model, config.File("empty.xlsx"));
  EXPECT_EQ(ReadWorkbook(config.File("empty.xlsx")).size(), 2);
}

TEST(GridExport, UnwritablePlaceIsAnErrorNamingTheFile)
{
  TTempConfig config;
  WriteTextFile(config.File("blocker"), "x");
  TTicketsModel model;
  const QString path = config.File("blocker") + "/out.xlsx";
  try {
    ExportGridToXlsx(model, path);
    FAIL() << "no error raised";
  } catch (const EWriteError &error) {
    EXPECT_TRUE(error.Message().startsWith("Unable to write to " + path)) << error.Message().toStdString();
  }
}
