#include "MailReport.h"

#include "core/uTools.h"
#include "tickets/ColourStore.h"
#include "tickets/Selection.h"

#include <cmath>
#include <optional>

namespace {

const QString CActive = QStringLiteral("ACTIVE");
const QString CNotChecked =
    QStringLiteral("This could not be checked: the retrieval of the tickets was incomplete.");
constexpr qint64 CMillisecondsPerMinute = 60 * 1000;
constexpr qint64 CMillisecondsPerDay = 24 * 60 * CMillisecondsPerMinute;

// Values of the service joined by ", ", as HTML that shows them as text.
QString EscapedList(const QStringList &serviceTexts) { return serviceTexts.join(QStringLiteral(", ")).toHtmlEscaped(); }

// ASCII letters in lower case, as addresses are listed.
QString AsciiLower(const QString &text)
{
  QString result = text;
  for (QChar &c : result)
    if (c >= u'A' && c <= u'Z')
      c = QChar(c.unicode() + (u'a' - u'A'));
  return result;
}

} // namespace

namespace {

QStringList Addresses(const tyRestOperators &operators)
{
  QStringList addresses;
  for (const tyRestOperator &op : operators)
    if (op.status == CActive && !op.notificationEmail.isEmpty())
      addresses.append(AsciiLower(op.notificationEmail));
  addresses.sort();
  return addresses;
}

QStringList Names(const auto &records)
{
  QStringList names;
  for (const auto &record : records)
    names.append(record.name);
  return names;
}

// A cell of a section's table in the mail: its text, the address it links to,
// and the note its column's next columns add in brackets (an age, "escalated").
struct TMailCell
{
  const TTicketColumn *Column;
  QString Text;
  QString Address;
  QString Note = {};
};

QList<TMailCell> MailCells(const TTicketTable &table, qsizetype row)
{
  QList<TMailCell> cells;
  for (qsizetype c = 0; c < table.Columns.size(); ++c) {
    const TTicketColumn *column = table.Columns[c];
    const TCellValue &value = table.Rows[row][c];
    if (!column->Note) {
      cells.append({column, CellText(column->Type, value.Value, QStringLiteral("unknown")), value.Address});
      continue;
    }
    const bool flag = column->Type == TCellType::Flag;
    if (cells.isEmpty() || value.Value.isNull() || (flag && !value.Value.toBool()))
      continue; // nothing to note
    const QString note = QString::fromLatin1(column->Note);
    cells.last().Note = flag ? note : note.arg(value.Value.toString());
  }
  return cells;
}

QString HtmlCell(const TMailCell &cell, TColourStore &colours)
{
  const TTicketColumn &column = *cell.Column;
  QString content = cell.Text.toHtmlEscaped();
  if (column.KeepTogether)
    content = Str2Html(content);
  if (!cell.Address.isEmpty())
    content = QStringLiteral("<a href=\"") + cell.Address.toHtmlEscaped() + QStringLiteral("\" target=\"_blank\">") +
              content + QStringLiteral("</a>");
  if (!cell.Note.isEmpty())
    content += QStringLiteral("<br><strong>(") + Str2Html(cell.Note) + QStringLiteral(")</strong>");
  QString open = QStringLiteral("          <td");
  if (column.Centred)
    open += QStringLiteral(" align=\"center\"");
  if (column.NoWrap)
    open += QStringLiteral(" nowrap");
  if (column.Colours) {
    const TColor background = colours.GetSavedColor(*column.Colours, cell.Text);
    open += QStringLiteral(" color=") + ColorToHtml1(GetContrastedColor(background)) + QStringLiteral(" bgcolor=") +
            ColorToHtml1(background);
  }
  return open + u'>' + content + QStringLiteral("</td>");
}

QString TextCell(const TMailCell &cell)
{
  QString text = cell.Text;
  if (!cell.Address.isEmpty())
    text += QStringLiteral(" <") + cell.Address + u'>';
  if (!cell.Note.isEmpty())
    text += QStringLiteral(" (") + cell.Note + u')';
  return text;
}

} // namespace

QString SectionName(TReportSection section)
{
  switch (section) {
  case TReportSection::Unassigned: return QStringLiteral("Unassigned");
  case TReportSection::WithoutUpdate: return QStringLiteral("Without update");
  case TReportSection::Gt10Exchanges: break;
  }
  return QStringLiteral("More than 10 exchanges");
}

TMailReport::TMailReport(const TReportInput &input, TColourStore &colours, TClock now)
    : FIn(input), FColours(colours), FNow(std::move(now))
{
}

