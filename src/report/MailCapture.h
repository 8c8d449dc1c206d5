#pragma once

#include <QByteArray>
#include <thread>

// The far end of one SMTP exchange, inside the program: it accepts whatever
// libcurl sends and keeps the message, so that a dry run can write a mail to a
// file exactly as it would have left. libcurl is handed one end of a connected
// socket pair instead of opening a connection; no port is ever opened.
class TMailCapture
{
public:
  TMailCapture(); // raises ESmtpError when the system gives no socket pair
  ~TMailCapture();
  TMailCapture(const TMailCapture &) = delete;
  TMailCapture &operator=(const TMailCapture &) = delete;

  // The libcurl options that hand it the socket; false when libcurl refuses one.
  bool Attach(void *curl);
  // The message received (headers and body, CR LF line breaks), once libcurl has
  // ended the exchange.
  QByteArray Message();

private:
  void Serve();

  int FSockets[2] = {-1, -1}; // [0] for libcurl, [1] for the capture
  bool FHandedOver = false;
  std::thread FServer;
  QByteArray FMessage;
};
