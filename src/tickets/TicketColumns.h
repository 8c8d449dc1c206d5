#pragma once

#include "core/SettingsKeys.h"
#include "core/TColor.h"
#include "rest/uTypes.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QVariant>
#include <cstdint>

class TColourStore;

// The columns of every table of tickets the program shows or writes: the grid,
// the report's sections (HTML and text) and both workbooks. Each column is
// declared once, in TicketColumns.cpp, with its caption, its type, its width in a
// workbook and the one function that takes its value from a row; the grid and
// the sections only list which columns they show, in their order.

// What a cell holds, and so how each rendering writes it.
enum class TCellType
{
  Text,
  DateTime, // a QDateTime, invalid when the service's stamp could not be read
  Number,
  Flag,     // a bool
  Link,     // the text of a link, its address beside it
};

enum class TColumnId
{
  Type, Id, Organization, Ticket, GridPriority, Priority, Title, GridCreationDate, CreationDate, Status, AssignedTeam,
  AssignedUser, LastUpdate, TenExchanges, Listed, Escalated, ListedSince, ReportsInARow, HoursSinceCreation,
  DaysSinceCreation, DaysSinceUpdate,
};

// What the follow-up says of a row: since when the report lists it, or until
// when it is snoozed.
struct TRowMark
{
  QString Listed = {}; // "new", "since 18.11.2026, 5 reports"; empty when not listed
  bool New = false;
  QString Snoozed = {}; // "until 01.12.2026", "until it changes"; empty when not snoozed
  QDateTime Since = {}; // listed since, on reports in a row; invalid when not listed
  std::int32_t Reports = 0; // reports in a row that listed it
  bool Escalated = false;
};

// What cells read besides their row: the clock the ages count from, the
// service's web address the tickets link to, the priority codes and colours.
struct TCellContext
{
  QDateTime Now;
  QString ServiceUrl;
  TColourStore *Colours = nullptr; // needed by the report's Priority column only
};

// One row of a table: a ticket, its two dates read once, and its mark.
struct TTicketRow
{
  const tyRestTicket &Ticket;
  const QDateTime &CreationDate; // invalid when unknown
  const QDateTime &LastUpdate;
  const TRowMark &Mark;
  const TCellContext &Context;
};

struct TCellValue
{
  QVariant Value; // of the column's type; null when there is nothing to show (an age of an unknown date)
  QString Address = {}; // where a link leads
};

// Where a column appears besides the grid: in the report's mail (HTML and
// text), in the workbook attachment, or both.
enum TShownIn : std::uint8_t { InMail = 1, InWorkbook = 2, InBoth = InMail | InWorkbook };

struct TTicketColumn
{
  TColumnId Id;
  QString Caption;
  TCellType Type;
  double Width; // in characters, in a workbook
  TCellValue (*Value)(const TTicketRow &row);
  TShownIn ShownIn = InBoth;
  // In the mail, a column with a note is no cell of its own: its value is
  // written in brackets after the cell before it ("%1 hours"; a flag's note
  // when it is set). Workbooks give it a column.
  const char *Note = nullptr;
  // How the mail's HTML lays the cell out.
  bool NoWrap = false;
  bool Centred = false;
  bool KeepTogether = false; // spaces become no-break spaces
  // The cell is painted in the colour the settings give its text.
  const TKeyedSection<TColor> *Colours = nullptr;
};

const TTicketColumn &Column(TColumnId id);
QList<const TTicketColumn *> Columns(std::initializer_list<TColumnId> ids);

// The grid's columns, in their order (TTicketsModel names their positions).
inline constexpr TColumnId CGridColumnIds[] = {
    TColumnId::Type,   TColumnId::Id,           TColumnId::Organization, TColumnId::GridPriority,
    TColumnId::Title,  TColumnId::GridCreationDate, TColumnId::Status,   TColumnId::AssignedTeam,
    TColumnId::AssignedUser, TColumnId::LastUpdate, TColumnId::TenExchanges, TColumnId::Listed};
const QList<const TTicketColumn *> &GridColumns();

// A value as the grid and the mail show it: a date-time in the user's format,
// `unknownDate` for one that could not be read, a flag "yes" or nothing.
QString CellText(TCellType type, const QVariant &value, const QString &unknownDate = {});

// What the age of a date column counts: whole hours or whole days.
enum class TAge { Hours, Days };
// The age a date shows: whole hours (from the distance between the two moments)
// or whole days (`now` minus `moment`), truncated, in absolute time: a change of
// the clocks (DST) does not change an age.
std::int32_t AgeOf(const QDateTime &moment, const QDateTime &now, TAge unit);

// Rows of tickets as a table: its columns, and for each row the value of each.
struct TTicketTable
{
  QList<const TTicketColumn *> Columns;
  QList<QList<TCellValue>> Rows;

  void Append(const TTicketRow &row);
};