TReportOutput TMailReport::Generate()
{
  const TColourStore::THold hold(FColours);
  // One reading of the clock for the whole report: every age and the
  // without-update rule count from the same moment, and reading the local time
  // costs a look at the time-zone file each time.
  FCurrentTime = FNow();
  FOut = TReportOutput();
  FOut.CurrentTime = FCurrentTime;
  FOut.ServiceUrl = FIn.ServiceUrl;
  FText = TReportText();
  FSnoozedRows.clear();
  FSelected = {};
  SelectRows();
  Mail_01_AddHeader();
  Mail_02_AddTitle();
  AddSummary();
  Mail_03_AddUnassigned();
  Mail_04_AddWithoutUpdate();
  Mail_05_Gt10Exchanges();
  AddLeft();
  CompleteRecipients();
  Mail_06_AddFooter();
  FOut.Text = FText.Text();
  FOut.Subject = CReportTitle;
  if (FIn.FollowUp) {
    const bool incomplete = !FIn.RetrievalWarning.isEmpty();
    const QDateTime extraction = incomplete ? FCurrentTime : FIn.ExtractionTickets;
    FOut.Subject += QStringLiteral(" - %1: %2 unassigned, %3 without update, %4 with ten exchanges")
                        .arg(ReportDate(extraction.date()))
                        .arg(FOut.NbUnassigned)
                        .arg(FOut.NbWithoutUpdate)
                        .arg(FOut.NbGt10Exch) +
                    (incomplete ? QStringLiteral(" (incomplete)") : QString());
  }
  return FOut;
}

void TMailReport::AddLines(const QStringList &lines, const QString &placeholder, const QString &value)
{
  QStringList filled;
  for (const QString &line : lines)
    filled.append(placeholder.isEmpty() ? line : QString(line).replace(placeholder, value, Qt::CaseInsensitive));
  FOut.HtmlContent.append(filled);
  FText.HtmlBlock(filled);
}

bool TMailReport::SaysNothingOfEmptySections() const
{
  // A digest's empty section would read as if the whole desk were clear; one
  // that could not be checked still says so.
  return FIn.KeepsRow && FIn.RetrievalWarning.isEmpty();
}

void TMailReport::AddAllClear(const QStringList &lines)
{
  if (FIn.RetrievalWarning.isEmpty())
    AddLines(lines);
  else {
    FOut.HtmlContent.append(QStringLiteral("    <p><strong>") + CNotChecked + QStringLiteral("</strong></p>"));
    FText.Paragraph({CNotChecked});
  }
}

void TMailReport::Mail_01_AddHeader()
{
  FOut.HtmlContent = QStringList{
      QStringLiteral("<!DOCTYPE html>"),
      QStringLiteral("<html>"),
      QStringLiteral("  <head>"),
      QStringLiteral("    <meta http-equiv=\"content-type\" content=\"text/html; charset=UTF-8\">"),
      QStringLiteral("    <title>Quorvex ITSM tickets follow-up</title>"),
      QStringLiteral("    <style>"),
      QStringLiteral("      body {font-family: Arial, Helvetica, sans-serif; font-size: 12px;}"),
      QStringLiteral("      h1 {background: #0097dd; background-color: #0097dd; color: white; border: thin solid "
                     "#0097dd; padding: 5px 5px 5px 5px; font-size: 18px; font: normal small-caps bolder "
                     "18px/normal;}"),
      QStringLiteral("      h2 {color: #0097dd; border-bottom: medium solid #0097dd 100%; padding: 5px 5px 5px 5px; "
                     "font-size: 16px; font: normal small-caps bold 16px/normal;}"),
      QStringLiteral("      h3 {color: #2F5496; padding: 5px 5px 5px 5px; font-size: 14px; font: normal normal "
                     "normal 14px/normal;}"),
      QStringLiteral("      p {color: black; font-size: 12px; font: normal normal normal 12px/normal;}"),
      QStringLiteral("      thead {font-weight: bolder; color: White; background-color: Black;}"),
      QStringLiteral("      table, th, td {border: 1px solid black; border-collapse: collapse; padding: 5px; "
                     "vertical-align: top;}"),
      QStringLiteral("      table {width: 100%;}"),
      QStringLiteral("      strong {color: red;}"),
      QStringLiteral("    </style>"),
      QStringLiteral("  </head>"),
  };
}

