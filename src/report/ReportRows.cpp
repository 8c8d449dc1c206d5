#include "ReportRows.h"

#include "MailReport.h"
#include "core/uTools.h"

QList<const TTicketColumn *> SectionColumns(TReportSection section, bool remembers)
{
  using C = TColumnId;
  QList<const TTicketColumn *> columns;
  switch (section) {
  case TReportSection::Unassigned:
    columns = Columns({C::Organization, C::Ticket, C::Title, C::AssignedTeam, C::CreationDate, C::HoursSinceCreation,
                       C::LastUpdate, C::Priority, C::Status});
    break;
  case TReportSection::WithoutUpdate:
    columns = Columns({C::Organization, C::Ticket, C::Title, C::AssignedTeam, C::AssignedUser, C::CreationDate,
                       C::LastUpdate, C::DaysSinceUpdate, C::Priority, C::Status});
    break;
  case TReportSection::Gt10Exchanges:
    columns = Columns({C::Organization, C::Ticket, C::Title, C::AssignedTeam, C::AssignedUser, C::CreationDate,
                       C::DaysSinceCreation, C::LastUpdate, C::DaysSinceUpdate, C::Priority, C::Status});
    break;
  }
  if (remembers)
    columns += Columns({C::Listed, C::Escalated, C::ListedSince, C::ReportsInARow});
  return columns;
}

TTicketTable SectionTable(const TReportOutput &report, TReportSection section, TShownIn shownIn,
                          const TCellContext &context)
{
  const auto index = static_cast<std::size_t>(section);
  const TReportRows &rows = report.Rows.at(index);
  const QList<TListing> &listings = report.Listings.at(index);
  TTicketTable table;
  for (const TTicketColumn *column : SectionColumns(section, report.Remembers))
    if (column->ShownIn & shownIn)
      table.Columns.append(column);
  table.Rows.reserve(rows.size());
  for (qsizetype row = 0; row < rows.size(); ++row) {
    const tyRestTicket &ticket = rows[row];
    // A stamp that cannot be read is an unknown date, without an age.
    const QDateTime creation = RestTimestamp2DateTime(ticket.creationDate).value_or(QDateTime());
    const QDateTime update = RestTimestamp2DateTime(ticket.lastUpdate).value_or(QDateTime());
    TRowMark mark;
    if (row < listings.size()) {
      const TListing &listing = listings.at(row);
      mark = {ListedText(listing), listing.New, {}, listing.Since, listing.Reports, listing.Escalated};
    }
    table.Append({ticket, creation, update, mark, context});
  }
  return table;
}
