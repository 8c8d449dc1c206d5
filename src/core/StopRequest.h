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
  // Ready for the next piece of work: nothing requested.
  void Reset()
  {
    FRequested.store(false);
    FReason.clear();
  }
  // Set once IsRequested() is true.
  QString Reason() const { return FReason; }
  // What happened, for a person: "the step was cancelled" after a Cancel,
  // else "the run was stopped (SIGTERM)".
  QString Happened() const;
  // The reason a person's Cancel gives.
  static QString CancelReason() { return QStringLiteral("Cancel"); }

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
