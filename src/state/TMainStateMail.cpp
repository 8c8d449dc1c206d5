// The report steps of the main window.

#include "TMainState.h"

#include "core/OffThread.h"
#include "core/Trace.h"
#include "report/MailReport.h"
#include "report/ReportFiles.h"
#include "report/ReportSending.h"
#include "report/SmtpIdentity.h"
#include "rest/dRest.h"
#include "tickets/LoadingProgress.h"
#include "tickets/Selection.h"

#include <QScopeGuard>

void TMainState::bbtGenerateMailClick(const TOpenFile &openFile)
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtGenerateMailClick");
  // The recipients come from the service's operators, once it is configured.
  if (FTeamsOperators.isEmpty() && ServiceConfigured()) {
    FOperators = FRest.GET_OperatorsList(FICI);
    if (!FOperators.isEmpty())
      FTeamsOperators = UpdateListTeamsOperators(FOperators);
  }

  TReportInput input;
  input.Tickets = FTickets;
  input.ExtractionTickets = FExtractionTickets;
  input.NbMinutes = FNbMinutes;
  input.NbDays = FNbDays;
  input.StatusToIgnore = FStatusToIgnore;
  input.SelectedOrganizations = FSelectedOrganizations;
  input.SelectedTeams = FSelectedTeams;
  input.TeamsOperators = FTeamsOperators;
  input.Operators = FOperators;
  input.HtmlTexts = FHtmlTexts;
  input.ServiceUrl = TdmRest::GetQuorvexItsmUrl(FICI);
  if (!FRetrievalFailures.isEmpty())
    input.RetrievalWarning = QStringLiteral("the retrieval of the tickets was incomplete, this report may miss "
                                            "tickets (") +
                             FRetrievalFailures.join(QStringLiteral("; ")) + u')';

  TReportOutput report = TMailReport(input, Colours()).Generate();
  FHtmlContent = report.HtmlContent;
  FSlRecipientTo = report.SlRecipientTo;
  FSlRecipientCc = report.SlRecipientCc;
  FRecipientTo = report.RecipientTo;
  FRecipientCC = report.RecipientCC;
  FNbUnassigned = report.NbUnassigned;
  FNbWithoutUpdate = report.NbWithoutUpdate;
  FNbGt10Exch = report.NbGt10Exch;

  // Unattended, the report files are written only by a dry run, and never shown.
  if (FAutomatic && !FDryRun)
    return;
  const QString page = SaveReportFiles(OutputBase(), report);
  if (!FAutomatic && openFile)
    openFile(page);
}

bool TMainState::bbtSendMailClick(TLoadingProgress &progress)
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtSendMailClick");
  progress.LoadingShow(1);
  const auto hide = qScopeGuard([&progress] { progress.LoadingHide(); });
  progress.LoadingSetTitle(QStringLiteral("Sending to %1…").arg(SmtpServerName(FSmtp)));
  bool sent = false;
  RunOffThread([this, &sent] { sent = SendReport(FSmtp, FHtmlContent); });
  TraceValue(lcApp(), "Sent", sent ? 1 : 0);
  return sent;
}
