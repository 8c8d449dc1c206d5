#pragma once

#include "core/ConfigTypes.h"
#include "core/Failure.h"
#include "core/Task.h"

#include <QDate>
#include <QDeadlineTimer>
#include <QList>
#include <QString>
#include <QStringList>
#include <chrono>
#include <functional>

class TColourStore;
class TDeliveryJournal;
class TStopRequest;
struct TReportMail;

inline const QString CTestSubject = QStringLiteral("SMTP gateway test");
inline const QString CTestBody = QStringLiteral(
    "This is an SMTP gateway test. If you can read this message, then the gateway is working correctly.");

// How the mails of a delivery leave.
struct TDeliveryOptions
{
  TDeliveryMode Mode = TDeliveryMode::Report; // journaled with each mail
  bool AttachWorkbook = false;
  // Set for a dry run: nothing is sent nor journaled; each mail is written whole
  // to <DryRunBase>_1.eml, _2.eml, ... (the files of an earlier dry run removed first).
  QString DryRunBase;
  // Where the mails are journaled; none: not journaled, nothing skipped.
  TDeliveryJournal *Journal = nullptr;
  // Sends again what the journal says was delivered today.
  bool Resend = false;
  // The most recipients one upload names; more go as several identical mails.
  std::int32_t MaxRecipients = 100;
  // No mail (nor new try of one) starts after it.
  QDeadlineTimer Deadline{QDeadlineTimer::Forever};
  // Once requested, no mail starts and the exchange under way is cut.
  const TStopRequest *Stop = nullptr;
  // Between two tries of a mail that met a temporary failure.
  std::chrono::milliseconds RetryPause{2000};
  // Called on this thread after each mail with its run-log text, as soon as it is known.
  std::function<void(const QString &text)> Delivered;
};

struct TDeliveryResult
{
  QStringList Texts;                // one per mail: sent, would send, already sent
  TFailures Failures; // each mail or recipient finally not served: "Mail to …" and the server's reply
  QStringList Warnings;             // the journal's own troubles
  int MailsSent = 0;
};

// Sends the mails in order, each built once as bytes (the report's subject, HTML and
// plain-text renderings, with AttachWorkbook its rows as
// tickets-follow-up-YYYYMMDD.xlsx when it has any), over one SMTP conversation
// kept open while the server allows it, on a thread of its own while this
// thread's event loop goes on:
// - a recipient the server refuses does not stop the others, nor a failed mail
//   the next;
// - a temporary failure (a 4xx reply, a lost connection) is tried again, three
//   tries in all, while the deadline allows;
// - a mail with more than MaxRecipients recipients goes as several identical
//   uploads;
// - with a journal, recipients who received the same rows in the same mail
//   earlier today are skipped ("Already sent at HH:MM: skipped"), unless Resend.
// Raises EWriteError only when a dry run's file cannot be written.
TTask<TDeliveryResult> DeliverReport(tySMTPserver smtp, QList<TReportMail> mails, TDeliveryOptions options,
                                     TColourStore &colours);

// The gateway test of the SMTP settings: a plain-text mail to `recipient`.
// Raises ESmtpError when it cannot be delivered.
void SendTestMail(const tySMTPserver &smtp, const QString &recipient);

// The mails of `mails` that the journal says were delivered on `day` to every
// one of their recipients, one line each ("Mail to 2 recipient(s), 111 row(s):
// leads@example.test… at 07:02"), so that a person can choose to send them again.
QStringList DeliveredEarlier(const QList<TReportMail> &mails, TDeliveryMode mode, TDeliveryJournal &journal,
                             QDate day);
