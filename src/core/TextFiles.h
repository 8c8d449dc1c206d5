#pragma once

#include <QString>
#include <QStringList>

enum class TTextEncoding { Utf8, Utf16LeWithBom };

// Writes `lines` to `path`, each followed by `lineBreak`, replacing the file
// only once every byte is on disk (see WriteFileAtomically). Raises EWriteError
// "Unable to write to <path>: <reason>".
void SaveLines(const QString &path, const QStringList &lines, const QString &lineBreak, TTextEncoding encoding);

// Writes `bytes` to `path`, replacing the file atomically. Raises EWriteError
// "Unable to write to <path>: <reason>".
void SaveBytes(const QString &path, const QByteArray &bytes);
