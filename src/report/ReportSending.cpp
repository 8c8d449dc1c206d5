#include "ReportSending.h"

#include "DeliveryJournal.h"
#include "DeliveryPlan.h"
#include "MailAddress.h"
#include "MailMessage.h"
#include "MailSender.h"
#include "ReportWorkbook.h"
#include "SmtpIdentity.h"
#include "core/AtomicFile.h"
#include "core/Errors.h"
#include "core/OffThread.h"
#include "core/SettingsKeys.h"
#include "core/StopRequest.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QMetaObject>
#include <QRegularExpression>
#include <QThread>
#include <algorithm>

namespace {

const QByteArray CWorkbookType = "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet";
constexpr int CTries = 3;

TMailMessage ReportMessage(const TReportMail &mail, bool attachWorkbook, TColourStore &colours)
{
  TMailMessage message;
  message.To = mail.To;
  message.Cc = mail.Cc;
  message.Subject = mail.Report.Subject;
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

QString ModeName(TDeliveryMode mode)
{
  for (const auto &[value, name] : Setting::Delivery::ModeNames)
    if (value == mode)
      return name;
  return {};
}

// The rows a mail carries, by section: "0:24012,24013;1:;2:24100".
QString RowIds(const TReportMail &mail)
{
  QStringList sections;
  for (std::size_t section = 0; section < mail.Report.Rows.size(); ++section) {
    QStringList ids;
    for (const tyRestTicket &ticket : mail.Report.Rows[section])
      ids.append(QString::number(ticket.id));
    sections.append(QString::number(section) + u':' + ids.join(u','));
  }
  return sections.join(u';');
}

// What makes two mails the same for the people who receive them: the mode, the
// headers' recipients and the rows. Times and ages are not part of it.
QString ContentKey(TDeliveryMode mode, const TReportMail &mail)
{
  const QString text = ModeName(mode) + u'|' + mail.To.join(u',').toLower() + u'|' + mail.Cc.join(u',').toLower() +
                       u'|' + RowIds(mail);
  return QString::fromLatin1(QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Sha256).toHex());
}

// Removes from `envelope` the addresses that `served` holds; returns the
// earliest time one of them was served (invalid when none was).
QDateTime DropServed(QStringList &envelope, const QHash<QString, QDateTime> &served)
{
  QDateTime first;
  envelope.removeIf([&served, &first](const QString &address) {
    const auto found = served.constFind(address.toLower());
    if (found == served.cend())
      return false;
    first = first.isValid() ? std::min(first, *found) : *found;
    return true;
  });
  return first;
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

// A mail ready to leave: its bytes and the recipients still to serve.
struct TOutgoing
{
  qsizetype Index = 0;
  QByteArray Bytes;
  QStringList Envelope;
  qint64 JournalKey = -1;
};

// How the tries of one mail ended.
struct TOutcome
{
  QStringList Delivered;
  QList<TRefusedRecipient> NotServed; // with the last reply or reason of each
  QString Error;                      // why the mail as a whole failed, when it did
};

bool StopRequested(const TDeliveryOptions &options) { return options.Stop && options.Stop->IsRequested(); }

// Why no further mail or try starts, or nothing when one may.
QString Halt(const TDeliveryOptions &options)
{
  if (StopRequested(options))
    return QStringLiteral("not sent: %1").arg(options.Stop->Happened());
  if (options.Deadline.hasExpired())
    return QStringLiteral("not sent: the run's time limit had passed; allow more time with --deadline MINUTES");
  return {};
}

QList<QStringList> Chunks(const QStringList &addresses, qsizetype size)
{
  QList<QStringList> chunks;
  for (qsizetype i = 0; i < addresses.size(); i += size)
    chunks.append(addresses.mid(i, size));
  return chunks;
}

// Waits `pause` unless a stop comes first or the deadline would pass; false
// when the next try should not start.
bool PauseBeforeRetry(const TDeliveryOptions &options)
{
  if (!options.Deadline.isForever() && options.Deadline.remainingTimeAsDuration() < options.RetryPause)
    return false;
  const QDeadlineTimer pause(options.RetryPause);
  while (!pause.hasExpired() && !StopRequested(options))
    QThread::msleep(static_cast<unsigned long>(std::min<qint64>(100, std::max<qint64>(1, pause.remainingTime()))));
  return !StopRequested(options);
}

// Every try of one mail, on the sending thread; touches nothing but its arguments.
TOutcome SendWithTries(TSmtpConnection &connection, const TOutgoing &mail, const TDeliveryOptions &options)
{
  TOutcome outcome;
  QStringList pending = mail.Envelope;
  QList<TRefusedRecipient> temporary;
  for (int attempt = 1; attempt <= CTries && !pending.isEmpty(); ++attempt) {
    if (attempt > 1 && !PauseBeforeRetry(options))
      break;
    if (const QString halt = Halt(options); !halt.isEmpty()) {
      outcome.Error = halt;
      break;
    }
    temporary.clear();
    for (const QStringList &chunk : Chunks(pending, std::max(1, options.MaxRecipients))) {
      const TSmtpResult result = connection.Send(mail.Bytes, chunk);
      outcome.Delivered += result.Accepted;
      for (const TRefusedRecipient &refused : result.Refused)
        (refused.Temporary ? temporary : outcome.NotServed).append(refused);
      // A failure beyond the recipients' own refusals concerns the whole upload.
      for (const QString &address : chunk)
        if (!result.Error.isEmpty() && !result.Accepted.contains(address) && !IsAmong(result.Refused, address)) {
          outcome.Error = result.Error;
          (result.Temporary ? temporary : outcome.NotServed).append({address, result.Error, result.Temporary});
        }
      if (result.Stopped)
        break;
    }
    pending.clear();
    for (const TRefusedRecipient &refused : temporary)
      pending.append(refused.Address);
  }
  // What was never tried is not served either, with the reason tries stopped.
  outcome.NotServed += temporary;
  for (const QString &address : mail.Envelope)
    if (!outcome.Delivered.contains(address) && !IsAmong(outcome.NotServed, address))
      outcome.NotServed.append({address, outcome.Error.isEmpty() ? Halt(options) : outcome.Error, false});
  if (!outcome.Delivered.isEmpty() && outcome.NotServed.isEmpty())
    outcome.Error.clear();
  return outcome;
}

// The person-facing failures of one mail: the whole mail when it failed as a
// whole for nobody got it, else each recipient refused with its reply.
TFailures Failures(const TReportMail &mail, const TOutcome &outcome)
{
  TFailures failures;
  if (outcome.Delivered.isEmpty() && !outcome.Error.isEmpty()) {
    QStringList addresses;
    for (const TRefusedRecipient &refused : outcome.NotServed)
      addresses.append(refused.Address);
    failures.append({QStringLiteral("Mail to %1 recipient(s), %2 row(s) (%3)")
                         .arg(mail.To.size() + mail.Cc.size())
                         .arg(mail.RowCount())
                         .arg(addresses.join(QStringLiteral(", "))),
                     outcome.Error});
    return failures;
  }
  for (const TRefusedRecipient &refused : outcome.NotServed)
    failures.append({QStringLiteral("Mail to %1").arg(refused.Address), refused.Reply});
  return failures;
}

} // namespace

TTask<TDeliveryResult> DeliverReport(tySMTPserver smtp, QList<TReportMail> mails, TDeliveryOptions options,
                                     TColourStore &colours)
{
  TDeliveryResult delivery;
  auto said = [&delivery, &options](const QString &text) {
    delivery.Texts.append(text);
    if (options.Delivered)
      options.Delivered(text);
  };
  const bool dryRun = !options.DryRunBase.isEmpty();
  if (dryRun)
    RemoveOldDryRun(options.DryRunBase);
  const QString from = SenderAddress(smtp);
  const QDateTime now = QDateTime::currentDateTime();
  TDeliveryJournal *journal = dryRun ? nullptr : options.Journal;
  if (journal)
    journal->BeginRun(ModeName(options.Mode), now);

  // Every mail is built here, before any leaves: the sending thread reads no
  // settings and changes nothing shared.
  QList<TOutgoing> outgoing;
  for (qsizetype i = 0; i < mails.size(); ++i) {
    const TReportMail &mail = mails[i];
    const QByteArray bytes = BuildMail(ReportMessage(mail, options.AttachWorkbook, colours), from, now);
    if (dryRun) {
      const QString file = QStringLiteral("%1_%2.eml").arg(options.DryRunBase).arg(i + 1);
      WriteFileAtomically(file, bytes);
      said(QStringLiteral("Would send: ") + Summary(mail) + QStringLiteral(" as ") + file);
      continue;
    }
    TOutgoing next{i, bytes, mail.To + mail.Cc};
    if (journal) {
      const QString content = ContentKey(options.Mode, mail);
      if (!options.Resend) {
        const QDateTime first = DropServed(next.Envelope, journal->DeliveredOn(content, now.date()));
        if (first.isValid() && next.Envelope.isEmpty()) {
          said(QStringLiteral("Already sent at %1: skipped: ").arg(first.toString(QStringLiteral("HH:mm"))) +
               Summary(mail));
          continue;
        }
      }
      next.JournalKey = journal->Plan(static_cast<int>(i + 1), content, next.Envelope, RowIds(mail));
    }
    outgoing.append(next);
  }

  // One conversation for all the mails, on a thread of its own; each outcome
  // comes back to this thread to be journaled and told as soon as it is known.
  QObject receiver;
  StartMailSending();
  co_await RunOnThread([&] {
    TSmtpConnection connection(smtp, [&options] { return StopRequested(options); });
    for (const TOutgoing &mail : outgoing) {
      const TOutcome outcome = SendWithTries(connection, mail, options);
      QMetaObject::invokeMethod(&receiver, [&, mail, outcome] {
        const TReportMail &planned = mails[mail.Index];
        const QDateTime at = QDateTime::currentDateTime();
        if (journal && !outcome.Delivered.isEmpty())
          journal->Delivered(mail.JournalKey, outcome.Delivered, at);
        const TFailures failures = Failures(planned, outcome);
        delivery.Failures += failures;
        if (!outcome.Delivered.isEmpty()) {
          ++delivery.MailsSent;
          said(Summary(planned) + (failures.isEmpty() ? QString() : QStringLiteral(" (not to all)")));
        }
        if (journal)
          journal->Finish(mail.JournalKey,
                          outcome.Delivered.isEmpty() ? QStringLiteral("not sent")
                          : failures.isEmpty()        ? QStringLiteral("sent")
                                                      : QStringLiteral("partly sent"),
                          outcome.Error.isEmpty() && !failures.isEmpty() ? failures.first().Reason : outcome.Error, at);
      }, Qt::QueuedConnection);
    }
  });
  QCoreApplication::sendPostedEvents(&receiver); // outcomes posted as the thread ended
  if (journal)
    delivery.Warnings = journal->Warnings();
  co_return delivery;
}

QStringList DeliveredEarlier(const QList<TReportMail> &mails, TDeliveryMode mode, TDeliveryJournal &journal,
                             QDate day)
{
  QStringList earlier;
  for (const TReportMail &mail : mails) {
    QStringList envelope = mail.To + mail.Cc;
    const QDateTime first = DropServed(envelope, journal.DeliveredOn(ContentKey(mode, mail), day));
    if (first.isValid() && envelope.isEmpty())
      earlier.append(Summary(mail) + QStringLiteral(" at ") + first.toString(QStringLiteral("HH:mm")));
  }
  return earlier;
}

void SendTestMail(const tySMTPserver &smtp, const QString &recipient)
{
  QStringList warnings;
  const QStringList to = ParseAddressList(recipient, QStringLiteral("the test's recipient"), warnings);
  if (!warnings.isEmpty())
    throw ESmtpError(warnings.join(u'\n'));
  TMailMessage message;
  message.To = to;
  message.Subject = CTestSubject;
  message.Text = CTestBody;
  SendMail(smtp, BuildMail(message, SenderAddress(smtp), QDateTime::currentDateTime()), to);
}
