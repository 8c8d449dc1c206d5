#include "MailCapture.h"

#include "MailSender.h"

#include <cerrno>
#include <cstring>
#include <curl/curl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int OnSocketOptions(void *, curl_socket_t, curlsocktype) { return CURL_SOCKOPT_ALREADY_CONNECTED; }

// Reads CR LF terminated lines from a socket.
class TLineReader
{
public:
  explicit TLineReader(int socket) : FSocket(socket) {}
  // The next line without its CR LF; false at the end of the connection.
  bool Next(QByteArray &line)
  {
    for (;;) {
      const qsizetype end = FBuffer.indexOf("\r\n");
      if (end >= 0) {
        line = FBuffer.left(end);
        FBuffer.remove(0, end + 2);
        return true;
      }
      char chunk[4096];
      const ssize_t got = ::read(FSocket, chunk, sizeof chunk);
      if (got <= 0)
        return false;
      FBuffer.append(chunk, got);
    }
  }

private:
  int FSocket;
  QByteArray FBuffer;
};

void Reply(int socket, const char *line) { (void)!::write(socket, line, std::strlen(line)); }

} // namespace

TMailCapture::TMailCapture()
{
  if (::socketpair(AF_UNIX, SOCK_STREAM, 0, FSockets) != 0)
    throw ESmtpError(QStringLiteral("Unable to prepare the dry run's copy of the mail: no socket pair (%1)")
                         .arg(QString::fromLocal8Bit(std::strerror(errno))));
  FServer = std::thread([this] { Serve(); });
}

TMailCapture::~TMailCapture()
{
  ::shutdown(FSockets[1], SHUT_RDWR);
  if (FServer.joinable())
    FServer.join();
  ::close(FSockets[1]);
  if (!FHandedOver)
    ::close(FSockets[0]);
}

bool TMailCapture::Attach(void *curl)
{
  // Once libcurl has taken the socket, libcurl closes it.
  const curl_opensocket_callback open = [](void *data, curlsocktype, curl_sockaddr *) -> curl_socket_t {
    auto *capture = static_cast<TMailCapture *>(data);
    if (capture->FHandedOver)
      return CURL_SOCKET_BAD; // one connection only
    capture->FHandedOver = true;
    return capture->FSockets[0];
  };
  return curl_easy_setopt(curl, CURLOPT_OPENSOCKETFUNCTION, open) == CURLE_OK &&
         curl_easy_setopt(curl, CURLOPT_OPENSOCKETDATA, this) == CURLE_OK &&
         curl_easy_setopt(curl, CURLOPT_SOCKOPTFUNCTION, OnSocketOptions) == CURLE_OK;
}

QByteArray TMailCapture::Message()
{
  if (FServer.joinable())
    FServer.join();
  return FMessage;
}

void TMailCapture::Serve()
{
  const int socket = FSockets[1];
  TLineReader reader(socket);
  Reply(socket, "220 dry run\r\n");
  QByteArray line;
  while (reader.Next(line)) {
    const QByteArray command = line.left(4).toUpper();
    if (command == "QUIT") {
      Reply(socket, "221 bye\r\n");
      return;
    }
    if (command != "DATA") {
      Reply(socket, "250 OK\r\n");
      continue;
    }
    Reply(socket, "354 go ahead\r\n");
    while (reader.Next(line) && line != ".")
      // A line that began with a dot was sent with one more.
      FMessage += (line.startsWith("..") ? line.mid(1) : line) + "\r\n";
    Reply(socket, "250 kept\r\n");
  }
}
