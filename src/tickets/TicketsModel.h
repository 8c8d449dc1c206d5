#pragma once

#include <QDateTime>
#include "rest/uTypes.h"

#include <QAbstractTableModel>
#include <QList>

// The ticket grid: one row a ticket, ten columns. The Id column holds integers and
// the two date columns date-times (converted from the service's time stamps when
// the tickets are set), so that views sort and the workbook export writes them as
// numbers and dates. Numbers are right-aligned; a ticket on which the supervisor
// added ten exchanges carries TenExchangesRole and a tool tip on every cell.
class TTicketsModel : public QAbstractTableModel
{
  Q_OBJECT

public:
  enum TColumn { colType, colId, colOrganization, colPriority, colTitle, colCreationDate, colStatus,
                 colAssignedTeam, colAssignedUser, colLastUpdate, ColumnCount };

  // true for a ticket flagged for the ten-exchanges notice
  static constexpr int TenExchangesRole = Qt::UserRole + 1;
  static const QString CTenExchangesTip;

  using QAbstractTableModel::QAbstractTableModel;

  // Replaces every row. Raises ERangeError for a time stamp whose numbers do not
  // fit, before anything is replaced.
  void SetTickets(const tyRestTickets &tickets);

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
  tyRestTickets FTickets; // shares the caller's list, no copy of the tickets
  QList<TDates> FDates;
};
