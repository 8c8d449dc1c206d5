#include "TextFiles.h"

#include "AtomicFile.h"
#include "Errors.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>
#include <QStringEncoder>

QString ReadText(const QString &path)
{
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly) || QFileInfo(path).isDir())
    throw EReadError(QStringLiteral("Unable to read ") + path + QStringLiteral(": ") +
                     (file.error() == QFileDevice::NoError ? QStringLiteral("it is a folder") : file.errorString()));
  const QByteArray bytes = file.readAll();
  if (file.error() != QFileDevice::NoError)
    throw EReadError(QStringLiteral("Unable to read ") + path + QStringLiteral(": ") + file.errorString());
  QStringDecoder decoder(QStringConverter::encodingForData(bytes).value_or(QStringConverter::Utf8));
  return decoder(bytes);
}

void SaveLines(const QString &path, const QStringList &lines, const QString &lineBreak, TTextEncoding encoding)
{
  qsizetype length = 0;
  for (const QString &line : lines)
    length += line.size() + lineBreak.size();
  QString text;
  text.reserve(length); // a report of many thousand lines is built without growing
  for (const QString &line : lines)
    text.append(line).append(lineBreak);
  QByteArray bytes;
  if (encoding == TTextEncoding::Utf16LeWithBom) {
    QStringEncoder encoder(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
    bytes = encoder(text);
  } else {
    bytes = text.toUtf8();
  }
  WriteFileAtomically(path, bytes);
}
