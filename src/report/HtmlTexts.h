#pragma once

#include <QStringList>

// The eight blocks of HTML around the report's tables, which the user edits.
struct tyHtmlTexts
{
  QStringList Unassigned_Title;
  QStringList Unassigned_With;
  QStringList Unassigned_Without;
  QStringList WithoutUpdate_Title;
  QStringList WithoutUpdate_With;
  QStringList WithoutUpdate_Without;
  QStringList More10;
  QStringList Why;
};
