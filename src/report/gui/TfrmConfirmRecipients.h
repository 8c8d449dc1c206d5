#pragma once

#include <QDialog>
#include <QStringList>

class QListWidget;

// "Do you confirm sending the email to these recipients?": the "To" and "CC"
// lists of the mails about to go, with OK and Cancel.
class TfrmConfirmRecipients : public QDialog
{
public:
  TfrmConfirmRecipients(const QStringList &to, const QStringList &cc, QWidget *parent = nullptr);

  QListWidget *lstTo;
  QListWidget *lstCc;
};

// Shows the confirmation; true when the person chose OK.
bool ConfirmRecipients(const QStringList &to, const QStringList &cc, QWidget *parent = nullptr);

// The journal says these mails (one line each) were already delivered today:
// true to send them again, false (Escape too) to skip them.
bool ConfirmResend(const QStringList &earlier, QWidget *parent = nullptr);
