#include "ReportWorkbook.h"

#include "MailReport.h"
#include "core/Errors.h"
#include "core/uTools.h"
#include "tickets/ColourStore.h"

#include <QDir>
#include <QFile>
#include <QTemporaryFile>
#include <xlsxwriter.h>

namespace {

// Built-in number format "m/d/yy h:mm", shown in the reader's own date format.
constexpr std::uint8_t CLocaleDateTimeFormat = 22;
// Day counts before 1 March 1900 mean other days in a spreadsheet.
constexpr TDateTime CFirstSpreadsheetDay = 61;
constexpr double CColumnWidth = 16;
constexpr double CTitleWidth = 50;

QString AgeHeader(TAge age, const char *since)
{
  return (age == TAge::Hours ? QStringLiteral("Hours since ") : QStringLiteral("Days since ")) +
         QLatin1String(since);
}

// Writes one section's rows, one cell after the other along a row.
class TSheetWriter
{
public:
  TSheetWriter(lxw_worksheet *sheet, lxw_format *dateFormat) : FSheet(sheet), FDateFormat(dateFormat) {}
  void NextRow() { ++FRow, FColumn = 0; }
  void Text(const QString &text, lxw_format *format = nullptr)
  {
    worksheet_write_string(FSheet, FRow, FColumn++, text.toUtf8().constData(), format);
  }
  void Number(double value) { worksheet_write_number(FSheet, FRow, FColumn++, value, nullptr); }
  // A date on the local clock's face, as the reader's spreadsheet shows it;
  // an unknown date leaves its cell empty.
  void Date(const std::optional<QDateTime> &moment)
  {
    const TDateTime days = moment ? DateTimeFromQDateTime(*moment) : 0;
    if (!moment)
      Skip();
    else if (days >= CFirstSpreadsheetDay)
      worksheet_write_number(FSheet, FRow, FColumn++, days, FDateFormat);
    else
      Text(DateTimeToStr(*moment));
  }
  void Skip() { ++FColumn; }
  lxw_row_t Row() const { return FRow; }
  lxw_col_t Column() const { return FColumn; }

private:
  lxw_worksheet *FSheet;
  lxw_format *FDateFormat;
  lxw_row_t FRow = 0;
  lxw_col_t FColumn = 0;
};

void WriteSection(lxw_workbook *workbook, TReportSection section, const TReportOutput &report, TColourStore &colours,
                  lxw_format *headerFormat, lxw_format *dateFormat)
{
  const TReportRows &rows = report.Rows.at(static_cast<std::size_t>(section));
  if (rows.isEmpty())
    return;
  lxw_worksheet *sheet = workbook_add_worksheet(workbook, SectionName(section).toUtf8().constData());
  const auto [withAssignedUser, creationAge, updateAge] = SectionLayout(section);
  QStringList headers{QStringLiteral("Organization"), QStringLiteral("Ticket"), QStringLiteral("Title"),
                      QStringLiteral("Assigned Team")};
  if (withAssignedUser)
    headers << QStringLiteral("Assigned User");
  headers << QStringLiteral("Creation Date");
  if (creationAge != TAge::None)
    headers << AgeHeader(creationAge, "creation");
  headers << QStringLiteral("Last Update");
  if (updateAge != TAge::None)
    headers << AgeHeader(updateAge, "update");
  headers << QStringLiteral("Priority") << QStringLiteral("Status");
  if (report.Remembers)
    headers << QStringLiteral("Listed since") << QStringLiteral("Reports in a row");

  TSheetWriter writer(sheet, dateFormat);
  for (const QString &header : headers)
    writer.Text(header, headerFormat);
  const QList<TListing> &listings = report.Listings.at(static_cast<std::size_t>(section));
  for (qsizetype row = 0; row < rows.size(); ++row) {
    const tyRestTicket &ticket = rows[row];
    writer.NextRow();
    writer.Text(ticket.organization.name);
    writer.Number(ticket.id);
    writer.Text(ticket.title);
    writer.Text(ticket.assignedTeam.name);
    if (withAssignedUser)
      writer.Text(ticket.assignedUser.name);
    for (const auto &[timestamp, age] : {std::pair{ticket.creationDate, creationAge}, {ticket.lastUpdate, updateAge}}) {
      const std::optional<QDateTime> moment = RestTimestamp2DateTime(timestamp);
      writer.Date(moment);
      if (age != TAge::None && moment)
        writer.Number(AgeOf(*moment, report.CurrentTime, age));
      else if (age != TAge::None)
        writer.Skip();
    }
    writer.Text(colours.GetPriorityText(ticket.priority.reference));
    writer.Text(ticket.status._reference);
    if (report.Remembers) {
      writer.Date(listings.at(row).Since);
      writer.Number(listings.at(row).Reports);
    }
  }
  const auto lastColumn = static_cast<lxw_col_t>(headers.size() - 1);
  worksheet_set_column(sheet, 0, lastColumn, CColumnWidth, nullptr);
  worksheet_set_column(sheet, 2, 2, CTitleWidth, nullptr);
  worksheet_freeze_panes(sheet, 1, 0);
  worksheet_autofilter(sheet, 0, 0, writer.Row(), lastColumn);
}

} // namespace

QString ReportWorkbookName(const QDate &day)
{
  return QStringLiteral("tickets-follow-up-%1.xlsx").arg(day.toString(QStringLiteral("yyyyMMdd")));
}

QByteArray ReportWorkbook(const TReportOutput &report, TColourStore &colours)
{
  QTemporaryFile file; // removed when it goes out of scope
  if (!file.open())
    throw EWriteError(QStringLiteral("Unable to write the workbook attachment to a temporary file in %1: %2")
                          .arg(QDir::tempPath(), file.errorString()));
  file.close();
  const QByteArray path = QFile::encodeName(file.fileName());
  lxw_workbook *workbook = workbook_new(path.constData());
  if (!workbook)
    throw EWriteError(QStringLiteral("Unable to write the workbook attachment to ") + file.fileName());
  lxw_format *headerFormat = workbook_add_format(workbook);
  format_set_bold(headerFormat);
  lxw_format *dateFormat = workbook_add_format(workbook);
  format_set_num_format_index(dateFormat, CLocaleDateTimeFormat);
  for (const TReportSection section :
       {TReportSection::Unassigned, TReportSection::WithoutUpdate, TReportSection::Gt10Exchanges})
    WriteSection(workbook, section, report, colours, headerFormat, dateFormat);
  const lxw_error error = workbook_close(workbook);
  if (error != LXW_NO_ERROR)
    throw EWriteError(QStringLiteral("Unable to write the workbook attachment to %1: %2")
                          .arg(file.fileName(), QString::fromUtf8(lxw_strerror(error))));
  if (!file.open())
    throw EReadError(QStringLiteral("Unable to read the workbook attachment back from %1: %2")
                         .arg(file.fileName(), file.errorString()));
  return file.readAll();
}
