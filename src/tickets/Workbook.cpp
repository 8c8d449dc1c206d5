#include "Workbook.h"

#include "core/Errors.h"
#include "core/Trace.h"
#include "core/uTools.h"

#include <QFile>
#include <QUrl>
#include <xlsxwriter.h>

namespace {

const char *const CDateTimeFormat = "yyyy-mm-dd hh:mm";
constexpr qsizetype CMaxCellCharacters = 32767; // what a spreadsheet cell holds

class TSheetWriter
{
public:
  TSheetWriter(lxw_workbook *workbook, const QString &path, lxw_format *dateFormat)
      : FWorkbook(workbook), FPath(path), FDateFormat(dateFormat)
  {
  }

  void Write(const TWorkbookSheet &sheet, lxw_format *headerFormat)
  {
    FSheet = workbook_add_worksheet(FWorkbook, sheet.Name.toUtf8().constData());
    if (!FSheet)
      Fail(QStringLiteral("the sheet \"%1\" cannot be added").arg(sheet.Name));
    const QList<const TTicketColumn *> &columns = sheet.Table.Columns;
    for (qsizetype c = 0; c < columns.size(); ++c) {
      const auto column = static_cast<lxw_col_t>(c);
      Check(worksheet_write_string(FSheet, 0, column, columns[c]->Caption.toUtf8().constData(), headerFormat), 0, c);
      Check(worksheet_set_column(FSheet, column, column, columns[c]->Width, nullptr), 0, c);
    }
    for (qsizetype r = 0; r < sheet.Table.Rows.size(); ++r)
      for (qsizetype c = 0; c < columns.size(); ++c)
        Cell(static_cast<lxw_row_t>(r + 1), static_cast<lxw_col_t>(c), columns[c]->Type, sheet.Table.Rows[r][c]);
    worksheet_freeze_panes(FSheet, 1, 0);
    if (!columns.isEmpty())
      Check(worksheet_autofilter(FSheet, 0, 0, static_cast<lxw_row_t>(sheet.Table.Rows.size()),
                                 static_cast<lxw_col_t>(columns.size() - 1)),
            0, 0);
  }

private:
  void Cell(lxw_row_t row, lxw_col_t column, TCellType type, const TCellValue &cell)
  {
    if (cell.Value.isNull())
      return;
    switch (type) {
    case TCellType::Number:
      Check(worksheet_write_number(FSheet, row, column, cell.Value.toDouble(), nullptr), row, column);
      return;
    case TCellType::Flag:
      Check(worksheet_write_boolean(FSheet, row, column, cell.Value.toBool(), nullptr), row, column);
      return;
    case TCellType::DateTime: Date(row, column, cell.Value.toDateTime()); return;
    case TCellType::Link:
      if (Link(row, column, cell))
        return;
      break;
    case TCellType::Text: break;
    }
    Text(row, column, cell.Value.toString());
  }

  void Date(lxw_row_t row, lxw_col_t column, const QDateTime &moment)
  {
    if (!moment.isValid())
      return; // unknown
    // Spreadsheets have no dates before 1900: such a date is written as the grid shows it.
    if (moment.date().year() < 1900) {
      Text(row, column, DateTimeToStr(moment));
      return;
    }
    const QDate date = moment.date();
    const QTime time = moment.time();
    lxw_datetime value{date.year(), date.month(), date.day(), time.hour(), time.minute(),
                       time.second() + time.msec() / 1000.0};
    Check(worksheet_write_datetime(FSheet, row, column, &value, FDateFormat), row, column);
  }

  // Only a whole address can be followed from a spreadsheet; a link it cannot
  // hold (too long, too many) is left to be written as its text.
  bool Link(lxw_row_t row, lxw_col_t column, const TCellValue &cell)
  {
    const QUrl address(cell.Address);
    if (!address.isValid() || address.isRelative())
      return false;
    const QByteArray url = address.toEncoded();
    const QByteArray text = cell.Value.toString().left(CMaxCellCharacters).toUtf8();
    const lxw_error error =
        worksheet_write_url_opt(FSheet, row, column, url.constData(), nullptr, text.constData(), nullptr);
    if (error != LXW_NO_ERROR)
      TraceFailure(lcCore(), QStringLiteral("The link %1 is written as text in %2: %3")
                                 .arg(QString::fromUtf8(url), FPath, QString::fromUtf8(lxw_strerror(error))));
    return error == LXW_NO_ERROR;
  }

  void Text(lxw_row_t row, lxw_col_t column, const QString &text)
  {
    Check(worksheet_write_string(FSheet, row, column, text.left(CMaxCellCharacters).toUtf8().constData(), nullptr),
          row, column);
  }

  void Check(lxw_error error, qsizetype row, qsizetype column)
  {
    if (error != LXW_NO_ERROR)
      Fail(QStringLiteral("row %1, column %2: %3")
               .arg(row + 1)
               .arg(column + 1)
               .arg(QString::fromUtf8(lxw_strerror(error))));
  }

  [[noreturn]] void Fail(const QString &why)
  {
    lxw_workbook_free(FWorkbook); // nothing is written
    throw EWriteError(QStringLiteral("Unable to write the workbook %1: %2").arg(FPath, why));
  }

  lxw_workbook *FWorkbook;
  const QString &FPath;
  lxw_format *FDateFormat;
  lxw_worksheet *FSheet = nullptr;
};

} // namespace

void WriteWorkbook(const QString &path, const QList<TWorkbookSheet> &sheets)
{
  const TraceScope trace(lcCore(), "WriteWorkbook");
  TraceValue(lcCore(), "FileName", path);
  const QByteArray fileName = QFile::encodeName(path);
  lxw_workbook *workbook = workbook_new(fileName.constData());
  if (!workbook)
    throw EWriteError(QStringLiteral("Unable to write the workbook %1: out of memory").arg(path));
  lxw_format *headerFormat = workbook_add_format(workbook);
  format_set_bold(headerFormat);
  lxw_format *dateFormat = workbook_add_format(workbook);
  format_set_num_format(dateFormat, CDateTimeFormat);
  TSheetWriter writer(workbook, path, dateFormat);
  for (const TWorkbookSheet &sheet : sheets)
    writer.Write(sheet, headerFormat);
  if (const lxw_error error = workbook_close(workbook); error != LXW_NO_ERROR)
    throw EWriteError(
        QStringLiteral("Unable to write the workbook %1: %2").arg(path, QString::fromUtf8(lxw_strerror(error))));
}
