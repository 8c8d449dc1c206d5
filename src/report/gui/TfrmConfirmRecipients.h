#pragma once

#include "report/DeliveryPlan.h"

#include <QDialog>
#include <QStringList>

class QLabel;
class QListWidget;

// "Do you confirm sending the email to these recipients?", asked in the
// window's body with how many mails go to whom, then the "To" and "CC" lists of
// the mails about to go; OK (Enter) sends, Cancel (Escape) does not.
class TfrmConfirmRecipients : public QDialog
{
public:
  TfrmConfirmRecipients(const TMailConfirmation &confirmation, QWidget *parent = nullptr);

  QLabel *lblSummary;
  QListWidget *lstTo;
  QListWidget *lstCc;
};

// Shows the confirmation; true when the person chose OK.
bool ConfirmRecipients(const TMailConfirmation &confirmation, QWidget *parent = nullptr);

// The journal says these mails (one line each) were already delivered today:
// true to send them again, false (Escape too) to skip them.
bool ConfirmResend(const QStringList &earlier, QWidget *parent = nullptr);
