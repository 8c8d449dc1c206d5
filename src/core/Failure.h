#pragma once

#include <QList>
#include <QString>

// Why something could not be done, in words for a person, from the service
// client and the mail sending up to the window and the run log: what failed (an
// organization's query, the access token, a setting, a mail; empty until the
// step that made the call names it), the reason naming the server and what to
// do, and the technical details (address, HTTP status, the trace's own words)
// for whoever digs further.
struct TFailure
{
  QString What;
  QString Reason;
  QString Details;
  // Not a failure of the step but a fact it could not establish (a ticket's
  // date that cannot be read): logged as a WARNING; the step is still incomplete.
  bool Warning = false;

  // "What: reason", for the status bar, message boxes and the report.
  QString Text() const { return What.isEmpty() ? Reason : What + QStringLiteral(": ") + Reason; }
  // The same followed by the details, for the run log.
  QString LogText() const { return Details.isEmpty() ? Text() : Text() + QStringLiteral(" [") + Details + u']'; }
};

using TFailures = QList<TFailure>;
