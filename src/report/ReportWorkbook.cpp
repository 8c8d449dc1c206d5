#include "ReportWorkbook.h"

#include "MailReport.h"
#include "core/Errors.h"
#include "tickets/ColourStore.h"
#include "tickets/Workbook.h"

#include <QDir>
#include <QFile>
#include <QTemporaryFile>

QString ReportWorkbookName(const QDate &day)
{
  return QStringLiteral("tickets-follow-up-%1.xlsx").arg(day.toString(QStringLiteral("yyyyMMdd")));
}

QByteArray ReportWorkbook(const TReportOutput &report, TColourStore &colours)
{
  const TColourStore::THold hold(colours);
  const TCellContext context{report.CurrentTime, report.ServiceUrl, &colours};
  QList<TWorkbookSheet> sheets;
  for (const TReportSection section : CReportSections)
    if (!report.Rows.at(static_cast<std::size_t>(section)).isEmpty())
      sheets.append({SectionName(section), SectionTable(report, section, InWorkbook, context)});

  QTemporaryFile file; // removed when it goes out of scope
  if (!file.open())
    throw EWriteError(QStringLiteral("Unable to write the workbook attachment to a temporary file in %1: %2")
                          .arg(QDir::tempPath(), file.errorString()));
  file.close();
  WriteWorkbook(file.fileName(), sheets);
  if (!file.open())
    throw EReadError(QStringLiteral("Unable to read the workbook attachment back from %1: %2")
                         .arg(file.fileName(), file.errorString()));
  return file.readAll();
}
