#include "LoadingProgress.h"

#include <cstdio>

void TStderrProgress::LoadingShow(int)
{
  FMaximum = 0;
  FPosition = 0;
}

void TStderrProgress::LoadingSetTitle(const QString &title)
{
  if (FMaximum > 0)
    std::fprintf(stderr, "Loading - %s [%d/%d]\n", qPrintable(title), FPosition, FMaximum);
  else
    std::fprintf(stderr, "Loading - %s\n", qPrintable(title));
}

void TStderrProgress::LoadingSetAnimation(int) {}

void TStderrProgress::LoadingSetProgressBar(int maximum, int position)
{
  FMaximum = maximum;
  FPosition = position;
}

void TStderrProgress::LoadingHide()
{
  FPosition = FMaximum;
}
