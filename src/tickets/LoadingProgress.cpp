#include "LoadingProgress.h"

#include <cstdio>

void TStderrProgress::LoadingShow(int)
{
  FMaximum = 0;
  FTitlePrinted = true;
}

void TStderrProgress::LoadingSetTitle(const QString &title)
{
  FTitle = title;
  FTitlePrinted = false;
  // Without a bar the title alone tells the step; with one, the next position does.
  if (FMaximum == 0)
    Print(QString());
}

void TStderrProgress::LoadingSetAnimation(int) {}

void TStderrProgress::LoadingSetProgressBar(int maximum, int position)
{
  FMaximum = maximum;
  if (!FTitlePrinted)
    Print(QStringLiteral(" [%1/%2]").arg(position).arg(maximum));
}

void TStderrProgress::LoadingHide() { FMaximum = 0; }

void TStderrProgress::Print(const QString &progress)
{
  std::fprintf(stderr, "Loading - %s%s\n", qPrintable(FTitle), qPrintable(progress));
  FTitlePrinted = true;
}
