#pragma once

#include <QString>

// Text from the service goes into the report as HTML, as it comes (<b>, &, <
// pass unchanged), except what could run in a mail reader or reach beyond the
// text's own table cell. Each text is read as a fragment of its own, the way a
// browser reads tags: elements that run code, load a document or change how
// the rest is read (<script>, <iframe>, <style>, <textarea>, table parts...)
// become visible text; on...= event attributes are renamed; javascript:,
// vbscript: and data: addresses are disabled; a tag, attribute, quote or
// comment left open becomes text; elements left open are closed at its end.
QString NeutraliseActiveHtml(const QString &html);
