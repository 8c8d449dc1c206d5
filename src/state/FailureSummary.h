#pragma once

#include "core/Failure.h"

#include <QStringList>

// What a step could not do, told briefly: one line per cause (failures that share
// their reason, such as every query of a service that is down), the cause that
// failed most first and the facts that are only warnings last. Each line names
// the first thing that failed and how many more did: "Acme / open tickets and 71
// more: the connection was refused by …; check that the service is running …".
QStringList FailureLines(const TFailures &failures);
// Every failure on a line of its own with its technical details, for whoever
// looks further ("Show Details...").
QString FailureDetails(const TFailures &failures);
