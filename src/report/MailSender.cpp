#include "MailSender.h"

#include "SmtpIdentity.h"

#include "core/ExtraAuthorities.h"
#include "core/Trace.h"

#include <QFile>
#include <QLoggingCategory>
#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <sys/socket.h>
#include <thread>

Q_LOGGING_CATEGORY(lcMail, "quorvex.mail")

// Debian 12's libcurl (7.88) spells the option with three L.
#ifndef CURLOPT_MAIL_RCPT_ALLOWFAILS
#define CURLOPT_MAIL_RCPT_ALLOWFAILS CURLOPT_MAIL_RCPT_ALLLOWFAILS
#endif

namespace {

constexpr long CConnectTimeoutSeconds = 30;
constexpr std::int32_t CImplicitTlsPort = 465;
// How long the goodbye (QUIT) may take before the connection is cut.
constexpr std::chrono::seconds CGoodbyeTimeout{10};

struct TCurlCleanup
{
  void operator()(CURL *curl) const { curl_easy_cleanup(curl); }
};

// A curl string list that frees itself.
class TCurlList
{
public:
  TCurlList() = default;
  TCurlList(const TCurlList &) = delete;
  TCurlList &operator=(const TCurlList &) = delete;
  ~TCurlList() { curl_slist_free_all(FList); }
  void Append(const QByteArray &line) { FList = curl_slist_append(FList, line.constData()); }
  curl_slist *List() const { return FList; }

private:
  curl_slist *FList = nullptr;
};

// What the server said during one upload, read from libcurl's transcript.
struct TTranscript
{
  QString Recipient;                // the RCPT TO whose reply comes next
  QList<TRefusedRecipient> Refused; // RCPT TO refused, with their replies
  QString LastError;                // last error reply (4xx or 5xx) of the server
};

bool IsFinalReplyLine(const QString &line) { return line.size() == 3 || (line.size() > 3 && line.at(3) == u' '); }

int OnCurlDebug(CURL *, curl_infotype type, char *data, size_t size, void *userData)
{
  auto *transcript = static_cast<TTranscript *>(userData);
  const QString line = QString::fromUtf8(data, static_cast<qsizetype>(size)).trimmed();
  if (type == CURLINFO_HEADER_OUT && line.startsWith(QLatin1String("RCPT TO:<"), Qt::CaseInsensitive)) {
    transcript->Recipient = line.mid(9, line.indexOf(u'>') - 9);
    return 0;
  }
  if (type != CURLINFO_HEADER_IN || line.isEmpty())
    return 0;
  qCDebug(lcMail).noquote() << "S:" << line;
  const bool error = line.startsWith(u'4') || line.startsWith(u'5');
  if (error)
    transcript->LastError = line;
  if (!transcript->Recipient.isEmpty() && IsFinalReplyLine(line)) {
    if (error)
      transcript->Refused.append({transcript->Recipient, line, line.startsWith(u'4')});
    transcript->Recipient.clear();
  }
  return 0;
}

struct TProgressData
{
  const std::function<bool()> *StopRequested;
  bool Stopped = false;
};

int OnCurlProgress(void *userData, curl_off_t, curl_off_t, curl_off_t, curl_off_t)
{
  auto *progress = static_cast<TProgressData *>(userData);
  if (*progress->StopRequested && (*progress->StopRequested)())
    progress->Stopped = true;
  return progress->Stopped ? 1 : 0;
}

struct TUpload
{
  const QByteArray *Bytes;
  qsizetype Position = 0;
};

size_t OnCurlRead(char *buffer, size_t size, size_t count, void *userData)
{
  auto *upload = static_cast<TUpload *>(userData);
  const qsizetype length = std::min<qsizetype>(static_cast<qsizetype>(size * count),
                                                upload->Bytes->size() - upload->Position);
  std::copy_n(upload->Bytes->constData() + upload->Position, length, buffer);
  upload->Position += length;
  return static_cast<size_t>(length);
}

// The system's authorities followed by those of QUORVEX_EXTRA_CA_CERTS; empty when
// that variable is not set, so that libcurl keeps its own defaults.
QByteArray TrustedAuthorities(CURL *curl, const tySMTPserver &smtp)
{
  QList<QSslCertificate> extra;
  try {
    extra = ExtraAuthorities();
  } catch (const EReadError &error) {
    throw ESmtpError(QStringLiteral("Unable to send the mail through %1: ").arg(SmtpServerName(smtp)) +
                     error.Message());
  }
  if (extra.isEmpty())
    return {};
  QByteArray pem;
  char *systemBundle = nullptr;
  if (curl_easy_getinfo(curl, CURLINFO_CAINFO, &systemBundle) == CURLE_OK && systemBundle) {
    QFile system(QString::fromLocal8Bit(systemBundle));
    if (system.open(QIODevice::ReadOnly))
      pem = system.readAll() + '\n';
    else
      TraceError(lcMail(), QStringLiteral("The system's certificate authorities cannot be read from %1: %2")
                               .arg(system.fileName(), system.errorString()));
  }
  for (const QSslCertificate &certificate : extra)
    pem += certificate.toPem();
  return pem;
}

// Raises the error of a libcurl call made while preparing the conversation.
void Check(CURLcode code, const QString &server, const char *what)
{
  if (code != CURLE_OK)
    throw ESmtpError(QStringLiteral("Unable to send the mail through %1: %2 refused by libcurl: %3")
                         .arg(server, QLatin1String(what), QString::fromUtf8(curl_easy_strerror(code))));
}

// A failure that a later try may overcome: the server said "try later" (4xx),
// or the connection could not be made or was lost. A time-out is not: the
// server may have taken the mail and a second try could deliver it twice.
bool IsTemporary(CURLcode code, const QString &lastError)
{
  if (!lastError.isEmpty())
    return lastError.startsWith(u'4');
  switch (code) {
  case CURLE_COULDNT_CONNECT:
  case CURLE_SEND_ERROR:
  case CURLE_RECV_ERROR:
  case CURLE_GOT_NOTHING:
    return true;
  default:
    return false;
  }
}

// libcurl says goodbye (QUIT) when the handle is cleaned up, and waits for the
// answer under a time-out of its own (two minutes) that no option of the
// transfer reaches. Once `left` has passed, the connection is cut instead.
void CleanUpWithin(std::unique_ptr<CURL, TCurlCleanup> &handle, std::chrono::milliseconds left)
{
  curl_socket_t socket = CURL_SOCKET_BAD;
  curl_easy_getinfo(handle.get(), CURLINFO_ACTIVESOCKET, &socket);
  std::mutex lock;
  std::condition_variable done;
  bool cleaned = false;
  std::thread watchdog([&] {
    std::unique_lock guard(lock);
    // The socket is only touched while the handle still owns it.
    if (!done.wait_for(guard, left, [&cleaned] { return cleaned; }) && socket != CURL_SOCKET_BAD)
      ::shutdown(socket, SHUT_RDWR);
  });
  handle.reset();
  {
    const std::lock_guard guard(lock);
    cleaned = true;
  }
  done.notify_all();
  watchdog.join();
}

} // namespace

