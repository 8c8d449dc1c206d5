#pragma once

#include "TicketColumns.h"

#include <QList>
#include <QString>

struct TWorkbookSheet
{
  QString Name; // what the sheet holds
  TTicketTable Table;
};

// The one writer of XLSX workbooks (libxlsxwriter), for the grid's export and
// the report's attachment alike. Each sheet: the columns' captions in a bold,
// frozen header row that carries an autofilter; each column defined once with
// its width; numbers as numbers, flags as booleans, links as links showing their
// text, date-times as dates in one format ("yyyy-mm-dd hh:mm", the same in every
// reader's language), an unknown date or age as an empty cell. Raises EWriteError
// naming `path` when the workbook cannot be written.
void WriteWorkbook(const QString &path, const QList<TWorkbookSheet> &sheets);
