#pragma once

#include <QList>
#include <QString>

// One thing a step could not do, in words for a person: what failed (an
// organization's query, the access token, a setting), why and what to do; and
// the technical details (address, HTTP status, the trace's own words).
struct TStepFailure
{
  QString What;
  QString Reason;
  QString Details;
  // Not a failure of the step but a fact it could not establish (a ticket's
  // date that cannot be read): logged as a WARNING; the step is still incomplete.
  bool Warning = false;

  // "What: reason", for the status bar, message boxes and the report.
  QString Text() const { return What + QStringLiteral(": ") + Reason; }
  // The same followed by the details, for the run log.
  QString LogText() const { return Details.isEmpty() ? Text() : Text() + QStringLiteral(" [") + Details + u']'; }
};

using TStepFailures = QList<TStepFailure>;
