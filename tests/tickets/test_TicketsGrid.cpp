#include "support/TempConfig.h"
#include "tickets/TicketsModel.h"

#include <QAbstractItemModelTester>
#include <gtest/gtest.h>

namespace {

tyRestTicket Ticket(std::int32_t id, const QString &title, const QString &created, const QString &updated)
{
  tyRestTicket ticket{.id = id, .lastUpdate = updated, .title = title};
  ticket._type = "INCIDENT";
  ticket.organization.name = "Acme";
  ticket.priority.reference = "Critical P1";
  ticket.creationDate = created;
  ticket.status._reference = "New";
  ticket.assignedTeam.name = "N1";
  return ticket;
}

} // namespace

// Typed values for sorting and the export, and what the grid shows of them: an
// unknown date (empty or unreadable stamp) is empty, never 1 January 1899.
TEST(TicketsGrid, TwelveColumnsWithTypedCells)
{
  const TScopedTimeZone paris("Europe/Paris");
  TTicketsModel model;
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
  EXPECT_EQ(model.rowCount(), 0);
  EXPECT_EQ(model.columnCount(), 12);

  tyRestTicket flagged = Ticket(17, "VPN", "2024-03-16T09:00:00.000Z", "2024-03-17T10:15:00.000+01:00");
  flagged.tenExchangesAdded = true;
  model.SetTickets({Ticket(4521, "Printer <b>down</b>", "2024-03-15T08:30:00.123Z", ""), flagged,
                    Ticket(2, "bad", "-999999999-01-01T00:00:00", "2024-03-15")});
  ASSERT_EQ(model.rowCount(), 3);
  const auto edit = [&model](int row, int column) { return model.data(model.index(row, column), Qt::EditRole); };
  const auto shown = [&model](int row, int column) { return model.data(model.index(row, column)).toString(); };
  EXPECT_EQ(std::pair(edit(0, TTicketsModel::colId).typeId(), edit(0, TTicketsModel::colId).toLongLong()),
            std::pair(int(QMetaType::LongLong), 4521LL));
  EXPECT_EQ(shown(0, TTicketsModel::colTitle), "Printer <b>down</b>");
  // Local time: the service's UTC moment as the clock in Paris shows it.
  EXPECT_EQ(edit(0, TTicketsModel::colCreationDate).toDateTime(), QDateTime(QDate(2024, 3, 15), QTime(9, 30, 0, 123)));
  EXPECT_EQ(edit(1, TTicketsModel::colLastUpdate).toDateTime(), QDateTime(QDate(2024, 3, 17), QTime(10, 15)));
  EXPECT_EQ(edit(2, TTicketsModel::colLastUpdate).toDateTime(), QDateTime(QDate(2024, 3, 15), QTime(0, 0)));
  for (const auto &[row, column] : {std::pair{0, TTicketsModel::colLastUpdate}, {2, TTicketsModel::colCreationDate}}) {
    EXPECT_FALSE(edit(row, column).toDateTime().isValid());
    EXPECT_EQ(shown(row, column), "");
  }
  EXPECT_EQ(std::make_pair(edit(1, TTicketsModel::colTenExchanges), shown(1, TTicketsModel::colTenExchanges)),
            std::make_pair(QVariant(true), QString("yes")));
  EXPECT_EQ(shown(0, TTicketsModel::colTenExchanges), "");
  EXPECT_EQ(model.headerData(TTicketsModel::colTenExchanges, Qt::Horizontal).toString(), "10 exchanges");
  // The page a double-click opens: the report's link, once the service is known.
  EXPECT_EQ(model.data(model.index(0, 0), TTicketsModel::LinkRole).toString(), "");
  model.SetServiceUrl("https://desk.example");
  EXPECT_TRUE(model.data(model.index(1, TTicketsModel::colTitle), TTicketsModel::LinkRole).toString().startsWith(
      "https://desk.example/"));
  EXPECT_TRUE(model.data(model.index(1, 0), TTicketsModel::LinkRole).toString().contains("17"));
}

// What the follow-up says of each row: since when it is listed, new rows
// marked, snoozed rows with their end; the tickets themselves stay.
TEST(TicketsGrid, FollowUpMarksShowSinceWhenAndSnoozes)
{
  TTicketsModel model;
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
  model.SetTickets({Ticket(1, "a", "", ""), Ticket(2, "b", "", ""), Ticket(3, "c", "", "")});
  model.SetFollowUp({{1, {.Listed = "new", .New = true}},
                     {2, {.Listed = "since 18.11.2026, 5 reports"}},
                     {3, {.Listed = "since 20.11.2026, 3 reports", .Snoozed = "until 01.12.2026"}}});
  QStringList shown;
  for (int row = 0; row < 3; ++row)
    shown.append(model.data(model.index(row, TTicketsModel::colListed)).toString() + " | " +
                 QString::number(model.data(model.index(row, 0), TTicketsModel::NewRole).toBool()) +
                 QString::number(model.data(model.index(row, 0), TTicketsModel::SnoozedRole).toBool()) + " | " +
                 model.data(model.index(row, 4), TTicketsModel::TicketIdRole).toString());
  EXPECT_EQ(shown, (QStringList{"new | 10 | 1", "since 18.11.2026, 5 reports | 00 | 2",
                                "snoozed until 01.12.2026 | 01 | 3"}));
}
