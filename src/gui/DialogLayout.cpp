#include "DialogLayout.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QVBoxLayout>

void SetOkCancelLayout(QDialog *dialog, QWidget *content)
{
  auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("bbtOk"));
  buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("bbtCancel"));
  QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
  auto *layout = new QVBoxLayout(dialog);
  layout->addWidget(content);
  layout->addWidget(buttons);
}
