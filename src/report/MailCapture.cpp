#include "MailCapture.h"

#include "MailSender.h"

#include <cerrno>
#include <cstring>
#include <curl/curl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

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

sockaddr_in Loopback()
{
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

} // namespace

TMailCapture::TMailCapture()
{
  sockaddr_in address = Loopback();
  socklen_t length = sizeof address;
  FListener = ::socket(AF_INET, SOCK_STREAM, 0);
  if (FListener < 0 || ::bind(FListener, reinterpret_cast<sockaddr *>(&address), length) != 0 ||
      ::getsockname(FListener, reinterpret_cast<sockaddr *>(&address), &length) != 0 || ::listen(FListener, 4) != 0) {
    const QString reason = QString::fromLocal8Bit(std::strerror(errno));
    if (FListener >= 0)
      ::close(FListener);
    throw ESmtpError(QStringLiteral("Unable to prepare the dry run's copy of the mail: no loopback port (%1)")
                         .arg(reason));
  }
  FPort = ntohs(address.sin_port);
  FServer = std::thread([this] { Serve(); });
}

TMailCapture::~TMailCapture()
{
  ::shutdown(FListener, SHUT_RDWR);
  if (const int served = FServed.load(); served >= 0)
    ::shutdown(served, SHUT_RDWR);
  if (FServer.joinable())
    FServer.join();
  ::close(FListener);
  if (FServed >= 0)
    ::close(FServed);
}

bool TMailCapture::Attach(void *curl)
{
  // The socket is bound before libcurl connects it, so the capture knows it.
  const curl_opensocket_callback open = [](void *data, curlsocktype, curl_sockaddr *) -> curl_socket_t {
    auto *capture = static_cast<TMailCapture *>(data);
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in local = Loopback();
    socklen_t length = sizeof local;
    if (socket < 0 || ::bind(socket, reinterpret_cast<sockaddr *>(&local), length) != 0 ||
        ::getsockname(socket, reinterpret_cast<sockaddr *>(&local), &length) != 0) {
      if (socket >= 0)
        ::close(socket);
      return CURL_SOCKET_BAD;
    }
    capture->FClientPort = local.sin_port;
    return socket;
  };
  return curl_easy_setopt(curl, CURLOPT_OPENSOCKETFUNCTION, open) == CURLE_OK &&
         curl_easy_setopt(curl, CURLOPT_OPENSOCKETDATA, this) == CURLE_OK;
}

QByteArray TMailCapture::Message()
{
  if (FServer.joinable())
    FServer.join();
  return FMessage;
}

void TMailCapture::Serve()
{
  int socket = -1;
  for (;;) {
    sockaddr_in peer{};
    socklen_t length = sizeof peer;
    socket = ::accept(FListener, reinterpret_cast<sockaddr *>(&peer), &length);
    if (socket < 0)
      return;
    if (peer.sin_port == FClientPort)
      break;
    ::close(socket); // someone else's connection
  }
  FServed = socket;
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
