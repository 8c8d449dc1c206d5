#include "StopRequest.h"

#include "Trace.h"

#include <QSocketNotifier>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

void TStopRequest::Request(const QString &reason)
{
  if (FRequested.load())
    return;
  FReason = reason;
  FRequested.store(true);
  TraceValue(lcApp(), "Stop requested", reason);
  emit Stopped();
}

QString TStopRequest::Happened() const
{
  return FReason == CancelReason() ? QStringLiteral("the step was cancelled")
                                   : QStringLiteral("the run was stopped (%1)").arg(FReason);
}

namespace {

// The handler only writes the signal's number to this socket; the event loop
// reads it (nothing else is safe inside a signal handler).
int GSignalSocket[2] = {-1, -1};

void OnSignal(int number)
{
  const char byte = static_cast<char>(number);
  [[maybe_unused]] const ssize_t written = ::write(GSignalSocket[0], &byte, 1);
}

QString SignalName(int number)
{
  switch (number) {
  case SIGTERM: return QStringLiteral("SIGTERM");
  case SIGINT: return QStringLiteral("SIGINT");
  case SIGHUP: return QStringLiteral("SIGHUP");
  default: return QStringLiteral("signal %1").arg(number);
  }
}

} // namespace

void InstallStopSignals(TStopRequest &stop)
{
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, GSignalSocket) != 0) {
    TraceError(lcApp(), QStringLiteral("Signals cannot be caught (no socket pair): SIGTERM ends the run at once"));
    return;
  }
  auto *notifier = new QSocketNotifier(GSignalSocket[1], QSocketNotifier::Read, &stop);
  QObject::connect(notifier, &QSocketNotifier::activated, &stop, [&stop] {
    char byte = 0;
    if (::read(GSignalSocket[1], &byte, 1) == 1)
      stop.Request(SignalName(byte));
  });
  struct sigaction action = {};
  action.sa_handler = OnSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART | SA_RESETHAND;
  for (const int number : {SIGTERM, SIGINT, SIGHUP})
    ::sigaction(number, &action, nullptr);
}
