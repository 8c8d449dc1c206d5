#pragma once

#include "core/Failure.h"

#include <QString>

class QWidget;

// A message box telling a person what failed, why and what to do, with the
// technical details behind "Show Details...".
void ShowFailure(QWidget *parent, const QString &message, const QString &details);
// The same for the failures of a step, under a one-line summary.
void ShowStepFailures(QWidget *parent, const QString &summary, const TFailures &failures);
