// The report steps of the main window.

#include "TMainState.h"

#include "core/RunLog.h"
#include "core/SettingsKeys.h"
#include "core/Trace.h"
#include "core/uTools.h"
#include "report/DeliveryJournal.h"
#include "report/DeliveryPlan.h"
#include "report/FollowUpHistory.h"
#include "report/FollowUpStore.h"
#include "report/MailReport.h"
#include "report/ReportFiles.h"
#include "report/ReportSending.h"
#include "report/SmtpIdentity.h"
#include "rest/dRest.h"
#include "tickets/LoadingProgress.h"
#include "tickets/Selection.h"

#include <QScopeGuard>

TTask<bool> TMainState::GenerateReport(TOpenFile openFile)
{
  const TraceScope trace(lcApp(), "Session.GenerateReport");
  BeginServiceStep();
  if (!FRetrievalAttempt.isValid()) {
    FStepFailures.append(TFailure{QStringLiteral("Generate Mail"),
                                      QStringLiteral("no ticket has been retrieved yet: \"Get tickets\" first"),
                                      QString()});
    co_return false;
  }
  // The recipients come from the service's operators; without a token the query
  // could only be refused (the retrieval has said why).
  FRecipientsUnknown.clear();
  if (FTeamsOperators.isEmpty() && ServiceConfigured() && FRest.TokenOk()) {
    const qsizetype failuresBefore = FStepFailures.size();
    TakeOperators(co_await FRest.GET_OperatorsList(FICI), QStringLiteral("Operator list (the report's recipients)"));
    if (FStepFailures.size() > failuresBefore)
      FRecipientsUnknown = FStepFailures.last().Text();
  }

  TReportInput input;
  input.Tickets = FTickets;
  input.ExtractionTickets = FExtractionTickets;
  input.RetrievalAttempt = FRetrievalAttempt;
  input.NbMinutes = FNbMinutes;
  input.NbDays = FNbDays;
  input.StatusToIgnore = FStatusToIgnore;
  // A report is the report of the retrieval that gave its tickets: its
  // organizations and teams, even when the choice changed since.
  input.SelectedOrganizations = FExtractionTickets.isValid() ? FRetrievedOrganizations : FSelectedOrganizations;
  input.SelectedTeams = FExtractionTickets.isValid() ? FRetrievedTeams : FSelectedTeams;
  input.TeamsOperators = FTeamsOperators;
  input.Operators = FOperators;
  input.HtmlTexts = FHtmlTexts;
  input.ServiceUrl = TdmRest::GetQuorvexItsmUrl(FICI);
  if (!FRetrievalFailures.isEmpty()) {
    QStringList failures;
    for (const TFailure &failure : FRetrievalFailures)
      failures.append(failure.Text());
    const bool kept = FExtractionTickets.isValid() && FExtractionTickets < FRetrievalAttempt;
    if (kept) {
      // The last retrieval failed: the grid, and so the report, are those of
      // the retrieval before, and say when that was.
      input.RetrievalWarning = QStringLiteral("this report shows the tickets retrieved on %1, not today's: the last "
                                              "retrieval failed (")
                                   .arg(DateTimeToStr(FExtractionTickets)) +
                               failures.join(QStringLiteral("; ")) + u')';
      input.RetrievalAttempt = FExtractionTickets;
    } else {
      input.RetrievalWarning = QStringLiteral("the retrieval of the tickets was incomplete, this report may miss "
                                              "tickets (") +
                               failures.join(QStringLiteral("; ")) + u')';
    }
  } else if (!FRetrievalAttempt.isValid()) {
    input.RetrievalWarning = QStringLiteral("the tickets have not been retrieved (\"Get tickets\")");
  }
  if (!FRecipientsUnknown.isEmpty())
    input.RecipientsWarning = QStringLiteral("the people concerned could not be computed, so this report goes to "
                                             "the default recipients only (") + FRecipientsUnknown + u')';

  // Only a report that goes to the default receivers lists the computed ones.
  input.ListRecipients = FDelivery.Mode == TDeliveryMode::Report;
  input.FollowUp = FollowUpMemory();
  FRecordedReport = -1;
  const QDateTime now = QDateTime::currentDateTime();
  TReportOutput report = TMailReport(input, Colours(), [now] { return now; }).Generate();
  FReportInput = input;
  FReportTime = now;
  FReport = report;
  FHtmlContent = report.HtmlContent;
  FSlRecipientTo = report.SlRecipientTo;
  FSlRecipientCc = report.SlRecipientCc;
  FRecipientTo = report.RecipientTo;
  FRecipientCC = report.RecipientCC;
  FNbUnassigned = report.NbUnassigned;
  FNbWithoutUpdate = report.NbWithoutUpdate;
  FNbGt10Exch = report.NbGt10Exch;
  if (!FAutomatic)
    MarkGrid(&report);

  // Unattended, the report files are written only by a dry run, and never shown.
  if (FAutomatic && !FDryRun)
    co_return true;
  const QString page = SaveReportFiles(OutputBase(), report);
  if (!FAutomatic && openFile)
    openFile(page);
  co_return true;
}

