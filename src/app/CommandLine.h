#pragma once

#include <QDate>
#include <QList>
#include <QStringList>
#include <cstdint>

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
  // The follow-up's store: snooze tickets until a day or until they change,
  // wake them, list the snoozes, or list the last runs (--history [N]).
  QList<std::int64_t> Snooze;
  QDate Until;
  bool UntilChange = false;
  QList<std::int64_t> Wake;
  bool Snoozed = false;
  int History = 0; // runs to list; 0: none asked
  static constexpr int CDefaultHistory = 10;
  QString Error;           // an unknown option, or an option given a value it cannot take
  QStringList Words;       // bare words: each asks for the unattended run

  static constexpr int CDefaultDeadlineMinutes = 20;
  // Exit status of a command line that cannot be obtained (sysexits' EX_USAGE).
  static constexpr int CExitUsage = 64;

  bool Unattended() const { return DryRun || Resend || DeadlineGiven || !Words.isEmpty(); }
  // Asks for a look at the store or a change of it, not for a run.
  bool StoreCommand() const { return !Snooze.isEmpty() || !Wake.isEmpty() || Snoozed || History > 0; }
};

// `arguments` without the program name.
TCommandLine ParseCommandLine(const QStringList &arguments);

// What --help prints: the usage, every option, and that a bare word runs the routine.
QString UsageText(const QString &programName);
