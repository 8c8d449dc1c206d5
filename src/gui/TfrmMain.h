#pragma once

#include "state/UnattendedRun.h"

#include <QMainWindow>
#include <functional>
#include <memory>

class EGuidance;
class QLabel;
class QToolButton;
class TMainState;
class TTicketsView;
class TWindowProgress;

// The main window: one button per step, the mode image and the ticket grid. It
// holds widgets only; the state and the steps live in TMainState.
class TfrmMain : public QMainWindow
{
  Q_OBJECT

public:
  explicit TfrmMain(TMainState &state, QWidget *parent = nullptr);
  ~TfrmMain() override;

  // Brings the window to the front (a second start of the program asks for it).
  void RaiseToFront();

  // Red image while the program works on its own, the usual one otherwise.
  void ShowAutomaticMode(bool automatic);

  // The unattended run, shown in this window; `ended` gets its exit status.
  void TimerTimer(const TUnattendedOptions &options, std::function<void(TExitStatus status)> ended);

protected:
  void closeEvent(QCloseEvent *event) override;

private:
  // Marks a step as running (every button off) or ended.
  void SetStepRunning(bool running);
  // Runs a button's step while the window stays responsive; an error ends the
  // step and is shown in a message box, as the toolkit would show an uncaught
  // error, and so is what the step could not do. A close asked meanwhile
  // cancels the step and closes once it ended.
  void RunStep(const QString &caption, TTask<> step);
  // Tells what a person must set first, and offers to open the dialog that sets it.
  void ShowGuidance(const EGuidance &guidance);
  void WireButtons();
  // "Send Mail" only with a report to send, the workbook only with tickets.
  void UpdateButtons();
  // Tells in the status bar how many tickets came, or what failed and since
  // when the grid dates.
  void ShowRetrievalStatus();
  // The status-bar line of a settings dialog: saved, or left as it was.
  void ShowSettingsResult(bool saved, const QString &what);
  TTask<> bbtQuorvexItsmApiClick();
  TTask<> bbtGetTicketsClick();
  TTask<> bbtGET_Organization_ListClick();
  TTask<> bbtStatusAndPropertiesClick();
  TTask<> bbtGenerateMailClick();
  TTask<> bbtSendMailClick();
  TTask<> bbtTextsClick();
  TTask<> bbtSmtpServerClick();
  TTask<> bbtFilterClick();
  TTask<> bbtSaveGridClick();
  TTask<> bbtAboutClick();
  void bbtAboutContextMenu(const QPoint &position);
  // "Snooze…" and "Wake up" for the selected rows of the grid.
  void GridContextMenu(TTicketsView &view, const QPoint &position);

  QToolButton *AddStepButton(const char *objectName, const QString &caption, const QString &icon);
  QToolButton *AddIconButton(const char *objectName, const QString &toolTip, const QString &icon);

  TMainState &FState;
  std::unique_ptr<TWindowProgress> FProgress;
  QLabel *imgBigBrother = nullptr;
  QLabel *imgBigBrotherRed = nullptr;
  QWidget *FButtonPanel = nullptr;
  QWidget *FIconRow = nullptr;
  bool FStepRunning = false;
  bool FCloseWhenIdle = false; // closing was asked while a step ran
  bool FCancelAsked = false;   // the person cancelled the step under way
  TTicketsView *FTicketsView = nullptr;

public:
  QToolButton *bbtQuorvexItsmApi = nullptr;
  QToolButton *bbtGET_Organization_List = nullptr;
  QToolButton *bbtGetTickets = nullptr;
  QToolButton *bbtSaveGrid = nullptr;
  QToolButton *bbtGenerateMail = nullptr;
  QToolButton *bbtSendMail = nullptr;
  QToolButton *bbtSmtpServer = nullptr;
  QToolButton *bbtTexts = nullptr;
  QToolButton *bbtFilter = nullptr;
  QToolButton *bbtStatusAndProperties = nullptr;
  QToolButton *bbtAbout = nullptr;
  QToolButton *bbtClose = nullptr;
};