void TMailReport::Mail_02_AddTitle()
{
  // An incomplete retrieval shows when it was attempted (the report's own time
  // when none was), never a day-zero date.
  const bool incomplete = !FIn.RetrievalWarning.isEmpty();
  const QDateTime extraction = !incomplete                     ? FIn.ExtractionTickets
                               : FIn.RetrievalAttempt.isValid() ? FIn.RetrievalAttempt
                                                                : FNow();
  const QDate date = extraction.date();
  const QTime time = extraction.time();
  const QString zone = extraction.timeZoneAbbreviation();
  const QString timestamp = NumStr(date.day(), 2) + u'.' + NumStr(date.month(), 2) + u'.' + NumStr(date.year(), 4) +
                            QStringLiteral(" - ") + NumStr(time.hour(), 2) + u':' + NumStr(time.minute(), 2);
  const QString incompleteMark = incomplete ? QStringLiteral(" (incomplete)") : QString();
  const QStringList organizations = Names(FIn.SelectedOrganizations);
  const QStringList teams = Names(FIn.SelectedTeams);
  FOut.HtmlContent << QStringLiteral("  <body>") << QStringLiteral("    <h1>Quorvex ITSM tickets follow-up</h1>");
  FText.Heading(CReportTitle, 1);
  if (FIn.KeepsRow) {
    // A person's digest says first that it holds their tickets only.
    const QString yours = QStringLiteral("Your tickets in the Quorvex ITSM follow-up of %1: %2 unassigned, %3 without "
                                         "update, %4 with ten exchanges.")
                              .arg(ReportDate(extraction.date()))
                              .arg(SectionRows(TReportSection::Unassigned).size())
                              .arg(SectionRows(TReportSection::WithoutUpdate).size())
                              .arg(SectionRows(TReportSection::Gt10Exchanges).size());
    FOut.HtmlContent << QStringLiteral("    <p><b>") + yours.toHtmlEscaped() + QStringLiteral("</b></p>");
    FText.Paragraph({yours});
  }
  if (incomplete) {
    const QString warning = QStringLiteral("WARNING: ") + FIn.RetrievalWarning;
    FOut.HtmlContent << QStringLiteral("    <p><strong>") + warning.toHtmlEscaped() + QStringLiteral("</strong></p>");
    FText.Paragraph({warning});
  }
  if (!FIn.RecipientsWarning.isEmpty()) {
    const QString warning = QStringLiteral("WARNING: ") + FIn.RecipientsWarning;
    FOut.HtmlContent << QStringLiteral("    <p><strong>") + warning.toHtmlEscaped() + QStringLiteral("</strong></p>");
    FText.Paragraph({warning});
  }
  FOut.HtmlContent << QStringLiteral("    <h2>Parameters</h2>") << QStringLiteral("    <p><b>Organization(s)</b><br>")
                   << QStringLiteral("    ") + EscapedList(organizations) + QStringLiteral("</p>")
                   << QStringLiteral("    <p><b>Team(s)</b><br>")
                   << QStringLiteral("    ") + EscapedList(teams) + QStringLiteral("</p>")
                   << QStringLiteral("    <p><b>Extraction</b><br>")
                   << QStringLiteral("    ") + timestamp + QStringLiteral("&nbsp;") + zone + incompleteMark +
                          QStringLiteral("</p>");
  FText.Heading(QStringLiteral("Parameters"), 2);
  FText.Paragraph({QStringLiteral("Organization(s)"), organizations.join(QStringLiteral(", "))});
  FText.Paragraph({QStringLiteral("Team(s)"), teams.join(QStringLiteral(", "))});
  FText.Paragraph({QStringLiteral("Extraction"), timestamp + QStringLiteral(" ") + zone + incompleteMark});
}

bool TMailReport::Meets(TReportSection section, const tyRestTicket &ticket) const
{
  switch (section) {
  case TReportSection::Unassigned: return IsUnassignedLate(ticket);
  case TReportSection::WithoutUpdate: return IsWithoutUpdate(ticket);
  case TReportSection::Gt10Exchanges: break;
  }
  return ticket.tenExchangesAdded;
}

const TReportRows &TMailReport::SectionRows(TReportSection section)
{
  const auto index = static_cast<std::size_t>(section);
  TReportRows &rows = FOut.Rows.at(index);
  if (FSelected.at(index))
    return rows;
  FSelected.at(index) = true;
  rows = TReportRows(FIn.Tickets);
  const TFollowUpMemory *memory = FIn.FollowUp.get();
  const QDate today = FCurrentTime.date();
  for (qsizetype i = 0; i < FIn.Tickets.size(); ++i) {
    const tyRestTicket &ticket = FIn.Tickets.at(i);
    if (!Meets(section, ticket) || (FIn.KeepsRow && !FIn.KeepsRow(section, ticket)))
      continue;
    if (memory) {
      if (const TSnooze *snooze = memory->SnoozeOf(ticket.id); snooze && snooze->Holds(ticket, today)) {
        FSnoozedRows.insert(ticket.id);
        continue;
      }
      const TListing listing = ListingOf(*memory, section, ticket, FCurrentTime);
      FOut.Listings.at(index).append(listing);
      FOut.NbNew.at(index) += listing.New ? 1 : 0;
    }
    rows.Append(i);
  }
  return rows;
}

