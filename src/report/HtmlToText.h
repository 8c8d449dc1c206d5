#pragma once

#include <QString>

// The plain text of a piece of HTML the user wrote (a text block), read by a
// browser's HTML parser (gumbo): blanks collapse as a browser collapses them;
// paragraphs, headings, lists and tables are blocks set apart by an empty line;
// <br> ends a line; list items get "- " or their number (nested lists indented);
// table cells are separated by " | "; a link is followed by its address in angle
// brackets unless the address is its text or within the page. Entities are
// decoded; the head, scripts, styles and comments give no text. Lines end with
// "\n", with no line break at the end.
QString HtmlToText(const QString &html);

// A heading as plain text: level 1 underlined with "=", level 2 with "-", others
// as they are.
QString TextHeading(const QString &text, int level);
