#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// The plain-text alternative of the report, written part by part beside its HTML.
// Blocks are set apart by an empty line. Values of the service are shown as they
// are, each on one line (line breaks and control characters become spaces), so a
// table row is always one line; the user's text blocks are read as HTML.
class TReportText
{
public:
  void Heading(const QString &text, int level);
  // Lines of literal text, such as a label and its values.
  void Paragraph(const QStringList &lines);
  // One of the user's text blocks, its placeholders already replaced.
  void HtmlBlock(const QStringList &htmlLines);
  // A header line, then one line per row; cells separated by " | ".
  void Table(const QStringList &headers, const QList<QStringList> &rows);

  // The whole text, lines ended by "\n", no line break at the end.
  QString Text() const { return FBlocks.join(QStringLiteral("\n\n")); }

private:
  QStringList FBlocks;
};

// A value shown on one line: line breaks and other control characters become spaces.
QString OneLine(const QString &value);
