#pragma once

#include <QByteArray>
#include <QDate>
#include <QString>

class TColourStore;
struct TReportOutput;

// The name of the workbook attached to the mails of `day`:
// tickets-follow-up-YYYYMMDD.xlsx.
QString ReportWorkbookName(const QDate &day);

// The rows of a report as an XLSX workbook: one sheet per section that has rows
// ("Unassigned", "Without update", "More than 10 exchanges"), with the columns
// of that section's table. The ticket id is a number, dates are dates, the ages
// shown beside a date have a numeric column of their own; the header row is
// bold and frozen and carries an autofilter. The workbook is built in a
// temporary file that is removed before returning. Raises EWriteError when the
// temporary file cannot be written.
QByteArray ReportWorkbook(const TReportOutput &report, TColourStore &colours);
