#include "TMainState.h"

#include "rest/dRest.h"

#include "core/AppPaths.h"
#include "core/Errors.h"
#include "core/ExtraAuthorities.h"
#include "core/Settings.h"
#include "core/TextFiles.h"
#include "core/Trace.h"
#include "core/RunLog.h"
#include "core/uTools.h"
#include "report/FollowUpStore.h"
#include "report/HtmlTexts.h"
#include "report/OperatorAddresses.h"
#include "tickets/Selection.h"
#include "rest/dRest.h"
#include "tickets/ColourSettings.h"
#include "tickets/ColourStore.h"
#include "tickets/SelectionSettings.h"

#include <QFileInfo>

namespace {

// The connection and the credentials: a token obtained with other values is not
// to be used with these.
bool SameAccount(const tyQuorvexITSM &a, const tyQuorvexITSM &b)
{
  return a.Instance == b.Instance && a.SaaS == b.SaaS && a.API.ClientID == b.API.ClientID &&
         a.API.ClientSecret == b.API.ClientSecret && a.API.Username == b.API.Username &&
         a.API.Password == b.API.Password;
}

} // namespace

TMainState::TMainState(QString exeFileName, TdmRest &rest, TWarningSink warningSink)
    : FExeFileName(std::move(exeFileName)), FRest(rest), FWarningSink(std::move(warningSink))
{
  FRest.SetTokenRefusedHandler([this] { return RenewRefusedToken(); });
  FRest.SetStopRequest(&FCancel);
}

TMainState::~TMainState()
{
  FRest.SetTokenRefusedHandler({});
  FRest.SetStopRequest(nullptr);
}

bool TMainState::EditServiceSettings(const TEditApi &editApi)
{
  const TraceScope trace(lcApp(), "Session.EditServiceSettings");
  tyQuorvexITSM edited = FICI;
  if (!editApi(edited))
    return false;
  if (!SameAccount(edited, FICI)) {
    qCDebug(lcApp) << "Connection or credentials changed: the saved token is dropped";
    edited.API.Token.clear();
    FRest.DropToken();
  }
  FICI = edited;
  SetConfiguredAuthorities(FICI.CaFile);
  SaveConfigITSM();
  return true;
}

bool TMainState::EditMailSettings(const std::function<bool(tySMTPserver &, tyDelivery &)> &edit)
{
  tySMTPserver smtp = FSmtp;
  tyDelivery delivery = FDelivery;
  if (!edit(smtp, delivery))
    return false;
  FSmtp = std::move(smtp);
  FDelivery = std::move(delivery);
  SaveConfigSMTP();
  SaveConfigDelivery();
  return true;
}

bool TMainState::EditFilters(const std::function<bool(std::int32_t &, std::int32_t &, QStringList &)> &edit)
{
  std::int32_t nbMinutes = FNbMinutes;
  std::int32_t nbDays = FNbDays;
  QStringList statusToIgnore = FStatusToIgnore;
  if (!edit(nbMinutes, nbDays, statusToIgnore))
    return false;
  FNbMinutes = nbMinutes;
  FNbDays = nbDays;
  FStatusToIgnore = std::move(statusToIgnore);
  SaveConfigFilters();
  return true;
}

bool TMainState::EditTexts(const std::function<bool(tyHtmlTexts &)> &edit)
{
  tyHtmlTexts texts = FHtmlTexts;
  if (!edit(texts))
    return false;
  FHtmlTexts = std::move(texts);
  SaveHtmlTexts();
  return true;
}

void TMainState::SetTicketsForTest(tyRestTickets tickets)
{
  FRetrievalAttempt = FExtractionTickets = QDateTime::currentDateTime();
  FRetrievedOrganizations = FSelectedOrganizations;
  FRetrievedTeams = FSelectedTeams;
  FTickets = std::move(tickets);
  FTicketsGrid.SetTickets(FTickets);
}

void TMainState::BeginUnattendedRun(bool dryRun)
{
  FAutomatic = true;
  FDryRun = dryRun;
}

void TMainState::BeginRunLog()
{
  FslLog = {LogLine(QStringLiteral(" - BEGIN"))};
}

void TMainState::AppendLog(const QString &text)
{
  FslLog.append(LogLine(text));
}

void TMainState::SaveRunLog()
{
  FLogFile = SaveLinesAsNewFile(FLogFile, FslLog, QStringLiteral("\n"));
}

TColourStore &TMainState::Colours()
{
  if (!FColours || FColours->IniPath() != FFichINI)
    FColours = std::make_unique<TColourStore>(FFichINI);
  return *FColours;
}

QString TMainState::OutputBase() const
{
  return QFileInfo(FFichINI).absolutePath() + u'/' + ExeBaseName(FExeFileName);
}

tyWindowLayout TMainState::WindowLayout() const
{
  return ReadWindowLayout(FFichINI);
}

void TMainState::KeepWindowLayout(const tyWindowLayout &layout)
{
  if (layout != ReadWindowLayout(FFichINI))
    SaveWindowLayout(FFichINI, layout);
}

void TMainState::FormCreate()
{
  Trace::Clear();
  const TraceScope trace(lcApp(), "Session.FormCreate");
  FAutomatic = false;
  InitFichIniLocation();
  ReadConfigITSM();
  ReadConfigSMTP();
  ReadConfigDelivery();
  ReadConfigOrgaAndTeams();
  ReadConfigFilters();
  ReadHtmlTexts();
}

