#include "ReportFiles.h"

#include "MailReport.h"
#include "core/TextFiles.h"

QString SaveReportFiles(const QString &base, const TReportOutput &report)
{
  const QString crlf = QStringLiteral("\r\n");
  SaveLines(base + QStringLiteral(".to"), report.SlRecipientTo, crlf, TTextEncoding::Utf8);
  SaveLines(base + QStringLiteral(".cc"), report.SlRecipientCc, crlf, TTextEncoding::Utf8);
  const QString html = base + QStringLiteral(".html");
  SaveLines(html, report.HtmlContent, crlf, TTextEncoding::Utf16LeWithBom);
  return html;
}
