#include "RestJson.h"

#include <QJsonDocument>

QByteArray AsciiJson(const QJsonObject &object)
{
  // Qt's writer escapes the control characters inside strings (some in their
  // short forms \b \f \n \r \t) and puts none outside them. The body must hold
  // every character below 32 and above 127 as a \u escape: the short forms are
  // rewritten and the characters above 127 escaped. Each UTF-16 unit gets its
  // own escape, which is how JSON writes characters beyond the basic plane too.
  const QString text = QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
  auto escape = [](QByteArray &out, char16_t unit) {
    out.append("\\u").append(QByteArray::number(unit, 16).rightJustified(4, '0'));
  };
  QByteArray ascii;
  ascii.reserve(text.size());
  for (qsizetype i = 0; i < text.size(); ++i) {
    const char16_t unit = text[i].unicode();
    if (unit == u'\\' && i + 1 < text.size()) {
      // An escape of Qt's: "\\" and "\"" stay, the short forms become \u.
      const char16_t next = text[++i].unicode();
      switch (next) {
      case u'b': escape(ascii, 0x08); break;
      case u'f': escape(ascii, 0x0c); break;
      case u'n': escape(ascii, 0x0a); break;
      case u'r': escape(ascii, 0x0d); break;
      case u't': escape(ascii, 0x09); break;
      default: ascii.append('\\').append(static_cast<char>(next));
      }
    } else if (unit > 127) {
      escape(ascii, unit);
    } else {
      ascii.append(static_cast<char>(unit));
    }
  }
  return ascii;
}
