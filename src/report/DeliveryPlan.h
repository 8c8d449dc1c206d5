#pragma once

#include "MailReport.h"
#include "core/ConfigTypes.h"

#include <QList>
#include <QStringList>

// One mail of a delivery: who receives it and the report it carries.
struct TReportMail
{
  QStringList To;
  QStringList Cc;
  TReportOutput Report;

  // Rows over the three sections.
  qsizetype RowCount() const;
};

// The mails of a delivery, in sending order, and the settings' addresses that
// could not be used (one line each, naming the key).
struct TDeliveryPlan
{
  QList<TReportMail> Mails;
  QStringList Warnings;
};

// The mails that deliver the report made from `input`, in sending order, by mode:
// - report: the full report, listing the computed recipients at its end, To the
//   default receiver "To", Cc the default "Cc";
// - concerned: the full report To the computed primary addresses, Cc the computed
//   copies then the default "To" and "Cc"; with no computed primary address, To
//   the default "To" and Cc the computed copies then the default "Cc";
// - personal: first the full report To the default "To", Cc the computed copies
//   then the default "Cc"; then for each computed primary address, a digest of
//   the rows that concern that person (in "Unassigned" the tickets of their
//   teams, elsewhere the tickets assigned to them), To that address alone.
// The default addresses are parsed as ParseAddressList does ([SMTP] DefaultTo
// and DefaultCC); the computed ones were parsed when the operators were read.
// In modes concerned and personal a mail with an escalated row also has the
// escalation's receivers in Cc ([FollowUp] EscalateTo, else the default "To").
// An address is never twice in a mail (compared without case) and outside
// "report" no report lists the computed recipients. With SkipWhenClear there is no
// mail at all when the retrieval was complete and no section has a row. Every
// report reads the clock `now`, so all agree on the ages.
TDeliveryPlan PlanDelivery(const TReportInput &input, const tyDelivery &delivery, const tySMTPserver &smtp,
                           TColourStore &colours, const TMailReport::TClock &now);
// The same, with the full report already made from `input` at `now` for this
// mode (its recipients listed only in mode report): it is not made again.
TDeliveryPlan PlanDelivery(const TReportInput &input, TReportOutput fullReport, const tyDelivery &delivery,
                           const tySMTPserver &smtp, TColourStore &colours, const TMailReport::TClock &now);

// What a person confirms before the mails go: how many mails to whom in one
// line ("36 mails: 35 personal digests and the full report to leads@…"), and
// the "To" and "CC" lists; in personal mode one "To" line per receiver with the
// row count of their mail.
struct TMailConfirmation
{
  QString Summary;
  QStringList To;
  QStringList Cc;
};
TMailConfirmation Confirmation(const QList<TReportMail> &mails, TDeliveryMode mode);
