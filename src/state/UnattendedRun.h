#pragma once

#include "core/Task.h"

#include <QDeadlineTimer>
#include <QString>
#include <functional>

class TLoadingProgress;
class TMainState;
class TStopRequest;

// Exit statuses of the program, for the scheduler that starts it.
enum TExitStatus : int {
  CExitOk = 0,            // done
  CExitStepFailed = 2,    // a step failed or the run was stopped: nothing, or not everything, was sent
  CExitIncomplete = 3,    // report sent, but the retrieval or the recipients were incomplete (and the report says so)
  CExitOtherInstance = 4, // another instance runs on the same settings
};

struct TUnattendedOptions
{
  // Writes the report files and each mail as an .eml file, and sends nothing.
  bool DryRun = false;
  // After it no request of the service starts: what was not retrieved by then
  // makes the retrieval incomplete, and the report is still built and sent.
  QDeadlineTimer Deadline{QDeadlineTimer::Forever};
  // Once requested (SIGTERM...), nothing new starts: the run logs what was and
  // was not sent and ends with CExitStepFailed.
  const TStopRequest *Stop = nullptr;
  // Sends again the mails the journal says were delivered today.
  bool Resend = false;
  // Shows whether the program works on its own (the window's red image).
  std::function<void(bool automatic)> ShowAutomaticMode;
  // Receives each line of the run log as soon as it is written (progress on
  // stderr for whoever watches the run, cron's mail for instance).
  std::function<void(const QString &line)> Echo;
};

// The daily routine without a person, as the buttons would run it: retrieve the
// tickets, generate the report, send it, and save the session's run log to its
// LogFile(). Never waits for anyone: an error is logged as an ERROR line, the log
// is still saved, the message goes to stderr, and the status says what happened.
// The run goes on as the service and the mail server answer; the caller's event
// loop runs meanwhile.
TTask<TExitStatus> RunUnattended(TMainState &state, TLoadingProgress &progress, TUnattendedOptions options);

// The run log of an unattended run that could not even start (the settings
// could not be read): BEGIN and the ERROR line, saved to LogFile() when known.
void SaveStartFailureLog(TMainState &state, const QString &message, const TUnattendedOptions &options);
