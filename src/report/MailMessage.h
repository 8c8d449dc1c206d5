#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

struct TMailAttachment
{
  QString FileName;
  QByteArray Type; // media type
  QByteArray Data;
};

// A mail before it becomes bytes. To and Cc hold addr-specs (see MailAddress.h).
struct TMailMessage
{
  QStringList To;
  QStringList Cc;
  QString Subject;
  QString Text; // plain-text body
  QString Html; // HTML body; when empty the mail is plain text only
  QList<TMailAttachment> Attachments;
};

// The mail exactly as it is uploaded to the SMTP server and written by a dry
// run, built by GMime: headers Date (`date`), From (`from`), To, Cc (when any),
// Subject (encoded words when not ASCII), Message-ID (under the sender's
// domain), MIME-Version, Auto-Submitted and X-Auto-Response-Suppress (so that
// no automatic answer comes back), every header folded within 78 characters
// where it can be; with both bodies a multipart/alternative (text, then HTML,
// both UTF-8 quoted-printable), inside a multipart/mixed with the attachments
// (Base64) when there are any. Lines end with CR LF.
QByteArray BuildMail(const TMailMessage &message, const QString &from, const QDateTime &date);
