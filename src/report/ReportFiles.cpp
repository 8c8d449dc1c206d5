#include "ReportFiles.h"

#include "MailReport.h"
#include "core/Errors.h"

#include <QSaveFile>
#include <QStringEncoder>

void SaveLines(const QString &path, const QStringList &lines, const QString &lineBreak, bool utf16WithBom)
{
  QString text;
  for (const QString &line : lines)
    text += line + lineBreak;
  QByteArray bytes;
  if (utf16WithBom) {
    QStringEncoder encoder(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
    bytes = encoder(text);
  } else {
    bytes = text.toUtf8();
  }
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
    throw EWriteError(QStringLiteral("Unable to write to ") + path + QStringLiteral(": ") + file.errorString());
}

QString SaveReportFiles(const QString &base, const TReportOutput &report)
{
  const QString crlf = QStringLiteral("\r\n");
  SaveLines(base + QStringLiteral(".to"), report.SlRecipientTo, crlf, false);
  SaveLines(base + QStringLiteral(".cc"), report.SlRecipientCc, crlf, false);
  const QString html = base + QStringLiteral(".html");
  SaveLines(html, report.HtmlContent, crlf, true);
  return html;
}
