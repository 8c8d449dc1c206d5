#include "TfrmSnooze.h"

#include "DialogLayout.h"

#include <QDateEdit>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

TfrmSnooze::TfrmSnooze(int tickets, QWidget *parent) : QDialog(parent)
{
  setObjectName(QStringLiteral("frmSnooze"));
  setWindowTitle(QStringLiteral("Snooze"));
  rbtUntilDate = new QRadioButton(QStringLiteral("Until"));
  rbtUntilDate->setObjectName(QStringLiteral("rbtUntilDate"));
  rbtUntilDate->setChecked(true);
  edtUntil = new QDateEdit(QDate::currentDate().addDays(7));
  edtUntil->setObjectName(QStringLiteral("edtUntil"));
  edtUntil->setCalendarPopup(true);
  edtUntil->setMinimumDate(QDate::currentDate().addDays(1));
  rbtUntilChange = new QRadioButton(QStringLiteral("Until it changes (last update, status or assignee)"));
  rbtUntilChange->setObjectName(QStringLiteral("rbtUntilChange"));
  connect(rbtUntilDate, &QRadioButton::toggled, edtUntil, &QDateEdit::setEnabled);

  auto *content = new QWidget;
  auto *layout = new QVBoxLayout(content);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(new QLabel(QStringLiteral("Take %1 ticket(s) off the report:").arg(tickets)));
  auto *untilRow = new QHBoxLayout;
  untilRow->addWidget(rbtUntilDate);
  untilRow->addWidget(edtUntil, 1);
  layout->addLayout(untilRow);
  layout->addWidget(rbtUntilChange);
  SetOkCancelLayout(this, content);
}

QDate TfrmSnooze::Until() const { return rbtUntilDate->isChecked() ? edtUntil->date() : QDate(); }

bool AskSnooze(int tickets, QDate &until, QWidget *parent)
{
  TfrmSnooze dialog(tickets, parent);
  if (dialog.exec() != QDialog::Accepted)
    return false;
  until = dialog.Until();
  return true;
}