struct TSmtpConnection::TState
{
  tySMTPserver Smtp;
  std::function<bool()> StopRequested;
  QString Server;
  std::unique_ptr<CURL, TCurlCleanup> Handle;
  QByteArray Url;
  QByteArray From;
  QByteArray User;
  QByteArray Password;
  QByteArray Authorities;
  char ErrorText[CURL_ERROR_SIZE] = {};

  // The handle, made and set up once for every mail of the conversation.
  CURL *Prepare()
  {
    if (Handle)
      return Handle.get();
    Check(StartMailSending(), Server, "start-up");
    Handle.reset(curl_easy_init());
    if (!Handle)
      throw ESmtpError(QStringLiteral("Unable to send the mail through %1: libcurl cannot start").arg(Server));
    CURL *curl = Handle.get();
    const bool implicitTls = Smtp.UseSSL && Smtp.Port == CImplicitTlsPort;
    const QString host = Smtp.Server.trimmed();
    Url = QStringLiteral("%1://%2:%3")
              .arg(implicitTls ? QStringLiteral("smtps") : QStringLiteral("smtp"),
                   host.contains(u':') ? u'[' + host + u']' : host)
              .arg(Smtp.Port)
              .toUtf8();
    From = '<' + SenderAddress(Smtp).toUtf8() + '>';
    User = Smtp.UserName.toUtf8();
    Password = Smtp.Password.toUtf8();
    // Certificates matter only when TLS is used; a plain send never reads them.
    Authorities = Smtp.UseSSL ? TrustedAuthorities(curl, Smtp) : QByteArray();
    Check(curl_easy_setopt(curl, CURLOPT_URL, Url.constData()), Server, "address");
    Check(curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, ErrorText), Server, "error text");
    Check(curl_easy_setopt(curl, CURLOPT_VERBOSE, 1L), Server, "transcript");
    Check(curl_easy_setopt(curl, CURLOPT_DEBUGFUNCTION, OnCurlDebug), Server, "transcript");
    const long startTls = Smtp.UseSSL && !implicitTls ? CURLUSESSL_ALL : CURLUSESSL_NONE;
    Check(curl_easy_setopt(curl, CURLOPT_USE_SSL, startTls), Server, "STARTTLS");
    Check(curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 1L), Server, "certificate check");
    Check(curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 2L), Server, "certificate check");
    if (!Authorities.isEmpty()) {
      curl_blob blob{Authorities.data(), static_cast<size_t>(Authorities.size()), CURL_BLOB_COPY};
      Check(curl_easy_setopt(curl, CURLOPT_CAINFO_BLOB, &blob), Server, "certificate authorities");
    }
    Check(curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, CConnectTimeoutSeconds), Server, "timeout");
    Check(curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L), Server, "signals");
    if (!Smtp.UserName.trimmed().isEmpty()) {
      Check(curl_easy_setopt(curl, CURLOPT_USERNAME, User.constData()), Server, "user name");
      Check(curl_easy_setopt(curl, CURLOPT_PASSWORD, Password.constData()), Server, "password");
    }
    Check(curl_easy_setopt(curl, CURLOPT_MAIL_FROM, From.constData()), Server, "sender");
    Check(curl_easy_setopt(curl, CURLOPT_MAIL_RCPT_ALLOWFAILS, 1L), Server, "recipient failures");
    Check(curl_easy_setopt(curl, CURLOPT_UPLOAD, 1L), Server, "upload");
    Check(curl_easy_setopt(curl, CURLOPT_READFUNCTION, OnCurlRead), Server, "upload");
    Check(curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L), Server, "progress");
    Check(curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, OnCurlProgress), Server, "progress");
    return curl;
  }
};

