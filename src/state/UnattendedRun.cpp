#include "UnattendedRun.h"

#include "TMainState.h"
#include "core/Errors.h"
#include "core/RunLog.h"
#include "core/TextFiles.h"
#include "core/Trace.h"

#include <cstdio>

namespace {

// The error line of the log; the trace channel also puts it on stderr.
void Fail(TMainState &state, const QString &message)
{
  state.FslLog.append(LogLine(QStringLiteral(" - ERROR ") + message));
  TraceError(lcApp(), message);
}

} // namespace

TExitStatus TimerTimer(TMainState &state, TLoadingProgress &progress, const TUnattendedOptions &options)
{
  const TraceScope trace(lcApp(), "TfrmMain.TimerTimer");
  QStringList &log = state.FslLog;
  log.clear();
  log.append(LogLine(QStringLiteral(" - BEGIN")));
  if (options.ShowAutomaticMode)
    options.ShowAutomaticMode(true);
  state.FAutomatic = true;
  state.FDryRun = options.DryRun;

  TExitStatus status = CExitOk;
  try {
    log.append(LogLine(QStringLiteral(" - Retrieve all tickets")));
    state.bbtGetTicketsClick(progress);
    log.append(LogLine(QStringLiteral(" - Generate email")));
    state.bbtGenerateMailClick();
    log.append(LogLine(QStringLiteral(" - * Unassigned: ") + QString::number(state.FNbUnassigned)));
    log.append(LogLine(QStringLiteral(" - * Without update: ") + QString::number(state.FNbWithoutUpdate)));
    log.append(LogLine(QStringLiteral(" - * >10 exchanges: ") + QString::number(state.FNbGt10Exch)));
    log.append(LogLine(QStringLiteral(" - * To: ") + QString::number(state.FSlRecipientTo.size())));
    log.append(LogLine(QStringLiteral(" - * Cc: ") + QString::number(state.FSlRecipientCc.size())));
    log.append(LogLine(QStringLiteral(" - Send email")));
    if (options.DryRun)
      log.append(LogLine(QStringLiteral(" - * Dry run: nothing sent; the report is ") + state.ReportFile()));
    else
      state.bbtSendMailClick();
    if (!state.RetrievalFailures().isEmpty()) {
      status = CExitIncomplete;
      for (const QString &failure : state.RetrievalFailures())
        log.append(LogLine(QStringLiteral(" - WARNING incomplete retrieval: ") + failure));
    }
    log.append(LogLine(QStringLiteral(" - END")));
  } catch (const EQuorvexError &error) {
    Fail(state, error.Message());
    status = CExitStepFailed;
  } catch (const std::exception &error) {
    Fail(state, QString::fromLocal8Bit(error.what()));
    status = CExitStepFailed;
  }

  try {
    SaveLines(state.FLogFile, log, QStringLiteral("\n"), TTextEncoding::Utf8);
  } catch (const EQuorvexError &error) {
    std::fprintf(stderr, "%s\n", qPrintable(error.Message()));
    status = CExitStepFailed;
  }
  return status;
}
