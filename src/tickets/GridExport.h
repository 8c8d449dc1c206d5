#pragma once

#include <QString>

class QAbstractItemModel;

// Writes a grid to an XLSX workbook at `path`, used as given (no extension is
// added): the header row first, then each row. Integer cells are written as
// numbers and date-time cells as dates; everything else as text. Raises
// EWriteError naming the file when the workbook cannot be written.
void ExportGridToXlsx(const QAbstractItemModel &grid, const QString &path);
