#include "UnattendedRun.h"

#include "TMainState.h"
#include "core/Errors.h"
#include "core/StopRequest.h"
#include "core/Trace.h"

#include <cstdio>

namespace {

// The error line of the log, also kept in the trace (the log's echo shows it on
// stderr).
void Fail(TMainState &state, const QString &message)
{
  state.AppendLog(QStringLiteral(" - ERROR ") + message);
  TraceFailure(lcApp(), message);
}

// One error line for each thing the last step could not do, a warning line for
// each fact it could not establish.
void LogFailures(TMainState &state, const TFailures &failures)
{
  for (const TFailure &failure : failures) {
    if (!failure.Warning) {
      Fail(state, failure.LogText());
      continue;
    }
    state.AppendLog(QStringLiteral(" - WARNING ") + failure.LogText());
    qCDebug(lcApp()).noquote() << QStringLiteral("WARNING ") + failure.LogText();
  }
}

// Saves the run log; a log that cannot be written fails the run.
TExitStatus SaveLog(TMainState &state, TExitStatus status)
{
  try {
    state.SaveRunLog();
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
  state.BeginRunLog();
  if (options.ShowAutomaticMode)
    options.ShowAutomaticMode(true);
  state.BeginUnattendedRun(options.DryRun);
  state.SetRequestDeadline(options.Deadline);
  state.SetStopRequest(options.Stop);
  state.SetResend(options.Resend);
  auto stopped = [&options] { return options.Stop && options.Stop->IsRequested(); };

  TLogEcho echo(state.RunLog(), options);
  echo.Flush();
  TExitStatus status = CExitOk;
  try {
    state.AppendLog(QStringLiteral(" - Retrieve all tickets"));
    echo.Flush();
    co_await state.RetrieveTickets(progress);
    if (!state.RetrievalFailures().isEmpty())
      status = CExitIncomplete;
    LogFailures(state, state.RetrievalFailures());
    if (stopped())
      throw EQuorvexError(QStringLiteral("Stopped by %1 during the retrieval: no report was sent").arg(options.Stop->Reason()));
    state.AppendLog(QStringLiteral(" - Generate email"));
    echo.Flush();
    co_await state.GenerateReport();
    LogFailures(state, state.TakeStepFailures());
    if (!state.RecipientsUnknown().isEmpty() && status == CExitOk)
      status = CExitIncomplete;
    state.AppendLog(QStringLiteral(" - * Unassigned: ") + QString::number(state.UnassignedCount()));
    state.AppendLog(QStringLiteral(" - * Without update: ") + QString::number(state.WithoutUpdateCount()));
    state.AppendLog(QStringLiteral(" - * >10 exchanges: ") + QString::number(state.Gt10ExchangesCount()));
    if (state.Report().Remembers && state.Delivery().FollowUp.EscalateAfter >= 2)
      state.AppendLog(QStringLiteral(" - * Escalated: ") + QString::number(state.Report().NbEscalated));
    state.AppendLog(QStringLiteral(" - * To: ") + QString::number(state.RecipientsTo().size()));
    state.AppendLog(QStringLiteral(" - * Cc: ") + QString::number(state.RecipientsCc().size()));
    state.AppendLog(QStringLiteral(" - Send email"));
    echo.Flush();
    co_await state.SendReport(progress);
    const TFailures notServed = state.TakeStepFailures();
    LogFailures(state, notServed);
    if (stopped())
      Fail(state, notServed.isEmpty()
                      ? QStringLiteral("Stopped by %1 after every mail was sent").arg(options.Stop->Reason())
                      : QStringLiteral("Stopped by %1: the mails and recipients above were not served").arg(options.Stop->Reason()));
    if (!notServed.isEmpty() || stopped())
      status = CExitStepFailed;
    state.AppendLog(QStringLiteral(" - END"));
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
  state.BeginRunLog();
  Fail(state, message);
  TLogEcho(state.RunLog(), options).Flush();
  if (!state.LogFile().isEmpty())
    SaveLog(state, CExitStepFailed);
}
