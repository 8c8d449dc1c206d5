#include "TicketsModel.h"

#include "core/uTools.h"

namespace {
const QStringList CHeaders{QStringLiteral("Type"),         QStringLiteral("Id"),
                           QStringLiteral("Organization"), QStringLiteral("Priority"),
                           QStringLiteral("Title"),        QStringLiteral("CreationDate"),
                           QStringLiteral("Status"),       QStringLiteral("Assigned Team"),
                           QStringLiteral("Assigned User"), QStringLiteral("Last Update"),
                           QStringLiteral("Listed")};
// A date of the grid; an unknown one (a stamp that could not be read) is empty.
QString DateText(const QDateTime &moment) { return moment.isValid() ? DateTimeToStr(moment) : QString(); }
} // namespace

const QString TTicketsModel::CTenExchangesTip =
    QStringLiteral("The supervisor added 10 exchanges to this ticket automatically");

void TTicketsModel::SetTickets(const tyRestTickets &tickets)
{
  QList<TDates> dates;
  dates.reserve(tickets.size());
  for (const tyRestTicket &ticket : tickets)
    dates.append({RestTimestamp2DateTime(ticket.creationDate).value_or(QDateTime()),
                  RestTimestamp2DateTime(ticket.lastUpdate).value_or(QDateTime())});
  beginResetModel();
  FTickets = tickets;
  FDates = std::move(dates);
  endResetModel();
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
  if (!index.isValid() || index.row() >= FTickets.size())
    return {};
  const tyRestTicket &ticket = FTickets.at(index.row());
  switch (role) {
  case Qt::DisplayRole:
  case Qt::EditRole: break;
  case TenExchangesRole: return ticket.tenExchangesAdded;
  case NewRole: return FMarks.value(ticket.id).New;
  case SnoozedRole: return !FMarks.value(ticket.id).Snoozed.isEmpty();
  case TicketIdRole: return qlonglong(ticket.id);
  case Qt::ToolTipRole: return ticket.tenExchangesAdded ? QVariant(CTenExchangesTip) : QVariant();
  case Qt::TextAlignmentRole:
    return index.column() == colId ? QVariant(int(Qt::AlignRight | Qt::AlignVCenter)) : QVariant();
  default: return {};
  }
  const TDates &row = FDates.at(index.row());
  switch (index.column()) {
  case colType: return ticket._type;
  case colId: return qlonglong(ticket.id);
  case colOrganization: return ticket.organization.name;
  case colPriority: return ticket.priority.reference;
  case colTitle: return ticket.title;
  case colCreationDate:
    return role == Qt::DisplayRole ? QVariant(DateText(row.CreationDate)) : QVariant(row.CreationDate);
  case colStatus: return ticket.status._reference;
  case colAssignedTeam: return ticket.assignedTeam.name;
  case colAssignedUser: return ticket.assignedUser.name;
  case colLastUpdate:
    return role == Qt::DisplayRole ? QVariant(DateText(row.LastUpdate)) : QVariant(row.LastUpdate);
  case colListed: {
    const TFollowUpMark mark = FMarks.value(ticket.id);
    return mark.Snoozed.isEmpty() ? mark.Listed : QStringLiteral("snoozed ") + mark.Snoozed;
  }
  default: return {};
  }
}

QVariant TTicketsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
  if (role != Qt::DisplayRole)
    return {};
  if (orientation == Qt::Horizontal)
    return section >= 0 && section < CHeaders.size() ? QVariant(CHeaders.at(section)) : QVariant();
  return section + 1;
}
