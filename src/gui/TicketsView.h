#pragma once

#include "rest/uTypes.h"

#include <QAbstractItemModel>
#include <QStackedWidget>
#include <memory>

class QLabel;
class QLineEdit;
class QSortFilterProxyModel;
class QTableView;

// The grid area of the main window. Until the first retrieval it shows a short
// guide to the first steps; then a search box above the ticket grid. Sorting by a
// header click and the search change only what the grid shows: the ticket list
// and the report keep the retrieval's order ("Save the grid" writes what the grid
// shows). The search ignores case and accents, and the count of rows shown
// stands beside it; Tab leaves the grid. A ticket new on the report shows in bold, a snoozed one greyed; a right
// click asks for the follow-up's menu (customContextMenuRequested of the grid).
// Columns take the width of their contents as soon as the grid is filled.
class TTicketsView : public QStackedWidget
{
  Q_OBJECT

public:
  TTicketsView(QAbstractItemModel &tickets, QWidget *parent = nullptr);

  // The tickets of the selected rows, and whether one of them is snoozed.
  QList<TRestId> SelectedTickets() const;
  bool AnySnoozedSelected() const;

  // The rows the grid shows (searched and sorted), and all of its rows in the
  // order it sorts them.
  const QAbstractItemModel &ShownRows() const;
  std::unique_ptr<QAbstractItemModel> AllRowsInShownOrder() const;

  QLabel *lblGuide;
  QLineEdit *edtSearch;
  QLabel *lblCount; // "22 of 320 shown" beside the search box
  QTableView *asgTickets;

  // The column widths and sort a person left; widths apply once the grid fills.
  void RestoreColumns(const QList<int> &widths, int sortColumn, bool descending);
  QList<int> ColumnWidths() const;
  int SortColumn() const;
  bool SortDescending() const;

private:
  // To their contents, or to the widths a person left until a whole list has
  // been shown with them.
  void FitColumns(bool whole);
  bool FFilling = false; // rows are coming page by page into an emptied grid
  QList<int> FRememberedWidths;
  void ShowCount();

  QSortFilterProxyModel *FShown;
};
