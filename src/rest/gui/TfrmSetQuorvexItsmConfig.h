#pragma once

#include "core/ConfigTypes.h"

#include <QDialog>
#include <memory>

class QCheckBox;
class QLabel;
class QLineEdit;
class QSpinBox;
class QPushButton;
class TConnectionTest;

// Where the service is and the credentials of the API account. The secrets are
// shown readable while the dialog is open, so that the user can check them.
class TfrmSetQuorvexItsmConfig : public QDialog
{
  Q_OBJECT

public:
  explicit TfrmSetQuorvexItsmConfig(QWidget *parent = nullptr);
  ~TfrmSetQuorvexItsmConfig() override;

  // On a first start (no settings file yet) the instance and the hosting mode
  // are left to choose: "acme" only stands as an example, and the focus is on
  // the first empty field.
  void Fill(const tyQuorvexITSM &settings, bool firstStart = false);
  // Copies the fields, as typed, into `settings`; the token state is kept.
  void CopyTo(tyQuorvexITSM &settings) const;

  // Preview of the service address; called on every change of the instance or
  // of the hosting mode.
  void edtInstanceChange();
  // OK is enabled when all five fields hold more than blanks; called on every
  // change of a field, so that Enter confirms as soon as the form is complete.
  void ledtExit();
  // "Test connection": asks the service for a token with the values as typed,
  // on a client of its own, and says in one line what happened.
  void TestConnection();

  QLineEdit *edtInstance;
  QCheckBox *chkSaaS;
  QLabel *hlblInstance1;
  QLineEdit *ledtClientID;
  QLineEdit *ledtClientSecret;
  QLineEdit *ledtApiOperatorUsername;
  QLineEdit *ledtApiOperatorPassword;
  QSpinBox *spnParallelRequests;
  QLineEdit *edtCaFile; // "Certificate authorities": a PEM file, with a file picker
  QPushButton *btnCaFile;
  QPushButton *btnTest;
  QLabel *lblTest; // the test's outcome
  QPushButton *bbtOk;
  QPushButton *bbtCancel;
  // Cancel; while a test runs it waits for its end (at most its time-out).
  void reject() override;

private:
  std::unique_ptr<TConnectionTest> FTest; // while a test runs
};

// Edits the service settings; on OK copies them back and returns true.
bool SetQuorvexItsmConfig(tyQuorvexITSM &settings, QWidget *parent = nullptr, bool firstStart = false);
