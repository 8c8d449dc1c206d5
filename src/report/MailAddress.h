#pragma once

#include <QString>
#include <QStringList>
#include <optional>

// Mail addresses as they may reach an SMTP command or a header: parsed by GMime
// into a bare addr-spec ("alice@example.test"), never the text as it came.
//
// An address is refused when its text holds a control character (CR, LF, NUL,
// TAB...), when it is not exactly one mailbox (a second address, a group), when
// it carries a source route, when its addr-spec has no local part or domain,
// holds a blank, "<" or ">", or is longer than 254 octets. The reason says which.
struct TParsedAddress
{
  std::optional<QString> Address; // the addr-spec when accepted
  QString Refusal;                // why not, when refused
};
TParsedAddress ParseMailbox(const QString &text);

// The addresses of a list a person typed in the settings, separated by "," or
// ";" (blanks around them ignored, empty entries dropped), each parsed as
// ParseMailbox does. Every refused entry adds one line to `warnings` that names
// `source` (for instance "[SMTP] DefaultTo"), the entry and the reason.
QStringList ParseAddressList(const QString &text, const QString &source, QStringList &warnings);

// `text` as a log line may show it: control characters spelled out ("\x0d"), cut
// after 80 characters.
QString ShownAddress(const QString &text);
