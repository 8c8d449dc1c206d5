#pragma once

#include "rest/uTypes.h"

#include <QDialog>
#include <functional>
#include <optional>

class QColor;
class QComboBox;
class QLabel;
class QListWidget;
class QPushButton;
class QTabWidget;
class TColourStore;

// The colours of statuses and priorities. Works on copies of both lists; the
// caller takes them back on OK.
class TfrmStatusPriorities : public QDialog
{
  Q_OBJECT

public:
  // Asks for a colour starting from the current one; nothing when cancelled.
  using TColourChooser = std::function<std::optional<TColor>(TColor current)>;

  TfrmStatusPriorities(const tyRestObjects &statuses, const tyRestObjects &priorities, TColourStore &colours,
                       QWidget *parent = nullptr);

  const tyRestObjects &Statuses() const { return FStatuses; }
  const tyRestObjects &Priorities() const { return FPriorities; }
  void SetColourChooser(TColourChooser chooser) { FChooseColour = std::move(chooser); }

  // The dialog's reactions, also used by the tests.
  void StatusDoubleClick(int row);
  void PriorityClick(int row);
  void PriorityCodeChanged(const QString &code);
  void SampleDoubleClick();

  QTabWidget *PageControl;
  QListWidget *lbxStatus;
  QListWidget *lbxPriorities;
  QComboBox *cbPriority;
  QLabel *pnlSamplePriority;
  QPushButton *bbtStatusColour;   // "Colour…" of the selected status
  QPushButton *bbtPriorityColour; // "Colour…" of the selected priority's code

protected:
  // Enter or F2 on a line changes its colour instead of closing the dialog.
  bool eventFilter(QObject *watched, QEvent *event) override;

private:
  void UpdateColourButtons();
  void ShowStatus();
  void ShowPriorities();
  void ShowSample();
  void SelectPriority(int row);

  tyRestObjects FStatuses;
  tyRestObjects FPriorities;
  TColourStore &FColours;
  int FSelectedPriority = -1;
  TColourChooser FChooseColour;
};

// Edits the colours; on OK writes both lists back and returns true.
bool EditStatusAndPriorities(tyRestObjects &statuses, tyRestObjects &priorities, TColourStore &colours,
                             QWidget *parent = nullptr);
