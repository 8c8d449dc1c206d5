#include "MailMessage.h"

#include "MimeLibrary.h"

#include <QTimeZone>
#include <QUuid>
#include "GMime.h"
#include <memory>

namespace {

template <class T> struct TUnref
{
  void operator()(T *object) const { g_object_unref(object); }
};
template <class T> using TOwned = std::unique_ptr<T, TUnref<T>>;

// The part of a mail address after "@", or "localhost" when there is none.
QByteArray DomainOf(const QString &address)
{
  const qsizetype at = address.lastIndexOf(u'@');
  const QString domain = at < 0 ? QString() : address.mid(at + 1).trimmed();
  return domain.isEmpty() ? QByteArrayLiteral("localhost") : domain.toUtf8();
}

void AddMailboxes(GMimeMessage *mail, GMimeAddressType type, const QStringList &addresses)
{
  for (const QString &address : addresses)
    g_mime_message_add_mailbox(mail, type, nullptr, address.toUtf8().constData());
}

// Line breaks as the mail wants them, whatever the text had.
QByteArray CrLf(const QString &text)
{
  QString lines = text;
  lines.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
  return lines.replace(u'\n', QStringLiteral("\r\n")).toUtf8();
}

GMimeObject *TextPart(const char *subtype, const QString &text)
{
  // The bytes stay UTF-8 as they are (GMime's own setter would pick the
  // narrowest character set); quoted-printable keeps every line short.
  GMimeTextPart *part = g_mime_text_part_new_with_subtype(subtype);
  g_mime_text_part_set_charset(part, "utf-8");
  const QByteArray bytes = CrLf(text);
  const TOwned<GMimeStream> stream(g_mime_stream_mem_new_with_buffer(bytes.constData(), static_cast<size_t>(bytes.size())));
  const TOwned<GMimeDataWrapper> content(g_mime_data_wrapper_new_with_stream(stream.get(), GMIME_CONTENT_ENCODING_DEFAULT));
  g_mime_part_set_content(GMIME_PART(part), content.get());
  g_mime_part_set_content_encoding(GMIME_PART(part), GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE);
  return GMIME_OBJECT(part);
}

GMimeObject *AttachmentPart(const TMailAttachment &attachment)
{
  const QList<QByteArray> type = attachment.Type.split('/');
  GMimePart *part = g_mime_part_new_with_type(type.value(0).constData(), type.value(1).constData());
  const TOwned<GMimeStream> stream(
      g_mime_stream_mem_new_with_buffer(attachment.Data.constData(), static_cast<size_t>(attachment.Data.size())));
  const TOwned<GMimeDataWrapper> content(
      g_mime_data_wrapper_new_with_stream(stream.get(), GMIME_CONTENT_ENCODING_DEFAULT));
  g_mime_part_set_content(part, content.get());
  g_mime_part_set_filename(part, attachment.FileName.toUtf8().constData());
  g_mime_part_set_content_encoding(part, GMIME_CONTENT_ENCODING_BASE64);
  return GMIME_OBJECT(part);
}

// Adds `part` to `multipart`, which holds it from then on.
void Add(GMimeMultipart *multipart, GMimeObject *part)
{
  g_mime_multipart_add(multipart, part);
  g_object_unref(part);
}

GMimeObject *Body(const TMailMessage &message)
{
  GMimeObject *body = TextPart("plain", message.Text);
  if (!message.Html.isEmpty()) {
    GMimeMultipart *alternative = g_mime_multipart_new_with_subtype("alternative");
    Add(alternative, body);
    Add(alternative, TextPart("html", message.Html));
    body = GMIME_OBJECT(alternative);
  }
  if (message.Attachments.isEmpty())
    return body;
  GMimeMultipart *mixed = g_mime_multipart_new_with_subtype("mixed");
  Add(mixed, body);
  for (const TMailAttachment &attachment : message.Attachments)
    Add(mixed, AttachmentPart(attachment));
  return GMIME_OBJECT(mixed);
}

} // namespace

QByteArray BuildMail(const TMailMessage &message, const QString &from, const QDateTime &date)
{
  StartMimeLibrary();
  const TOwned<GMimeMessage> mail(g_mime_message_new(TRUE));
  AddMailboxes(mail.get(), GMIME_ADDRESS_TYPE_FROM, {from});
  AddMailboxes(mail.get(), GMIME_ADDRESS_TYPE_TO, message.To);
  AddMailboxes(mail.get(), GMIME_ADDRESS_TYPE_CC, message.Cc);
  g_mime_message_set_subject(mail.get(), message.Subject.toUtf8().constData(), "utf-8");

  const QDateTime local = date.toLocalTime();
  GTimeZone *zone = g_time_zone_new_offset(local.offsetFromUtc());
  GDateTime *when = g_date_time_new(zone, local.date().year(), local.date().month(), local.date().day(),
                                    local.time().hour(), local.time().minute(), local.time().second());
  g_mime_message_set_date(mail.get(), when);
  g_date_time_unref(when);
  g_time_zone_unref(zone);

  const QByteArray id = QUuid::createUuid().toString(QUuid::WithoutBraces).toLatin1() + '@' + DomainOf(from);
  g_mime_message_set_message_id(mail.get(), id.constData());
  GMimeObject *object = GMIME_OBJECT(mail.get());
  g_mime_object_set_header(object, "Auto-Submitted", "auto-generated", nullptr);
  g_mime_object_set_header(object, "X-Auto-Response-Suppress", "All", nullptr);

  GMimeObject *body = Body(message);
  g_mime_message_set_mime_part(mail.get(), body);
  g_object_unref(body);

  GMimeFormatOptions *format = g_mime_format_options_new();
  g_mime_format_options_set_newline_format(format, GMIME_NEWLINE_FORMAT_DOS);
  char *text = g_mime_object_to_string(object, format);
  g_mime_format_options_free(format);
  QByteArray bytes(text);
  g_free(text);
  return bytes;
}
