#include "ReportText.h"

#include "HtmlToText.h"

QString OneLine(const QString &value)
{
  QString line = value;
  for (QChar &c : line)
    if (c.category() == QChar::Other_Control || c.category() == QChar::Separator_Line ||
        c.category() == QChar::Separator_Paragraph)
      c = u' ';
  return line;
}

void TReportText::Heading(const QString &text, int level) { FBlocks.append(TextHeading(OneLine(text), level)); }

void TReportText::Paragraph(const QStringList &lines)
{
  QStringList shown;
  for (const QString &line : lines)
    if (!line.isEmpty()) // an empty list shows its label alone
      shown.append(OneLine(line));
  FBlocks.append(shown.join(u'\n'));
}

void TReportText::HtmlBlock(const QStringList &htmlLines)
{
  const QString text = HtmlToText(htmlLines.join(u'\n'));
  if (!text.isEmpty())
    FBlocks.append(text);
}

void TReportText::Table(const QStringList &headers, const QList<QStringList> &rows)
{
  QStringList lines{headers.join(QStringLiteral(" | "))};
  for (const QStringList &row : rows) {
    QStringList cells;
    for (const QString &cell : row)
      cells.append(OneLine(cell));
    lines.append(cells.join(QStringLiteral(" | ")));
  }
  FBlocks.append(lines.join(u'\n'));
}
