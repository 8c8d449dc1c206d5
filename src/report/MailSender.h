#pragma once

#include "core/ConfigTypes.h"
#include "core/Errors.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <chrono>
#include <curl/curl.h>
#include <functional>
#include <memory>

// A mail that could not be handed to the SMTP server. The message names the
// server and port and carries libcurl's text and the server's last reply.
class ESmtpError : public EQuorvexError
{
  using EQuorvexError::EQuorvexError;
};

inline constexpr std::chrono::seconds CSmtpTimeout{120};

// Starts libcurl once and returns how that went. Its start-up (which also starts
// OpenSSL) is unsafe while another thread runs: call this on the main thread
// before any mail goes from a thread of its own.
CURLcode StartMailSending();

// A recipient the server would not take, with its reply.
struct TRefusedRecipient
{
  QString Address;
  QString Reply;
  bool Temporary = false; // a 4xx reply: a later try may succeed
};

// Whether `address` is among `recipients`.
bool IsAmong(const QList<TRefusedRecipient> &recipients, const QString &address);

// How one upload of one mail went.
struct TSmtpResult
{
  QStringList Accepted;             // recipients the server took the mail for
  QList<TRefusedRecipient> Refused; // recipients it refused (the others still got it)
  QString Error;                    // when no recipient got it: what failed, naming the server
  bool Temporary = false;           // that failure may pass (a 4xx reply, a lost connection)
  bool Stopped = false;             // cut because a stop was asked
};

// One conversation with the SMTP server of `smtp`, kept open between mails when
// the server allows it:
// - UseSSL on port 465: TLS from the first byte (smtps); UseSSL on any other
//   port: STARTTLS, required; UseSSL off: no encryption;
// - a login when a user name is set;
// - the server's certificate always verified against the system's authorities
//   and those of the PEM file named by QUORVEX_EXTRA_CA_CERTS.
// `stopRequested` is asked about once a second during an exchange: when it
// answers true the exchange is cut. Use it from one thread at a time.
class TSmtpConnection
{
public:
  explicit TSmtpConnection(const tySMTPserver &smtp, std::function<bool()> stopRequested = {});
  ~TSmtpConnection(); // says goodbye, within a bounded time
  TSmtpConnection(const TSmtpConnection &) = delete;
  TSmtpConnection &operator=(const TSmtpConnection &) = delete;

  // Uploads `mail` (as BuildMail made it) to the addresses of `envelope`; a
  // refused recipient does not stop the others. The exchange ends within
  // `timeout`. Never raises.
  TSmtpResult Send(const QByteArray &mail, const QStringList &envelope, std::chrono::milliseconds timeout = CSmtpTimeout);

private:
  struct TState;
  std::unique_ptr<TState> F;
};

// Sends `mail` to `envelope` in one conversation; raises ESmtpError when it did
// not reach every recipient.
void SendMail(const tySMTPserver &smtp, const QByteArray &mail, const QStringList &envelope);
