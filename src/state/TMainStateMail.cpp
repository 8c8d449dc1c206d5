// The report steps of the main window.

#include "TMainState.h"

#include "core/Trace.h"
#include "report/MailReport.h"
#include "report/ReportFiles.h"
#include "report/ReportSending.h"
#include "rest/dRest.h"
#include "tickets/Selection.h"

void TMainState::bbtGenerateMailClick(const TOpenFile &openFile)
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtGenerateMailClick");
  BeginServiceStep();
  // Without a token the query could only be refused (the retrieval has said why).
  if (FTeamsOperators.isEmpty() && FRest.TokenOk()) {
    FOperators = FRest.GET_OperatorsList(FICI);
    NoteFailure(QStringLiteral("Operator list (the report's recipients)"));
    if (!FOperators.isEmpty())
      FTeamsOperators = UpdateListTeamsOperators(FOperators);
  }

  TReportInput input;
  input.Tickets = FTickets;
  input.ExtractionTickets = FExtractionTickets;
  input.RetrievalAttempt = FRetrievalAttempt;
  input.NbMinutes = FNbMinutes;
  input.NbDays = FNbDays;
  input.StatusToIgnore = FStatusToIgnore;
  input.SelectedOrganizations = FSelectedOrganizations;
  input.SelectedTeams = FSelectedTeams;
  input.TeamsOperators = FTeamsOperators;
  input.Operators = FOperators;
  input.HtmlTexts = FHtmlTexts;
  input.ServiceUrl = TdmRest::GetQuorvexItsmUrl(FICI);
  if (!FRetrievalFailures.isEmpty()) {
    QStringList failures;
    for (const TStepFailure &failure : FRetrievalFailures)
      failures.append(failure.Text());
    input.RetrievalWarning = QStringLiteral("the retrieval of the tickets was incomplete, this report may miss "
                                            "tickets (") +
                             failures.join(QStringLiteral("; ")) + u')';
  } else if (FRetrievalAttempt == 0) {
    input.RetrievalWarning = QStringLiteral("the tickets have not been retrieved (\"Get tickets\")");
  }

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

void TMainState::bbtSendMailClick()
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtSendMailClick");
  const bool sent = SendReport(FSmtp, FHtmlContent);
  TraceValue(lcApp(), "Sent", sent ? 1 : 0);
}