TTask<QStringList> TMainState::SendReport(TLoadingProgress &progress, TConfirmMails confirm,
                                          TConfirmResend confirmResend)
{
  const TraceScope trace(lcApp(), "Session.SendReport");
  BeginServiceStep();
  constexpr qsizetype CMinimumReportLines = 5; // fewer: no report generated yet
  if (FHtmlContent.size() < CMinimumReportLines)
    co_return QStringList();
  const QDateTime now = FReportTime;
  // Within an unattended run nothing changes between the two steps: the report
  // generated is the one delivered. A person may have changed colours since.
  const TMailReport::TClock clock = [now] { return now; };
  const TDeliveryPlan plan = FAutomatic ? PlanDelivery(FReportInput, FReport, FDelivery, FSmtp, Colours(), clock)
                                        : PlanDelivery(FReportInput, FDelivery, FSmtp, Colours(), clock);
  NoteWarnings(plan.Warnings);
  // Each mail reaches the log as soon as it is delivered, even when a later one fails.
  QStringList texts;
  auto delivered = [this, &texts](const QString &text) {
    texts.append(text);
    FslLog.append(LogLine(QStringLiteral(" - * ") + text));
  };
  if (plan.Mails.isEmpty()) {
    delivered(QStringLiteral("Nothing to report: no mail sent"));
    co_return texts;
  }
  if (!FAutomatic && confirm && FDelivery.Mode != TDeliveryMode::Report) {
    if (!confirm(Confirmation(plan.Mails, FDelivery.Mode)))
      co_return QStringList();
  }
  TDeliveryOptions options;
  options.Mode = FDelivery.Mode;
  options.AttachWorkbook = FDelivery.AttachWorkbook;
  options.MaxRecipients = FSmtp.MaxRecipients;
  options.Resend = FResend;
  options.Deadline = FDeadline;
  options.Stop = &FCancel;
  options.Delivered = delivered;
  std::optional<TDeliveryJournal> journal;
  if (FDryRun) {
    options.DryRunBase = OutputBase();
  } else if (TFollowUpStore *store = Store()) {
    journal.emplace(*store);
    options.Journal = &*journal;
    if (!FAutomatic && confirmResend && !options.Resend) {
      const QStringList earlier = DeliveredEarlier(plan.Mails, FDelivery.Mode, *journal, QDate::currentDate());
      if (!earlier.isEmpty())
        options.Resend = confirmResend(earlier);
    }
  }
  progress.LoadingShow(1);
  const auto hide = qScopeGuard([&progress] { progress.LoadingHide(); });
  progress.LoadingSetTitle(FDryRun ? QStringLiteral("Writing the mails…")
                                   : QStringLiteral("Sending to %1…").arg(SmtpServerName(FSmtp)));
  const TDeliveryResult result = co_await DeliverReport(FSmtp, plan.Mails, options, Colours());
  NoteWarnings(result.Warnings);
  // Only a report that reached someone is one the next report compares with.
  if (!FDryRun && result.MailsSent > 0)
    RecordSentReport(plan.Mails.first().Report, plan.Mails.size(), result.MailsSent);
  FStepFailures.append(result.Failures);
  if (Cancelled())
    NoteCancelled(QStringLiteral("Send Mail"));
  TraceValue(lcApp(), "Mails", static_cast<int>(plan.Mails.size()));
  co_return texts;
}

TFollowUpStore *TMainState::Store()
{
  if (!FStore) {
    QStringList warnings;
    FStore = TFollowUpStore::Open(OutputBase() + QStringLiteral(".db"), warnings);
    NoteWarnings(warnings);
  }
  return FStore.get();
}

