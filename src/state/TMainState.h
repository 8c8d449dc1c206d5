#pragma once

#include "core/ConfigTypes.h"
#include "rest/uTypes.h"
#include "tickets/TicketsModel.h"

#include <QStringList>
#include <functional>

// Everything the main window owns for the program's lifetime, and the steps that
// run on it. No widget lives here: the window and the unattended run drive the
// same object, and tests drive it without any window.
class TMainState
{
public:
  // Called with each message that a person must see (a damaged stored secret...);
  // the window shows a message box, a headless run writes to stderr.
  using TWarningSink = std::function<void(const QString &)>;

  explicit TMainState(QString exeFileName, TWarningSink warningSink = {});

  // Fixes the file locations and reads every settings group, in the order:
  // service, SMTP, organizations and teams, filters.
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

  // Trace log path: the settings folder + the executable name with ".log".
  QString TraceLogFile() const;

  tyRestOrganizations FOrganizations;
  tyRestTeams FTeams;
  tyRestOperators FOperators;
  tyRestOrganizationsTeams FOrganizationsTeams;
  tyRestTeamsOperators FTeamsOperators;
  tyRestOrganizations FSelectedOrganizations;
  tyRestTeams FSelectedTeams;
  tyRestTickets FExtractionTickets;
  tyRestTickets FTickets;
  QStringList FHtmlContent;
  QStringList FSlRecipientTo;
  QStringList FSlRecipientCc;
  tyRestOperators FRecipientTo; // primary recipients, completed from FOperators
  tyRestOperators FRecipientCC; // recipients in copy
  tySMTPserver FSmtp;
  bool FAutomatic = false;
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

  QString FExeFileName;
  TWarningSink FWarningSink;
};
