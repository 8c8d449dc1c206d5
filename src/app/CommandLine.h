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
  QStringList OtherArguments;

  bool Unattended() const { return DryRun || !OtherArguments.isEmpty(); }
};

// `arguments` without the program name.
TCommandLine ParseCommandLine(const QStringList &arguments);

QString UsageText(const QString &programName);
