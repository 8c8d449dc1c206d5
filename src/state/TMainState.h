#pragma once

#include "core/Failure.h"
#include "core/ConfigTypes.h"
#include "core/SecretLookup.h"
#include "core/StopRequest.h"
#include "core/TDateTime.h"
#include "core/Task.h"
#include "report/HtmlTexts.h"
#include "report/DeliveryPlan.h"
#include "report/MailReport.h"
#include "rest/RestFailure.h"
#include "rest/RestResult.h"
#include "rest/uTypes.h"
#include "tickets/TicketsModel.h"

#include <QDeadlineTimer>
#include <QStringList>
#include <functional>
#include <memory>
#include <utility>

class TColourStore;
class TFollowUpStore;
class TLoadingProgress;
class TdmRest;

// Everything the main window owns for the program's lifetime, and the steps that
// run on it. No widget lives here: the window and the unattended run drive the
// same object, and tests drive it without any window.
class TMainState
{
public:
  // Called with each message that a person must see (a damaged stored secret...);
  // the window shows a message box, a headless run writes to stderr.
  using TWarningSink = std::function<void(const QString &)>;

  // Dialogs the steps open, given by the window (tests give their own answers).
  using TChooseOrga = std::function<bool(const tyRestOrganizations &organizations,
                                         tyRestOrganizations &selectedOrganizations, const tyRestTeams &teams,
                                         tyRestTeams &selectedTeams, const tyRestOrganizationsTeams &links)>;
  using TEditColours = std::function<bool(tyRestObjects &statuses, tyRestObjects &priorities, TColourStore &colours)>;
  // Shows the report file of an interactive run.
  using TOpenFile = std::function<void(const QString &path)>;
  // Asks a person whether the mails may go: how many to whom, and the "To" and "CC" lists.
  using TConfirmMails = std::function<bool(const TMailConfirmation &confirmation)>;
  // Asks a person whether mails already delivered today (one line each) go again.
  using TConfirmResend = std::function<bool(const QStringList &earlier)>;
  // The API settings dialog, on a copy of the settings.
  using TEditApi = std::function<bool(tyQuorvexITSM &settings)>;

  TMainState(QString exeFileName, TdmRest &rest, TWarningSink warningSink = {});
  ~TMainState();

  // Fixes the file locations and reads every settings group, in the order:
  // service, SMTP, organizations and teams, filters, then the text blocks.
  void FormCreate();
  // Ends the trace with the name of its log file.
  void FormDestroy();

  // Each reads its settings group anew from the settings file.
  void ReadConfigITSM();
  void ReadConfigOrgaAndTeams();

  // The service settings, edited on a copy and saved on OK. A change of the
  // connection or the credentials drops the saved token.
  bool EditServiceSettings(const TEditApi &editApi);

  // The steps. Each is a TTask: it goes on as the service answers while the
  // caller's event loop runs; the caller starts no other step meanwhile, and
  // Cancel ends it early. What it could not do is in TakeStepFailures.
  //
  // The open tickets of every selected organization, flagged for the
  // ten-exchanges notice, into FTickets and the grid; counts in FslLog. When no
  // token came, every query failed or the step was cancelled, the previous list
  // and grid stay.
  TTask<> RetrieveTickets(TLoadingProgress &progress);
  // Fetches the organization, team and operator lists still empty, links them,
  // and lets the user choose; the choice is saved on OK.
  TTask<> ChooseOrganizations(TLoadingProgress &progress, TChooseOrga chooseOrga);
  // Fetches the status and priority lists still empty, gives each its colour,
  // and lets the user change them; saved on OK.
  TTask<> EditStatusColours(TLoadingProgress &progress, TEditColours editColours);
  // The report in FHtmlContent and its recipients; an interactive run also
  // writes the .to, .cc and .html files and opens the page.
  // Gives false and builds nothing before any "Get tickets": such a report
  // would check nothing.
  TTask<bool> GenerateReport(TOpenFile openFile = {});
  // The last generated report, delivered as FDelivery says (PlanDelivery,
  // DeliverReport) while `progress` names the server, and journaled in the
  // store beside the settings; a dry run writes the mails as <base>_1.eml, ...
  // instead and journals nothing. In modes concerned and personal an
  // interactive run first asks `confirm`, and sends nothing when refused; when
  // the journal says some of the mails were delivered today it asks
  // `confirmResend` (else they are skipped). Adds one run-log line per mail (or
  // "Nothing to report") to FslLog and gives their texts; nothing when no
  // report was generated or the person refused. Each mail or recipient finally
  // not served is one of the step's failures.
  TTask<QStringList> SendReport(TLoadingProgress &progress, TConfirmMails confirm = {},
                                TConfirmResend confirmResend = {});
  // Ends the step under way early: no new request or mail starts, those in
  // flight are cut, and the step ends as incomplete, saying so.
  void Cancel();

