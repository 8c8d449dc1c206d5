#pragma once

#include <QString>

// Text from the service goes into the report as HTML, as it comes (<b>, &, <
// pass unchanged), except what could run in a mail reader: <script>, <iframe>
// and <object> elements are turned into visible text, on...= event attributes
// are renamed and javascript: addresses are disabled.
QString NeutraliseActiveHtml(const QString &html);
