#include "GridExport.h"

#include "core/Errors.h"
#include "core/Trace.h"

#include <QAbstractItemModel>
#include <QDateTime>
#include <QFile>
#include <algorithm>
#include <vector>
#include <xlsxwriter.h>

namespace {

// Unambiguous in every language, and still a date to the spreadsheet.
const char *const CDateTimeFormat = "yyyy-mm-dd hh:mm";
constexpr double CMaxColumnWidth = 60;

lxw_datetime ToWorkbookDate(const QDateTime &moment)
{
  const QDate date = moment.date();
  const QTime time = moment.time();
  return lxw_datetime{date.year(), date.month(), date.day(), time.hour(), time.minute(),
                      time.second() + time.msec() / 1000.0};
}

} // namespace

void ExportGridToXlsx(const QAbstractItemModel &grid, const QString &path)
{
  const TraceScope trace(lcCore(), "ExportGridToXlsx");
  TraceValue(lcCore(), "FileName", path);
  const QByteArray fileName = QFile::encodeName(path);
  lxw_workbook *workbook = workbook_new(fileName.constData());
  if (!workbook)
    throw EWriteError(QStringLiteral("Unable to write to ") + path);
  lxw_worksheet *sheet = workbook_add_worksheet(workbook, nullptr);
  lxw_format *dateFormat = workbook_add_format(workbook);
  format_set_num_format(dateFormat, CDateTimeFormat);
  lxw_format *headerFormat = workbook_add_format(workbook);
  format_set_bold(headerFormat);

  const int columns = grid.columnCount();
  std::vector<double> widths(static_cast<std::size_t>(columns), 8);
  auto widen = [&](int column, qsizetype characters) {
    double &width = widths[static_cast<std::size_t>(column)];
    width = std::min(CMaxColumnWidth, std::max(width, static_cast<double>(characters) + 2));
  };

  for (int column = 0; column < columns; ++column) {
    const QString header = grid.headerData(column, Qt::Horizontal).toString();
    worksheet_write_string(sheet, 0, static_cast<lxw_col_t>(column), header.toUtf8().constData(), headerFormat);
    widen(column, header.size());
  }
  for (int row = 0; row < grid.rowCount(); ++row) {
    const auto sheetRow = static_cast<lxw_row_t>(row + 1);
    for (int column = 0; column < columns; ++column) {
      const QModelIndex index = grid.index(row, column);
      const QVariant value = grid.data(index, Qt::EditRole);
      const auto sheetColumn = static_cast<lxw_col_t>(column);
      const QString shown = grid.data(index, Qt::DisplayRole).toString();
      // Spreadsheets have no dates before 1900: such a date is written as shown.
      if (value.typeId() == QMetaType::QDateTime && value.toDateTime().date().year() >= 1900) {
        lxw_datetime date = ToWorkbookDate(value.toDateTime());
        worksheet_write_datetime(sheet, sheetRow, sheetColumn, &date, dateFormat);
        widen(column, 18);
      } else if (value.typeId() == QMetaType::Int || value.typeId() == QMetaType::LongLong) {
        worksheet_write_number(sheet, sheetRow, sheetColumn, value.toDouble(), nullptr);
        widen(column, shown.size());
      } else {
        worksheet_write_string(sheet, sheetRow, sheetColumn, shown.toUtf8().constData(), nullptr);
        widen(column, shown.size());
      }
    }
  }
  // The header row stays in view and filters the table.
  worksheet_freeze_panes(sheet, 1, 0);
  worksheet_autofilter(sheet, 0, 0, static_cast<lxw_row_t>(grid.rowCount()), static_cast<lxw_col_t>(columns - 1));
  for (int column = 0; column < columns; ++column)
    worksheet_set_column(sheet, static_cast<lxw_col_t>(column), static_cast<lxw_col_t>(column),
                         widths[static_cast<std::size_t>(column)], nullptr);

  const lxw_error error = workbook_close(workbook);
  if (error != LXW_NO_ERROR)
    throw EWriteError(QStringLiteral("Unable to write to %1: %2").arg(path, QString::fromUtf8(lxw_strerror(error))));
}