std::shared_ptr<const TFollowUpMemory> TMainState::FollowUpMemory()
{
  if (!FDelivery.FollowUp.History)
    return nullptr;
  auto memory = std::make_shared<TFollowUpMemory>();
  if (TFollowUpStore *store = Store()) {
    TFollowUpHistory history(*store);
    *memory = history.Memory();
    NoteWarnings(history.Warnings());
  }
  memory->EscalateAfter = FDelivery.FollowUp.EscalateAfter;
  for (const tyRestOrganization &organization : std::as_const(FUncomparedOrganizations)) {
    memory->UncomparedOrganizations.insert(organization.id);
    memory->UncomparedNames.append(organization.name);
  }
  return memory;
}

void TMainState::RecordSentReport(const TReportOutput &full, qsizetype mails, int mailsSent)
{
  TFollowUpStore *store = FReportInput.FollowUp ? Store() : nullptr;
  if (!store)
    return;
  TRecordedRun run;
  run.At = FReportTime;
  for (const auto &[mode, name] : Setting::Delivery::ModeNames)
    if (mode == FDelivery.Mode)
      run.Mode = name;
  run.Complete = FReportInput.RetrievalWarning.isEmpty() && FRecipientsUnknown.isEmpty();
  for (std::size_t section = 0; section < CReportSectionCount; ++section) {
    run.Counts[section] = static_cast<std::int32_t>(full.Rows[section].size());
    run.New += full.NbNew[section];
  }
  run.Left = static_cast<std::int32_t>(full.Left.size());
  run.MailsSent = mailsSent;
  run.MailsNotSent = static_cast<std::int32_t>(mails) - mailsSent;
  TFollowUpHistory history(*store);
  FRecordedReport = history.Record(full, run, FReportInput.Tickets, *FReportInput.FollowUp);
  NoteWarnings(history.Warnings());
}

void TMainState::NoteExitStatus(int status)
{
  if (FRecordedReport < 0 || !FStore)
    return;
  TFollowUpHistory history(*FStore);
  history.SetExitStatus(FRecordedReport, status);
  NoteWarnings(history.Warnings());
}

void TMainState::MarkGrid(const TReportOutput *report)
{
  const std::shared_ptr<const TFollowUpMemory> memory = report ? FReportInput.FollowUp : FollowUpMemory();
  QHash<TRestId, TTicketsModel::TFollowUpMark> marks;
  if (memory) {
    const QDate today = QDate::currentDate();
    for (const tyRestTicket &ticket : std::as_const(FTickets))
      if (const TSnooze *snooze = memory->SnoozeOf(ticket.id); snooze && snooze->Holds(ticket, today))
        marks[ticket.id].Snoozed = snooze->UntilText();
    if (report) {
      for (std::size_t section = 0; section < CReportSectionCount; ++section)
        for (qsizetype row = 0; row < report->Listings[section].size(); ++row) {
          const TListing &listing = report->Listings[section][row];
          TTicketsModel::TFollowUpMark &mark = marks[report->Rows[section][row].id];
          mark.New = mark.New || listing.New;
          if (mark.Listed.isEmpty() || !listing.New)
            mark.Listed = ListedText(listing);
        }
    } else {
      for (const TListedEntry &entry : memory->Previous)
        marks[entry.Ticket].Listed = ListedText({false, entry.Since, entry.Reports, false});
    }
  }
  FTicketsGrid.SetFollowUp(std::move(marks));
}

bool TMainState::SnoozeTickets(const QList<TRestId> &tickets, QDate until)
{
  TFollowUpStore *store = Store();
  if (!store) {
    Warn({QStringLiteral("Snoozes are kept in %1, which cannot be opened").arg(OutputBase() + QStringLiteral(".db"))});
    return false;
  }
  TFollowUpHistory history(*store);
  for (const TRestId id : tickets) {
    const auto ticket = std::find_if(FTickets.cbegin(), FTickets.cend(), [id](const tyRestTicket &t) { return t.id == id; });
    TSnooze snooze{id, until, !until.isValid(), false, {}, {}, 0, SnoozingPerson(), QDateTime::currentDateTime()};
    history.Snooze(snooze, ticket == FTickets.cend() ? nullptr : &*ticket);
  }
  NoteWarnings(history.Warnings());
  MarkGrid();
  return history.Warnings().isEmpty();
}

bool TMainState::WakeTickets(const QList<TRestId> &tickets)
{
  TFollowUpStore *store = Store();
  if (!store)
    return false;
  TFollowUpHistory history(*store);
  history.Wake(tickets);
  NoteWarnings(history.Warnings());
  MarkGrid();
  return history.Warnings().isEmpty();
}
