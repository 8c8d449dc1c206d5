#include "FailureBox.h"

#include "core/AppInfo.h"
#include "state/FailureSummary.h"

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

void ShowStepFailures(QWidget *parent, const QString &summary, const TFailures &failures)
{
  QStringList lines;
  for (const QString &line : FailureLines(failures))
    lines.append(line.endsWith(u'.') ? line : line + u'.');
  ShowFailure(parent, summary + QStringLiteral("\n\n") + lines.join(QStringLiteral("\n\n")), FailureDetails(failures));
}
