#pragma once

#include <QString>
#include <QStringList>
#include <array>

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

// The blocks in file order: block i (0-based) is stored in the file "_<i+1>.html".
inline constexpr std::array<QStringList tyHtmlTexts::*, 8> CHtmlTextBlocks = {
    &tyHtmlTexts::Unassigned_Title,    &tyHtmlTexts::Unassigned_With,    &tyHtmlTexts::Unassigned_Without,
    &tyHtmlTexts::WithoutUpdate_Title, &tyHtmlTexts::WithoutUpdate_With, &tyHtmlTexts::WithoutUpdate_Without,
    &tyHtmlTexts::More10,              &tyHtmlTexts::Why};

// The built-in wording, used for every block whose file does not exist.
tyHtmlTexts DefaultHtmlTexts();

// File of one block (number 1 to 8): the settings file's folder, the executable's
// name without extension, then "_<number>.html".
QString HtmlTextFileName(const QString &iniPath, const QString &exeFileName, int number);

// Reads the eight blocks from their files. A block whose file is missing gets its
// default (the file is not created); an empty file gives an empty block. A
// byte-order mark selects the encoding, otherwise the file is UTF-8. A file that
// exists but cannot be read raises EReadError naming it.
void ReadHtmlTexts(const QString &iniPath, const QString &exeFileName, tyHtmlTexts &texts);

// Writes the eight blocks to their files (UTF-8, no byte-order mark, one line per
// list line), each replaced atomically. Raises EWriteError naming the file that
// cannot be written.
void SaveHtmlTexts(const QString &iniPath, const QString &exeFileName, const tyHtmlTexts &texts);
