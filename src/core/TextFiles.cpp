#include "TextFiles.h"

#include "AtomicFile.h"
#include "Errors.h"
#include "Trace.h"

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
  if (const auto marked = QStringConverter::encodingForData(bytes)) {
    QStringDecoder decoder(*marked);
    return decoder(bytes);
  }
  QStringDecoder utf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
  QString text = utf8(bytes);
  if (!utf8.hasError())
    return text;
  // Not UTF-8 and no mark: a file of the Windows program, kept in its code page.
  // Read so, every character is kept, and the next save writes it as UTF-8.
  QStringDecoder windows("windows-1252", QStringConverter::Flag::Stateless);
  if (!windows.isValid())
    throw EReadError(QStringLiteral("Unable to read %1: it is not UTF-8, and this system cannot read Windows-1252; "
                                    "convert it to UTF-8 (iconv -f windows-1252 -t utf-8)")
                         .arg(path));
  TraceValue(lcCore(), "Not UTF-8, read as Windows-1252", path);
  return windows(bytes);
}

namespace {

QByteArray EncodeLines(const QStringList &lines, const QString &lineBreak, TTextEncoding encoding)
{
  qsizetype length = 0;
  for (const QString &line : lines)
    length += line.size() + lineBreak.size();
  QString text;
  text.reserve(length); // a report of many thousand lines is built without growing
  for (const QString &line : lines)
    text.append(line).append(lineBreak);
  if (encoding == TTextEncoding::Utf16LeWithBom) {
    QStringEncoder encoder(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
    return encoder(text);
  }
  return text.toUtf8();
}

} // namespace

void SaveLines(const QString &path, const QStringList &lines, const QString &lineBreak, TTextEncoding encoding)
{
  WriteFileAtomically(path, EncodeLines(lines, lineBreak, encoding));
}

QString SaveLinesAsNewFile(const QString &path, const QStringList &lines, const QString &lineBreak)
{
  const QByteArray bytes = EncodeLines(lines, lineBreak, TTextEncoding::Utf8);
  const QFileInfo info(path);
  QString candidate = path;
  for (int copy = 2; !WriteNewFileAtomically(candidate, bytes); ++copy)
    candidate = info.path() + u'/' + info.completeBaseName() + u'_' + QString::number(copy) + u'.' + info.suffix();
  return candidate;
}
