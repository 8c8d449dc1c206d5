#pragma once

#include "core/ConfigTypes.h"

#include <QString>
#include <QStringList>

inline const QString CReportSubject = QStringLiteral("Quorvex ITSM tickets follow-up");
inline const QString CTestSubject = QStringLiteral("SMTP gateway test");
inline const QString CTestBody = QStringLiteral(
    "This is an SMTP gateway test. If you can read this message, then the gateway is working correctly.");

// "Send Mail": the report (lines joined with CR LF) with its plain-text rendering,
// to the default receivers "To" and "Cc" of the settings. Returns false, having
// sent nothing, when the report has fewer than 5 lines (none generated yet).
// Raises ESmtpError when the mail cannot be delivered.
bool SendReport(const tySMTPserver &smtp, const QStringList &htmlContent);

// The gateway test of the SMTP settings: a plain-text mail to `recipient`.
// Raises ESmtpError when it cannot be delivered.
void SendTestMail(const tySMTPserver &smtp, const QString &recipient);