void TMainState::FormDestroy()
{
  {
    const TraceScope trace(lcApp(), "Session.FormDestroy");
    qCDebug(lcApp).noquote().nospace() << "Save log to \"" << TraceLogFile() << '"';
  }
  Trace::Shutdown();
}

void TMainState::InitFichIniLocation()
{
  const TraceScope trace(lcApp(), "Session.InitFichIniLocation");
  const tyAppPaths paths = ::InitFichIniLocation(FExeFileName);
  FFichINI = paths.FFichINI;
  FLogFile = paths.FLogFile;
  Trace::AttachFile(TraceLogFile());
}

void TMainState::SetRequestDeadline(QDeadlineTimer deadline)
{
  FDeadline = deadline;
  FRest.SetDeadline(deadline);
}

void TMainState::SetStopRequest(const TStopRequest *stop)
{
  FStop = stop;
  if (stop)
    QObject::connect(stop, &TStopRequest::Stopped, &FCancel, [this] { FCancel.Request(FStop->Reason()); });
}

QString TMainState::TraceLogFile() const
{
  return TraceLogPathFor(FFichINI, FExeFileName);
}

void TMainState::ReadConfigITSM()
{
  TSettingsWarnings warnings;
  ::ReadConfigITSM(FFichINI, FICI, warnings, FSecrets);
  SetConfiguredAuthorities(FICI.CaFile);
  Warn(warnings);
}

void TMainState::ReadConfigSMTP()
{
  TSettingsWarnings warnings;
  ::ReadConfigSMTP(FFichINI, FSmtp, warnings, FSecrets);
  Warn(warnings);
}

void TMainState::ReadConfigDelivery()
{
  TSettingsWarnings warnings;
  ::ReadConfigDelivery(FFichINI, FDelivery, warnings);
  Warn(warnings);
}

void TMainState::ReadConfigOrgaAndTeams()
{
  ::ReadConfigOrgaAndTeams(FFichINI, FSelectedOrganizations, FSelectedTeams);
}

void TMainState::ReadConfigFilters()
{
  ::ReadConfigFilters(FFichINI, FNbMinutes, FNbDays, FStatusToIgnore);
}

void TMainState::SaveConfigITSM()
{
  TSettingsWarnings warnings;
  ::SaveConfigITSM(FFichINI, FICI, FSecrets, warnings);
  Warn(warnings);
}

void TMainState::SaveConfigSMTP()
{
  TSettingsWarnings warnings;
  ::SaveConfigSMTP(FFichINI, FSmtp, FSecrets, warnings);
  Warn(warnings);
}
void TMainState::SaveConfigDelivery() { ::SaveConfigDelivery(FFichINI, FDelivery); }
void TMainState::SaveConfigOrgaAndTeams()
{
  ::SaveConfigOrgaAndTeams(FFichINI, FSelectedOrganizations, FSelectedTeams);
}
void TMainState::SaveConfigFilters() { ::SaveConfigFilters(FFichINI, FNbMinutes, FNbDays, FStatusToIgnore); }
void TMainState::SavePriorities() { ::SavePriorities(FFichINI, FPriorities); }
void TMainState::SaveStatus() { ::SaveStatus(FFichINI, FStatus); }

void TMainState::ReadHtmlTexts()
{
  const TraceScope trace(lcApp(), "Session.ReadHtmlTexts");
  ::ReadHtmlTexts(FFichINI, FExeFileName, FHtmlTexts);
}

void TMainState::SaveHtmlTexts()
{
  const TraceScope trace(lcApp(), "Session.SaveHtmlTexts");
  ::SaveHtmlTexts(FFichINI, FExeFileName, FHtmlTexts);
}

void TMainState::Warn(const QStringList &warnings) const
{
  if (!FWarningSink)
    return;
  for (const QString &warning : warnings)
    FWarningSink(warning);
}

void TMainState::NoteWarnings(const QStringList &warnings)
{
  for (const QString &warning : warnings) {
    TraceError(lcApp(), warning);
    FslLog.append(LogLine(QStringLiteral(" - WARNING ") + warning));
  }
  if (!FAutomatic)
    Warn(warnings);
}

void TMainState::TakeOperators(TRestResult<tyRestOperators> &&result, const QString &what)
{
  NoteWarnings(result.Warnings);
  FOperators = Noted(std::move(result), what);
  NoteWarnings(KeepUsableAddresses(FOperators));
  if (!FOperators.isEmpty())
    FTeamsOperators = UpdateListTeamsOperators(FOperators);
}

bool TMainState::ServiceConfigured() const
{
  return !TrimBlanks(FICI.Instance).isEmpty() && !TrimBlanks(FICI.API.ClientID).isEmpty();
}

bool TMainState::ServiceReady()
{
  if (ServiceConfigured())
    return true;
  const QString missing =
      QStringLiteral("Enter the service's address and API account in 'Quorvex ITSM API' first");
  if (!FAutomatic)
    throw EGuidance(missing, QStringLiteral("Quorvex ITSM API"));
  FStepFailures.append(TFailure{QStringLiteral("Quorvex ITSM API"), missing, QString()});
  return false;
}
