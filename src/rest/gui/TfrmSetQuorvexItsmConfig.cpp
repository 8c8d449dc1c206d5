#include "TfrmSetQuorvexItsmConfig.h"

#include <QCheckBox>
#include <QEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

// Small tick and cross drawn in the dialog's own colours.
QIcon SvgIcon(const char *svg)
{
  QPixmap pixmap;
  pixmap.loadFromData(QByteArray(svg), "SVG");
  return QIcon(pixmap);
}

const char CTickSvg[] = R"(<svg xmlns="http://www.w3.org/2000/svg" width="16" height="16" viewBox="0 0 16 16">
<path d="M3 8.5l3.2 3.2L13 4.8" fill="none" stroke="#17AB4F" stroke-width="2.2" stroke-linecap="round"/></svg>)";
const char CCrossSvg[] = R"(<svg xmlns="http://www.w3.org/2000/svg" width="16" height="16" viewBox="0 0 16 16">
<path d="M4 4l8 8M12 4l-8 8" fill="none" stroke="#EE3D3B" stroke-width="2.2" stroke-linecap="round"/></svg>)";

bool Blank(const QLineEdit *edit) { return edit->text().trimmed().isEmpty(); }

} // namespace

TfrmSetQuorvexItsmConfig::TfrmSetQuorvexItsmConfig(QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint | Qt::WindowTitleHint |
                          Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint)
{
  setObjectName(QStringLiteral("frmSetQuorvexItsmConfig"));
  setWindowTitle(QStringLiteral("Quorvex ITSM Access"));

  auto field = [this](const char *name) {
    auto *edit = new QLineEdit;
    edit->setObjectName(QLatin1String(name));
    edit->installEventFilter(this);
    edit->setMinimumWidth(300);
    return edit;
  };
  edtInstance = field("edtInstance");
  chkSaaS = new QCheckBox(QStringLiteral("SaaS"));
  chkSaaS->setObjectName(QStringLiteral("chkSaaS"));
  chkSaaS->setChecked(true);
  hlblInstance1 = new QLabel;
  hlblInstance1->setObjectName(QStringLiteral("hlblInstance1"));
  hlblInstance1->setTextFormat(Qt::RichText);
  ledtClientID = field("ledtClientID");
  ledtClientSecret = field("ledtClientSecret");
  ledtApiOperatorUsername = field("ledtApiOperatorUsername");
  ledtApiOperatorPassword = field("ledtApiOperatorPassword");

  spnParallelRequests = new QSpinBox;
  spnParallelRequests->setObjectName(QStringLiteral("spnParallelRequests"));
  spnParallelRequests->setRange(1, 8);
  auto *lblParallelRequests = new QLabel(
      QStringLiteral("Up to this many ticket requests at once; leave 1 for a service with strict rate limits."));
  lblParallelRequests->setWordWrap(true);

  auto *instanceRow = new QHBoxLayout;
  instanceRow->addWidget(edtInstance, 1);
  instanceRow->addWidget(chkSaaS);

  auto *form = new QFormLayout;
  auto *lblInstance = new QLabel(QStringLiteral("Instance Quorvex ITSM"));
  lblInstance->setObjectName(QStringLiteral("lblInstance_"));
  form->addRow(lblInstance, instanceRow);
  form->addRow(QString(), hlblInstance1);
  form->addRow(QStringLiteral("Client ID"), ledtClientID);
  form->addRow(QStringLiteral("Client secret"), ledtClientSecret);
  form->addRow(QStringLiteral("API Operator username"), ledtApiOperatorUsername);
  form->addRow(QStringLiteral("API Operator password"), ledtApiOperatorPassword);
  form->addRow(QStringLiteral("Parallel requests"), spnParallelRequests);
  form->addRow(QString(), lblParallelRequests);

  bbtOk = new QPushButton(SvgIcon(CTickSvg), tr("OK"));
  bbtOk->setObjectName(QStringLiteral("bbtOk"));
  bbtOk->setDefault(true);
  bbtOk->setEnabled(false);
  bbtCancel = new QPushButton(SvgIcon(CCrossSvg), tr("Cancel"));
  bbtCancel->setObjectName(QStringLiteral("bbtCancel"));
  connect(bbtOk, &QPushButton::clicked, this, &QDialog::accept);
  connect(bbtCancel, &QPushButton::clicked, this, &QDialog::reject);
  auto *buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(bbtOk);
  buttons->addWidget(bbtCancel);

  auto *layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addSpacing(8);
  layout->addLayout(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);

  connect(edtInstance, &QLineEdit::textChanged, this, &TfrmSetQuorvexItsmConfig::edtInstanceChange);
  connect(chkSaaS, &QCheckBox::toggled, this, &TfrmSetQuorvexItsmConfig::edtInstanceChange);
  edtInstanceChange();
}

void TfrmSetQuorvexItsmConfig::Fill(const tyQuorvexITSM &settings)
{
  chkSaaS->setChecked(settings.SaaS);
  edtInstance->setText(settings.Instance);
  ledtClientID->setText(settings.API.ClientID);
  ledtClientSecret->setText(settings.API.ClientSecret);
  ledtApiOperatorUsername->setText(settings.API.Username);
  ledtApiOperatorPassword->setText(settings.API.Password);
  spnParallelRequests->setValue(settings.ParallelRequests);
  edtInstanceChange();
  ledtExit();
}

void TfrmSetQuorvexItsmConfig::CopyTo(tyQuorvexITSM &settings) const
{
  settings.SaaS = chkSaaS->isChecked();
  settings.Instance = edtInstance->text();
  settings.API.ClientID = ledtClientID->text();
  settings.API.ClientSecret = ledtClientSecret->text();
  settings.API.Username = ledtApiOperatorUsername->text();
  settings.API.Password = ledtApiOperatorPassword->text();
  settings.ParallelRequests = spnParallelRequests->value();
}

void TfrmSetQuorvexItsmConfig::edtInstanceChange()
{
  // The instance is shown as typed, markup included.
  QString preview = QStringLiteral("https://<b>") + edtInstance->text() + QStringLiteral("</b>");
  if (chkSaaS->isChecked())
    preview += QStringLiteral(".") + QStringLiteral(QUORVEX_SAAS_DOMAIN);
  hlblInstance1->setText(preview);
}

void TfrmSetQuorvexItsmConfig::ledtExit()
{
  bbtOk->setEnabled(!Blank(edtInstance) && !Blank(ledtClientID) && !Blank(ledtClientSecret) &&
                    !Blank(ledtApiOperatorUsername) && !Blank(ledtApiOperatorPassword));
}

bool TfrmSetQuorvexItsmConfig::eventFilter(QObject *watched, QEvent *event)
{
  if (event->type() == QEvent::FocusOut)
    ledtExit();
  return QDialog::eventFilter(watched, event);
}

bool SetQuorvexItsmConfig(tyQuorvexITSM &settings, QWidget *parent)
{
  TfrmSetQuorvexItsmConfig dialog(parent);
  dialog.Fill(settings);
  if (dialog.exec() != QDialog::Accepted)
    return false;
  dialog.CopyTo(settings);
  return true;
}
