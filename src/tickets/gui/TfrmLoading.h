#pragma once

#include "tickets/LoadingProgress.h"

#include <QDialog>
#include <QPointer>
#include <functional>

class QLabel;
class QProgressBar;
class QPushButton;
class TBusyAnimation;

// The small progress window shown while the main window talks to a server: a
// busy animation, the step in a label (also in the caption, for the task bar), a
// progress bar reading "k / n", and Cancel (Escape too) when the step can be
// cancelled. It has no title bar and closes only when its step has ended.
class TfrmLoading : public QDialog
{
  Q_OBJECT

public:
  // Without `cancel` the window offers no Cancel.
  explicit TfrmLoading(QWidget *parent = nullptr, std::function<void()> cancel = {});

  void SetTitle(const QString &title);
  void SetAnimation(int animation);
  void SetProgressBar(int maximum, int position);
  // Fills the bar, allows closing and closes.
  void Finish();

  int ShownAnimation() const; // 0 when none
  const QProgressBar &ProgressBar() const { return *FProgressBar; }
  QString Step() const;

protected:
  void closeEvent(QCloseEvent *event) override;
  void reject() override;

private:
  void Refresh();

  void CancelStep();

  bool FMayClose = false;
  std::function<void()> FCancel;
  QPushButton *FCancelButton = nullptr;
  QList<TBusyAnimation *> FAnimations;
  QLabel *FStep;
  QProgressBar *FProgressBar;
};

// The progress of the main window's steps, in a TfrmLoading. Each LoadingShow
// opens a fresh window centred on `owner`, with Cancel calling `cancel` when given.
class TWindowProgress : public TLoadingProgress
{
public:
  explicit TWindowProgress(QWidget *owner, std::function<void()> cancel = {})
      : FOwner(owner), FCancel(std::move(cancel))
  {
  }
  void LoadingShow(int animation) override;
  void LoadingSetTitle(const QString &title) override;
  void LoadingSetAnimation(int animation) override;
  void LoadingSetProgressBar(int maximum, int position) override;
  void LoadingHide() override;

  TfrmLoading *Window() const { return FWindow; }

private:
  QWidget *FOwner;
  std::function<void()> FCancel;
  QPointer<TfrmLoading> FWindow;
};
