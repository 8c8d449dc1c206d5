#pragma once

#include <QStackedWidget>

class QAbstractItemModel;
class QLabel;
class QLineEdit;
class QSortFilterProxyModel;
class QTableView;

// The grid area of the main window. Until the first retrieval it shows a short
// guide to the first steps; then a search box above the ticket grid. Sorting by a
// header click and the search change only what the grid shows: the ticket list,
// the report and the workbook keep the retrieval's order. Columns take the width
// of their contents as soon as the grid is filled.
class TTicketsView : public QStackedWidget
{
  Q_OBJECT

public:
  TTicketsView(QAbstractItemModel &tickets, QWidget *parent = nullptr);

  QLabel *lblGuide;
  QLineEdit *edtSearch;
  QTableView *asgTickets;

private:
  void FitColumns();

  QSortFilterProxyModel *FShown;
};
