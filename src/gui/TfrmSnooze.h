#pragma once

#include <QDate>
#include <QDialog>

class QDateEdit;
class QRadioButton;

// "Snooze…" of the grid: until a day (a week from today to start with), or
// until the ticket changes (its last update, status or assignee).
class TfrmSnooze : public QDialog
{
  Q_OBJECT

public:
  explicit TfrmSnooze(int tickets, QWidget *parent = nullptr);

  // The day the snooze ends; invalid for "until it changes".
  QDate Until() const;

  QRadioButton *rbtUntilDate;
  QRadioButton *rbtUntilChange;
  QDateEdit *edtUntil;
};

// Asks how long `tickets` tickets stay off the report; false on Cancel.
bool AskSnooze(int tickets, QDate &until, QWidget *parent = nullptr);
