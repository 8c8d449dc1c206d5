#include "GridExport.h"

#include "Workbook.h"

#include <QAbstractItemModel>

void ExportGridToXlsx(const QAbstractItemModel &grid, const QString &path)
{
  TWorkbookSheet sheet{CGridSheetName, {GridColumns(), {}}};
  Q_ASSERT(grid.columnCount() == GridColumns().size());
  for (int row = 0; row < grid.rowCount(); ++row) {
    QList<TCellValue> &cells = sheet.Table.Rows.emplaceBack();
    for (int column = 0; column < GridColumns().size(); ++column)
      cells.append({grid.data(grid.index(row, column), Qt::EditRole)});
  }
  WriteWorkbook(path, {sheet});
}
