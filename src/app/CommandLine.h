#pragma once

#include <QStringList>

// The command line, read by QCommandLineParser. Without an argument the window
// opens; a bare word (e.g. "auto") or an option of the routine runs the daily
// routine unattended. An unknown option is refused, so that a typo never starts
// a run that mails everyone.
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
  bool DeadlineGiven = false;
  QString Error;           // an unknown option, or an option given a value it cannot take
  QStringList Words;       // bare words: each asks for the unattended run

  static constexpr int CDefaultDeadlineMinutes = 20;
  // Exit status of a command line that cannot be obtained (sysexits' EX_USAGE).
  static constexpr int CExitUsage = 64;

  bool Unattended() const { return DryRun || Resend || DeadlineGiven || !Words.isEmpty(); }
};

// `arguments` without the program name.
TCommandLine ParseCommandLine(const QStringList &arguments);

// What --help prints: the usage, every option, and that a bare word runs the routine.
QString UsageText(const QString &programName);
