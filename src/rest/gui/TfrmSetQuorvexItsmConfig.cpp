#include "TfrmSetQuorvexItsmConfig.h"

#include "core/ExtraAuthorities.h"
#include "gui/DialogLayout.h"
#include "rest/dRest.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QNetworkAccessManager>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

bool Blank(const QLineEdit *edit) { return edit->text().trimmed().isEmpty(); }

} // namespace

// A service client of the test's own: the settings in force and their token
// stay untouched.
class TConnectionTest
{
public:
  QNetworkAccessManager Network;
  TdmRest Rest{Network};
};

TfrmSetQuorvexItsmConfig::TfrmSetQuorvexItsmConfig(QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint | Qt::WindowTitleHint |
                          Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint)
{
  setObjectName(QStringLiteral("frmSetQuorvexItsmConfig"));
  setWindowTitle(QStringLiteral("Quorvex ITSM Access"));

  auto field = [this](const char *name) {
    auto *edit = new QLineEdit;
    edit->setObjectName(QLatin1String(name));
    connect(edit, &QLineEdit::textChanged, this, &TfrmSetQuorvexItsmConfig::ledtExit);
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
  edtCaFile = new QLineEdit;
  edtCaFile->setObjectName(QStringLiteral("edtCaFile"));
  edtCaFile->setPlaceholderText(QStringLiteral("none: the system's authorities only"));
  btnCaFile = new QPushButton(QStringLiteral("Browse…"));
  btnCaFile->setObjectName(QStringLiteral("btnCaFile"));
  connect(btnCaFile, &QPushButton::clicked, this, [this] {
    const QString file = QFileDialog::getOpenFileName(this, QStringLiteral("Certificate authorities"),
                                                      edtCaFile->text(), QStringLiteral("PEM files (*.pem *.crt);;All files (*)"));
    if (!file.isEmpty())
      edtCaFile->setText(file);
  });
  auto *caRow = new QHBoxLayout;
  caRow->addWidget(edtCaFile, 1);
  caRow->addWidget(btnCaFile);

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
  form->addRow(QStringLiteral("Certificate authorities"), caRow);

  btnTest = new QPushButton(QStringLiteral("Test connection"));
  btnTest->setObjectName(QStringLiteral("btnTest"));
  btnTest->setAutoDefault(false); // Enter stays OK's
  lblTest = new QLabel;
  lblTest->setObjectName(QStringLiteral("lblTest"));
  lblTest->setWordWrap(true);
  lblTest->setTextFormat(Qt::PlainText);
  lblTest->setMaximumWidth(460);
  connect(btnTest, &QPushButton::clicked, this, &TfrmSetQuorvexItsmConfig::TestConnection);
  auto *testRow = new QHBoxLayout;
  testRow->addWidget(btnTest);
  testRow->addWidget(lblTest, 1);

  QDialogButtonBox *buttons = OkCancelButtons(this);
  bbtOk = buttons->button(QDialogButtonBox::Ok);
  bbtOk->setDefault(true);
  bbtOk->setEnabled(false);
  bbtCancel = buttons->button(QDialogButtonBox::Cancel);

  auto *layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addLayout(testRow);
  layout->addSpacing(8);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);

  connect(edtInstance, &QLineEdit::textChanged, this, &TfrmSetQuorvexItsmConfig::edtInstanceChange);
  connect(chkSaaS, &QCheckBox::toggled, this, &TfrmSetQuorvexItsmConfig::edtInstanceChange);
  edtInstanceChange();
}

TfrmSetQuorvexItsmConfig::~TfrmSetQuorvexItsmConfig() = default;

void TfrmSetQuorvexItsmConfig::TestConnection()
{
  if (FTest)
    return;
  tyQuorvexITSM settings;
  CopyTo(settings); // no token: one is asked for
  // The typed authorities serve this test only: the settings in force keep
  // theirs, even when the dialog is then cancelled.
  const QString inForce = ConfiguredAuthorities();
  SetConfiguredAuthorities(settings.CaFile);
  FTest = std::make_unique<TConnectionTest>();
  FTest->Rest.SetTimeout(std::chrono::seconds(15)); // a person waits for it
  btnTest->setEnabled(false);
  bbtOk->setEnabled(false);
  lblTest->setText(QStringLiteral("Asking %1 for a token…").arg(TdmRest::GetQuorvexItsmUrl(settings)));
  auto tested = [](TConnectionTest &test, tyQuorvexITSM asked) -> TTask<QString> {
    const TRestResult<> token = co_await test.Rest.GetToken(asked);
    co_return token.Failed() ? token.Failure->Reason
                             : QStringLiteral("The connection works: %1 gave a token.")
                                   .arg(TdmRest::GetQuorvexItsmUrl(asked));
  };
  Launch(tested(*FTest, settings), [this](QString said) {
    lblTest->setText(said);
    // Freed from the event loop: the client's reply is still finishing.
    QMetaObject::invokeMethod(this, [this] {
      FTest.reset();
      btnTest->setEnabled(true);
      ledtExit();
    }, Qt::QueuedConnection);
  });
  SetConfiguredAuthorities(inForce); // the token request has read them as it left
}

void TfrmSetQuorvexItsmConfig::reject()
{
  // The test's client must outlive its request: Cancel waits for its end.
  if (!FTest)
    QDialog::reject();
}

void TfrmSetQuorvexItsmConfig::Fill(const tyQuorvexITSM &settings, bool firstStart)
{
  chkSaaS->setChecked(settings.SaaS);
  edtInstance->setText(settings.Instance);
  ledtClientID->setText(settings.API.ClientID);
  ledtClientSecret->setText(settings.API.ClientSecret);
  ledtApiOperatorUsername->setText(settings.API.Username);
  ledtApiOperatorPassword->setText(settings.API.Password);
  spnParallelRequests->setValue(settings.ParallelRequests);
  edtCaFile->setText(settings.CaFile);
  if (firstStart) {
    edtInstance->setPlaceholderText(settings.Instance);
    edtInstance->clear();
    chkSaaS->setChecked(false);
  }
  edtInstanceChange();
  ledtExit();
  for (QLineEdit *field : {edtInstance, ledtClientID, ledtClientSecret, ledtApiOperatorUsername, ledtApiOperatorPassword})
    if (Blank(field)) {
      field->setFocus();
      break;
    }
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
  settings.CaFile = edtCaFile->text().trimmed();
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

bool SetQuorvexItsmConfig(tyQuorvexITSM &settings, QWidget *parent, bool firstStart)
{
  TfrmSetQuorvexItsmConfig dialog(parent);
  dialog.Fill(settings, firstStart);
  if (dialog.exec() != QDialog::Accepted)
    return false;
  dialog.CopyTo(settings);
  return true;
}
