// The parts of the report that compare it with the last sent one: the summary,
// the escalated rows and the tickets that left.

#include "MailReport.h"

#include "core/uTools.h"
#include "tickets/Selection.h"

namespace {

const QString CFirstReport = QStringLiteral("First report: nothing to compare with");
const QString CLeftTitle = QStringLiteral("Left the report since the last one");

// A small table of plain values, in the HTML and in the text.
void AddPlainTable(QStringList &html, TReportText &text, const QStringList &headers, const QList<QStringList> &rows)
{
  html << QStringLiteral("    <table style=\"width: 100%\" border=\"1\">") << QStringLiteral("      <thead>")
       << QStringLiteral("        <tr>");
  for (const QString &header : headers)
    html << QStringLiteral("          <td align=\"center\">") + Str2Html(header) + QStringLiteral("</td>");
  html << QStringLiteral("        </tr>") << QStringLiteral("      </thead>") << QStringLiteral("      <tbody>");
  for (const QStringList &row : rows) {
    html << QStringLiteral("        <tr>");
    for (const QString &cell : row)
      html << QStringLiteral("          <td>") + cell.toHtmlEscaped() + QStringLiteral("</td>");
    html << QStringLiteral("        </tr>");
  }
  html << QStringLiteral("      </tbody>") << QStringLiteral("    </table>");
  text.Table(headers, rows);
}

void AddParagraph(QStringList &html, TReportText &text, const QStringList &lines)
{
  QStringList escaped;
  for (const QString &line : lines)
    escaped.append(line.toHtmlEscaped());
  html << QStringLiteral("    <p>") + escaped.join(QStringLiteral("<br>")) + QStringLiteral("</p>");
  text.Paragraph(lines);
}

// The first headers of the summary's tables, those of the sections.
QStringList TicketHeaders()
{
  return {Column(TColumnId::Organization).Caption, Column(TColumnId::Ticket).Caption, Column(TColumnId::Title).Caption};
}

// "Incident 24012", as the sections name a ticket.
QString TicketName(const QString &type, TRestId id)
{
  const QString name = type.left(1).toUpper() + type.mid(1).toLower();
  return (name.isEmpty() ? QString() : name + u' ') + QString::number(id);
}

} // namespace

void TMailReport::SelectRows()
{
  FOut.Remembers = FIn.FollowUp != nullptr;
  for (const TReportSection section : CReportSections)
    SectionRows(section);
  if (!FIn.FollowUp)
    return;
  const TFollowUpMemory &memory = *FIn.FollowUp;
  FOut.NbSnoozed = static_cast<std::int32_t>(FSnoozedRows.size());
  QSet<TRestId> escalated;
  QSet<QPair<int, TRestId>> listed;
  for (const TReportSection section : CReportSections) {
    const auto index = static_cast<std::size_t>(section);
    const TReportRows &rows = FOut.Rows.at(index);
    for (qsizetype row = 0; row < rows.size(); ++row) {
      listed.insert({static_cast<int>(section), rows[row].id});
      if (FOut.Listings.at(index).at(row).Escalated)
        escalated.insert(rows[row].id);
    }
  }
  FOut.NbEscalated = static_cast<std::int32_t>(escalated.size());
  for (const TListedEntry &was : memory.Previous) {
    if (listed.contains({was.Section, was.Ticket}) || memory.UncomparedOrganizations.contains(was.Organization))
      continue;
    if (FIn.KeepsRow) { // a digest tells only of the person's own tickets
      tyRestTicket then;
      then.id = was.Ticket;
      then.assignedTeam.id = was.Team;
      then.assignedUser.id = was.Assignee;
      if (!FIn.KeepsRow(static_cast<TReportSection>(was.Section), then))
        continue;
    }
    FOut.Left.append({was, WhyLeft(was)});
  }
}

QString TMailReport::WhyLeft(const TListedEntry &was) const
{
  const tyRestTicket *now = nullptr;
  for (const tyRestTicket &ticket : FIn.Tickets)
    if (ticket.id == was.Ticket) {
      now = &ticket;
      break;
    }
  if (!now) {
    const bool selected = std::any_of(FIn.SelectedOrganizations.cbegin(), FIn.SelectedOrganizations.cend(),
                                      [&was](const tyRestOrganization &o) { return o.id == was.Organization; });
    return selected ? QStringLiteral("no longer open") : QStringLiteral("organization no longer selected");
  }
  if (const TSnooze *snooze = FIn.FollowUp->SnoozeOf(was.Ticket); snooze && snooze->Holds(*now, FCurrentTime.date()))
    return QStringLiteral("snoozed ") + snooze->UntilText();
  const auto section = static_cast<TReportSection>(was.Section);
  if (Meets(section, *now))
    return QStringLiteral("now with someone else"); // only a digest leaves it out
  if (section == TReportSection::Unassigned && !TrimBlanks(now->assignedUser.name).isEmpty())
    return QStringLiteral("assigned");
  if (section == TReportSection::WithoutUpdate) {
    if (FIn.StatusToIgnore.contains(now->status._reference, Qt::CaseInsensitive))
      return QStringLiteral("status now exempt");
    if (!TeamInSelectedTeams(FIn.SelectedTeams, now->assignedTeam.id))
      return QStringLiteral("team no longer selected");
  }
  if (now->lastUpdate != was.LastUpdate)
    return QStringLiteral("updated");
  if (section == TReportSection::Gt10Exchanges)
    return QStringLiteral("no longer carries the ten-exchanges notice");
  return QStringLiteral("no longer meets the section's rule");
}

