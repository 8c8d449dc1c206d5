#pragma once

#include "rest/uTypes.h"

#include <QStackedWidget>

class QAbstractItemModel;
class QLabel;
class QLineEdit;
class QSortFilterProxyModel;
class QTableView;

// The grid area of the main window. Until the first retrieval it shows a short
// guide to the first steps; then a search box above the ticket grid. Sorting by a
// header click and the search change only what the grid shows: the ticket list,
// the report and the workbook keep the retrieval's order. A ticket new on the
// report shows in bold, a snoozed one greyed; a right click asks for the
// follow-up's menu (customContextMenuRequested of the grid). Columns take the width
// of their contents as soon as the grid is filled.
class TTicketsView : public QStackedWidget
{
  Q_OBJECT

public:
  TTicketsView(QAbstractItemModel &tickets, QWidget *parent = nullptr);

  // The tickets of the selected rows, and whether one of them is snoozed.
  QList<TRestId> SelectedTickets() const;
  bool AnySnoozedSelected() const;

  QLabel *lblGuide;
  QLineEdit *edtSearch;
  QTableView *asgTickets;

private:
  void FitColumns();

  QSortFilterProxyModel *FShown;
};
