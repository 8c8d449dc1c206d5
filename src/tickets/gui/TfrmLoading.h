#pragma once

#include "tickets/LoadingProgress.h"

#include <QDialog>
#include <QPointer>

class QLabel;
class QProgressBar;
class TBusyAnimation;

// The small progress window shown while the main window talks to a server: a
// busy animation, the step in a label (also in the caption, for the task bar), and
// a progress bar reading "k / n". It has no title bar and cannot be closed until
// its run says so.
class TfrmLoading : public QDialog
{
  Q_OBJECT

public:
  explicit TfrmLoading(QWidget *parent = nullptr);

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

  bool FMayClose = false;
  QList<TBusyAnimation *> FAnimations;
  QLabel *FStep;
  QProgressBar *FProgressBar;
};

// The progress of the main window's steps, in a TfrmLoading. Each LoadingShow
// opens a fresh window centred on `owner`.
class TWindowProgress : public TLoadingProgress
{
public:
  explicit TWindowProgress(QWidget *owner) : FOwner(owner) {}
  void LoadingShow(int animation) override;
  void LoadingSetTitle(const QString &title) override;
  void LoadingSetAnimation(int animation) override;
  void LoadingSetProgressBar(int maximum, int position) override;
  void LoadingHide() override;

  TfrmLoading *Window() const { return FWindow; }

private:
  QWidget *FOwner;
  QPointer<TfrmLoading> FWindow;
};
