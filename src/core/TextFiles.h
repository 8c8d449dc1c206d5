#pragma once

#include <QString>
#include <QStringList>

// The text of the file at `path`: a byte-order mark selects the encoding and is not
// part of the text; without one the file is UTF-8, or else Windows-1252 (a file
// of the Windows program), with a trace line saying so. Raises EReadError
// "Unable to read <path>: <reason>" when the file cannot be read.
QString ReadText(const QString &path);

enum class TTextEncoding { Utf8, Utf16LeWithBom };

// Writes `lines` to `path`, each followed by `lineBreak`, replacing the file
// only once every byte is on disk (see WriteFileAtomically). Raises EWriteError
// "Unable to write to <path>: <reason>".
void SaveLines(const QString &path, const QStringList &lines, const QString &lineBreak, TTextEncoding encoding);

// The same in UTF-8 for a file that never replaces another: when `path` is
// taken, "_2", "_3"... is put before its extension. Returns the path written.
QString SaveLinesAsNewFile(const QString &path, const QStringList &lines, const QString &lineBreak);
