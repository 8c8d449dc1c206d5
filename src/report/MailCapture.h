#pragma once

#include <QByteArray>
#include <atomic>
#include <thread>

// The far end of one SMTP exchange, inside the program: it accepts whatever
// libcurl sends and keeps the message, so that a dry run can write a mail to a
// file exactly as it would have left. It listens on a free loopback port for the
// one connection of the socket it makes for libcurl, and takes no other.
class TMailCapture
{
public:
  TMailCapture(); // raises ESmtpError when no loopback port can be opened
  ~TMailCapture();
  TMailCapture(const TMailCapture &) = delete;
  TMailCapture &operator=(const TMailCapture &) = delete;

  int Port() const { return FPort; }
  // The libcurl options that make it connect through the capture's socket;
  // false when libcurl refuses them.
  bool Attach(void *curl);
  // The message received (headers and body, CR LF line breaks), once libcurl has
  // ended the exchange.
  QByteArray Message();

private:
  void Serve();

  int FListener = -1;
  int FPort = 0;
  std::atomic<int> FClientPort{0}; // local port of libcurl's socket, network order
  std::atomic<int> FServed{-1};    // the accepted connection
  std::thread FServer;
  QByteArray FMessage;
};
