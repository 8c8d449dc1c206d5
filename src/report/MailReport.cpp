#include "MailReport.h"

#include "HtmlSafety.h"
#include "core/uTools.h"
#include "tickets/ColourStore.h"
#include "tickets/Selection.h"

#include <QRegularExpression>
#include <cmath>

namespace {

const QString CReportTitle = QStringLiteral("Quorvex ITSM tickets follow-up");
const QString CActive = QStringLiteral("ACTIVE");
const QString CNotChecked = QStringLiteral("    <p><strong>This could not be checked: the retrieval of the tickets "
                                           "was incomplete.</strong></p>");
constexpr qint64 CMillisecondsPerMinute = 60 * 1000;
constexpr qint64 CMillisecondsPerHour = 60 * CMillisecondsPerMinute;
constexpr qint64 CMillisecondsPerDay = 24 * CMillisecondsPerHour;

QString Safe(const QString &serviceText) { return NeutraliseActiveHtml(serviceText); }

// Texts from the service joined by ", ", each neutralised on its own so that
// nothing one leaves open reaches the next.
QString SafeList(const QStringList &serviceTexts)
{
  QStringList safe;
  for (const QString &text : serviceTexts)
    safe.append(Safe(text));
  return safe.join(QStringLiteral(", "));
}

// Whole units from `from` to `to`, truncated toward zero. Service stamps lie
// between the years 0 and 9999, so that even their hours fit a 32-bit number.
std::int32_t WholeUnits(const QDateTime &from, const QDateTime &to, qint64 unit)
{
  return static_cast<std::int32_t>(from.msecsTo(to) / unit);
}

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

TSectionLayout SectionLayout(TReportSection section)
{
  switch (section) {
  case TReportSection::Unassigned: return {false, TAge::Hours, TAge::None};
  case TReportSection::WithoutUpdate: return {true, TAge::None, TAge::Days};
  case TReportSection::Gt10Exchanges: break;
  }
  return {true, TAge::Days, TAge::Days};
}

std::int32_t AgeOf(const QDateTime &moment, const QDateTime &now, TAge unit)
{
  switch (unit) {
  case TAge::None: break;
  case TAge::Hours: return std::abs(WholeUnits(moment, now, CMillisecondsPerHour));
  case TAge::Days: return WholeUnits(moment, now, CMillisecondsPerDay);
  }
  return 0;
}

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

} // namespace

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
  Mail_01_AddHeader();
  Mail_02_AddTitle();
  Mail_03_AddUnassigned();
  Mail_04_AddWithoutUpdate();
  Mail_05_Gt10Exchanges();
  CompleteRecipients();
  Mail_06_AddFooter();
  return FOut;
}

void TMailReport::AddLines(const QStringList &lines, const QString &placeholder, const QString &value)
{
  for (const QString &line : lines)
    FOut.HtmlContent.append(placeholder.isEmpty() ? line
                                                  : QString(line).replace(placeholder, value, Qt::CaseInsensitive));
}

void TMailReport::AddAllClear(const QStringList &lines)
{
  if (FIn.RetrievalWarning.isEmpty())
    AddLines(lines);
  else
    FOut.HtmlContent.append(CNotChecked);
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
  const QString timestamp = NumStr(date.day(), 2) + u'.' + NumStr(date.month(), 2) + u'.' + NumStr(date.year(), 4) +
                            QStringLiteral(" - ") + NumStr(time.hour(), 2) + u':' + NumStr(time.minute(), 2);
  FOut.HtmlContent << QStringLiteral("  <body>") << QStringLiteral("    <h1>Quorvex ITSM tickets follow-up</h1>");
  if (!FIn.RetrievalWarning.isEmpty())
    FOut.HtmlContent << QStringLiteral("    <p><strong>WARNING: %1</strong></p>").arg(FIn.RetrievalWarning.toHtmlEscaped());
  FOut.HtmlContent << QStringLiteral("    <h2>Parameters</h2>") << QStringLiteral("    <p><b>Organization(s)</b><br>")
                   << QStringLiteral("    ") + SafeList(Names(FIn.SelectedOrganizations)) +
                          QStringLiteral("</p>")
                   << QStringLiteral("    <p><b>Team(s)</b><br>")
                   << QStringLiteral("    ") + SafeList(Names(FIn.SelectedTeams)) +
                          QStringLiteral("</p>")
                   << QStringLiteral("    <p><b>Extraction</b><br>")
                   << QStringLiteral("    ") + timestamp + QStringLiteral("&nbsp;") + extraction.timeZoneAbbreviation() +
                          (incomplete ? QStringLiteral(" (incomplete)") : QString()) + QStringLiteral("</p>");
}

