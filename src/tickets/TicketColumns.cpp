#include "TicketColumns.h"

#include "ColourStore.h"
#include "core/uTools.h"

#include <QHash>
#include <algorithm>

namespace {

constexpr qint64 CMillisecondsPerHour = 60 * 60 * 1000;
constexpr qint64 CMillisecondsPerDay = 24 * CMillisecondsPerHour;

// Whole units from `from` to `to`, truncated toward zero. Service stamps lie
// between the years 0 and 9999, so that even their hours fit a 32-bit number.
std::int32_t WholeUnits(const QDateTime &from, const QDateTime &to, qint64 unit)
{
  return static_cast<std::int32_t>(from.msecsTo(to) / unit);
}

// The age of a date of the row, nothing when the date is unknown.
QVariant Age(const QDateTime &moment, const TTicketRow &row, TAge unit)
{
  return moment.isValid() ? QVariant(AgeOf(moment, row.Context.Now, unit)) : QVariant();
}

// "Incident 4521": the ticket's type as people name it (nothing for a type of
// no known name), its id, and its page in the service's web interface.
TCellValue TicketLink(const TTicketRow &row)
{
  static const QHash<QString, QString> typeNames{{QStringLiteral("INCIDENT"), QStringLiteral("Incident")},
                                                 {QStringLiteral("REQUEST"), QStringLiteral("Request")},
                                                 {QStringLiteral("CHANGE"), QStringLiteral("Change")},
                                                 {QStringLiteral("PROBLEM"), QStringLiteral("Problem")}};
  const QString id = QString::number(row.Ticket.id);
  return {typeNames.value(row.Ticket._type) + u' ' + id,
          row.Context.ServiceUrl + QStringLiteral("/operators/tickets/all/") + id};
}

TCellValue Listed(const TTicketRow &row)
{
  return {row.Mark.Snoozed.isEmpty() ? row.Mark.Listed : QStringLiteral("snoozed ") + row.Mark.Snoozed};
}

// Every column, in the order of TColumnId.
const TTicketColumn CColumns[] = {
    {.Id = TColumnId::Type, .Caption = QStringLiteral("Type"), .Type = TCellType::Text, .Width = 12,
     .Value = [](const TTicketRow &r) -> TCellValue { return {r.Ticket._type}; }},
    {.Id = TColumnId::Id, .Caption = QStringLiteral("Id"), .Type = TCellType::Number, .Width = 10,
     .Value = [](const TTicketRow &r) -> TCellValue { return {qlonglong(r.Ticket.id)}; }},
    {.Id = TColumnId::Organization, .Caption = QStringLiteral("Organization"), .Type = TCellType::Text, .Width = 24,
     .Value = [](const TTicketRow &r) -> TCellValue { return {r.Ticket.organization.name}; }, .NoWrap = true},
    {.Id = TColumnId::Ticket, .Caption = QStringLiteral("Ticket"), .Type = TCellType::Link, .Width = 16,
     .Value = TicketLink, .NoWrap = true},
    // The grid shows the priority as the service names it, the report its code.
    {.Id = TColumnId::GridPriority, .Caption = QStringLiteral("Priority"), .Type = TCellType::Text, .Width = 24,
     .Value = [](const TTicketRow &r) -> TCellValue { return {r.Ticket.priority.reference}; }},
    {.Id = TColumnId::Priority, .Caption = QStringLiteral("Priority"), .Type = TCellType::Text, .Width = 10,
     .Value = [](const TTicketRow &r) -> TCellValue {
       return {r.Context.Colours->GetPriorityText(r.Ticket.priority.reference)};
     },
     .Centred = true, .Colours = &Setting::PriorityColours},
    {.Id = TColumnId::Title, .Caption = QStringLiteral("Title"), .Type = TCellType::Text, .Width = 50,
     .Value = [](const TTicketRow &r) -> TCellValue { return {r.Ticket.title}; }},
    {.Id = TColumnId::GridCreationDate, .Caption = QStringLiteral("CreationDate"), .Type = TCellType::DateTime,
     .Width = 17, .Value = [](const TTicketRow &r) -> TCellValue { return {r.CreationDate}; }},
    {.Id = TColumnId::CreationDate, .Caption = QStringLiteral("Creation Date"), .Type = TCellType::DateTime,
     .Width = 17, .Value = [](const TTicketRow &r) -> TCellValue { return {r.CreationDate}; }, .Centred = true,
     .KeepTogether = true},
    {.Id = TColumnId::Status, .Caption = QStringLiteral("Status"), .Type = TCellType::Text, .Width = 16,
     .Value = [](const TTicketRow &r) -> TCellValue { return {r.Ticket.status._reference}; }, .NoWrap = true,
     .Centred = true, .Colours = &Setting::StatusColours},
    {.Id = TColumnId::AssignedTeam, .Caption = QStringLiteral("Assigned Team"), .Type = TCellType::Text, .Width = 18,
     .Value = [](const TTicketRow &r) -> TCellValue { return {r.Ticket.assignedTeam.name}; }, .NoWrap = true},
    {.Id = TColumnId::AssignedUser, .Caption = QStringLiteral("Assigned User"), .Type = TCellType::Text, .Width = 18,
     .Value = [](const TTicketRow &r) -> TCellValue { return {r.Ticket.assignedUser.name}; }, .NoWrap = true,
     .KeepTogether = true},
    {.Id = TColumnId::LastUpdate, .Caption = QStringLiteral("Last Update"), .Type = TCellType::DateTime, .Width = 17,
     .Value = [](const TTicketRow &r) -> TCellValue { return {r.LastUpdate}; }, .Centred = true,
     .KeepTogether = true},
    {.Id = TColumnId::TenExchanges, .Caption = QStringLiteral("10 exchanges"), .Type = TCellType::Flag, .Width = 14,
     .Value = [](const TTicketRow &r) -> TCellValue { return {r.Ticket.tenExchangesAdded}; }},
    {.Id = TColumnId::Listed, .Caption = QStringLiteral("Listed"), .Type = TCellType::Text, .Width = 28,
     .Value = Listed, .ShownIn = InMail, .Centred = true},
    {.Id = TColumnId::Escalated, .Caption = QStringLiteral("Escalated"), .Type = TCellType::Flag, .Width = 11,
     .Value = [](const TTicketRow &r) -> TCellValue { return {r.Mark.Escalated}; }, .ShownIn = InMail,
     .Note = "escalated"},
    {.Id = TColumnId::ListedSince, .Caption = QStringLiteral("Listed since"), .Type = TCellType::DateTime, .Width = 17,
     .Value = [](const TTicketRow &r) -> TCellValue { return {r.Mark.Since}; }, .ShownIn = InWorkbook},
    {.Id = TColumnId::ReportsInARow, .Caption = QStringLiteral("Reports in a row"), .Type = TCellType::Number,
     .Width = 17,
     .Value = [](const TTicketRow &r) -> TCellValue {
       return {r.Mark.Reports > 0 ? QVariant(r.Mark.Reports) : QVariant()};
     },
     .ShownIn = InWorkbook},
    {.Id = TColumnId::HoursSinceCreation, .Caption = QStringLiteral("Hours since creation"), .Type = TCellType::Number,
     .Width = 21, .Value = [](const TTicketRow &r) -> TCellValue { return {Age(r.CreationDate, r, TAge::Hours)}; },
     .Note = "%1 hours"},
    {.Id = TColumnId::DaysSinceCreation, .Caption = QStringLiteral("Days since creation"), .Type = TCellType::Number,
     .Width = 20, .Value = [](const TTicketRow &r) -> TCellValue { return {Age(r.CreationDate, r, TAge::Days)}; },
     .Note = "%1 days"},
    {.Id = TColumnId::DaysSinceUpdate, .Caption = QStringLiteral("Days since update"), .Type = TCellType::Number,
     .Width = 18, .Value = [](const TTicketRow &r) -> TCellValue { return {Age(r.LastUpdate, r, TAge::Days)}; },
     .Note = "%1 days"},
};

} // namespace

