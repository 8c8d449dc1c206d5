#pragma once

#include "rest/uTypes.h"
#include "tickets/TicketColumns.h"

#include <QList>

enum class TReportSection;
struct TReportOutput;

// The rows of one section, in report order: tickets of the report's input by
// position, so that no ticket is copied.
class TReportRows
{
public:
  class const_iterator
  {
  public:
    using value_type = tyRestTicket;
    using difference_type = qsizetype;
    const_iterator(const TReportRows &rows, qsizetype row) : FRows(&rows), FRow(row) {}
    const tyRestTicket &operator*() const { return (*FRows)[FRow]; }
    const_iterator &operator++()
    {
      ++FRow;
      return *this;
    }
    bool operator==(const const_iterator &other) const = default;

  private:
    const TReportRows *FRows;
    qsizetype FRow;
  };

  TReportRows() = default;
  explicit TReportRows(tyRestTickets tickets) : FTickets(std::move(tickets)) {}
  void Append(qsizetype ticket) { FIndexes.append(ticket); }
  qsizetype size() const { return FIndexes.size(); }
  bool isEmpty() const { return FIndexes.isEmpty(); }
  const tyRestTicket &operator[](qsizetype row) const { return FTickets.at(FIndexes.at(row)); }
  const_iterator begin() const { return {*this, 0}; }
  const_iterator end() const { return {*this, size()}; }

private:
  tyRestTickets FTickets; // shared with the input, never changed
  QList<qsizetype> FIndexes;
};

// The columns of a section, in order: Organization, Ticket, Title, Assigned
// Team, Assigned User (not of the unassigned), the dates with the ages the
// section counts, Priority, Status; with a memory (`remembers`), since when each
// row is listed.
QList<const TTicketColumn *> SectionColumns(TReportSection section, bool remembers);

// The rows of a section of `report` as a table of the section's columns shown in
// `shownIn` (the mail or the workbook): what every rendering of a section reads.
TTicketTable SectionTable(const TReportOutput &report, TReportSection section, TShownIn shownIn,
                          const TCellContext &context);