QString TMailReport::GetHtmlTicketLink(const tyRestTicket &ticket) const
{
  static const QHash<QString, QString> typeNames{{QStringLiteral("INCIDENT"), QStringLiteral("Incident")},
                                                 {QStringLiteral("REQUEST"), QStringLiteral("Request")},
                                                 {QStringLiteral("CHANGE"), QStringLiteral("Change")},
                                                 {QStringLiteral("PROBLEM"), QStringLiteral("Problem")}};
  const QString id = QString::number(ticket.id);
  return QStringLiteral("<a href=\"") + FIn.ServiceUrl + QStringLiteral("/operators/tickets/all/") + id +
         QStringLiteral("\" target=\"_blank\">") + typeNames.value(ticket._type) + u' ' + id + QStringLiteral("</a>");
}

QString TMailReport::GetHtmlTdPriority(const tyRestTicket &ticket)
{
  const QString text = FColours.GetPriorityText(ticket.priority.reference);
  const TColor background = FColours.GetSavedColor(Setting::PriorityColours, text);
  return QStringLiteral("<td align=\"center\" color=") + ColorToHtml1(GetContrastedColor(background)) +
         QStringLiteral(" bgcolor=") + ColorToHtml1(background) + u'>' + Safe(text) + QStringLiteral("</td>");
}

QString TMailReport::GetHtmlTdStatus(const tyRestTicket &ticket)
{
  const TColor background = FColours.GetSavedColor(Setting::StatusColours, ticket.status._reference);
  return QStringLiteral("<td align=\"center\" nowrap color=") + ColorToHtml1(GetContrastedColor(background)) +
         QStringLiteral(" bgcolor=") + ColorToHtml1(background) + u'>' + Safe(ticket.status._reference) +
         QStringLiteral("</td>");
}

QString TMailReport::DateCell(const QString &timestamp, TAge age) const
{
  const std::optional<QDateTime> moment = RestTimestamp2DateTime(timestamp);
  QString cell = QStringLiteral("          <td align=\"center\">") +
                 Str2Html(moment ? DateTimeToStr(*moment) : QStringLiteral("unknown"));
  if (age != TAge::None && moment)
    cell += QStringLiteral("<br><strong>(%1&nbsp;%2)</strong>")
                .arg(AgeOf(*moment, FCurrentTime, age))
                .arg(age == TAge::Hours ? QStringLiteral("hours") : QStringLiteral("days"));
  return cell + QStringLiteral("</td>");
}

const TReportRows &TMailReport::SectionRows(TReportSection section,
                                           const std::function<bool(const tyRestTicket &)> &rule)
{
  TReportRows &rows = FOut.Rows.at(static_cast<std::size_t>(section));
  rows = TReportRows(FIn.Tickets);
  for (qsizetype i = 0; i < FIn.Tickets.size(); ++i) {
    const tyRestTicket &ticket = FIn.Tickets.at(i);
    if (rule(ticket) && (!FIn.KeepsRow || FIn.KeepsRow(section, ticket)))
      rows.Append(i);
  }
  return rows;
}

