#include "TfrmSMTP.h"

#include "core/Errors.h"
#include "core/OffThread.h"
#include "core/uTools.h"
#include "gui/DialogLayout.h"
#include "report/MailSender.h"
#include "report/ReportSending.h"
#include "report/SmtpIdentity.h"
#include "tickets/gui/TfrmLoading.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QRadioButton>
#include <QSpinBox>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QScopeGuard>
#include <QVBoxLayout>
#include <optional>

namespace {

constexpr std::int32_t CDefaultPort = 25;

QLineEdit *NamedEdit(const char *name)
{
  auto *edit = new QLineEdit;
  edit->setObjectName(QLatin1String(name));
  edit->setMinimumWidth(280);
  return edit;
}

QRadioButton *ModeButton(const char *name, const QString &caption)
{
  auto *button = new QRadioButton(caption);
  button->setObjectName(QLatin1String(name));
  return button;
}

// A mode's button with the line that says who receives what.
void AddMode(QVBoxLayout *layout, QRadioButton *button, const QString &explanation)
{
  auto *label = new QLabel(explanation);
  label->setIndent(22);
  label->setEnabled(false); // shown as a quieter line under its button
  layout->addWidget(button);
  layout->addWidget(label);
}

} // namespace

TfrmSMTP::TTestActions TfrmSMTP::DefaultTestActions()
{
  TTestActions actions;
  actions.AskRecipient = [](QWidget *parent, const QString &proposed) {
    QInputDialog ask(parent);
    ask.setWindowTitle(CTestSubject);
    ask.setLabelText(QStringLiteral("Recipient's email"));
    ask.setTextValue(proposed);
    // Room for an address and the whole caption.
    if (auto *edit = ask.findChild<QLineEdit *>())
      edit->setMinimumWidth(ask.fontMetrics().horizontalAdvance(CTestSubject + proposed) + 80);
    if (auto *buttons = ask.findChild<QDialogButtonBox *>())
      StyleOkCancel(buttons);
    return ask.exec() == QDialog::Accepted ? ask.textValue() : QString();
  };
  actions.Send = SendTestMail;
  actions.Inform = [](QWidget *parent, const QString &text) {
    QMessageBox::information(parent, QStringLiteral("SMTP"), text, QMessageBox::Ok);
  };
  actions.ShowError = [](QWidget *parent, const QString &text) {
    QMessageBox::critical(parent, QStringLiteral("SMTP"), text, QMessageBox::Ok);
  };
  return actions;
}