void TMailReport::AddTable(TReportSection section)
{
  const TCellContext context{FCurrentTime, FIn.ServiceUrl, &FColours};
  const TTicketTable table = SectionTable(FOut, section, InMail, context);
  QStringList headers;
  QStringList &html = FOut.HtmlContent;
  html << QStringLiteral("    <table style=\"width: 100%\" border=\"1\">") << QStringLiteral("      <thead>")
       << QStringLiteral("        <tr>");
  for (const TTicketColumn *column : table.Columns)
    if (!column->Note) {
      headers << column->Caption;
      html << QStringLiteral("          <td align=\"center\">") + Str2Html(column->Caption) + QStringLiteral("</td>");
    }
  html << QStringLiteral("        </tr>") << QStringLiteral("      </thead>") << QStringLiteral("      <tbody>");
  QList<QStringList> textRows;
  for (qsizetype row = 0; row < table.Rows.size(); ++row) {
    html << QStringLiteral("        <tr>");
    QStringList &textRow = textRows.emplaceBack();
    for (const TMailCell &cell : MailCells(table, row)) {
      html << HtmlCell(cell, FColours);
      textRow << TextCell(cell);
    }
    html << QStringLiteral("        </tr>");
  }
  html << QStringLiteral("      </tbody>") << QStringLiteral("    </table>");
  FText.Table(headers, textRows);
}

bool TMailReport::IsUnassignedLate(const tyRestTicket &ticket) const
{
  if (!TrimBlanks(ticket.assignedUser.name).isEmpty())
    return false;
  // A ticket whose creation is unknown is put in no section by that date.
  const std::optional<QDateTime> creation = RestTimestamp2DateTime(ticket.creationDate);
  return creation && std::abs(creation->msecsTo(FIn.ExtractionTickets)) / CMillisecondsPerMinute > FIn.NbMinutes;
}

bool TMailReport::IsWithoutUpdate(const tyRestTicket &ticket) const
{
  const std::optional<QDateTime> update = RestTimestamp2DateTime(ticket.lastUpdate);
  return update && update->msecsTo(FCurrentTime) > FIn.NbDays * CMillisecondsPerDay &&
         !FIn.StatusToIgnore.contains(ticket.status._reference, Qt::CaseInsensitive) &&
         TeamInSelectedTeams(FIn.SelectedTeams, ticket.assignedTeam.id);
}

void TMailReport::TakeTeam(TRestId teamId)
{
  const QString teamKey = QStringLiteral("TEAM-%1").arg(teamId);
  if (FOut.SlRecipientTo.contains(teamKey))
    return;
  FOut.SlRecipientTo.append(teamKey);
  for (const tyRestTeamOperator &link : FIn.TeamsOperators)
    if (link.IdTeam == teamId)
      TakeUser(link.IdOperator);
}

void TMailReport::TakeUser(TRestId userId)
{
  const QString userKey = QStringLiteral("USR-%1").arg(userId);
  if (FOut.SlRecipientTo.contains(userKey))
    return;
  FOut.SlRecipientTo.append(userKey);
  tyRestOperator recipient;
  recipient.id = userId;
  FOut.RecipientTo.append(recipient);
}

void TMailReport::Mail_03_AddUnassigned()
{
  const TReportRows &rows = SectionRows(TReportSection::Unassigned);
  FOut.NbUnassigned = static_cast<std::int32_t>(rows.size());
  if (rows.isEmpty() && SaysNothingOfEmptySections())
    return;
  AddLines(FIn.HtmlTexts.Unassigned_Title, QStringLiteral("%NBMINUTES%"), QString::number(FIn.NbMinutes));
  if (rows.isEmpty()) {
    AddAllClear(FIn.HtmlTexts.Unassigned_Without);
    return;
  }
  AddLines(FIn.HtmlTexts.Unassigned_With);
  AddTable(TReportSection::Unassigned);
  for (const tyRestTicket &ticket : rows)
    TakeTeam(ticket.assignedTeam.id);
}

