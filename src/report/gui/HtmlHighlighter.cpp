#include "HtmlHighlighter.h"

#include <QRegularExpression>

THtmlHighlighter::THtmlHighlighter(QTextDocument *document) : QSyntaxHighlighter(document)
{
  FTag.setForeground(QColor(0x00, 0x33, 0x99));
  FTag.setFontWeight(QFont::Bold);
  FAttribute.setForeground(QColor(0x99, 0x33, 0x00));
  FValue.setForeground(QColor(0x00, 0x80, 0x00));
  FEntity.setForeground(QColor(0x80, 0x00, 0x80));
  FComment.setForeground(QColor(0x80, 0x80, 0x80));
  FComment.setFontItalic(true);
  FPlaceholder.setForeground(QColor(0xC0, 0x00, 0x00));
  FPlaceholder.setFontWeight(QFont::Bold);
}

void THtmlHighlighter::highlightBlock(const QString &text)
{
  static const QRegularExpression placeholder(QStringLiteral("%[A-Z_]+%"));
  HighlightMarkup(text);
  // Placeholders stand out wherever they are, even inside a value.
  for (auto it = placeholder.globalMatch(text); it.hasNext();) {
    const auto match = it.next();
    setFormat(static_cast<int>(match.capturedStart()), static_cast<int>(match.capturedLength()), FPlaceholder);
  }
}

void THtmlHighlighter::HighlightMarkup(const QString &text)
{
  static const QRegularExpression entity(QStringLiteral("&(#[0-9]+|#[xX][0-9a-fA-F]+|[A-Za-z][A-Za-z0-9]*);"));
  setCurrentBlockState(stText);
  qsizetype pos = 0;
  if (previousBlockState() == stComment) {
    const qsizetype end = text.indexOf(QStringLiteral("-->"));
    setFormat(0, end < 0 ? text.size() : end + 3, FComment);
    if (end < 0) {
      setCurrentBlockState(stComment);
      return;
    }
    pos = end + 3;
  } else if (previousBlockState() == stTag) {
    pos = HighlightTag(text, 0);
    if (pos < 0)
      return;
  }

  while (pos < text.size()) {
    const qsizetype open = text.indexOf(u'<', pos);
    const qsizetype stop = open < 0 ? text.size() : open;
    for (auto it = entity.globalMatch(text.mid(pos, stop - pos)); it.hasNext();) {
      const auto match = it.next();
      setFormat(static_cast<int>(pos + match.capturedStart()), static_cast<int>(match.capturedLength()), FEntity);
    }
    if (open < 0)
      break;
    if (QStringView(text).mid(open).startsWith(u"<!--")) {
      const qsizetype end = text.indexOf(QStringLiteral("-->"), open + 4);
      setFormat(static_cast<int>(open), static_cast<int>((end < 0 ? text.size() : end + 3) - open), FComment);
      if (end < 0) {
        setCurrentBlockState(stComment);
        return;
      }
      pos = end + 3;
      continue;
    }
    pos = HighlightTag(text, open);
    if (pos < 0)
      return;
  }
}

qsizetype THtmlHighlighter::HighlightTag(const QString &text, qsizetype start)
{
  static const QRegularExpression token(QStringLiteral(
      "\\G\\s*(?:(?<end>/?>)|(?<name></?[A-Za-z][A-Za-z0-9:-]*)|(?<value>\"[^\"]*\"?|'[^']*'?)|"
      "(?<attribute>[^\\s=>/\"']+)|(?<other>[=/]))"));
  qsizetype pos = start;
  while (pos < text.size()) {
    const QRegularExpressionMatch match = token.match(text, pos);
    if (!match.hasMatch() || match.capturedLength() == 0)
      break;
    for (const auto &[group, format] : {std::pair{"end", &FTag}, std::pair{"name", &FTag},
                                        std::pair{"value", &FValue}, std::pair{"attribute", &FAttribute}}) {
      if (match.capturedStart(QLatin1String(group)) >= 0)
        setFormat(static_cast<int>(match.capturedStart(QLatin1String(group))),
                  static_cast<int>(match.capturedLength(QLatin1String(group))), *format);
    }
    pos = match.capturedEnd();
    if (match.capturedStart(QStringLiteral("end")) >= 0)
      return pos;
  }
  setCurrentBlockState(stTag);
  return -1;
}
