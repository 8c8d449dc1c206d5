#pragma once

#include <QDialog>
#include <QStringList>

class QLineEdit;
class QListWidget;
class QPushButton;
class QTabWidget;
class QToolButton;

// The report filters: minutes before an unassigned ticket is listed, days
// without update, and the statuses exempt from the "without update" section.
class TfrmFilters : public QDialog
{
  Q_OBJECT

public:
  enum TAction { actReplace = 1, actAdd, actRemove, actUp, actDown, actSort };

  explicit TfrmFilters(QWidget *parent = nullptr);

  void Fill(std::int32_t minutes, std::int32_t days, const QStringList &statuses);
  // The values as OK keeps them: a number that does not convert falls back to 15
  // minutes or 14 days; typed numbers are not limited to the arrows' range.
  std::int32_t Minutes() const;
  std::int32_t Days() const;
  QStringList Statuses() const;

  // The list-editing buttons, by action.
  void RunAction(TAction action);
  // Refreshes the edit and the buttons from the selected line.
  void ListClick();
  // Re-evaluates the buttons after the edit's text changed.
  void EditKeyUp();

  QTabWidget *PageControl;
  QLineEdit *ledtNbMinutes;
  QLineEdit *ledtNbDays;
  QListWidget *ListBox;
  QLineEdit *Edit;
  QPushButton *bbtRemplacer;
  QPushButton *bbtAjouter;
  QPushButton *bbtSupprimer;
  QToolButton *bbtMonter;
  QToolButton *bbtDescendre;
  QToolButton *bbtTri;

protected:
  // Enter in the status edit adds the status instead of closing the dialog.
  bool eventFilter(QObject *watched, QEvent *event) override;

private:
  QWidget *NumberRow(QLineEdit *&edit, const char *name, const QString &label);
  QWidget *DelayPage();
  QWidget *StatusPage();
};

// Edits the three filter values; on OK writes them back and returns true.
bool EditFilters(std::int32_t &minutes, std::int32_t &days, QStringList &statuses, QWidget *parent = nullptr);
