#pragma once

#include "core/ConfigTypes.h"

#include <QDialog>
#include <functional>

class QCheckBox;
class QDialogButtonBox;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QSpinBox;

// The SMTP settings: server, port, SSL, login, default receivers and sender
// address, with a "Test" button that sends the gateway test message with the
// values being edited, before they are kept; and the delivery of the report:
// who receives what, whether a clear report is sent, whether the rows are
// attached as a workbook; and the follow-up: whether the report compares with
// the last one sent, and its escalation.
class TfrmSMTP : public QDialog
{
  Q_OBJECT

public:
  // What the "Test" button does, replaceable by tests: ask the recipient
  // (empty answer: no test), send, confirm, show an error.
  struct TTestActions
  {
    std::function<QString(QWidget *parent, const QString &proposed)> AskRecipient;
    std::function<void(const tySMTPserver &smtp, const QString &recipient)> Send;
    std::function<void(QWidget *parent, const QString &text)> Inform;
    std::function<void(QWidget *parent, const QString &text)> ShowError;
  };
  // The input box, SendTestMail and message boxes.
  static TTestActions DefaultTestActions();

  explicit TfrmSMTP(QWidget *parent = nullptr, TTestActions actions = DefaultTestActions());

  void Fill(const tySMTPserver &smtp, const tyDelivery &delivery = {});
  // The values as OK keeps them: server and user name trimmed, port 25 when its
  // text is not a number; the other texts as typed.
  tySMTPserver Values() const;
  // The values as the test uses them: every text as typed.
  tySMTPserver TypedValues() const;
  tyDelivery DeliveryValues() const;

  // "Test": the gateway test message to a recipient asked for, sent off the
  // user-interface thread while a progress window names the server and the
  // buttons are off. An error is shown and the dialog stays open with its values.
  void BitBtn1Click();

  QLineEdit *ledtServer;
  QLineEdit *ledtPort;
  QCheckBox *chkSSL;
  QLineEdit *ledtUsername;
  QLineEdit *ledtPassword;
  QLineEdit *ledtDefaultTo;
  QLineEdit *ledtDefaultCc;
  QLineEdit *ledtFrom;
  QRadioButton *rbtModeReport;
  QRadioButton *rbtModeConcerned;
  QRadioButton *rbtModePersonal;
  QCheckBox *chkSkipWhenClear;
  QCheckBox *chkAttachWorkbook;
  QCheckBox *chkHistory;
  QSpinBox *spnEscalateAfter;
  QLineEdit *ledtEscalateTo;
  QPushButton *BitBtn1;

  // No closing (Cancel, Escape, close box) while the test message is on its way.
  void reject() override;

private:
  TTestActions FActions;
  QDialogButtonBox *FButtons;
  bool FSending = false;
};

// Edits the SMTP and delivery settings; on OK writes them back and returns true.
bool ConfigureSMTPserver(tySMTPserver &smtp, tyDelivery &delivery, QWidget *parent = nullptr,
                         TfrmSMTP::TTestActions actions = TfrmSMTP::DefaultTestActions());
