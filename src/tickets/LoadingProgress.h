#pragma once

#include <QString>

// Progress of a long step that talks to the service: an animation, a title and a
// progress bar. The window shows it in a small window that cannot be closed
// until LoadingHide; a run without a display prints it on stderr.
class TLoadingProgress
{
public:
  virtual ~TLoadingProgress() = default;
  // Starts showing progress, with animation 1, 2 or 3.
  virtual void LoadingShow(int animation) = 0;
  // Caption "Loading - " + title.
  virtual void LoadingSetTitle(const QString &title) = 0;
  // Shows animation 1, 2 or 3; any other value shows none.
  virtual void LoadingSetAnimation(int animation) = 0;
  virtual void LoadingSetProgressBar(int maximum, int position) = 0;
  // Fills the bar and ends the display.
  virtual void LoadingHide() = 0;
};

// Progress lines on stderr, for a run without a window: one line per title, with
// the step it brings the bar to.
class TStderrProgress : public TLoadingProgress
{
public:
  void LoadingShow(int animation) override;
  void LoadingSetTitle(const QString &title) override;
  void LoadingSetAnimation(int animation) override;
  void LoadingSetProgressBar(int maximum, int position) override;
  void LoadingHide() override;

private:
  void Print(const QString &progress);

  int FMaximum = 0;
  QString FTitle;
  bool FTitlePrinted = true;
};
