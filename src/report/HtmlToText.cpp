#include "HtmlToText.h"

#include <QStringList>
#include <gumbo.h>
#include <memory>

namespace {

constexpr QChar CNoBreakSpace = QChar(0x00A0);

bool IsBlock(GumboTag tag)
{
  switch (tag) {
  case GUMBO_TAG_P: case GUMBO_TAG_DIV: case GUMBO_TAG_H1: case GUMBO_TAG_H2: case GUMBO_TAG_H3:
  case GUMBO_TAG_H4: case GUMBO_TAG_H5: case GUMBO_TAG_H6: case GUMBO_TAG_TABLE: case GUMBO_TAG_BLOCKQUOTE:
  case GUMBO_TAG_PRE: case GUMBO_TAG_HR: case GUMBO_TAG_DL: case GUMBO_TAG_CENTER: case GUMBO_TAG_ADDRESS:
  case GUMBO_TAG_SECTION: case GUMBO_TAG_ARTICLE: case GUMBO_TAG_HEADER: case GUMBO_TAG_FOOTER: return true;
  default: return false;
  }
}

int HeadingLevel(GumboTag tag)
{
  switch (tag) {
  case GUMBO_TAG_H1: return 1;
  case GUMBO_TAG_H2: return 2;
  case GUMBO_TAG_H3: return 3;
  default: return 0;
  }
}

// Writes the text of a parsed tree: the current line, the lines of the current
// block, and the blocks done.
class TTextWriter
{
public:
  void Node(const GumboNode &node)
  {
    switch (node.type) {
    case GUMBO_NODE_DOCUMENT: Children(node.v.document.children); break;
    case GUMBO_NODE_ELEMENT: Element(node); break;
    case GUMBO_NODE_TEXT:
    case GUMBO_NODE_CDATA:
    case GUMBO_NODE_WHITESPACE: Text(QString::fromUtf8(node.v.text.text)); break;
    case GUMBO_NODE_COMMENT:
    case GUMBO_NODE_TEMPLATE: break;
    }
  }

  QString Result()
  {
    EndBlock();
    return FBlocks.join(QStringLiteral("\n\n")).replace(CNoBreakSpace, u' ');
  }

private:
  void Children(const GumboVector &children)
  {
    for (unsigned i = 0; i < children.length; ++i)
      Node(*static_cast<const GumboNode *>(children.data[i]));
  }

  void Element(const GumboNode &node)
  {
    const GumboElement &element = node.v.element;
    switch (element.tag) {
    case GUMBO_TAG_HEAD: case GUMBO_TAG_SCRIPT: case GUMBO_TAG_STYLE: case GUMBO_TAG_TITLE:
    case GUMBO_TAG_TEMPLATE: return;
    case GUMBO_TAG_BR: LineBreak(); return;
    case GUMBO_TAG_UL: case GUMBO_TAG_OL: List(element); return;
    case GUMBO_TAG_LI: Item(element); return;
    case GUMBO_TAG_TR:
      Break();
      FCells = 0;
      Children(element.children);
      Break();
      return;
    case GUMBO_TAG_TD: case GUMBO_TAG_TH:
      if (FCells++ > 0)
        FLine += QStringLiteral(" | ");
      FSpace = false;
      Children(element.children);
      return;
    case GUMBO_TAG_A: Link(element); return;
    default: break;
    }
    if (!IsBlock(element.tag)) {
      Children(element.children);
      return;
    }
    EndBlock();
    FPre += element.tag == GUMBO_TAG_PRE;
    Children(element.children);
    FPre -= element.tag == GUMBO_TAG_PRE;
    Break();
    if (const int level = HeadingLevel(element.tag); level > 0 && !FLines.isEmpty())
      FLines.last() = TextHeading(FLines.last(), level);
    EndBlock();
  }

  // A list is a block of its own, or lines within the item that holds it.
  void List(const GumboElement &element)
  {
    if (FLists.isEmpty())
      EndBlock();
    else
      Break();
    FLists.append(element.tag == GUMBO_TAG_OL ? 1 : 0);
    Children(element.children);
    FLists.removeLast();
    Break();
    if (FLists.isEmpty())
      EndBlock();
  }

  void Item(const GumboElement &element)
  {
    Break();
    const qsizetype depth = std::max<qsizetype>(FLists.size(), 1);
    int *number = FLists.isEmpty() ? nullptr : &FLists.last();
    const QString marker = number && *number > 0 ? QString::number((*number)++) + QStringLiteral(". ") : QStringLiteral("- ");
    FLine = QString(2 * (depth - 1), u' ') + marker;
    FSpace = false;
    Children(element.children);
    Break();
  }

  void Link(const GumboElement &element)
  {
    const qsizetype start = FLine.size();
    Children(element.children);
    const GumboAttribute *href = gumbo_get_attribute(&element.attributes, "href");
    const QString address = href ? QString::fromUtf8(href->value).trimmed() : QString();
    const QString text = FLine.mid(start).trimmed();
    if (address.isEmpty() || address.startsWith(u'#') || address == text)
      return;
    FLine += (FLine.isEmpty() || FLine.endsWith(u' ') ? QStringLiteral("<") : QStringLiteral(" <")) + address + u'>';
  }

  void Text(const QString &text)
  {
    for (const QChar c : text) {
      if (FPre > 0 && c == u'\n') {
        LineBreak();
      } else if (FPre == 0 && (c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\f')) {
        FSpace = true;
      } else {
        if (FSpace && !FLine.isEmpty() && !FLine.endsWith(u' '))
          FLine += u' ';
        FSpace = false;
        FLine += c;
      }
    }
  }

  // Ends the line, even an empty one.
  void LineBreak()
  {
    while (FLine.endsWith(u' '))
      FLine.chop(1);
    FLines.append(FLine);
    FLine.clear();
    FSpace = false;
  }

  // Ends the line when it holds anything.
  void Break()
  {
    if (!FLine.isEmpty())
      LineBreak();
    FSpace = false;
  }

  void EndBlock()
  {
    Break();
    while (!FLines.isEmpty() && FLines.first().trimmed().isEmpty())
      FLines.removeFirst();
    while (!FLines.isEmpty() && FLines.last().trimmed().isEmpty())
      FLines.removeLast();
    if (!FLines.isEmpty())
      FBlocks.append(FLines.join(u'\n'));
    FLines.clear();
  }

  QStringList FBlocks;
  QStringList FLines;
  QString FLine;
  bool FSpace = false;  // blanks met since the last character written
  int FPre = 0;         // depth of <pre> elements, where blanks are kept
  int FCells = 0;       // cells already written on the current table row
  QList<int> FLists;    // per open list: the next item's number, 0 when unnumbered
};

} // namespace

QString HtmlToText(const QString &html)
{
  const QByteArray utf8 = html.toUtf8();
  GumboOptions options = kGumboDefaultOptions;
  options.fragment_context = GUMBO_TAG_BODY;
  const auto destroy = [&options](GumboOutput *output) { gumbo_destroy_output(&options, output); };
  const std::unique_ptr<GumboOutput, decltype(destroy)> output(
      gumbo_parse_with_options(&options, utf8.constData(), static_cast<std::size_t>(utf8.size())), destroy);
  TTextWriter writer;
  writer.Node(*output->root);
  return writer.Result();
}

QString TextHeading(const QString &text, int level)
{
  if (level > 2)
    return text;
  return text + u'\n' + QString(text.size(), level == 1 ? u'=' : u'-');
}
