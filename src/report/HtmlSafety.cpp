#include "HtmlSafety.h"

#include <QRegularExpression>

QString NeutraliseActiveHtml(const QString &html)
{
  static const QRegularExpression dangerousTag(QStringLiteral("<(\\s*/?\\s*(?:script|iframe|object)\\b)"),
                                               QRegularExpression::CaseInsensitiveOption);
  static const QRegularExpression tag(QStringLiteral("<[^<>]*>"));
  static const QRegularExpression eventAttribute(QStringLiteral("(\\s|/|\")(on[a-z]+\\s*=)"),
                                                 QRegularExpression::CaseInsensitiveOption);
  static const QRegularExpression scriptUrl(QStringLiteral("javascript\\s*:"),
                                            QRegularExpression::CaseInsensitiveOption);

  QString result = html;
  result.replace(dangerousTag, QStringLiteral("&lt;\\1"));

  // Inside the remaining tags only: text between tags is shown, never run.
  QString cleaned;
  qsizetype done = 0;
  auto matches = tag.globalMatch(result);
  while (matches.hasNext()) {
    const QRegularExpressionMatch match = matches.next();
    cleaned += result.mid(done, match.capturedStart() - done);
    QString inside = match.captured();
    inside.replace(eventAttribute, QStringLiteral("\\1data-blocked-\\2"));
    inside.replace(scriptUrl, QStringLiteral("blocked:"));
    cleaned += inside;
    done = match.capturedEnd();
  }
  cleaned += result.mid(done);
  return cleaned;
}
