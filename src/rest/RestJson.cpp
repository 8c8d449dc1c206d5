#include "RestJson.h"

#include <QJsonDocument>

QByteArray AsciiJson(const QJsonObject &object)
{
  // Qt's writer already escapes the control characters inside strings and puts
  // none outside them; only the characters above 127 are left to escape. Each
  // UTF-16 unit gets its own escape, which is how JSON writes characters beyond
  // the basic plane too.
  const QString text = QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
  QByteArray ascii;
  ascii.reserve(text.size());
  for (const QChar unit : text) {
    if (unit.unicode() > 127)
      ascii.append("\\u").append(QByteArray::number(unit.unicode(), 16).rightJustified(4, '0'));
    else
      ascii.append(static_cast<char>(unit.unicode()));
  }
  return ascii;
}