const TTicketColumn &Column(TColumnId id)
{
  const TTicketColumn &column = CColumns[static_cast<std::size_t>(id)];
  Q_ASSERT(column.Id == id); // the table follows the order of TColumnId
  return column;
}

QList<const TTicketColumn *> Columns(std::initializer_list<TColumnId> ids)
{
  QList<const TTicketColumn *> columns;
  for (const TColumnId id : ids)
    columns.append(&Column(id));
  return columns;
}

const QList<const TTicketColumn *> &GridColumns()
{
  static const QList<const TTicketColumn *> columns = [] {
    QList<const TTicketColumn *> list;
    for (const TColumnId id : CGridColumnIds)
      list.append(&Column(id));
    return list;
  }();
  return columns;
}

QString CellText(TCellType type, const QVariant &value, const QString &unknownDate)
{
  switch (type) {
  case TCellType::DateTime: {
    const QDateTime moment = value.toDateTime();
    return moment.isValid() ? DateTimeToStr(moment) : unknownDate;
  }
  case TCellType::Flag: return value.toBool() ? QStringLiteral("yes") : QString();
  case TCellType::Number:
  case TCellType::Text:
  case TCellType::Link: break;
  }
  return value.toString();
}

std::int32_t AgeOf(const QDateTime &moment, const QDateTime &now, TAge unit)
{
  if (unit == TAge::Hours)
    return std::abs(WholeUnits(moment, now, CMillisecondsPerHour));
  return WholeUnits(moment, now, CMillisecondsPerDay);
}

void TTicketTable::Append(const TTicketRow &row)
{
  QList<TCellValue> &cells = Rows.emplaceBack();
  cells.reserve(Columns.size());
  for (const TTicketColumn *column : std::as_const(Columns))
    cells.append(column->Value(row));
}
