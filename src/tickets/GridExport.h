#pragma once

#include <QString>

class QAbstractItemModel;

// The sheet of the grid's export.
inline const QString CGridSheetName = QStringLiteral("Open tickets");

// Writes the rows of `grid` (the ticket grid's model or a view of it that sorts
// and filters its rows), in its order, to an XLSX workbook at `path`: one sheet
// with the grid's columns and their typed values (WriteWorkbook). Raises
// EWriteError naming the file when the workbook cannot be written.
void ExportGridToXlsx(const QAbstractItemModel &grid, const QString &path);
