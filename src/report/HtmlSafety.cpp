#include "HtmlSafety.h"

#include <QRegularExpression>

namespace {

// A browser reads "&#106;", "&#x6A;" and "&colon;" in an attribute as the
// letter or colon they stand for; they are spelt out so that a hidden
// "javascript:" shows. Only letters and colons are decoded: anything else
// (a quote, say) could change where an attribute ends.
QString DecodeLettersAndColons(const QString &tag)
{
  static const QRegularExpression entity(QStringLiteral("&(?:#([0-9]+)|#[xX]([0-9a-fA-F]+)|(colon));?"));
  QString result;
  qsizetype done = 0;
  auto matches = entity.globalMatch(tag);
  while (matches.hasNext()) {
    const QRegularExpressionMatch match = matches.next();
    bool ok = true;
    const uint code = match.hasCaptured(1)   ? match.captured(1).toUInt(&ok)
                      : match.hasCaptured(2) ? match.captured(2).toUInt(&ok, 16)
                                             : uint(':');
    const bool plain = ok && code < 128 && (QChar::isLetter(code) || code == ':');
    result += tag.mid(done, match.capturedStart() - done);
    result += plain ? QString(QChar(char16_t(code))) : match.captured();
    done = match.capturedEnd();
  }
  return result + tag.mid(done);
}

// One tag: its event attributes renamed, its script addresses disabled.
QString NeutraliseTag(const QString &tag)
{
  static const QRegularExpression eventAttribute(QStringLiteral("(^|[^A-Za-z0-9_-])(on[a-z]+\\s*=)"),
                                                 QRegularExpression::CaseInsensitiveOption);
  // Browsers drop tabs and line breaks (also written as entities) inside an
  // address, so "java<TAB>script:" runs as well.
  static const QString gap = QStringLiteral("(?:[\\s\\x00-\\x1f]|&(?:#0*(?:9|10|13)|#[xX]0*[9aAdD]|Tab|NewLine);?)*");
  static const QRegularExpression scriptUrl(QStringLiteral("j%1a%1v%1a%1s%1c%1r%1i%1p%1t%1:").arg(gap),
                                            QRegularExpression::CaseInsensitiveOption);
  QString result = tag;
  result.replace(eventAttribute, QStringLiteral("\\1data-blocked-\\2"));
  const QString decoded = DecodeLettersAndColons(result);
  if (!scriptUrl.match(decoded).hasMatch())
    return result;
  QString blocked = decoded;
  return blocked.replace(scriptUrl, QStringLiteral("blocked:"));
}

} // namespace

QString NeutraliseActiveHtml(const QString &html)
{
  static const QRegularExpression dangerousTag(QStringLiteral("<(\\s*/?\\s*(?:script|iframe|object)\\b)"),
                                               QRegularExpression::CaseInsensitiveOption);
  // A tag as a browser reads it: quoted values may hold ">", and a tag left
  // open runs to the end of the text (the report's own "</td>" would close it).
  static const QRegularExpression tag(QStringLiteral("<[A-Za-z/!?](?:\"[^\"]*\"?|'[^']*'?|[^'\">])*(?:>|$)"));

  QString result = html;
  result.replace(dangerousTag, QStringLiteral("&lt;\\1"));

  // Inside the remaining tags only: text between tags is shown, never run.
  QString cleaned;
  qsizetype done = 0;
  auto matches = tag.globalMatch(result);
  while (matches.hasNext()) {
    const QRegularExpressionMatch match = matches.next();
    cleaned += result.mid(done, match.capturedStart() - done);
    cleaned += NeutraliseTag(match.captured());
    done = match.capturedEnd();
  }
  cleaned += result.mid(done);
  return cleaned;
}
