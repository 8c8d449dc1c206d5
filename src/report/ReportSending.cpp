#include "ReportSending.h"

#include "DeliveryPlan.h"
#include "MailSender.h"
#include "ReportWorkbook.h"
#include "core/Errors.h"
#include "core/AtomicFile.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace {

const QByteArray CWorkbookType = "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet";

TMailMessage ReportMessage(const TReportMail &mail, bool attachWorkbook, TColourStore &colours)
{
  TMailMessage message;
  message.To = mail.To;
  message.Cc = mail.Cc;
  message.Subject = CReportSubject;
  message.Html = mail.Report.HtmlContent.join(QStringLiteral("\r\n"));
  message.Text = mail.Report.Text;
  if (attachWorkbook && mail.RowCount() > 0)
    message.Attachments.append({ReportWorkbookName(QDate::currentDate()), CWorkbookType,
                                ReportWorkbook(mail.Report, colours)});
  return message;
}

QString Summary(const TReportMail &mail)
{
  const QStringList recipients = mail.To + mail.Cc;
  return QStringLiteral("Mail to %1 recipient(s), %2 row(s): %3")
      .arg(recipients.size())
      .arg(mail.RowCount())
      .arg(recipients.value(0) + (recipients.size() > 1 ? QStringLiteral("…") : QString()));
}

// The mails of an earlier dry run, which a new one replaces.
void RemoveOldDryRun(const QString &base)
{
  const QFileInfo info(base);
  const QRegularExpression numbered(QRegularExpression::anchoredPattern(
      QRegularExpression::escape(info.fileName()) + QStringLiteral("_\\d+\\.eml")));
  QDir folder = info.dir();
  for (const QString &name : folder.entryList({info.fileName() + QStringLiteral("_*.eml")}, QDir::Files))
    if (numbered.match(name).hasMatch() && !folder.remove(name))
      throw EWriteError(QStringLiteral("Unable to remove the mail of an earlier dry run, %1: remove it by hand")
                            .arg(folder.filePath(name)));
}

} // namespace

void DeliverReport(const tySMTPserver &smtp, const QList<TReportMail> &mails, const TDeliveryOptions &options,
                   TColourStore &colours)
{
  const bool dryRun = !options.DryRunBase.isEmpty();
  if (dryRun)
    RemoveOldDryRun(options.DryRunBase);
  for (qsizetype i = 0; i < mails.size(); ++i) {
    const TMailMessage message = ReportMessage(mails[i], options.AttachWorkbook, colours);
    QString text = Summary(mails[i]);
    if (dryRun) {
      const QString file = QStringLiteral("%1_%2.eml").arg(options.DryRunBase).arg(i + 1);
      WriteFileAtomically(file, RenderMail(smtp, message));
      text = QStringLiteral("Would send: ") + text + QStringLiteral(" as ") + file;
    } else {
      SendMail(smtp, message);
    }
    if (options.Delivered)
      options.Delivered(text);
  }
}

void SendTestMail(const tySMTPserver &smtp, const QString &recipient)
{
  TMailMessage message;
  message.To = SplitAddresses(recipient);
  message.Subject = CTestSubject;
  message.Text = CTestBody;
  SendMail(smtp, message);
}
