#pragma once

#include <QString>

// The plain-text rendering of an HTML page that goes with it in a mail, for
// readers that do not show HTML. Tags are dropped, blanks collapse as a browser
// collapses them, block elements start new lines (headings, paragraphs and tables
// are set apart by an empty line), list items get "- " or their number, table
// cells are separated by " | ", a link is followed by its address in angle
// brackets, common entities and numeric references are decoded. The head,
// scripts, styles and comments give no text. Lines end with "\n".
QString HtmlToText(const QString &html);
