#include "FailureBox.h"

#include "core/AppInfo.h"

#include <QMessageBox>
#include <QStringList>

void ShowFailure(QWidget *parent, const QString &message, const QString &details)
{
  QMessageBox box(QMessageBox::Critical, CApplicationTitle, message, QMessageBox::Ok, parent);
  box.setObjectName(QStringLiteral("FailureBox"));
  if (!details.isEmpty())
    box.setDetailedText(details);
  box.exec();
}

void ShowStepFailures(QWidget *parent, const QString &summary, const TStepFailures &failures)
{
  // Queries that failed for the same reason (the service is down) share one
  // paragraph.
  QStringList reasons;
  QList<QStringList> whats;
  QStringList details;
  for (const TStepFailure &failure : failures) {
    const qsizetype known = reasons.indexOf(failure.Reason);
    if (known < 0) {
      reasons.append(failure.Reason);
      whats.append({failure.What});
    } else {
      whats[known].append(failure.What);
    }
    if (!failure.Details.isEmpty())
      details.append(failure.What + QStringLiteral(": ") + failure.Details);
  }
  QStringList texts;
  for (qsizetype i = 0; i < reasons.size(); ++i)
    texts.append(whats[i].join(QStringLiteral(", ")) + QStringLiteral(": ") + reasons[i] + u'.');
  ShowFailure(parent, summary + QStringLiteral("\n\n") + texts.join(QStringLiteral("\n\n")),
              details.join(QStringLiteral("\n")));
}
