#pragma once

#include "CommandLine.h"

#include <QString>

// --snooze, --wake, --snoozed and --history: a look at the follow-up's store
// beside the settings, or a change of it, printed on standard output. A change
// waits for no unattended run: while one is under way it is refused (exit 4).
// Returns the exit status.
int RunStoreCommand(const TCommandLine &line, const QString &exeFileName);
