#include "HtmlSafety.h"

#include <QRegularExpression>
#include <QSet>

namespace {

// Elements turned into visible text: those that run code or load a document,
// those whose content a browser does not read as HTML (it would swallow the
// report's next cells), and those that would change the report's own structure.
const QSet<QString> CBlockedElements{
    QStringLiteral("script"),   QStringLiteral("iframe"),  QStringLiteral("object"),   QStringLiteral("embed"),
    QStringLiteral("applet"),   QStringLiteral("frame"),   QStringLiteral("frameset"), QStringLiteral("style"),
    QStringLiteral("textarea"), QStringLiteral("title"),   QStringLiteral("xmp"),      QStringLiteral("plaintext"),
    QStringLiteral("noscript"), QStringLiteral("noembed"), QStringLiteral("noframes"), QStringLiteral("template"),
    QStringLiteral("base"),     QStringLiteral("meta"),    QStringLiteral("link"),     QStringLiteral("svg"),
    QStringLiteral("math"),     QStringLiteral("form"),    QStringLiteral("input"),    QStringLiteral("button"),
    QStringLiteral("select"),   QStringLiteral("option"),  QStringLiteral("html"),     QStringLiteral("head"),
    QStringLiteral("body"),     QStringLiteral("table"),   QStringLiteral("caption"),  QStringLiteral("colgroup"),
    QStringLiteral("col"),      QStringLiteral("thead"),   QStringLiteral("tbody"),    QStringLiteral("tfoot"),
    QStringLiteral("tr"),       QStringLiteral("td"),      QStringLiteral("th"),       QStringLiteral("image"),
};

// Elements that have no content and so no end tag.
const QSet<QString> CVoidElements{
    QStringLiteral("area"), QStringLiteral("br"),    QStringLiteral("hr"),     QStringLiteral("img"),
    QStringLiteral("wbr"),  QStringLiteral("param"), QStringLiteral("source"), QStringLiteral("track"),
};

// A browser reads "&#106;", "&#x6A;" and "&colon;" in an attribute as the
// letter or colon they stand for; they are spelt out so that a hidden
// "javascript:" shows. Only letters and colons are decoded: anything else
// (a quote, say) could change where an attribute ends.
QString DecodeLettersAndColons(const QString &value)
{
  static const QRegularExpression entity(QStringLiteral("&(?:#([0-9]+)|#[xX]([0-9a-fA-F]+)|(colon));?"));
  QString result;
  qsizetype done = 0;
  auto matches = entity.globalMatch(value);
  while (matches.hasNext()) {
    const QRegularExpressionMatch match = matches.next();
    bool ok = true;
    const uint code = match.hasCaptured(1)   ? match.captured(1).toUInt(&ok)
                      : match.hasCaptured(2) ? match.captured(2).toUInt(&ok, 16)
                                             : uint(':');
    const bool plain = ok && code < 128 && (QChar::isLetter(code) || code == ':');
    result += value.mid(done, match.capturedStart() - done);
    result += plain ? QString(QChar(char16_t(code))) : match.captured();
    done = match.capturedEnd();
  }
  return result + value.mid(done);
}

// An attribute value with its script addresses disabled: "javascript:" and
// "vbscript:" anywhere, "data:" at the start (a whole document in an address).
QString NeutraliseValue(const QString &value)
{
  // Browsers drop tabs and line breaks (also written as entities) inside an
  // address, so "java<TAB>script:" runs as well.
  static const QString gap = QStringLiteral("(?:[\\s\\x00-\\x1f]|&(?:#0*(?:9|10|13)|#[xX]0*[9aAdD]|Tab|NewLine);?)*");
  static const QRegularExpression scriptUrl(
      QStringLiteral("(?:j%1a%1v%1a|v%1b)%1s%1c%1r%1i%1p%1t%1:").arg(gap), QRegularExpression::CaseInsensitiveOption);
  static const QRegularExpression dataUrl(QStringLiteral("^%1d%1a%1t%1a%1:").arg(gap),
                                          QRegularExpression::CaseInsensitiveOption);
  const QString decoded = DecodeLettersAndColons(value);
  if (!scriptUrl.match(decoded).hasMatch() && !dataUrl.match(decoded).hasMatch())
    return value;
  QString blocked = decoded;
  return blocked.replace(scriptUrl, QStringLiteral("blocked:")).replace(dataUrl, QStringLiteral("blocked:"));
}

// Reads a fragment as a browser's tokenizer does, closely enough to know where
// each tag and attribute ends.
class TFragmentReader
{
public:
  explicit TFragmentReader(const QString &html) : FHtml(html) {}