void TMailReport::AddTable(TReportSection section)
{
  const TReportRows &rows = FOut.Rows.at(static_cast<std::size_t>(section));
  const auto [withAssignedUser, creationAge, updateAge] = SectionLayout(section);
  QStringList headers{QStringLiteral("Organization"), QStringLiteral("Ticket"), QStringLiteral("Title"),
                      QStringLiteral("Assigned&nbsp;Team")};
  if (withAssignedUser)
    headers << QStringLiteral("Assigned&nbsp;User");
  headers << QStringLiteral("Creation&nbsp;Date") << QStringLiteral("Last&nbsp;Update") << QStringLiteral("Priority")
          << QStringLiteral("Status");

  QStringList &html = FOut.HtmlContent;
  html << QStringLiteral("    <table style=\"width: 100%\" border=\"1\">") << QStringLiteral("      <thead>")
       << QStringLiteral("        <tr>");
  for (const QString &header : headers)
    html << QStringLiteral("          <td align=\"center\">") + header + QStringLiteral("</td>");
  html << QStringLiteral("        </tr>") << QStringLiteral("      </thead>") << QStringLiteral("      <tbody>");
  for (const tyRestTicket &ticket : rows) {
    html << QStringLiteral("        <tr>")
         << QStringLiteral("          <td nowrap>") + Safe(ticket.organization.name) + QStringLiteral("</td>")
         << QStringLiteral("          <td nowrap>") + GetHtmlTicketLink(ticket) + QStringLiteral("</td>")
         << QStringLiteral("          <td>") + Safe(ticket.title) + QStringLiteral("</td>")
         << QStringLiteral("          <td nowrap>") + Safe(ticket.assignedTeam.name) + QStringLiteral("</td>");
    if (withAssignedUser)
      html << QStringLiteral("          <td nowrap>") + Str2Html(Safe(ticket.assignedUser.name)) +
                  QStringLiteral("</td>");
    html << DateCell(ticket.creationDate, creationAge) << DateCell(ticket.lastUpdate, updateAge)
         << QStringLiteral("          ") + GetHtmlTdPriority(ticket)
         << QStringLiteral("          ") + GetHtmlTdStatus(ticket) << QStringLiteral("        </tr>");
  }
  html << QStringLiteral("      </tbody>") << QStringLiteral("    </table>");
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
  const TReportRows &rows =
      SectionRows(TReportSection::Unassigned, [this](const tyRestTicket &ticket) { return IsUnassignedLate(ticket); });
  FOut.NbUnassigned = static_cast<std::int32_t>(rows.size());
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
  const TReportRows &rows =
      SectionRows(TReportSection::WithoutUpdate, [this](const tyRestTicket &ticket) { return IsWithoutUpdate(ticket); });
  FOut.NbWithoutUpdate = static_cast<std::int32_t>(rows.size());
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
  const TReportRows &rows =
      SectionRows(TReportSection::Gt10Exchanges, [](const tyRestTicket &ticket) { return ticket.tenExchangesAdded; });
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
  AddLines(FIn.HtmlTexts.Why, QStringLiteral("%QUORVEX_ITSM%"), FIn.ServiceUrl);
  if (FIn.ListRecipients)
    FOut.HtmlContent
        << QStringLiteral("    <h2>DEBUG</h2>")
        << QStringLiteral("    <p>Here is the list of email recipients if the program was not running in debug mode.</p>")
        << QStringLiteral("    <p><b>SendTo:</b><br>")
        << QStringLiteral("    ") + SafeList(FOut.SlRecipientTo) + QStringLiteral("</p>")
        << QStringLiteral("    <p><b>CC:</b><br>")
        << QStringLiteral("    ") + SafeList(FOut.SlRecipientCc) + QStringLiteral("</p>");
  FOut.HtmlContent
      << QStringLiteral("    <p>&nbsp;</p>") << QStringLiteral("    <p>&nbsp;</p>")
      << QStringLiteral("    <p align=\"center\">This email was generated by <a href=\"%1\" target=\"_blank\">%2</a>.</p>")
             .arg(QStringLiteral(QUORVEX_DOC_URL), CReportTitle)
      << QStringLiteral("  </body>") << QStringLiteral("</html>");
}