  // How the window was left at its last close; kept in the settings file, and
  // written only when it changed.
  tyWindowLayout WindowLayout() const;
  void KeepWindowLayout(const tyWindowLayout &layout);

  // Path of the report page written by an interactive or dry run.
  QString ReportFile() const { return OutputBase() + QStringLiteral(".html"); }
  // Colours and priority codes of the settings file.
  TColourStore &Colours();
  // What the last step that talks to the service could not do (empty when it
  // did everything), handed over once.
  TFailures TakeStepFailures() { return std::exchange(FStepFailures, {}); }
  // What the last retrieval could not do (no token, a ticket query that failed);
  // empty when it was complete.
  const TFailures &RetrievalFailures() const { return FRetrievalFailures; }
  // One line on the last retrieval: how many tickets came, or what failed and
  // since when the list dates.
  QString RetrievalStatusText() const;

  // Where the secrets come from besides the settings file (credentials, keyring),
  // and whether secrets entered in the dialogs go to the keyring; set before
  // FormCreate. Without it the settings file holds them.
  void SetSecretSources(TSecretSources sources) { FSecrets.SetSources(std::move(sources)); }

  // No request of the service nor mail starts after `deadline`.
  void SetRequestDeadline(QDeadlineTimer deadline);
  // Once `stop` is requested no request nor mail starts, and those under way
  // are cut, in this step and every later one. The request outlives this state.
  void SetStopRequest(const TStopRequest *stop);
  // Mails the journal says were delivered today go again.
  void SetResend(bool resend) { FResend = resend; }
  // Why the people concerned by the last report could not be computed (the
  // operators query failed); empty when they were.
  const QString &RecipientsUnknown() const { return FRecipientsUnknown; }
  // The last generated report (full, as the default receivers get it).
  const TReportOutput &Report() const { return FReport; }
  // Records the exit status of an unattended run with the report it sent, if any.
  void NoteExitStatus(int status);

  // Takes `tickets` of the grid off the report until `until` (invalid: until
  // each changes), or puts them back; the grid's marks follow. The snoozes live
  // in the store beside the settings. Returns false (and warns) without one.
  bool SnoozeTickets(const QList<TRestId> &tickets, QDate until);
  bool WakeTickets(const QList<TRestId> &tickets);

  // Trace log path: the settings folder + the executable name with ".log".
  QString TraceLogFile() const;

