#include "TicketsModel.h"

#include "core/uTools.h"

namespace {

// The positions the model names are those of the grid's columns.
constexpr bool NamesFollowTheColumns()
{
  using M = TTicketsModel;
  const std::pair<int, TColumnId> named[] = {
      {M::colType, TColumnId::Type},         {M::colId, TColumnId::Id},
      {M::colOrganization, TColumnId::Organization}, {M::colPriority, TColumnId::GridPriority},
      {M::colTitle, TColumnId::Title},       {M::colCreationDate, TColumnId::GridCreationDate},
      {M::colStatus, TColumnId::Status},     {M::colAssignedTeam, TColumnId::AssignedTeam},
      {M::colAssignedUser, TColumnId::AssignedUser}, {M::colLastUpdate, TColumnId::LastUpdate},
      {M::colTenExchanges, TColumnId::TenExchanges}, {M::colListed, TColumnId::Listed}};
  for (const auto &[position, id] : named)
    if (CGridColumnIds[position] != id)
      return false;
  return std::size(CGridColumnIds) == M::ColumnCount;
}
static_assert(NamesFollowTheColumns());

const TRowMark CNoMark;
const TCellContext CNoContext; // the grid's columns read nothing beyond the row

// What the grid shows of a value: numbers and texts as they are, so that the
// view writes numbers its own way.
QVariant Shown(TCellType type, const QVariant &value)
{
  return type == TCellType::DateTime || type == TCellType::Flag ? QVariant(CellText(type, value)) : value;
}

} // namespace

const QString TTicketsModel::CTenExchangesTip =
    QStringLiteral("The supervisor added 10 exchanges to this ticket automatically");

void TTicketsModel::SetTickets(const tyRestTickets &tickets)
{
  QList<TDates> dates = DatesOf(tickets, 0);
  beginResetModel();
  FTickets = tickets;
  FDates = std::move(dates);
  endResetModel();
}

void TTicketsModel::AppendTickets(const tyRestTickets &tickets, qsizetype from)
{
  if (from >= tickets.size())
    return;
  QList<TDates> dates = DatesOf(tickets, from);
  const int first = rowCount();
  beginInsertRows(QModelIndex(), first, first + static_cast<int>(dates.size()) - 1);
  FTickets.append(tickets.mid(from));
  FDates.append(std::move(dates));
  endInsertRows();
}

QList<TTicketsModel::TDates> TTicketsModel::DatesOf(const tyRestTickets &tickets, qsizetype from)
{
  QList<TDates> dates;
  dates.reserve(tickets.size() - from);
  for (qsizetype i = from; i < tickets.size(); ++i)
    dates.append({RestTimestamp2DateTime(tickets[i].creationDate).value_or(QDateTime()),
                  RestTimestamp2DateTime(tickets[i].lastUpdate).value_or(QDateTime())});
  return dates;
}

void TTicketsModel::SetFollowUp(QHash<TRestId, TFollowUpMark> marks)
{
  FMarks = std::move(marks);
  if (!FTickets.isEmpty())
    emit dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
}

int TTicketsModel::rowCount(const QModelIndex &parent) const
{
  return parent.isValid() ? 0 : static_cast<int>(FTickets.size());
}

int TTicketsModel::columnCount(const QModelIndex &parent) const
{
  return parent.isValid() ? 0 : ColumnCount;
}

QVariant TTicketsModel::data(const QModelIndex &index, int role) const
{
  if (!index.isValid() || index.row() >= FTickets.size() || index.column() >= ColumnCount)
    return {};
  const tyRestTicket &ticket = FTickets.at(index.row());
  const auto mark = FMarks.constFind(ticket.id);
  switch (role) {
  case Qt::DisplayRole:
  case Qt::EditRole: break;
  case TenExchangesRole: return ticket.tenExchangesAdded;
  case NewRole: return mark != FMarks.cend() && mark->New;
  case SnoozedRole: return mark != FMarks.cend() && !mark->Snoozed.isEmpty();
  case TicketIdRole: return qlonglong(ticket.id);
  case LinkRole:
    return FLinks.ServiceUrl.isEmpty()
               ? QString()
               : Column(TColumnId::Ticket).Value({ticket, FDates.at(index.row()).CreationDate,
                                                  FDates.at(index.row()).LastUpdate, CNoMark, FLinks})
                     .Address;
  case Qt::ToolTipRole: return ticket.tenExchangesAdded ? QVariant(CTenExchangesTip) : QVariant();
  case Qt::TextAlignmentRole:
    if (GridColumns().at(index.column())->Type == TCellType::Number)
      return int(Qt::AlignRight | Qt::AlignVCenter);
    return {};
  default: return {};
  }
  const TDates &dates = FDates.at(index.row());
  const TTicketColumn &column = *GridColumns().at(index.column());
  const QVariant value =
      column.Value({ticket, dates.CreationDate, dates.LastUpdate, mark != FMarks.cend() ? *mark : CNoMark, CNoContext})
          .Value;
  return role == Qt::DisplayRole ? Shown(column.Type, value) : value;
}

QVariant TTicketsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
  if (role != Qt::DisplayRole)
    return {};
  if (orientation == Qt::Horizontal)
    return section >= 0 && section < ColumnCount ? QVariant(GridColumns().at(section)->Caption) : QVariant();
  return section + 1;
}