TfrmSMTP::TfrmSMTP(QWidget *parent, TTestActions actions) : QDialog(parent), FActions(std::move(actions))
{
  setObjectName(QStringLiteral("frmSMTP"));
  setWindowTitle(QStringLiteral("SMTP"));

  ledtServer = NamedEdit("ledtServer");
  ledtPort = NamedEdit("ledtPort");
  ledtPort->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d*")), ledtPort));
  ledtPort->setMinimumWidth(0);
  ledtPort->setMaximumWidth(80);
  chkSSL = new QCheckBox(QStringLiteral("SSL"));
  chkSSL->setObjectName(QStringLiteral("chkSSL"));
  ledtUsername = NamedEdit("ledtUsername");
  ledtPassword = NamedEdit("ledtPassword");
  ledtPassword->setEchoMode(QLineEdit::Password);
  ledtPassword->setStyleSheet(QStringLiteral("lineedit-password-character: 42")); // "*"
  ledtDefaultTo = NamedEdit("ledtDefaultTo");
  ledtDefaultCc = NamedEdit("ledtDefaultCc");
  ledtFrom = NamedEdit("ledtFrom");

  auto *portRow = new QHBoxLayout;
  portRow->addWidget(ledtPort);
  portRow->addSpacing(12);
  portRow->addWidget(chkSSL);
  portRow->addStretch(1);

  auto *form = new QFormLayout;
  form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  form->addRow(QStringLiteral("SMTP Server"), ledtServer);
  form->addRow(QStringLiteral("Port"), portRow);
  form->addRow(QStringLiteral("Username"), ledtUsername);
  form->addRow(QStringLiteral("Password"), ledtPassword);
  form->addRow(QStringLiteral("Default receiver \"To\""), ledtDefaultTo);
  form->addRow(QStringLiteral("Default receiver \"Cc\""), ledtDefaultCc);
  form->addRow(QStringLiteral("Sender address"), ledtFrom);

  rbtModeReport = ModeButton("rbtModeReport", QStringLiteral("Report"));
  rbtModeConcerned = ModeButton("rbtModeConcerned", QStringLiteral("Concerned"));
  rbtModePersonal = ModeButton("rbtModePersonal", QStringLiteral("Personal"));
  chkSkipWhenClear = new QCheckBox(QStringLiteral("No mail when there is nothing to report"));
  chkSkipWhenClear->setObjectName(QStringLiteral("chkSkipWhenClear"));
  chkAttachWorkbook = new QCheckBox(QStringLiteral("Attach the rows as an Excel workbook"));
  chkAttachWorkbook->setObjectName(QStringLiteral("chkAttachWorkbook"));
  auto *delivery = new QGroupBox(QStringLiteral("Delivery"));
  delivery->setObjectName(QStringLiteral("grpDelivery"));
  auto *deliveryLayout = new QVBoxLayout(delivery);
  AddMode(deliveryLayout, rbtModeReport,
          QStringLiteral("The whole report to the default receivers, with the people concerned listed at its end."));
  AddMode(deliveryLayout, rbtModeConcerned,
          QStringLiteral("The whole report to the people concerned; team members and default receivers in copy."));
  AddMode(deliveryLayout, rbtModePersonal,
          QStringLiteral("Each person concerned gets their own rows; the whole report to the default receivers."));
  deliveryLayout->addWidget(chkSkipWhenClear);
  deliveryLayout->addWidget(chkAttachWorkbook);

  chkHistory = new QCheckBox(QStringLiteral("Compare with the last report sent (new, listed since, left)"));
  chkHistory->setObjectName(QStringLiteral("chkHistory"));
  spnEscalateAfter = new QSpinBox;
  spnEscalateAfter->setObjectName(QStringLiteral("spnEscalateAfter"));
  spnEscalateAfter->setRange(0, 999);
  spnEscalateAfter->setSpecialValueText(QStringLiteral("never"));
  ledtEscalateTo = new QLineEdit;
  ledtEscalateTo->setObjectName(QStringLiteral("ledtEscalateTo"));
  ledtEscalateTo->setPlaceholderText(QStringLiteral("the default receiver \"To\""));
  auto *followUp = new QGroupBox(QStringLiteral("Follow-up"));
  followUp->setObjectName(QStringLiteral("grpFollowUp"));
  auto *followUpLayout = new QFormLayout(followUp);
  followUpLayout->addRow(chkHistory);
  followUpLayout->addRow(QStringLiteral("Escalate after (reports in a row)"), spnEscalateAfter);
  followUpLayout->addRow(QStringLiteral("Escalate to"), ledtEscalateTo);
  // Escalation compares reports: nothing to set without the history.
  connect(chkHistory, &QCheckBox::toggled, spnEscalateAfter, &QWidget::setEnabled);
  connect(chkHistory, &QCheckBox::toggled, ledtEscalateTo, &QWidget::setEnabled);

  BitBtn1 = new QPushButton(QStringLiteral("Test"));
  BitBtn1->setObjectName(QStringLiteral("BitBtn1"));
  BitBtn1->setAutoDefault(false);
  connect(BitBtn1, &QPushButton::clicked, this, &TfrmSMTP::BitBtn1Click);
  // No test without a server to send to.
  connect(ledtServer, &QLineEdit::textChanged, BitBtn1,
          [this](const QString &server) { BitBtn1->setEnabled(!TrimBlanks(server).isEmpty()); });
  BitBtn1->setEnabled(false);
  FButtons = OkCancelButtons(this);
  auto *bottom = new QHBoxLayout;
  bottom->addWidget(BitBtn1);
  bottom->addStretch(1);
  bottom->addWidget(FButtons);

  auto *layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(delivery);
  layout->addWidget(followUp);
  layout->addSpacing(8);
  layout->addLayout(bottom);
  layout->setSizeConstraint(QLayout::SetFixedSize); // fixed dialog border
}

