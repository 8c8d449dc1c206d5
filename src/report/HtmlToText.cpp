#include "HtmlToText.h"

#include <QHash>
#include <QList>
#include <QRegularExpression>
#include <QSet>

namespace {

const QHash<QString, char32_t> &NamedEntities()
{
  static const QHash<QString, char32_t> entities{
      {"nbsp", 0xA0},  {"amp", '&'},      {"lt", '<'},       {"gt", '>'},       {"quot", '"'},
      {"apos", '\''},  {"copy", 0xA9},    {"reg", 0xAE},     {"trade", 0x2122}, {"euro", 0x20AC},
      {"laquo", 0xAB}, {"raquo", 0xBB},   {"ndash", 0x2013}, {"mdash", 0x2014}, {"hellip", 0x2026},
      {"bull", 0x2022}, {"middot", 0xB7}, {"deg", 0xB0},     {"eacute", 0xE9},  {"egrave", 0xE8},
      {"ecirc", 0xEA}, {"agrave", 0xE0},  {"acirc", 0xE2},   {"ccedil", 0xE7},  {"ocirc", 0xF4},
      {"ugrave", 0xF9}, {"uuml", 0xFC},   {"ouml", 0xF6},    {"auml", 0xE4},    {"szlig", 0xDF},
      {"Eacute", 0xC9}, {"rsquo", 0x2019}, {"lsquo", 0x2018}, {"rdquo", 0x201D}, {"ldquo", 0x201C}};
  return entities;
}

// Entities and character references replaced by their characters; an unknown
// entity stays as written.
QString DecodeEntities(const QString &text)
{
  static const QRegularExpression entity(QStringLiteral("&(#[0-9]{1,7}|#[xX][0-9a-fA-F]{1,6}|[A-Za-z][A-Za-z0-9]*);"));
  QString result;
  qsizetype done = 0;
  for (auto it = entity.globalMatch(text); it.hasNext();) {
    const QRegularExpressionMatch match = it.next();
    const QString name = match.captured(1);
    char32_t code = 0;
    bool ok = false;
    if (name.startsWith(u"#x") || name.startsWith(u"#X"))
      code = name.mid(2).toUInt(&ok, 16);
    else if (name.startsWith(u'#'))
      code = name.mid(1).toUInt(&ok, 10);
    else if (const auto found = NamedEntities().constFind(name); found != NamedEntities().constEnd()) {
      code = *found;
      ok = true;
    }
    if (!ok || code == 0 || code > 0x10FFFF)
      continue;
    result += QStringView(text).mid(done, match.capturedStart() - done);
    result += QString::fromUcs4(&code, 1);
    done = match.capturedEnd();
  }
  result += QStringView(text).mid(done);
  return result;
}

struct TTag
{
  QString Name; // lower case
  bool Closing = false;
  QString Href;
};

TTag ParseTag(const QString &inside)
{
  static const QRegularExpression name(QStringLiteral("^\\s*(/?)\\s*([A-Za-z][A-Za-z0-9]*)"));
  static const QRegularExpression href(
      QStringLiteral("\\bhref\\s*=\\s*(?:\"([^\"]*)\"|'([^']*)'|([^\\s>]+))"), QRegularExpression::CaseInsensitiveOption);
  TTag tag;
  const QRegularExpressionMatch match = name.match(inside);
  if (!match.hasMatch())
    return tag;
  tag.Closing = !match.capturedView(1).isEmpty();
  tag.Name = match.captured(2).toLower();
  if (tag.Name == u"a") {
    const QRegularExpressionMatch link = href.match(inside);
    tag.Href = DecodeEntities(link.captured(1) + link.captured(2) + link.captured(3)).trimmed();
  }
  return tag;
}

// Writes the text while tags arrive, keeping track of pending blanks and line
// breaks so that no line starts or ends with a blank.
class TTextWriter
{
public:
  void Text(const QString &text)
  {
    for (const QChar c : text) {
      if (c.isSpace() && c != QChar::Nbsp)
        FSpace = true;
      else
        Put(c == QChar::Nbsp ? QString(u' ') : QString(c));
    }
  }