  QString Neutralised()
  {
    while (FAt < FHtml.size()) {
      const QChar c = FHtml[FAt];
      if (c == u'<' && StartsTag()) {
        const qsizetype start = FAt;
        if (!ReadTag()) {
          // A tag left open would take the report's next cell with it: shown
          // as text instead.
          FAt = start + 1;
          FOut += QStringLiteral("&lt;");
        }
      } else if (c == u'<') {
        // "<!--", "<!DOCTYPE", "<?...": a comment or declaration could hide or
        // swallow what follows; shown as text.
        const QChar next = FAt + 1 < FHtml.size() ? FHtml[FAt + 1] : QChar();
        FOut += next == u'!' || next == u'?' || next == u'/' ? QStringLiteral("&lt;") : QStringLiteral("<");
        ++FAt;
      } else {
        FOut += c;
        ++FAt;
      }
    }
    // What the fragment opened, it closes: nothing reaches the next cell.
    while (!FOpen.isEmpty())
      FOut += QStringLiteral("</") + FOpen.takeLast() + u'>';
    return FOut;
  }

private:
  bool StartsTag() const
  {
    const qsizetype letter = FAt + 1 < FHtml.size() && FHtml[FAt + 1] == u'/' ? FAt + 2 : FAt + 1;
    return letter < FHtml.size() && FHtml[letter].isLetter() && FHtml[letter].unicode() < 128;
  }

  static bool IsSpace(QChar c) { return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\f'; }

  void SkipSpaces()
  {
    while (FAt < FHtml.size() && IsSpace(FHtml[FAt]))
      ++FAt;
  }

  // Reads the tag at FAt ("<" included) and writes its safe form. False when
  // the fragment ends before the tag does.
  bool ReadTag()
  {
    const qsizetype start = FAt;
    ++FAt;
    const bool closing = FHtml[FAt] == u'/';
    if (closing)
      ++FAt;
    const qsizetype nameStart = FAt;
    while (FAt < FHtml.size() && !IsSpace(FHtml[FAt]) && FHtml[FAt] != u'/' && FHtml[FAt] != u'>')
      ++FAt;
    const QString name = FHtml.mid(nameStart, FAt - nameStart).toLower();

    QString attributes;
    bool selfClosing = false;
    for (;;) {
      SkipSpaces();
      if (FAt >= FHtml.size())
        return false;
      const QChar c = FHtml[FAt];
      if (c == u'>') {
        ++FAt;
        break;
      }
      if (c == u'/') {
        ++FAt;
        selfClosing = FAt < FHtml.size() && FHtml[FAt] == u'>';
        continue;
      }
      QString attribute;
      if (!ReadAttribute(attribute))
        return false;
      attributes += attribute;
    }

    if (CBlockedElements.contains(name)) {
      // Shown as text, with any tag its values carry.
      FOut += FHtml.mid(start, FAt - start).replace(u'<', QStringLiteral("&lt;"));
      return true;
    }
    if (closing) {
      const qsizetype open = FOpen.lastIndexOf(name);
      if (open < 0) {
        // Closes nothing of this fragment: it could only close the report's own.
        FOut += QStringLiteral("&lt;/") + name + u'>';
        return true;
      }
      while (FOpen.size() > open)
        FOut += QStringLiteral("</") + FOpen.takeLast() + u'>';
      return true;
    }
    FOut += u'<' + name + attributes + (selfClosing ? QStringLiteral(" />") : QStringLiteral(">"));
    if (!selfClosing && !CVoidElements.contains(name))
      FOpen.append(name);
    return true;
  }

  // One attribute, written back double-quoted with its event handler renamed
  // and its script address disabled. False when the fragment ends inside it.
  bool ReadAttribute(QString &attribute)
  {
    const qsizetype nameStart = FAt;
    ++FAt; // the first character belongs to the name, even "="
    while (FAt < FHtml.size() && !IsSpace(FHtml[FAt]) && FHtml[FAt] != u'/' && FHtml[FAt] != u'>' &&
           FHtml[FAt] != u'=')
      ++FAt;
    QString name = FHtml.mid(nameStart, FAt - nameStart);
    // Only a plain name is kept as such: anything else could never be read the same way again.
    static const QRegularExpression plainName(QStringLiteral("^[A-Za-z_:][A-Za-z0-9_:.-]*$"));
    if (!plainName.match(name).hasMatch())
      name = QStringLiteral("data-blocked");
    else if (name.startsWith(QLatin1String("on"), Qt::CaseInsensitive))
      name = QStringLiteral("data-blocked-") + name;
    SkipSpaces();
    if (FAt >= FHtml.size())
      return false;
    if (FHtml[FAt] != u'=') {
      attribute = u' ' + name;
      return true;
    }
    ++FAt;
    SkipSpaces();
    if (FAt >= FHtml.size())
      return false;
    QString value;
    const QChar quote = FHtml[FAt];
    if (quote == u'"' || quote == u'\'') {
      const qsizetype end = FHtml.indexOf(quote, FAt + 1);
      if (end < 0)
        return false;
      value = FHtml.mid(FAt + 1, end - FAt - 1);
      FAt = end + 1;
    } else {
      const qsizetype valueStart = FAt;
      while (FAt < FHtml.size() && !IsSpace(FHtml[FAt]) && FHtml[FAt] != u'>')
        ++FAt;
      value = FHtml.mid(valueStart, FAt - valueStart);
    }
    attribute = u' ' + name + QStringLiteral("=\"") + NeutraliseValue(value).replace(u'"', QStringLiteral("&quot;")) +
                u'"';
    return true;
  }

  const QString &FHtml;
  qsizetype FAt = 0;
  QString FOut;
  QStringList FOpen; // elements opened by the fragment and not yet closed
};

} // namespace

QString NeutraliseActiveHtml(const QString &html)
{
  return TFragmentReader(html).Neutralised();
}
