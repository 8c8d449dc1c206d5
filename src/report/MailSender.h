#pragma once

#include "core/ConfigTypes.h"
#include "core/Errors.h"

#include <QString>
#include <QStringList>
#include <chrono>
#include <curl/curl.h>

// A mail that could not be delivered to the SMTP server: refused connection,
// TLS failure, refused login or recipient, timeout. The message names the server
// and port and carries libcurl's text and the server's last reply.
class ESmtpError : public EQuorvexError
{
  using EQuorvexError::EQuorvexError;
};

struct TMailAttachment
{
  QString FileName;
  QByteArray Type; // media type
  QByteArray Data;
};

struct TMailMessage
{
  QStringList To;
  QStringList Cc;
  QString Subject;
  QString Text; // plain-text body
  QString Html; // HTML body; when empty the mail is plain text only
  QList<TMailAttachment> Attachments;
};

// Sends one mail through the SMTP server of `smtp` with libcurl:
// - UseSSL on port 465: TLS from the first byte (smtps); UseSSL on any other
//   port: STARTTLS, required; UseSSL off: no encryption;
// - a login when a user name is set;
// - the server's certificate always verified against the system's authorities
//   and those of the PEM file named by QUORVEX_EXTRA_CA_CERTS;
// - with both bodies, a multipart/alternative message (plain text, then HTML),
//   both UTF-8, inside a multipart/mixed one when there are attachments
//   (Base64); headers Date, From (SenderAddress),
//   To, Cc (when any), Subject, Message-ID, and Auto-Submitted and
//   X-Auto-Response-Suppress so that no automatic answer comes back.
// Every recipient of To and Cc gets the mail, and no one else. The whole
// exchange, the closing of the connection included, ends within `timeout`.
// Raises ESmtpError on any failure; nothing is retried.
inline constexpr std::chrono::seconds CSmtpTimeout{120};
// Starts libcurl once and returns how that went. Its start-up (which also starts
// OpenSSL) is unsafe while another thread runs: call this on the main thread
// before any mail goes from a thread of its own.
CURLcode StartMailSending();
void SendMail(const tySMTPserver &smtp, const TMailMessage &message, std::chrono::seconds timeout = CSmtpTimeout);

// The mail exactly as SendMail would send it (headers and body, CR LF line
// breaks), for a dry run; nothing leaves the computer.
QByteArray RenderMail(const tySMTPserver &smtp, const TMailMessage &message);

// The addresses of a list typed by a person: separated by commas or semicolons,
// blanks around them ignored, empty entries dropped.
QStringList SplitAddresses(const QString &addresses);

// The header value for a text: as it is when plain ASCII, else RFC 2047 encoded
// words in UTF-8 (each at most 75 characters long).
QByteArray EncodeHeaderText(const QString &text);
