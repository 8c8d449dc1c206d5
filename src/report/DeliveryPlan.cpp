#include "DeliveryPlan.h"

#include "MailAddress.h"
#include "core/SettingsKeys.h"

#include <QSet>
#include <optional>

namespace {

const QString CActive = QStringLiteral("ACTIVE");

// Appends the addresses not yet in `list` nor in `taken`, compared without case.
void AddNew(QStringList &list, const QStringList &addresses, const QStringList &taken = {})
{
  for (const QString &address : addresses)
    if (!list.contains(address, Qt::CaseInsensitive) && !taken.contains(address, Qt::CaseInsensitive))
      list.append(address);
}

QStringList Distinct(const QStringList &addresses)
{
  QStringList list;
  AddNew(list, addresses);
  return list;
}

// The rows of one person: the unassigned tickets of their teams, the others
// assigned to them. A person is every active operator record with that address.
TReportInput DigestInput(const TReportInput &full, const TReportOutput &report, const QString &address)
{
  QSet<TRestId> operators;
  for (const tyRestOperator &op : report.RecipientTo)
    if (op.status == CActive && op.notificationEmail.compare(address, Qt::CaseInsensitive) == 0)
      operators.insert(op.id);
  QSet<TRestId> teams;
  for (const tyRestTeamOperator &link : full.TeamsOperators)
    if (operators.contains(link.IdOperator))
      teams.insert(link.IdTeam);
  TReportInput digest = full;
  digest.ListRecipients = false;
  digest.KeepsRow = [operators, teams](TReportSection section, const tyRestTicket &ticket) {
    return section == TReportSection::Unassigned ? teams.contains(ticket.assignedTeam.id)
                                                 : operators.contains(ticket.assignedUser.id);
  };
  return digest;
}

bool NothingToReport(const TReportInput &input, const TReportOutput &report)
{
  return input.RetrievalWarning.isEmpty() && report.NbUnassigned == 0 && report.NbWithoutUpdate == 0 &&
         report.NbGt10Exch == 0;
}

} // namespace

qsizetype TReportMail::RowCount() const
{
  qsizetype rows = 0;
  for (const TReportRows &section : Report.Rows)
    rows += section.size();
  return rows;
}

TDeliveryPlan PlanDelivery(const TReportInput &input, const tyDelivery &delivery, const tySMTPserver &smtp,
                           TColourStore &colours, const TMailReport::TClock &now)
{
  TReportInput fullInput = input;
  fullInput.ListRecipients = delivery.Mode == TDeliveryMode::Report;
  return PlanDelivery(input, TMailReport(fullInput, colours, now).Generate(), delivery, smtp, colours, now);
}

TDeliveryPlan PlanDelivery(const TReportInput &input, TReportOutput fullReport, const tyDelivery &delivery,
                           const tySMTPserver &smtp, TColourStore &colours, const TMailReport::TClock &now)
{
  TDeliveryPlan plan;
  TReportMail full;
  full.Report = std::move(fullReport);
  if (delivery.SkipWhenClear && NothingToReport(input, full.Report))
    return plan;

  const auto source = [](const auto &setting) { return QStringLiteral("[%1] %2").arg(setting.Section, setting.Key); };
  const QStringList defaultTo = ParseAddressList(smtp.DefaultTo, source(Setting::Smtp::DefaultTo), plan.Warnings);
  const QStringList defaultCc = ParseAddressList(smtp.DefaultCC, source(Setting::Smtp::DefaultCC), plan.Warnings);
  const QStringList computedTo = Distinct(full.Report.SlRecipientTo);
  const QStringList &computedCc = full.Report.SlRecipientCc;
  QList<TReportMail> digests;
  switch (delivery.Mode) {
  case TDeliveryMode::Report:
    full.To = Distinct(defaultTo);
    AddNew(full.Cc, defaultCc, full.To);
    break;
  case TDeliveryMode::Concerned:
    full.To = computedTo.isEmpty() ? Distinct(defaultTo) : computedTo;
    AddNew(full.Cc, computedCc, full.To);
    if (!computedTo.isEmpty())
      AddNew(full.Cc, defaultTo, full.To);
    AddNew(full.Cc, defaultCc, full.To);
    break;
  case TDeliveryMode::Personal:
    for (const QString &address : computedTo) {
      TReportMail digest;
      digest.To = QStringList{address};
      digest.Report = TMailReport(DigestInput(input, full.Report, address), colours, now).Generate();
      digests.append(digest);
    }
    full.To = Distinct(defaultTo);
    AddNew(full.Cc, computedCc, full.To);
    AddNew(full.Cc, defaultCc, full.To);
    break;
  }
  // The full report goes first: the people who follow the whole desk get it
  // even when a digest later meets a refusing server.
  plan.Mails = QList<TReportMail>{full} + digests;
  // A mail that carries an escalated row goes to the escalation's receivers too.
  if (delivery.Mode == TDeliveryMode::Report)
    return plan;
  std::optional<QStringList> escalateTo;
  for (TReportMail &mail : plan.Mails) {
    if (mail.Report.NbEscalated == 0)
      continue;
    if (!escalateTo)
      escalateTo = delivery.FollowUp.EscalateTo.isEmpty()
                       ? defaultTo
                       : ParseAddressList(delivery.FollowUp.EscalateTo, source(Setting::FollowUp::EscalateTo),
                                          plan.Warnings);
    AddNew(mail.Cc, *escalateTo, mail.To);
  }
  return plan;
}

TMailConfirmation Confirmation(const QList<TReportMail> &mails, TDeliveryMode mode)
{
  TMailConfirmation confirmation;
  for (const TReportMail &mail : mails) {
    for (const QString &address : mail.To)
      confirmation.To.append(mode == TDeliveryMode::Personal
                                 ? QStringLiteral("%1 (%2 row(s))").arg(address).arg(mail.RowCount())
                                 : address);
    AddNew(confirmation.Cc, mail.Cc);
  }
  if (mode == TDeliveryMode::Personal && !mails.isEmpty())
    confirmation.Summary = QStringLiteral("%1 mail(s): %2 personal digest(s) and the full report to %3")
                               .arg(mails.size())
                               .arg(mails.size() - 1)
                               .arg(mails.first().To.join(QStringLiteral(", ")));
  else
    confirmation.Summary = QStringLiteral("%1 mail(s) to %2 recipient(s), %3 in copy")
                               .arg(mails.size())
                               .arg(confirmation.To.size())
                               .arg(confirmation.Cc.size());
  return confirmation;
}
