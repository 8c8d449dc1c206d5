#pragma once

#include "TicketColumns.h"
#include "rest/uTypes.h"

#include <QAbstractTableModel>
#include <QDateTime>
#include <QHash>
#include <QList>

// The ticket grid: one row a ticket, in the columns of GridColumns(), the last
// saying since when the report lists the ticket or until when it is snoozed.
// The display role gives what the grid shows; the edit role the typed values
// (integers, date-times converted from the service's time stamps when the
// tickets are set, flags), so that views sort and the workbook export writes them
// as numbers, dates and booleans. Numbers are right-aligned; a ticket on which the
// supervisor added ten exchanges carries TenExchangesRole and a tool tip on every
// cell.
class TTicketsModel : public QAbstractTableModel
{
  Q_OBJECT

public:
  enum TColumn { colType, colId, colOrganization, colPriority, colTitle, colCreationDate, colStatus,
                 colAssignedTeam, colAssignedUser, colLastUpdate, colTenExchanges, colListed, ColumnCount };

  // true for a ticket flagged for the ten-exchanges notice
  static constexpr int TenExchangesRole = Qt::UserRole + 1;
  // true for a ticket new on the report; true for a ticket taken off it (snoozed)
  static constexpr int NewRole = Qt::UserRole + 2;
  static constexpr int SnoozedRole = Qt::UserRole + 3;
  // The id of the row's ticket, whatever the column.
  static constexpr int TicketIdRole = Qt::UserRole + 4;
  // The ticket's page in the service's web interface, as the report links it
  // (empty until SetServiceUrl).
  static constexpr int LinkRole = Qt::UserRole + 5;

  // What the follow-up says of a ticket: since when the report lists it ("new",
  // "since 18.11.2026, 5 reports"), or until when it is snoozed.
  using TFollowUpMark = TRowMark;
  static const QString CTenExchangesTip;

  using QAbstractTableModel::QAbstractTableModel;

  // Replaces every row.
  void SetTickets(const tyRestTickets &tickets);
  // Adds the tickets from position `from` on as rows after the others.
  void AppendTickets(const tyRestTickets &tickets, qsizetype from);
  // The service's web address the tickets' pages are under.
  void SetServiceUrl(const QString &url) { FLinks.ServiceUrl = url; }
  // Replaces the follow-up marks (by ticket id); the tickets stay.
  void SetFollowUp(QHash<TRestId, TFollowUpMark> marks);

  int rowCount(const QModelIndex &parent = QModelIndex()) const override;
  int columnCount(const QModelIndex &parent = QModelIndex()) const override;
  QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
  struct TDates
  {
    QDateTime CreationDate; // invalid when unknown
    QDateTime LastUpdate;
  };
  static QList<TDates> DatesOf(const tyRestTickets &tickets, qsizetype from);
  tyRestTickets FTickets; // shares the caller's list, no copy of the tickets
  QList<TDates> FDates;
  QHash<TRestId, TFollowUpMark> FMarks;
  TCellContext FLinks; // the service's address only
};
