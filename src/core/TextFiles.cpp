#include "TextFiles.h"

#include "Errors.h"

#include <QSaveFile>
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
  SaveBytes(path, bytes);
}

void SaveBytes(const QString &path, const QByteArray &bytes)
{
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
    throw EWriteError(QStringLiteral("Unable to write to ") + path + QStringLiteral(": ") + file.errorString());
}
