#pragma once

// The built program started as a person or a scheduler starts it. Header only:
// QUORVEX_FOLLOWUP_EXE is defined for each test program.

#include "TempConfig.h"

#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>
#include <gtest/gtest.h>

struct TToolRun
{
  int ExitCode = -1;
  QString Out;
  QString Err;
};

// Settings and session runtime folder under `root`; no display, no session bus
// (so no keyring) and no credentials, as cron has it, unless `platform` names a
// display (e.g. "offscreen").
inline QProcessEnvironment ToolEnvironment(const QString &root, const QString &platform = {})
{
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "DBUS_SESSION_BUS_ADDRESS",
                           "CREDENTIALS_DIRECTORY"})
    environment.remove(QLatin1String(name));
  if (!platform.isEmpty())
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), platform);
  environment.insert(QStringLiteral("XDG_CONFIG_HOME"), root);
  environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), root);
  return environment;
}

inline TToolRun RunTool(const QStringList &arguments, const QProcessEnvironment &environment,
                        const QByteArray &input = {})
{
  QProcess tool;
  tool.setProcessEnvironment(environment);
  tool.start(QStringLiteral(QUORVEX_FOLLOWUP_EXE), arguments);
  tool.write(input);
  tool.closeWriteChannel();
  EXPECT_TRUE(tool.waitForFinished(120000)) << "still running: " << arguments.join(' ').toStdString();
  return {tool.exitCode(), QString::fromUtf8(tool.readAllStandardOutput()),
          QString::fromUtf8(tool.readAllStandardError())};
}

// The text of the one run log in `folder`; empty when there is none or more than one.
inline QString RunLog(const QString &folder)
{
  const QStringList logs = QDir(folder).entryList({QStringLiteral("quorvex-followup_*.log")});
  return logs.size() == 1 ? ReadTextFile(QDir(folder).filePath(logs[0])) : QString();
}
