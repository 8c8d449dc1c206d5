#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

// The demo service program, started on a free port; its certificate is written
// to `caFile`. Start() returns an empty text when the service is ready, or why
// it is not.
class TDemoServiceProcess
{
public:
  ~TDemoServiceProcess() { Stop(); }

  QString Start(const QString &caFile, const QStringList &options = {});
  void Stop();

  // A value the service printed on start, e.g. Printed("Instance: ").
  QString Printed(const QString &label) const;

private:
  QProcess FProcess;
  QString FOutput;
};
