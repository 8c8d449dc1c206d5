#pragma once

#include <QByteArray>
#include <QDate>
#include <QString>

class TColourStore;
struct TReportOutput;

// The name of the workbook attached to the mails of `day`:
// tickets-follow-up-YYYYMMDD.xlsx.
QString ReportWorkbookName(const QDate &day);

// The rows of a report as an XLSX workbook (WriteWorkbook): one sheet per
// section that has rows ("Unassigned", "Without update", "More than 10
// exchanges"), with the workbook's columns of that section (SectionColumns): the
// ticket links to its page, the ages beside the dates have columns of their own.
// The workbook is built in a temporary file that is removed before returning.
// Raises EWriteError when the temporary file cannot be written.
QByteArray ReportWorkbook(const TReportOutput &report, TColourStore &colours);
