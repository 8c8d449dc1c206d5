#include "DemoServiceProcess.h"

QString TDemoServiceProcess::Start(const QString &caFile, const QStringList &options)
{
  FOutput.clear();
  FProcess.setProgram(QStringLiteral(QUORVEX_DEMO_SERVICE_EXE));
  FProcess.setArguments(QStringList{QStringLiteral("--ca-file"), caFile} + options);
  FProcess.start();
  if (!FProcess.waitForStarted(10000))
    return FProcess.errorString();
  // The last line it prints is the user name.
  while (!FOutput.contains(QStringLiteral("Username: ")) || !FOutput.endsWith(u'\n')) {
    if (!FProcess.waitForReadyRead(10000))
      return QStringLiteral("the demo service did not get ready; it printed: ") + FOutput +
             QString::fromUtf8(FProcess.readAllStandardError());
    FOutput += QString::fromUtf8(FProcess.readAllStandardOutput());
  }
  return QString();
}

void TDemoServiceProcess::Stop()
{
  if (FProcess.state() == QProcess::NotRunning)
    return;
  FProcess.kill();
  FProcess.waitForFinished(5000);
}

QString TDemoServiceProcess::Printed(const QString &label) const
{
  for (const QString &line : FOutput.split(u'\n'))
    if (line.startsWith(label))
      return line.mid(label.size());
  return QString();
}