  // What the session holds, read by the window, the unattended run and tests.
  const QString &SettingsFile() const { return FFichINI; }
  const tyQuorvexITSM &Service() const { return FICI; }
  const tySMTPserver &Smtp() const { return FSmtp; }
  const tyDelivery &Delivery() const { return FDelivery; }
  const tyHtmlTexts &Texts() const { return FHtmlTexts; }
  const QStringList &StatusToIgnore() const { return FStatusToIgnore; }
  const tyRestOperators &Operators() const { return FOperators; }
  const tyRestTeamsOperators &TeamsOperators() const { return FTeamsOperators; }
  // The tickets of the last complete or partial retrieval, and the grid showing
  // them (the view needs a model it can sort).
  const tyRestTickets &Tickets() const { return FTickets; }
  const QDateTime &TicketsRetrievedAt() const { return FExtractionTickets; }
  TTicketsModel &Grid() { return FTicketsGrid; }
  // The last generated report's page, its receivers and its counts.
  bool HasReport() const { return !FHtmlContent.isEmpty(); }
  // A report, and somebody to send it to: the default recipients, or in modes
  // concerned and personal the people it concerns.
  bool CanSend() const
  {
    return HasReport() && (!FSmtp.DefaultTo.trimmed().isEmpty() ||
                           (FDelivery.Mode != TDeliveryMode::Report && !FSlRecipientTo.isEmpty()));
  }
  const QStringList &ReportHtml() const { return FHtmlContent; }
  const QStringList &RecipientsTo() const { return FSlRecipientTo; }
  const QStringList &RecipientsCc() const { return FSlRecipientCc; }
  std::int32_t UnassignedCount() const { return FNbUnassigned; }
  std::int32_t WithoutUpdateCount() const { return FNbWithoutUpdate; }
  std::int32_t Gt10ExchangesCount() const { return FNbGt10Exch; }
  // Puts `tickets` in the list and the grid as a retrieval would, for the
  // window's tests, which have no service to retrieve them from.
  void SetTicketsForTest(tyRestTickets tickets);
  // The run log and the file it is saved to.
  const QStringList &RunLog() const { return FslLog; }
  QString LogFile() const { return FLogFile; }

  // Settings edited on a copy by a dialog; saved when it returns true.
  bool EditMailSettings(const std::function<bool(tySMTPserver &smtp, tyDelivery &delivery)> &edit);
  bool EditFilters(const std::function<bool(std::int32_t &nbMinutes, std::int32_t &nbDays, QStringList &statusToIgnore)> &edit);
  bool EditTexts(const std::function<bool(tyHtmlTexts &texts)> &edit);

  // An unattended run: from now on nobody is asked anything, and a dry run
  // writes the mails as files and sends nothing.
  void BeginUnattendedRun(bool dryRun);
  // Starts the run log anew with its BEGIN line.
  void BeginRunLog();
  // One line of the run log, stamped with the time.
  void AppendLog(const QString &text);
  // Saves the run log as a new file beside the previous ones (two runs started
  // in the same second keep a log each); EQuorvexError when it cannot be.
  void SaveRunLog();

private:
  void InitFichIniLocation();
  void ReadConfigSMTP();
  void ReadConfigDelivery();
  void ReadConfigFilters();
  void ReadHtmlTexts();
  // Each writes its settings group from the session's values.
  void SaveConfigITSM();
  void SaveConfigSMTP();
  void SaveConfigDelivery();
  void SaveConfigOrgaAndTeams();
  void SaveConfigFilters();
  void SavePriorities();
  void SaveStatus();
  void SaveHtmlTexts();

  tyRestOrganizations FOrganizations;
  tyRestTeams FTeams;
  tyRestOperators FOperators;
  tyRestOrganizationsTeams FOrganizationsTeams;
  tyRestTeamsOperators FTeamsOperators;
  tyRestOrganizations FSelectedOrganizations;
  tyRestTeams FSelectedTeams;
  // The choice in force when FTickets were retrieved, which their report names.
  tyRestOrganizations FRetrievedOrganizations;
  tyRestTeams FRetrievedTeams;
  QDateTime FExtractionTickets; // moment of the retrieval that gave FTickets
  QDateTime FRetrievalAttempt;  // start of the last "Get tickets", whatever its outcome
  tyRestTickets FTickets;
  QStringList FHtmlContent;
  QStringList FSlRecipientTo;
  QStringList FSlRecipientCc;
  tyRestOperators FRecipientTo; // primary recipients, completed from FOperators
  tyRestOperators FRecipientCC; // recipients in copy
  tyHtmlTexts FHtmlTexts;
  tySMTPserver FSmtp;
  tyDelivery FDelivery;
  bool FAutomatic = false;
  bool FDryRun = false; // an unattended run that writes the report files and the mails, and sends nothing
  std::int32_t FNbMinutes = 0;
  std::int32_t FNbDays = 0;
  QStringList FStatusToIgnore;
  tyRestObjects FStatus;
  tyRestObjects FPriorities;
  QString FFichINI;
  QStringList FslLog;
  QString FLogFile;
  std::int32_t FNbUnassigned = 0;
  std::int32_t FNbWithoutUpdate = 0;
  std::int32_t FNbGt10Exch = 0;
  tyQuorvexITSM FICI;
  TTicketsModel FTicketsGrid; // the ticket grid's content


