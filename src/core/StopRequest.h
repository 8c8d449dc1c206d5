#pragma once

#include <QObject>
#include <QString>
#include <atomic>

// A request to stop the work under way (a signal from the system, a person's
// Cancel): once made, no new request or mail starts, and what is in flight is
// cut. Stopped() is emitted on the thread that made the request; IsRequested()
// may be asked from any thread.
class TStopRequest : public QObject
{
  Q_OBJECT
public:
  using QObject::QObject;

  // The first request wins; `reason` says who asked ("SIGTERM", "Cancel").
  void Request(const QString &reason);
  bool IsRequested() const { return FRequested.load(); }
  // Set once IsRequested() is true.
  QString Reason() const { return FReason; }

signals:
  void Stopped();

private:
  QString FReason;
  std::atomic<bool> FRequested{false};
};

// SIGTERM, SIGINT and SIGHUP become a request to stop `stop` (its reason the
// signal's name), made from the event loop of the calling thread. A second
// signal of the same kind ends the process at once, as it would have without
// this. Call once.
void InstallStopSignals(TStopRequest &stop);