void TMailReport::Mail_04_AddWithoutUpdate()
{
  const TReportRows &rows = SectionRows(TReportSection::WithoutUpdate);
  FOut.NbWithoutUpdate = static_cast<std::int32_t>(rows.size());
  if (rows.isEmpty() && SaysNothingOfEmptySections())
    return;
  AddLines(FIn.HtmlTexts.WithoutUpdate_Title);
  if (rows.isEmpty()) {
    AddAllClear(FIn.HtmlTexts.WithoutUpdate_Without);
    return;
  }
  AddLines(FIn.HtmlTexts.WithoutUpdate_With, QStringLiteral("%NBDAYS%"), QString::number(FIn.NbDays));
  AddTable(TReportSection::WithoutUpdate);
  for (const tyRestTicket &ticket : rows)
    TakeUser(ticket.assignedUser.id);
}

void TMailReport::Mail_05_Gt10Exchanges()
{
  const TReportRows &rows = SectionRows(TReportSection::Gt10Exchanges);
  FOut.NbGt10Exch = static_cast<std::int32_t>(rows.size());
  if (rows.isEmpty())
    return;
  AddLines(FIn.HtmlTexts.More10);
  AddTable(TReportSection::Gt10Exchanges);
  for (const tyRestTicket &ticket : rows)
    TakeUser(ticket.assignedUser.id);
}

void TMailReport::CompleteRecipients()
{
  // Whole operator records for the primary recipients (the last match wins).
  QHash<TRestId, const tyRestOperator *> byId;
  for (const tyRestOperator &op : FIn.Operators)
    byId.insert(op.id, &op);
  for (tyRestOperator &recipient : FOut.RecipientTo)
    if (const tyRestOperator *known = byId.value(recipient.id))
      recipient = *known;

  // Members of the selected teams in copy, unless already primary recipients.
  for (const tyRestTeam &team : FIn.SelectedTeams)
    for (const tyRestTeamOperator &link : FIn.TeamsOperators) {
      if (link.IdTeam != team.id)
        continue;
      const QString key = QStringLiteral("USR-%1").arg(link.IdOperator);
      if (FOut.SlRecipientTo.contains(key) || FOut.SlRecipientCc.contains(key))
        continue;
      FOut.SlRecipientCc.append(key);
      for (const tyRestOperator &op : FIn.Operators)
        if (op.id == link.IdOperator)
          FOut.RecipientCC.append(op);
    }

  FOut.SlRecipientTo = Addresses(FOut.RecipientTo);
  FOut.SlRecipientCc = Addresses(FOut.RecipientCC);
}

void TMailReport::Mail_06_AddFooter()
{
  // The service's address is the user's setting, written into the block's HTML escaped.
  AddLines(FIn.HtmlTexts.Why, QStringLiteral("%QUORVEX_ITSM%"), FIn.ServiceUrl.toHtmlEscaped());
  if (FIn.ListRecipients) {
    const QString intro =
        QStringLiteral("Here is the list of email recipients if the program was not running in debug mode.");
    FOut.HtmlContent << QStringLiteral("    <h2>DEBUG</h2>") << QStringLiteral("    <p>") + intro + QStringLiteral("</p>")
                     << QStringLiteral("    <p><b>SendTo:</b><br>")
                     << QStringLiteral("    ") + EscapedList(FOut.SlRecipientTo) + QStringLiteral("</p>")
                     << QStringLiteral("    <p><b>CC:</b><br>")
                     << QStringLiteral("    ") + EscapedList(FOut.SlRecipientCc) + QStringLiteral("</p>");
    FText.Heading(QStringLiteral("DEBUG"), 2);
    FText.Paragraph({intro});
    FText.Paragraph({QStringLiteral("SendTo:"), FOut.SlRecipientTo.join(QStringLiteral(", "))});
    FText.Paragraph({QStringLiteral("CC:"), FOut.SlRecipientCc.join(QStringLiteral(", "))});
  }
  const QString documentation = QStringLiteral(QUORVEX_DOC_URL);
  FOut.HtmlContent
      << QStringLiteral("    <p>&nbsp;</p>") << QStringLiteral("    <p>&nbsp;</p>")
      << QStringLiteral("    <p align=\"center\">This email was generated by <a href=\"%1\" target=\"_blank\">%2</a>.</p>")
             .arg(documentation.toHtmlEscaped(), CReportTitle)
      << QStringLiteral("  </body>") << QStringLiteral("</html>");
  FText.Paragraph({QStringLiteral("This email was generated by %1 <%2>.").arg(CReportTitle, documentation)});
}
