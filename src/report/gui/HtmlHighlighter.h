#pragma once

#include <QSyntaxHighlighter>
#include <QTextCharFormat>

// Colours HTML source: tag names, attribute names, quoted values, entities,
// comments (across lines) and the report's %PLACEHOLDERS%.
class THtmlHighlighter : public QSyntaxHighlighter
{
  Q_OBJECT

public:
  explicit THtmlHighlighter(QTextDocument *document);

  QTextCharFormat FTag;
  QTextCharFormat FAttribute;
  QTextCharFormat FValue;
  QTextCharFormat FEntity;
  QTextCharFormat FComment;
  QTextCharFormat FPlaceholder;

protected:
  void highlightBlock(const QString &text) override;

private:
  enum TState { stText = 0, stComment = 1, stTag = 2 };
  // Tags, comments and entities; the block state says what goes on to the next line.
  void HighlightMarkup(const QString &text);
  // Colours from `start` to the end of the tag, or of the line; returns where the
  // tag ended, -1 when it goes on to the next line.
  qsizetype HighlightTag(const QString &text, qsizetype start);
};