  void Warn(const QStringList &warnings) const;
  // Clears the failures of the previous step; a person's step may renew a
  // refused token again, an unattended run only once in all.
  void BeginServiceStep();
  void Failed(const QString &what, const TFailure &failure);
  // Run-time warnings (an address that cannot be used, a damaged store): a
  // WARNING line of the run log, and shown to a person in an interactive run.
  void NoteWarnings(const QStringList &warnings);
  // The operators of a service call, their addresses parsed (an address that
  // cannot be used is dropped with a warning naming the operator) and linked
  // to their teams; a failure noted under `what`.
  void TakeOperators(TRestResult<tyRestOperators> &&result, const QString &what);
  // The store beside the settings, opened at first use; none when it cannot be.
  TFollowUpStore *Store();
  // What the report compares with, when it remembers (History); a store that
  // cannot be read gives a first report, with a warning.
  std::shared_ptr<const TFollowUpMemory> FollowUpMemory();
  // The grid's follow-up marks: the snoozes in force and, for the tickets of
  // `report` (when given), since when each row is listed; else what the last
  // sent report listed.
  void MarkGrid(const TReportOutput *report = nullptr);
  // Records the report just sent in the store's history.
  void RecordSentReport(const TReportOutput &full, qsizetype mails, int mailsSent);
  // The value of a service call, its failure (if any) noted under `what`.
  template <class T> T Noted(TRestResult<T> &&result, const QString &what)
  {
    if (result.Failure)
      Failed(what, *result.Failure);
    return std::move(result.Value);
  }
  // A token in force, requested (and saved) when needed.
  TTask<bool> EnsureToken();
  // Asks the service for a token; a failure is one of the step's.
  TTask<bool> RequestToken();
  // The service refused the token: it is dropped from the settings, and one new
  // token is requested per step. Gives whether a new one is in force.
  TTask<bool> RenewRefusedToken();
  // Whether the step under way was cancelled, and the failure saying so (none
  // when the whole run is stopped: the run says that itself).
  bool Cancelled() const;
  void NoteCancelled(const QString &step);
  // Whether the service's address and API account were entered.
  bool ServiceConfigured() const;
  // The same; when not, a person is told where to enter them (EQuorvexError) and
  // an unattended run counts the retrieval as incomplete.
  bool ServiceReady();
  // <settings folder>/<executable name>: base of the report files.
  QString OutputBase() const;

  QString FExeFileName;
  TdmRest &FRest;
  TWarningSink FWarningSink;
  TSecretLookup FSecrets;
  std::unique_ptr<TColourStore> FColours;
  TFailures FStepFailures;
  TFailures FRetrievalFailures;
  bool FRetrievalCancelled = false; // the last "Get tickets" ended by a Cancel
  bool FTokenRenewed = false; // a token was requested after a refusal in this step (or run)
  TReportInput FReportInput; // what the last generated report was made from
  QDateTime FReportTime; // and the clock reading its ages count from
  TReportOutput FReport;     // and the report itself
  QString FRecipientsUnknown; // why the last report's recipients could not be computed
  QDeadlineTimer FDeadline{QDeadlineTimer::Forever};
  const TStopRequest *FStop = nullptr; // the whole run's
  TStopRequest FCancel; // the step's: a Cancel, or the run's stop passed on
  bool FResend = false;
  std::unique_ptr<TFollowUpStore> FStore;
  // Organizations whose tickets the last retrieval could not give in full.
  tyRestOrganizations FUncomparedOrganizations;
  qint64 FRecordedReport = -1; // the store's key of the report this run sent
};
