#include "MailSender.h"

#include "MailCapture.h"
#include "SmtpIdentity.h"

#include "core/Errors.h"
#include "core/ExtraAuthorities.h"
#include "core/Trace.h"

#include <QDateTime>
#include <QFile>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QUuid>
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <curl/curl.h>
#include <mutex>
#include <sys/socket.h>
#include <thread>
#include <memory>

Q_LOGGING_CATEGORY(lcMail, "quorvex.mail")

namespace {

constexpr long CConnectTimeoutSeconds = 30;
constexpr std::int32_t CImplicitTlsPort = 465;

struct TCurlCleanup
{
  void operator()(CURL *curl) const { curl_easy_cleanup(curl); }
};
struct TMimeFree
{
  void operator()(curl_mime *mime) const { curl_mime_free(mime); }
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

// What is known of a failed exchange besides libcurl's own text.
struct TTranscript
{
  // Last error reply of the server (4xx or 5xx); the "221 Bye" of the QUIT that
  // follows a failure says nothing about it.
  QString LastError;
};

int OnCurlDebug(CURL *, curl_infotype type, char *data, size_t size, void *userData)
{
  if (type != CURLINFO_HEADER_IN)
    return 0;
  const QString line = QString::fromUtf8(data, static_cast<qsizetype>(size)).trimmed();
  if (line.startsWith(u'4') || line.startsWith(u'5'))
    static_cast<TTranscript *>(userData)->LastError = line;
  if (!line.isEmpty())
    qCDebug(lcMail).noquote() << "S:" << line;
  return 0;
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

QByteArray AngleAddress(const QString &address) { return '<' + address.toUtf8() + '>'; }

// The part of a mail address after "@", or "localhost" when there is none.
QString DomainOf(const QString &address)
{
  const qsizetype at = address.lastIndexOf(u'@');
  const QString domain = at < 0 ? QString() : address.mid(at + 1).trimmed();
  return domain.isEmpty() ? QStringLiteral("localhost") : domain;
}

// Line breaks as SMTP wants them.
QByteArray CrLf(const QString &text)
{
  QString lines = text;
  lines.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
  return lines.replace(u'\n', QStringLiteral("\r\n")).toUtf8();
}

void AddPart(curl_mime *mime, const QString &body, const char *type)
{
  curl_mimepart *part = curl_mime_addpart(mime);
  const QByteArray bytes = CrLf(body);
  curl_mime_data(part, bytes.constData(), static_cast<size_t>(bytes.size()));
  curl_mime_type(part, type);
  curl_mime_encoder(part, "quoted-printable");
}

// Raises the error of a libcurl call made while preparing the mail.
void Check(CURLcode code, const QString &server, const char *what)
{
  if (code != CURLE_OK)
    throw ESmtpError(QStringLiteral("Unable to send the mail through %1: %2 refused by libcurl: %3")
                         .arg(server, QLatin1String(what), QString::fromUtf8(curl_easy_strerror(code))));
}

} // namespace

QStringList SplitAddresses(const QString &addresses)
{
  static const QRegularExpression separators(QStringLiteral("[,;]"));
  QStringList result;
  for (const QString &address : addresses.split(separators)) {
    const QString trimmed = address.trimmed();
    if (!trimmed.isEmpty())
      result.append(trimmed);
  }
  return result;
}

QByteArray EncodeHeaderText(const QString &text)
{
  bool ascii = true;
  for (const QChar c : text)
    ascii = ascii && c.unicode() >= 0x20 && c.unicode() < 0x7F;
  if (ascii)
    return text.toLatin1();
  // 45 bytes of UTF-8 give 60 Base64 characters: with "=?UTF-8?B?" and "?=" a
  // word stays within 75. Characters are never cut in the middle.
  constexpr qsizetype CWordBytes = 45;
  QList<QByteArray> words;
  QByteArray chunk;
  for (qsizetype i = 0; i < text.size();) {
    const qsizetype length = text.at(i).isHighSurrogate() && i + 1 < text.size() ? 2 : 1;
    const QByteArray character = text.mid(i, length).toUtf8();
    if (chunk.size() + character.size() > CWordBytes) {
      words.append(chunk);
      chunk.clear();
    }
    chunk += character;
    i += length;
  }
  words.append(chunk);
  QByteArray encoded;
  for (const QByteArray &word : words)
    encoded += (encoded.isEmpty() ? "" : "\r\n ") + QByteArray("=?UTF-8?B?") + word.toBase64() + "?=";
  return encoded;
}

namespace {

// libcurl says goodbye (QUIT) when the handle is cleaned up, and waits for the
// answer under a time-out of its own (two minutes) that no option of the
// transfer reaches: a server silent at that point would double the exchange's
// time. Once `left` has passed, the connection is cut instead.
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

// One SMTP exchange with the server of `smtp`, or with `capture` for a dry run,
// ended within `timeout`.
void Transfer(const tySMTPserver &smtp, const TMailMessage &message, TMailCapture *capture,
              std::chrono::milliseconds timeout)
{
  const auto started = std::chrono::steady_clock::now();
  const QString server = capture ? QStringLiteral("the dry run's copy") : SmtpServerName(smtp);
  TraceValue(lcMail(), "Server", server);
  TraceValue(lcMail(), "Subject", message.Subject);
  if (message.To.isEmpty())
    throw ESmtpError(QStringLiteral("Unable to send the mail through %1: no recipient").arg(server));
  Check(StartMailSending(), server, "start-up");

  std::unique_ptr<CURL, TCurlCleanup> handle(curl_easy_init());
  if (!handle)
    throw ESmtpError(QStringLiteral("Unable to send the mail through %1: libcurl cannot start").arg(server));
  CURL *curl = handle.get();

  const bool secure = smtp.UseSSL && !capture;
  const bool implicitTls = secure && smtp.Port == CImplicitTlsPort;
  const QString host = capture ? QStringLiteral("127.0.0.1") : smtp.Server.trimmed();
  const QString url = QStringLiteral("%1://%2:%3")
                          .arg(implicitTls ? QStringLiteral("smtps") : QStringLiteral("smtp"),
                               host.contains(u':') ? u'[' + host + u']' : host)
                          .arg(capture ? capture->Port() : smtp.Port);
  const QString from = SenderAddress(smtp);

  TCurlList recipients;
  for (const QString &address : message.To + message.Cc)
    recipients.Append(AngleAddress(address));

  const QString now = QDateTime::currentDateTime().toString(Qt::RFC2822Date);
  TCurlList headers;
  headers.Append("Date: " + now.toLatin1());
  headers.Append("From: " + from.toUtf8());
  headers.Append("To: " + message.To.join(QStringLiteral(", ")).toUtf8());
  if (!message.Cc.isEmpty())
    headers.Append("Cc: " + message.Cc.join(QStringLiteral(", ")).toUtf8());
  headers.Append("Subject: " + EncodeHeaderText(message.Subject));
  headers.Append("Message-ID: <" + QUuid::createUuid().toString(QUuid::WithoutBraces).toLatin1() + '@' +
                 DomainOf(from).toUtf8() + '>');
  headers.Append("Auto-Submitted: auto-generated");
  headers.Append("X-Auto-Response-Suppress: All");

  const std::unique_ptr<curl_mime, TMimeFree> mime(curl_mime_init(curl));
  const bool mixed = !message.Attachments.isEmpty();
  curl_mime *bodies = mime.get();
  if (mixed && !message.Html.isEmpty()) {
    // The two renderings stay alternatives of each other, beside the attachments.
    bodies = curl_mime_init(curl);
    curl_mimepart *part = curl_mime_addpart(mime.get());
    Check(curl_mime_subparts(part, bodies), server, "message");
    Check(curl_mime_type(part, "multipart/alternative"), server, "message");
  }
  AddPart(bodies, message.Text, "text/plain; charset=UTF-8");
  if (!message.Html.isEmpty())
    AddPart(bodies, message.Html, "text/html; charset=UTF-8");
  for (const TMailAttachment &attachment : message.Attachments) {
    curl_mimepart *part = curl_mime_addpart(mime.get());
    Check(curl_mime_data(part, attachment.Data.constData(), static_cast<size_t>(attachment.Data.size())), server,
          "attachment");
    Check(curl_mime_filename(part, attachment.FileName.toUtf8().constData()), server, "attachment");
    Check(curl_mime_type(part, attachment.Type.constData()), server, "attachment");
    Check(curl_mime_encoder(part, "base64"), server, "attachment");
  }
  if (mixed)
    headers.Append("Content-Type: multipart/mixed");
  else if (!message.Html.isEmpty())
    headers.Append("Content-Type: multipart/alternative");

  const QByteArray urlBytes = url.toUtf8();
  const QByteArray fromBytes = AngleAddress(from);
  const QByteArray user = smtp.UserName.toUtf8();
  const QByteArray password = smtp.Password.toUtf8();
  // Certificates matter only when TLS is used; a plain send never reads them.
  const QByteArray authorities = secure ? TrustedAuthorities(curl, smtp) : QByteArray();
  char errorText[CURL_ERROR_SIZE] = {};
  TTranscript transcript;

  Check(curl_easy_setopt(curl, CURLOPT_URL, urlBytes.constData()), server, "address");
  Check(curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, errorText), server, "error text");
  Check(curl_easy_setopt(curl, CURLOPT_VERBOSE, 1L), server, "transcript");
  Check(curl_easy_setopt(curl, CURLOPT_DEBUGFUNCTION, OnCurlDebug), server, "transcript");
  Check(curl_easy_setopt(curl, CURLOPT_DEBUGDATA, &transcript), server, "transcript");
  const long startTls = secure && !implicitTls ? CURLUSESSL_ALL : CURLUSESSL_NONE;
  Check(curl_easy_setopt(curl, CURLOPT_USE_SSL, startTls), server, "STARTTLS");
  Check(curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 1L), server, "certificate check");
  Check(curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 2L), server, "certificate check");
  if (!authorities.isEmpty()) {
    curl_blob blob{const_cast<char *>(authorities.constData()), static_cast<size_t>(authorities.size()),
                   CURL_BLOB_COPY};
    Check(curl_easy_setopt(curl, CURLOPT_CAINFO_BLOB, &blob), server, "certificate authorities");
  }
  Check(curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, CConnectTimeoutSeconds), server, "timeout");
  Check(curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(timeout.count())), server, "timeout");
  Check(curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L), server, "signals");
  if (capture && !capture->Attach(curl))
    throw ESmtpError(QStringLiteral("Unable to prepare %1: libcurl refuses the connection options").arg(server));
  if (!capture && !smtp.UserName.trimmed().isEmpty()) {
    Check(curl_easy_setopt(curl, CURLOPT_USERNAME, user.constData()), server, "user name");
    Check(curl_easy_setopt(curl, CURLOPT_PASSWORD, password.constData()), server, "password");
  }
  Check(curl_easy_setopt(curl, CURLOPT_MAIL_FROM, fromBytes.constData()), server, "sender");
  Check(curl_easy_setopt(curl, CURLOPT_MAIL_RCPT, recipients.List()), server, "recipients");
  Check(curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers.List()), server, "headers");
  Check(curl_easy_setopt(curl, CURLOPT_MIMEPOST, mime.get()), server, "message");

  const CURLcode result = curl_easy_perform(curl);
  const auto spent = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - started);
  CleanUpWithin(handle, std::max(std::chrono::milliseconds(0), timeout - spent));
  if (result == CURLE_OK)
    return;
  QString reason = errorText[0] ? QString::fromUtf8(errorText) : QString::fromUtf8(curl_easy_strerror(result));
  if (!transcript.LastError.isEmpty())
    reason += QStringLiteral(" (the server replied: ") + transcript.LastError + u')';
  const QString error = QStringLiteral("Unable to send the mail through %1: %2").arg(server, reason);
  TraceError(lcMail(), error);
  throw ESmtpError(error);
}

} // namespace

CURLcode StartMailSending()
{
  static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
  return started;
}

void SendMail(const tySMTPserver &smtp, const TMailMessage &message, std::chrono::seconds timeout)
{
  const TraceScope trace(lcMail(), "SendMail");
  Transfer(smtp, message, nullptr, timeout);
}

QByteArray RenderMail(const tySMTPserver &smtp, const TMailMessage &message)
{
  const TraceScope trace(lcMail(), "RenderMail");
  TMailCapture capture;
  Transfer(smtp, message, &capture, CSmtpTimeout);
  return capture.Message();
}
