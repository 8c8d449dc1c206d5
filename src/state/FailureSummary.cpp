#include "FailureSummary.h"

#include <algorithm>

namespace {

struct TCause
{
  QString Reason;
  QStringList Whats;
  bool Warning = false;
};

} // namespace

QStringList FailureLines(const TFailures &failures)
{
  QList<TCause> causes;
  for (const TFailure &failure : failures) {
    const auto known = std::find_if(causes.begin(), causes.end(), [&failure](const TCause &cause) {
      return cause.Reason == failure.Reason && cause.Warning == failure.Warning;
    });
    if (known != causes.end())
      known->Whats.append(failure.What);
    else
      causes.append({failure.Reason, {failure.What}, failure.Warning});
  }
  // Failures before warnings, the widest cause first; equal ones in the order met.
  std::stable_sort(causes.begin(), causes.end(), [](const TCause &a, const TCause &b) {
    return a.Warning != b.Warning ? b.Warning : a.Whats.size() > b.Whats.size();
  });
  QStringList lines;
  for (const TCause &cause : std::as_const(causes)) {
    const QString what = cause.Whats.size() == 1
                             ? cause.Whats.first()
                             : QStringLiteral("%1 and %2 more").arg(cause.Whats.first()).arg(cause.Whats.size() - 1);
    lines.append(what + QStringLiteral(": ") + cause.Reason);
  }
  return lines;
}

QString FailureDetails(const TFailures &failures)
{
  QStringList lines;
  for (const TFailure &failure : failures)
    lines.append(failure.LogText());
  return lines.join(u'\n');
}