TSmtpConnection::TSmtpConnection(const tySMTPserver &smtp, std::function<bool()> stopRequested)
    : F(std::make_unique<TState>())
{
  F->Smtp = smtp;
  F->StopRequested = std::move(stopRequested);
  F->Server = SmtpServerName(smtp);
}

TSmtpConnection::~TSmtpConnection()
{
  if (F->Handle)
    CleanUpWithin(F->Handle, CGoodbyeTimeout);
}

TSmtpResult TSmtpConnection::Send(const QByteArray &mail, const QStringList &envelope, std::chrono::milliseconds timeout)
{
  const TraceScope trace(lcMail(), "TSmtpConnection.Send");
  TraceValue(lcMail(), "Server", F->Server);
  TSmtpResult result;
  if (envelope.isEmpty()) {
    result.Error = QStringLiteral("Unable to send the mail through %1: no recipient").arg(F->Server);
    return result;
  }
  TTranscript transcript;
  TUpload upload{&mail};
  TProgressData progress{&F->StopRequested};
  TCurlList recipients;
  for (const QString &address : envelope)
    recipients.Append('<' + address.toUtf8() + '>');
  CURLcode code = CURLE_OK;
  try {
    CURL *curl = F->Prepare();
    F->ErrorText[0] = 0;
    Check(curl_easy_setopt(curl, CURLOPT_DEBUGDATA, &transcript), F->Server, "transcript");
    Check(curl_easy_setopt(curl, CURLOPT_READDATA, &upload), F->Server, "upload");
    Check(curl_easy_setopt(curl, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(mail.size())), F->Server, "upload");
    Check(curl_easy_setopt(curl, CURLOPT_XFERINFODATA, &progress), F->Server, "progress");
    Check(curl_easy_setopt(curl, CURLOPT_MAIL_RCPT, recipients.List()), F->Server, "recipients");
    Check(curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(timeout.count())), F->Server, "timeout");
    code = curl_easy_perform(curl);
  } catch (const ESmtpError &error) {
    result.Error = error.Message();
    return result;
  }
  result.Refused = transcript.Refused;
  for (TRefusedRecipient &refused : result.Refused)
    refused.Reply = QStringLiteral("%1 replied: %2").arg(F->Server, refused.Reply);
  if (code == CURLE_OK) {
    for (const QString &address : envelope)
      if (!IsAmong(result.Refused, address))
        result.Accepted.append(address); // libcurl succeeds once one recipient took it
    return result;
  }
  result.Stopped = progress.Stopped;
  result.Temporary = !result.Stopped && IsTemporary(code, transcript.LastError);
  QString reason = result.Stopped ? QStringLiteral("stopped before the server confirmed it")
                   : F->ErrorText[0] ? QString::fromUtf8(F->ErrorText)
                                     : QString::fromUtf8(curl_easy_strerror(code));
  if (!transcript.LastError.isEmpty())
    reason += QStringLiteral(" (the server replied: ") + transcript.LastError + u')';
  result.Error = QStringLiteral("Unable to send the mail through %1: %2").arg(F->Server, reason);
  TraceError(lcMail(), result.Error);
  // Unless the server itself refused, the conversation may be in any state:
  // the next mail starts a new one.
  if (transcript.LastError.isEmpty())
    CleanUpWithin(F->Handle, std::chrono::seconds(0));
  return result;
}

bool IsAmong(const QList<TRefusedRecipient> &recipients, const QString &address)
{
  return std::any_of(recipients.cbegin(), recipients.cend(),
                     [&address](const TRefusedRecipient &recipient) { return recipient.Address == address; });
}

CURLcode StartMailSending()
{
  static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
  return started;
}

void SendMail(const tySMTPserver &smtp, const QByteArray &mail, const QStringList &envelope)
{
  TSmtpConnection connection(smtp);
  const TSmtpResult result = connection.Send(mail, envelope);
  if (!result.Error.isEmpty())
    throw ESmtpError(result.Error);
  if (!result.Refused.isEmpty()) {
    QStringList refused;
    for (const TRefusedRecipient &recipient : result.Refused)
      refused.append(recipient.Address + QStringLiteral(" (") + recipient.Reply + u')');
    throw ESmtpError(QStringLiteral("%1 refused: %2").arg(SmtpServerName(smtp), refused.join(QStringLiteral(", "))));
  }
}
