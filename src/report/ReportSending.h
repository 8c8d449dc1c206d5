#pragma once

#include "core/ConfigTypes.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <functional>

class TColourStore;
struct TReportMail;

inline const QString CReportSubject = QStringLiteral("Quorvex ITSM tickets follow-up");
inline const QString CTestSubject = QStringLiteral("SMTP gateway test");
inline const QString CTestBody = QStringLiteral(
    "This is an SMTP gateway test. If you can read this message, then the gateway is working correctly.");

// How the mails of a delivery leave.
struct TDeliveryOptions
{
  bool AttachWorkbook = false;
  // Set for a dry run: nothing is sent; each mail is written whole to
  // <DryRunBase>_1.eml, _2.eml, ... (the files of an earlier dry run removed first).
  QString DryRunBase;
  // Called after each mail with its run-log text:
  // "Mail to <n> recipient(s), <rows> row(s): <first address>…", or for a dry run
  // "Would send: Mail to ... as <file>".
  std::function<void(const QString &text)> Delivered;
};

// Sends the mails in order, each with the report's subject, its HTML (lines
// joined with CR LF) and its plain-text rendering and, with AttachWorkbook, its
// rows as tickets-follow-up-YYYYMMDD.xlsx when it has any. Raises ESmtpError at
// the first mail that cannot be delivered, EWriteError when a file cannot be
// written.
void DeliverReport(const tySMTPserver &smtp, const QList<TReportMail> &mails, const TDeliveryOptions &options,
                   TColourStore &colours);

// The gateway test of the SMTP settings: a plain-text mail to `recipient`.
// Raises ESmtpError when it cannot be delivered.
void SendTestMail(const tySMTPserver &smtp, const QString &recipient);