  void Tag(const TTag &tag)
  {
    static const QSet<QString> paragraphs{"p", "h1", "h2", "h3", "h4", "h5", "h6", "table", "ul", "ol", "blockquote", "pre"};
    static const QSet<QString> lines{"div", "tr", "thead", "tbody", "tfoot", "section", "header", "footer",
                                     "dl", "dt", "dd", "form", "body", "caption"};
    if (tag.Name == u"br") {
      ++FBreaks;
      FSpace = false;
    } else if (tag.Name == u"hr") {
      Break(1);
      Put(QStringLiteral("----------"));
      Break(1);
    } else if (tag.Name == u"li" && !tag.Closing) {
      Break(1);
      const bool numbered = !FLists.isEmpty() && FLists.last() >= 0;
      Put(numbered ? QString::number(++FLists.last()) + QStringLiteral(". ") : QStringLiteral("- "));
    } else if ((tag.Name == u"td" || tag.Name == u"th") && !tag.Closing) {
      FSpace = false;
      if (FCellsInRow++ > 0)
        Put(QStringLiteral(" | "));
    } else if (tag.Name == u"a") {
      Link(tag);
    } else if (paragraphs.contains(tag.Name) || lines.contains(tag.Name)) {
      Break(paragraphs.contains(tag.Name) ? 2 : 1);
    }
    if (tag.Name == u"tr")
      FCellsInRow = 0;
    if (tag.Name == u"ul" || tag.Name == u"ol") {
      if (!tag.Closing)
        FLists.append(tag.Name == u"ol" ? 0 : -1);
      else if (!FLists.isEmpty())
        FLists.removeLast();
    }
  }

  QString Result() const { return FOut; }

private:
  void Break(int count)
  {
    FBreaks = std::max(FBreaks, count);
    FSpace = false;
  }

  void Put(const QString &text)
  {
    if (!FOut.isEmpty()) {
      if (FBreaks > 0)
        FOut += QString(FBreaks, u'\n');
      else if (FSpace && !FOut.endsWith(u'\n'))
        FOut += u' ';
    }
    FBreaks = 0;
    FSpace = false;
    FOut += text;
  }

  // "text <address>" for a link whose text is not its address already.
  void Link(const TTag &tag)
  {
    if (!tag.Closing) {
      FHref = tag.Href;
      FLinkStart = FOut.size();
      return;
    }
    const QString text = FOut.mid(FLinkStart).trimmed();
    if (!FHref.isEmpty() && text != FHref && !FHref.startsWith(u'#')) {
      FSpace = true;
      Put(u'<' + FHref + u'>');
    }
    FHref.clear();
  }

  QString FOut;
  bool FSpace = false;
  int FBreaks = 0;
  int FCellsInRow = 0;
  QList<int> FLists; // per open list: -1 bulleted, else the last number given
  QString FHref;
  qsizetype FLinkStart = 0;
};

} // namespace

QString HtmlToText(const QString &html)
{
  static const QSet<QString> silent{"head", "script", "style", "title", "template"};
  TTextWriter writer;
  qsizetype pos = 0;
  while (pos < html.size()) {
    const qsizetype open = html.indexOf(u'<', pos);
    writer.Text(DecodeEntities(html.mid(pos, open < 0 ? -1 : open - pos)));
    if (open < 0)
      break;
    if (QStringView(html).mid(open).startsWith(u"<!--")) {
      const qsizetype end = html.indexOf(QStringLiteral("-->"), open + 4);
      pos = end < 0 ? html.size() : end + 3;
      continue;
    }
    const qsizetype close = html.indexOf(u'>', open);
    if (close < 0)
      break;
    const TTag tag = ParseTag(html.mid(open + 1, close - open - 1));
    pos = close + 1;
    if (!tag.Closing && silent.contains(tag.Name)) {
      const qsizetype end = html.indexOf(QStringLiteral("</") + tag.Name, pos, Qt::CaseInsensitive);
      const qsizetype after = end < 0 ? -1 : html.indexOf(u'>', end);
      pos = after < 0 ? html.size() : after + 1;
      continue;
    }
    if (!tag.Name.isEmpty())
      writer.Tag(tag);
  }
  return writer.Result();
}
