#pragma once

#include <QStringList>

// The command line. Recognised options are listed below; any other argument,
// whatever its text, asks for the unattended run.
struct TCommandLine
{
  bool Help = false;
  bool Version = false;
  bool Verbose = false;    // echo the trace to stderr
  bool Encrypt = false;    // read a secret on stdin, print its stored form
  bool DryRun = false;     // unattended run that writes the report files and sends nothing
  bool Resend = false;     // unattended run that sends again what was delivered today
  // Minutes after which the unattended run starts no more request of the
  // service ("--deadline MINUTES" or "--deadline=MINUTES").
  int DeadlineMinutes = CDefaultDeadlineMinutes;
  QString Error;           // an option given a value it cannot take
  QStringList OtherArguments;

  static constexpr int CDefaultDeadlineMinutes = 20;

  bool Unattended() const { return DryRun || !OtherArguments.isEmpty(); }
};

// `arguments` without the program name.
TCommandLine ParseCommandLine(const QStringList &arguments);

QString UsageText(const QString &programName);
