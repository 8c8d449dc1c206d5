#include "UnattendedRun.h"

#include "TMainState.h"
#include "core/Errors.h"
#include "core/StopRequest.h"
#include "core/RunLog.h"
#include "core/TextFiles.h"
#include "core/Trace.h"

#include <cstdio>

namespace {

// The error line of the log, also kept in the trace (the log's echo shows it on
// stderr).
void Fail(TMainState &state, const QString &message)
{
  state.FslLog.append(LogLine(QStringLiteral(" - ERROR ") + message));
  TraceFailure(lcApp(), message);
}

// One error line for each thing the last step could not do, a warning line for
// each fact it could not establish.
void LogFailures(TMainState &state, const TStepFailures &failures)
{
  for (const TStepFailure &failure : failures) {
    if (!failure.Warning) {
      Fail(state, failure.LogText());
      continue;
    }
    state.FslLog.append(LogLine(QStringLiteral(" - WARNING ") + failure.LogText()));
    qCDebug(lcApp()).noquote() << QStringLiteral("WARNING ") + failure.LogText();
  }
}

// Saves the run log; a log that cannot be written fails the run.
TExitStatus SaveLog(TMainState &state, TExitStatus status)
{
  try {
    // Two runs started in the same second keep a log each.
    state.FLogFile = SaveLinesAsNewFile(state.FLogFile, state.FslLog, QStringLiteral("\n"));
  } catch (const EQuorvexError &error) {
    std::fprintf(stderr, "%s\n", qPrintable(error.Message()));
    return CExitStepFailed;
  }
  return status;
}

// Hands the log lines written since the last call to the options' echo.
class TLogEcho
{
public:
  TLogEcho(const QStringList &log, const TUnattendedOptions &options) : FLog(log), FOptions(options) {}
  void Flush()
  {
    for (; FEchoed < FLog.size(); ++FEchoed)
      if (FOptions.Echo)
        FOptions.Echo(FLog[FEchoed]);
  }

private:
  const QStringList &FLog;
  const TUnattendedOptions &FOptions;
  qsizetype FEchoed = 0;
};

} // namespace

TTask<TExitStatus> RunUnattended(TMainState &state, TLoadingProgress &progress, TUnattendedOptions options)
{
  const TraceScope trace(lcApp(), "Session.RunUnattended");
  QStringList &log = state.FslLog;
  log.clear();
  log.append(LogLine(QStringLiteral(" - BEGIN")));
  if (options.ShowAutomaticMode)
    options.ShowAutomaticMode(true);
  state.FAutomatic = true;
  state.FDryRun = options.DryRun;
  state.SetRequestDeadline(options.Deadline);
  state.SetStopRequest(options.Stop);
  state.SetResend(options.Resend);
  auto stopped = [&options] { return options.Stop && options.Stop->IsRequested(); };

  TLogEcho echo(log, options);
  echo.Flush();
  TExitStatus status = CExitOk;
  try {
    log.append(LogLine(QStringLiteral(" - Retrieve all tickets")));
    echo.Flush();
    co_await state.RetrieveTickets(progress);
    if (!state.RetrievalFailures().isEmpty())
      status = CExitIncomplete;
    LogFailures(state, state.RetrievalFailures());
    if (stopped())
      throw EQuorvexError(QStringLiteral("Stopped by %1 during the retrieval: no report was sent").arg(options.Stop->Reason()));
    log.append(LogLine(QStringLiteral(" - Generate email")));
    echo.Flush();
    co_await state.GenerateReport();
    LogFailures(state, state.TakeStepFailures());
    if (!state.RecipientsUnknown().isEmpty() && status == CExitOk)
      status = CExitIncomplete;
    log.append(LogLine(QStringLiteral(" - * Unassigned: ") + QString::number(state.FNbUnassigned)));
    log.append(LogLine(QStringLiteral(" - * Without update: ") + QString::number(state.FNbWithoutUpdate)));
    log.append(LogLine(QStringLiteral(" - * >10 exchanges: ") + QString::number(state.FNbGt10Exch)));
    if (state.Report().Remembers && state.FDelivery.FollowUp.EscalateAfter >= 2)
      log.append(LogLine(QStringLiteral(" - * Escalated: ") + QString::number(state.Report().NbEscalated)));
    log.append(LogLine(QStringLiteral(" - * To: ") + QString::number(state.FSlRecipientTo.size())));
    log.append(LogLine(QStringLiteral(" - * Cc: ") + QString::number(state.FSlRecipientCc.size())));
    log.append(LogLine(QStringLiteral(" - Send email")));
    echo.Flush();
    co_await state.SendReport(progress);
    const TStepFailures notServed = state.TakeStepFailures();
    LogFailures(state, notServed);
    if (stopped())
      Fail(state, notServed.isEmpty()
                      ? QStringLiteral("Stopped by %1 after every mail was sent").arg(options.Stop->Reason())
                      : QStringLiteral("Stopped by %1: the mails and recipients above were not served").arg(options.Stop->Reason()));
    if (!notServed.isEmpty() || stopped())
      status = CExitStepFailed;
    log.append(LogLine(QStringLiteral(" - END")));
  } catch (const EQuorvexError &error) {
    Fail(state, error.Message());
    status = CExitStepFailed;
  } catch (const std::exception &error) {
    Fail(state, QString::fromLocal8Bit(error.what()));
    status = CExitStepFailed;
  }
  echo.Flush();
  state.NoteExitStatus(status);
  co_return SaveLog(state, status);
}

void SaveStartFailureLog(TMainState &state, const QString &message, const TUnattendedOptions &options)
{
  state.FslLog.clear();
  state.FslLog.append(LogLine(QStringLiteral(" - BEGIN")));
  Fail(state, message);
  TLogEcho(state.FslLog, options).Flush();
  if (!state.FLogFile.isEmpty())
    SaveLog(state, CExitStepFailed);
}
