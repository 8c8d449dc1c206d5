#pragma once

#include "core/ConfigTypes.h"
#include "core/TDateTime.h"
#include "report/HtmlTexts.h"
#include "rest/uTypes.h"
#include "tickets/TicketsModel.h"

#include <QStringList>
#include <functional>
#include <memory>

class TColourStore;
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

  TMainState(QString exeFileName, TdmRest &rest, TWarningSink warningSink = {});
  ~TMainState();

  // Fixes the file locations and reads every settings group, in the order:
  // service, SMTP, organizations and teams, filters, then the text blocks.
  void FormCreate();
  // Ends the trace with the name of its log file.
  void FormDestroy();

  void InitFichIniLocation();
  void ReadConfigITSM();
  void ReadConfigSMTP();
  void ReadConfigOrgaAndTeams();
  void ReadConfigFilters();
  void SaveConfigITSM();
  void SaveConfigSMTP();
  void SaveConfigOrgaAndTeams();
  void SaveConfigFilters();
  void SavePriorities();
  void SaveStatus();
  void ReadHtmlTexts();
  void SaveHtmlTexts();

  // "Get tickets": the open tickets of every selected organization, flagged for
  // the ten-exchanges notice, into FTickets and the grid; counts in FslLog.
  void bbtGetTicketsClick(TLoadingProgress &progress);
  // "Organizations && Teams": fetches the lists still empty, links them, and
  // lets the user choose; the choice is saved on OK.
  void bbtGET_Organization_ListClick(TLoadingProgress &progress, const TChooseOrga &chooseOrga);
  // "Status && Priorities": fetches the lists still empty, gives each its colour,
  // and lets the user change them; saved on OK.
  void bbtStatusAndPropertiesClick(const TEditColours &editColours);
  // "Generate Mail": the report in FHtmlContent and its recipients; an
  // interactive run also writes the .to, .cc and .html files and opens the page.
  void bbtGenerateMailClick(const TOpenFile &openFile = {});
  // "Send Mail": the last generated report to the SMTP settings' recipients,
  // sent off this thread while `progress` names the server. False, having sent
  // nothing, when no report was generated.
  bool bbtSendMailClick(TLoadingProgress &progress);

  // Path of the report page written by an interactive or dry run.
  QString ReportFile() const { return OutputBase() + QStringLiteral(".html"); }
  // Colours and priority codes of the settings file.
  TColourStore &Colours();
  // Problems met by the last retrieval (no token, a ticket query that failed);
  // empty when it was complete.
  const QStringList &RetrievalFailures() const { return FRetrievalFailures; }

  // Trace log path: the settings folder + the executable name with ".log".
  QString TraceLogFile() const;

  tyRestOrganizations FOrganizations;
  tyRestTeams FTeams;
  tyRestOperators FOperators;
  tyRestOrganizationsTeams FOrganizationsTeams;
  tyRestTeamsOperators FTeamsOperators;
  tyRestOrganizations FSelectedOrganizations;
  tyRestTeams FSelectedTeams;
  TDateTime FExtractionTickets = 0; // moment of the last retrieval
  tyRestTickets FTickets;
  QStringList FHtmlContent;
  QStringList FSlRecipientTo;
  QStringList FSlRecipientCc;
  tyRestOperators FRecipientTo; // primary recipients, completed from FOperators
  tyRestOperators FRecipientCC; // recipients in copy
  tyHtmlTexts FHtmlTexts;
  tySMTPserver FSmtp;
  bool FAutomatic = false;
  bool FDryRun = false; // an unattended run that writes the report files and sends nothing
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

private:
  void Warn(const QStringList &warnings) const;
  // A token in force, renewed (and saved) when needed.
  bool EnsureToken();
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
  std::unique_ptr<TColourStore> FColours;
  QStringList FRetrievalFailures;
};
