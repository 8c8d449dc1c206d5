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
  QStringList texts;
  QStringList details;
  for (const TStepFailure &failure : failures) {
    texts.append(failure.Text() + u'.');
    if (!failure.Details.isEmpty())
      details.append(failure.What + QStringLiteral(": ") + failure.Details);
  }
  ShowFailure(parent, summary + QStringLiteral("\n\n") + texts.join(QStringLiteral("\n\n")),
              details.join(QStringLiteral("\n\n")));
}
