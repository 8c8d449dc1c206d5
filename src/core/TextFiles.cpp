#include "TextFiles.h"

#include "AtomicFile.h"

#include <QStringEncoder>

void SaveLines(const QString &path, const QStringList &lines, const QString &lineBreak, TTextEncoding encoding)
{
  QString text;
  for (const QString &line : lines)
    text += line + lineBreak;
  QByteArray bytes;
  if (encoding == TTextEncoding::Utf16LeWithBom) {
    QStringEncoder encoder(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
    bytes = encoder(text);
  } else {
    bytes = text.toUtf8();
  }
  WriteFileAtomically(path, bytes);
}
