#include "MailAddress.h"

#include "MimeLibrary.h"

#include <QRegularExpression>
#include "GMime.h"
#include <memory>

namespace {

constexpr qsizetype CMaxAddressOctets = 254; // RFC 5321: a forward path of 256 with its brackets

struct TUnref
{
  void operator()(gpointer object) const { g_object_unref(object); }
};

bool HasControlCharacter(const QString &text)
{
  for (const QChar c : text)
    if (c.unicode() < 0x20 || c.unicode() == 0x7F)
      return true;
  return false;
}

// A source route ("<@relay.example:alice@example.test>"), which GMime drops
// silently; the address it routes is not the one that was typed.
bool HasSourceRoute(const QString &text)
{
  static const QRegularExpression route(QStringLiteral("<\\s*@"));
  return route.match(text).hasMatch();
}

QString AddrSpecRefusal(const QString &address)
{
  const qsizetype at = address.lastIndexOf(u'@');
  if (at <= 0 || at == address.size() - 1)
    return QStringLiteral("it has no local part or no domain");
  for (const QChar c : address)
    if (c.isSpace() || c == u'<' || c == u'>')
      return QStringLiteral("its address holds a blank or an angle bracket");
  if (address.toUtf8().size() > CMaxAddressOctets)
    return QStringLiteral("it is longer than %1 octets").arg(CMaxAddressOctets);
  return {};
}

TParsedAddress Refused(const QString &why) { return {std::nullopt, why}; }

} // namespace

TParsedAddress ParseMailbox(const QString &text)
{
  if (HasControlCharacter(text))
    return Refused(QStringLiteral("it holds a control character (a line break, NUL or the like)"));
  if (HasSourceRoute(text))
    return Refused(QStringLiteral("it carries a source route"));
  StartMimeLibrary();
  const QByteArray bytes = text.trimmed().toUtf8();
  const std::unique_ptr<InternetAddressList, TUnref> list(internet_address_list_parse(nullptr, bytes.constData()));
  if (!list || internet_address_list_length(list.get()) == 0)
    return Refused(QStringLiteral("it is not a mail address"));
  if (internet_address_list_length(list.get()) > 1)
    return Refused(QStringLiteral("it holds more than one address"));
  InternetAddress *address = internet_address_list_get_address(list.get(), 0);
  if (!INTERNET_ADDRESS_IS_MAILBOX(address))
    return Refused(QStringLiteral("it is a group of addresses, not one address"));
  const QString spec =
      QString::fromUtf8(internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(address)));
  if (const QString why = AddrSpecRefusal(spec); !why.isEmpty())
    return Refused(why);
  return {spec, {}};
}

QStringList ParseAddressList(const QString &text, const QString &source, QStringList &warnings)
{
  static const QRegularExpression separators(QStringLiteral("[,;]"));
  QStringList addresses;
  for (const QString &entry : text.split(separators)) {
    if (entry.trimmed().isEmpty())
      continue;
    const TParsedAddress parsed = ParseMailbox(entry);
    if (parsed.Address)
      addresses.append(*parsed.Address);
    else
      warnings.append(QStringLiteral("%1: the address \"%2\" is not used: %3").arg(source, ShownAddress(entry.trimmed()), parsed.Refusal));
  }
  return addresses;
}

QString ShownAddress(const QString &text)
{
  constexpr qsizetype CShownLength = 80;
  QString shown;
  for (const QChar c : text.left(CShownLength))
    shown += c.unicode() < 0x20 || c.unicode() == 0x7F ? QStringLiteral("\\x%1").arg(uint(c.unicode()), 2, 16, QChar(u'0')) : QString(c);
  return text.size() > CShownLength ? shown + QStringLiteral("…") : shown;
}