void TMailReport::AddSummary()
{
  if (!FIn.FollowUp)
    return;
  const TFollowUpMemory &memory = *FIn.FollowUp;
  const bool first = memory.FirstReport();
  const auto count = [this, first](TReportSection section, std::int32_t rows, const QString &what) {
    QString line = QStringLiteral("%1 %2").arg(rows).arg(what);
    if (!first)
      line += QStringLiteral(" (%1 new)").arg(FOut.NbNew.at(static_cast<std::size_t>(section)));
    return line;
  };
  QStringList lines{
      count(TReportSection::Unassigned, static_cast<std::int32_t>(FOut.Rows[0].size()), QStringLiteral("unassigned")),
      count(TReportSection::WithoutUpdate, static_cast<std::int32_t>(FOut.Rows[1].size()),
            QStringLiteral("without update")),
      count(TReportSection::Gt10Exchanges, static_cast<std::int32_t>(FOut.Rows[2].size()),
            QStringLiteral("with ten exchanges"))};
  if (first)
    lines << CFirstReport;
  else if (!FOut.Left.isEmpty())
    lines << QStringLiteral("%1 left the report since %2 %3")
                 .arg(FOut.Left.size())
                 .arg(ReportDate(memory.PreviousReport.date()),
                      memory.PreviousReport.toString(QStringLiteral("HH:mm")));
  if (FOut.NbSnoozed > 0)
    lines << QStringLiteral("%1 snoozed").arg(FOut.NbSnoozed);
  if (FOut.NbEscalated > 0)
    lines << QStringLiteral("%1 escalated").arg(FOut.NbEscalated);
  FOut.HtmlContent << QStringLiteral("    <h2>Summary</h2>");
  FText.Heading(QStringLiteral("Summary"), 2);
  AddParagraph(FOut.HtmlContent, FText, lines);

  if (FOut.NbEscalated == 0)
    return;
  const QString title = QStringLiteral("Escalated (on %1 reports or more)").arg(memory.EscalateAfter);
  FOut.HtmlContent << QStringLiteral("    <h2>") + title + QStringLiteral("</h2>");
  FText.Heading(title, 2);
  QList<QStringList> rows;
  for (const TReportSection section : CReportSections) {
    const auto index = static_cast<std::size_t>(section);
    for (qsizetype row = 0; row < FOut.Rows.at(index).size(); ++row)
      if (const TListing &listing = FOut.Listings.at(index).at(row); listing.Escalated) {
        const tyRestTicket &ticket = FOut.Rows.at(index)[row];
        rows.append({ticket.organization.name, TicketName(ticket._type, ticket.id), ticket.title,
                     SectionName(section), ListedText(listing)});
      }
  }
  const QStringList headers = TicketHeaders() << QStringLiteral("Section") << Column(TColumnId::Listed).Caption;
  AddPlainTable(FOut.HtmlContent, FText, headers, rows);
}

void TMailReport::AddLeft()
{
  if (!FIn.FollowUp || FIn.FollowUp->FirstReport())
    return;
  const TFollowUpMemory &memory = *FIn.FollowUp;
  FOut.HtmlContent << QStringLiteral("    <h2>") + CLeftTitle + QStringLiteral("</h2>");
  FText.Heading(CLeftTitle, 2);
  if (!memory.UncomparedNames.isEmpty())
    AddParagraph(FOut.HtmlContent, FText,
                 {QStringLiteral("Not compared, their tickets could not be retrieved this time: ") +
                  memory.UncomparedNames.join(QStringLiteral(", "))});
  if (FOut.Left.isEmpty()) {
    AddParagraph(FOut.HtmlContent, FText, {QStringLiteral("No ticket left the report.")});
    return;
  }
  QList<QStringList> rows;
  for (const TLeftTicket &left : FOut.Left)
    rows.append({left.Was.OrganizationName, TicketName(left.Was.Type, left.Was.Ticket), left.Was.Title,
                 SectionName(static_cast<TReportSection>(left.Was.Section)), left.Why});
  AddPlainTable(FOut.HtmlContent, FText, TicketHeaders() << QStringLiteral("Section") << QStringLiteral("Why"), rows);
}
