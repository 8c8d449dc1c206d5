#include "TfrmConfirmRecipients.h"

#include "gui/DialogLayout.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QListWidget>
#include <QVBoxLayout>

namespace {

QListWidget *AddressList(const char *name, const QStringList &addresses)
{
  auto *list = new QListWidget;
  list->setObjectName(QLatin1String(name));
  list->addItems(addresses);
  list->setMinimumWidth(420);
  return list;
}

} // namespace

TfrmConfirmRecipients::TfrmConfirmRecipients(const TMailConfirmation &confirmation, QWidget *parent)
    : QDialog(parent)
{
  const QString question = QStringLiteral("Do you confirm sending the email to these recipients?");
  setObjectName(QStringLiteral("frmConfirmRecipients"));
  setWindowTitle(question); // a title bar may cut it: the body asks it again
  lstTo = AddressList("lstTo", confirmation.To);
  lstCc = AddressList("lstCc", confirmation.Cc);
  auto *content = new QWidget;
  auto *layout = new QVBoxLayout(content);
  layout->setContentsMargins(0, 0, 0, 0);
  auto *asked = new QLabel(QStringLiteral("<b>%1</b>").arg(question.toHtmlEscaped()));
  asked->setWordWrap(true);
  layout->addWidget(asked);
  lblSummary = new QLabel(confirmation.Summary);
  lblSummary->setObjectName(QStringLiteral("lblSummary"));
  lblSummary->setWordWrap(true);
  lblSummary->setTextFormat(Qt::PlainText);
  layout->addWidget(lblSummary);
  layout->addWidget(new QLabel(QStringLiteral("To")));
  layout->addWidget(lstTo, 2);
  layout->addWidget(new QLabel(QStringLiteral("CC")));
  layout->addWidget(lstCc, 1);
  SetOkCancelLayout(this, content);
}

bool ConfirmRecipients(const TMailConfirmation &confirmation, QWidget *parent)
{
  TfrmConfirmRecipients dialog(confirmation, parent);
  return dialog.exec() == QDialog::Accepted;
}

bool ConfirmResend(const QStringList &earlier, QWidget *parent)
{
  QMessageBox box(QMessageBox::Question, QStringLiteral("Send Mail"),
                  QStringLiteral("%1 mail(s) of this report were already delivered today to the same people.")
                      .arg(earlier.size()),
                  QMessageBox::NoButton, parent);
  box.setObjectName(QStringLiteral("boxConfirmResend"));
  box.setInformativeText(QStringLiteral("Send them again? Otherwise they are skipped and only the others go."));
  box.setDetailedText(earlier.join(u'\n'));
  QPushButton *again = box.addButton(QStringLiteral("Send again"), QMessageBox::AcceptRole);
  QPushButton *skip = box.addButton(QStringLiteral("Skip them"), QMessageBox::RejectRole);
  box.setDefaultButton(skip);
  box.setEscapeButton(skip);
  box.exec();
  return box.clickedButton() == again;
}
