#pragma once

#include <QString>

class QWidget;
class TTicketsView;

// "Save the grid": the rows the grid shows, in its order, as a workbook. When
// the search hides some rows it first asks whether to save all of them or only
// those shown (Enter: those shown, Escape: nothing). The file dialog proposes
// tickets-YYYYMMDD.xlsx (today) in the documents folder, and ".xlsx" is added to
// a name that does not end with it. Returns the status-bar line, empty when the
// person cancelled; raises EWriteError when the workbook cannot be written.
QString SaveGrid(const TTicketsView &view, QWidget *parent);
