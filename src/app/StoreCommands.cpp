#include "StoreCommands.h"

#include "core/FileLock.h"
#include "core/AppPaths.h"
#include "report/FollowUpHistory.h"
#include "report/FollowUpStore.h"
#include "state/UnattendedRun.h"

#include <QCoreApplication>
#include <cstdio>
#include <optional>

namespace {

void Print(FILE *stream, const QString &text) { std::fputs(qPrintable(text + u'\n'), stream); }

} // namespace

int RunStoreCommand(const TCommandLine &line, const QString &exeFileName)
{
  int argc = 1;
  char name[] = "quorvex-followup";
  char *argv[] = {name, nullptr};
  const QCoreApplication application(argc, argv); // the SQLite driver is a plugin
  const QString base = BaseFolder() + ExeBaseName(exeFileName);
  const bool changes = !line.Snooze.isEmpty() || !line.Wake.isEmpty();
  std::optional<TFileLock> runLock;
  if (changes) {
    runLock.emplace(BaseFolder() + IniFileNameFor(exeFileName) + QStringLiteral(".run.lock"));
    if (!runLock->IsHeld()) {
      Print(stderr, QStringLiteral("%1: an unattended run is under way on the same settings (%2); try again when "
                                   "it has ended.")
                        .arg(exeFileName, runLock->Path()));
      return CExitOtherInstance;
    }
  }
  QStringList warnings;
  const auto store = TFollowUpStore::Open(base + QStringLiteral(".db"), warnings);
  for (const QString &warning : warnings)
    Print(stderr, QStringLiteral("WARNING ") + warning);
  if (!store)
    return CExitStepFailed;
  TFollowUpHistory history(*store);
  const QDateTime now = QDateTime::currentDateTime();
  for (const std::int64_t ticket : line.Snooze)
    history.Snooze({ticket, line.Until, line.UntilChange, false, {}, {}, 0, SnoozingPerson(), now});
  if (!line.Snooze.isEmpty())
    Print(stdout, QStringLiteral("Snoozed %1 ticket(s) %2").arg(line.Snooze.size()).arg(
                      line.UntilChange ? QStringLiteral("until they change")
                                       : QStringLiteral("until ") + ReportDate(line.Until)));
  if (!line.Wake.isEmpty())
    Print(stdout, QStringLiteral("Woke %1 ticket(s) up").arg(history.Wake(line.Wake)));
  if (line.Snoozed) {
    const QStringList lines = SnoozeLines(history.Snoozes());
    Print(stdout, lines.isEmpty() ? QStringLiteral("No ticket is snoozed.") : lines.join(u'\n'));
  }
  if (line.History > 0) {
    const QStringList lines = HistoryLines(history.LastRuns(line.History));
    Print(stdout, lines.isEmpty() ? QStringLiteral("No report has been sent yet.") : lines.join(u'\n'));
  }
  for (const QString &warning : history.Warnings())
    Print(stderr, QStringLiteral("ERROR ") + warning);
  return history.Warnings().isEmpty() ? CExitOk : CExitStepFailed;
}
