#include "TfrmLoading.h"

#include "BusyAnimation.h"

#include <QCloseEvent>
#include <QFrame>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

TfrmLoading::TfrmLoading(QWidget *parent, std::function<void()> cancel)
    // No title bar at all: window managers add buttons to any title bar, and cut
    // a long caption.
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint), FCancel(std::move(cancel)), FStep(new QLabel),
      FProgressBar(new QProgressBar)
{
  setObjectName(QStringLiteral("frmLoading"));
  setWindowTitle(QStringLiteral("Loading"));
  auto *frame = new QFrame;
  frame->setFrameStyle(QFrame::Panel | QFrame::Raised);
  auto *outer = new QVBoxLayout(this);
  outer->setContentsMargins(0, 0, 0, 0);
  outer->setSizeConstraint(QLayout::SetFixedSize);
  outer->addWidget(frame);
  auto *layout = new QVBoxLayout(frame);
  layout->setContentsMargins(8, 8, 8, 8);
  for (int style = 1; style <= 3; ++style) {
    auto *animation = new TBusyAnimation(style, this);
    animation->setObjectName(QStringLiteral("JvGIFAnimator%1").arg(style));
    animation->setVisible(style == 1);
    layout->addWidget(animation, 1, Qt::AlignHCenter);
    FAnimations.append(animation);
  }
  FStep->setObjectName(QStringLiteral("lblStep"));
  FStep->setAlignment(Qt::AlignCenter);
  FStep->setWordWrap(true); // a long organization name takes a second line
  FStep->setMinimumWidth(368);
  layout->addWidget(FStep);
  FProgressBar->setObjectName(QStringLiteral("ProgressBar"));
  FProgressBar->setFormat(QStringLiteral("%v / %m"));
  FProgressBar->setAlignment(Qt::AlignCenter);
  FProgressBar->setTextVisible(false); // until there is a count to show
  layout->addWidget(FProgressBar);
  if (FCancel) {
    FCancelButton = new QPushButton(QStringLiteral("Cancel"));
    FCancelButton->setObjectName(QStringLiteral("btnCancel"));
    connect(FCancelButton, &QPushButton::clicked, this, &TfrmLoading::CancelStep);
    layout->addWidget(FCancelButton, 0, Qt::AlignHCenter);
  }
}

void TfrmLoading::CancelStep()
{
  if (!FCancel || !FCancelButton->isEnabled())
    return;
  // The window stays until the step has ended: the requests in flight are being cut.
  FCancelButton->setEnabled(false);
  SetTitle(QStringLiteral("Cancelling…"));
  FCancel();
}

void TfrmLoading::SetTitle(const QString &title)
{
  setWindowTitle(QStringLiteral("Loading - ") + title);
  FStep->setText(title);
  Refresh();
}

void TfrmLoading::SetAnimation(int animation)
{
  for (int i = 0; i < FAnimations.size(); ++i)
    FAnimations[i]->setVisible(i + 1 == animation);
  Refresh();
}

void TfrmLoading::SetProgressBar(int maximum, int position)
{
  if (FProgressBar->maximum() != maximum)
    FProgressBar->setMaximum(maximum);
  FProgressBar->setValue(position);
  FProgressBar->setTextVisible(maximum > 0);
  Refresh();
}

void TfrmLoading::Finish()
{
  FProgressBar->setValue(FProgressBar->maximum());
  FMayClose = true;
  close();
}

QString TfrmLoading::Step() const { return FStep->text(); }

int TfrmLoading::ShownAnimation() const
{
  for (int i = 0; i < FAnimations.size(); ++i)
    if (FAnimations[i]->isVisibleTo(this))
      return i + 1;
  return 0;
}

void TfrmLoading::closeEvent(QCloseEvent *event)
{
  if (FMayClose)
    event->accept();
  else
    event->ignore();
}

void TfrmLoading::reject()
{
  // Escape cancels the step; the window itself ends with the step.
  if (FMayClose)
    QDialog::reject();
  else
    CancelStep();
}

void TfrmLoading::Refresh()
{
  repaint();
  raise();
}

void TWindowProgress::LoadingShow(int animation)
{
  FWindow = new TfrmLoading(FOwner, FCancel);
  FWindow->setAttribute(Qt::WA_DeleteOnClose);
  FWindow->SetAnimation(animation);
  FWindow->show();
  if (FOwner)
    FWindow->move(FOwner->geometry().center() - FWindow->rect().center());
}

void TWindowProgress::LoadingSetTitle(const QString &title)
{
  if (FWindow)
    FWindow->SetTitle(title);
}

void TWindowProgress::LoadingSetAnimation(int animation)
{
  if (FWindow)
    FWindow->SetAnimation(animation);
}

void TWindowProgress::LoadingSetProgressBar(int maximum, int position)
{
  if (FWindow)
    FWindow->SetProgressBar(maximum, position);
}

void TWindowProgress::LoadingHide()
{
  if (FWindow)
    FWindow->Finish();
}
