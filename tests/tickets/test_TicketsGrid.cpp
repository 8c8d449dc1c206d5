#include "tickets/TicketsModel.h"

#include <QAbstractItemModelTester>
#include <gtest/gtest.h>

namespace {

tyRestTicket Ticket(std::int32_t id, const QString &created = {}, const QString &updated = {})
{
  tyRestTicket ticket;
  ticket._type = "INCIDENT";
  ticket.id = id;
  ticket.creationDate = created;
  ticket.lastUpdate = updated;
  return ticket;
}

} // namespace

// What the grid shows of its typed cells (the values themselves: Workbooks): an
// unknown date (empty or unreadable stamp) is empty, never 1 January 1899; the
// flag reads "yes"; a row links to its page once the service is known.
TEST(TicketsGrid, UnknownDatesShowEmptyFlagsReadYesAndRowsLinkToTheirPage)
{
  TTicketsModel model;
  QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
  tyRestTicket flagged = Ticket(17, "2024-03-16T09:00:00.000Z", "2024-03-17T10:15:00.000+01:00");
  flagged.tenExchangesAdded = true;
  model.SetTickets({Ticket(4521, "2024-03-15T08:30:00.123Z", ""), flagged, Ticket(2, "-999999999-01-01T00:00:00")});
  const auto shown = [&model](int row, int column) { return model.data(model.index(row, column)).toString(); };
  EXPECT_EQ((QStringList{shown(0, TTicketsModel::colLastUpdate), shown(2, TTicketsModel::colCreationDate),
                         shown(0, TTicketsModel::colTenExchanges), shown(1, TTicketsModel::colTenExchanges)}),
            (QStringList{"", "", "", "yes"}));
  EXPECT_FALSE(shown(1, TTicketsModel::colLastUpdate).isEmpty());
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
  model.SetTickets({Ticket(1), Ticket(2), Ticket(3)});
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
