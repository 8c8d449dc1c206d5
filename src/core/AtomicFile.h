#pragma once

#include <QByteArray>
#include <QString>

// Replaces the file at `path` with `bytes`, or leaves it exactly as it was.
// The bytes go to a new file beside it, which is written, flushed and synced
// (each checked) before a rename puts it in place; the folder is synced after.
// A file created here is readable by its owner only (0600); a file replaced
// keeps its mode, except that `ownerOnly` takes away every right of the group
// and others. A symbolic link stays one: its target is written so.
// Raises EWriteError "Unable to write to <path>: <system's reason>".
void WriteFileAtomically(const QString &path, const QByteArray &bytes, bool ownerOnly = false);

// The same for a file that must not replace another: false, and nothing
// written, when a file of that name exists (or appears meanwhile).
bool WriteNewFileAtomically(const QString &path, const QByteArray &bytes);

// Creates `folder` and its missing parents readable by the owner only (0700);
// folders that exist keep their mode. Raises EWriteError naming the folder.
void MakePrivateFolder(const QString &folder);