void TfrmSMTP::Fill(const tySMTPserver &smtp, const tyDelivery &delivery)
{
  rbtModeReport->setChecked(delivery.Mode == TDeliveryMode::Report);
  rbtModeConcerned->setChecked(delivery.Mode == TDeliveryMode::Concerned);
  rbtModePersonal->setChecked(delivery.Mode == TDeliveryMode::Personal);
  chkSkipWhenClear->setChecked(delivery.SkipWhenClear);
  chkAttachWorkbook->setChecked(delivery.AttachWorkbook);
  chkHistory->setChecked(delivery.FollowUp.History);
  spnEscalateAfter->setValue(delivery.FollowUp.EscalateAfter);
  ledtEscalateTo->setText(delivery.FollowUp.EscalateTo);
  spnEscalateAfter->setEnabled(delivery.FollowUp.History);
  ledtEscalateTo->setEnabled(delivery.FollowUp.History);
  ledtServer->setText(smtp.Server);
  ledtPort->setText(QString::number(smtp.Port));
  chkSSL->setChecked(smtp.UseSSL);
  ledtUsername->setText(smtp.UserName);
  ledtPassword->setText(smtp.Password);
  ledtDefaultTo->setText(smtp.DefaultTo);
  ledtDefaultCc->setText(smtp.DefaultCC);
  ledtFrom->setText(smtp.From);
}

tySMTPserver TfrmSMTP::TypedValues() const
{
  tySMTPserver smtp;
  smtp.Server = ledtServer->text();
  bool ok = false;
  smtp.Port = ledtPort->text().toInt(&ok, 10);
  if (!ok)
    smtp.Port = CDefaultPort;
  smtp.UseSSL = chkSSL->isChecked();
  smtp.UserName = ledtUsername->text();
  smtp.Password = ledtPassword->text();
  smtp.DefaultTo = ledtDefaultTo->text();
  smtp.DefaultCC = ledtDefaultCc->text();
  smtp.From = ledtFrom->text();
  return smtp;
}

tyDelivery TfrmSMTP::DeliveryValues() const
{
  tyDelivery delivery;
  delivery.Mode = rbtModePersonal->isChecked()    ? TDeliveryMode::Personal
                  : rbtModeConcerned->isChecked() ? TDeliveryMode::Concerned
                                                  : TDeliveryMode::Report;
  delivery.SkipWhenClear = chkSkipWhenClear->isChecked();
  delivery.AttachWorkbook = chkAttachWorkbook->isChecked();
  delivery.FollowUp = {chkHistory->isChecked(), spnEscalateAfter->value(), ledtEscalateTo->text()};
  return delivery;
}

tySMTPserver TfrmSMTP::Values() const
{
  tySMTPserver smtp = TypedValues();
  smtp.Server = TrimBlanks(smtp.Server);
  smtp.UserName = TrimBlanks(smtp.UserName);
  return smtp;
}

void TfrmSMTP::BitBtn1Click()
{
  const QString recipient = FActions.AskRecipient(this, ledtDefaultTo->text());
  if (recipient.isEmpty())
    return;
  const tySMTPserver smtp = TypedValues();
  // The dialog stays open, its buttons disabled, until the sending thread ended.
  FSending = true;
  BitBtn1->setEnabled(false);
  FButtons->setEnabled(false);
  auto progress = std::make_shared<TWindowProgress>(this);
  progress->LoadingShow(1);
  progress->LoadingSetTitle(QStringLiteral("Sending to %1…").arg(SmtpServerName(smtp)));
  StartMailSending();
  Launch(RunOnThread([send = FActions.Send, smtp, recipient] { send(smtp, recipient); }),
         [this, progress](std::exception_ptr failure) {
           progress->LoadingHide();
           FSending = false;
           BitBtn1->setEnabled(true);
           FButtons->setEnabled(true);
           try {
             if (failure)
               std::rethrow_exception(failure);
           } catch (const EQuorvexError &error) {
             FActions.ShowError(this, error.Message());
             return;
           } catch (const std::exception &error) {
             FActions.ShowError(this, QString::fromLocal8Bit(error.what()));
             return;
           }
           FActions.Inform(this, QStringLiteral("Check your inbox, the email has been sent."));
         });
}

void TfrmSMTP::reject()
{
  if (!FSending)
    QDialog::reject();
}

bool ConfigureSMTPserver(tySMTPserver &smtp, tyDelivery &delivery, QWidget *parent, TfrmSMTP::TTestActions actions)
{
  TfrmSMTP dialog(parent, std::move(actions));
  dialog.Fill(smtp, delivery);
  if (dialog.exec() != QDialog::Accepted)
    return false;
  smtp = dialog.Values();
  delivery = dialog.DeliveryValues();
  return true;
}
