// The steps of the main window that talk to the service: tickets, organizations
// and teams, statuses and priorities.

#include "TMainState.h"

#include "core/RunLog.h"
#include "core/uTools.h"
#include "core/Trace.h"
#include "rest/RestErrors.h"
#include "rest/dRest.h"
#include "tickets/ColourStore.h"
#include "tickets/LoadingProgress.h"
#include "tickets/Selection.h"
#include "tickets/SelectionSettings.h"
#include "tickets/StatusPriorities.h"
#include "tickets/TenExchanges.h"

#include <QCoreApplication>
#include <QScopeGuard>
#include <algorithm>

namespace {
// Keeps windows painted between two service calls of a long step.
void ProcessMessages() { QCoreApplication::processEvents(); }
} // namespace

void TMainState::BeginServiceStep()
{
  FStepFailures.clear();
  if (!FAutomatic)
    FTokenRenewed = false;
}

void TMainState::Failed(const QString &what, const TRestFailure &failure)
{
  FStepFailures.append(TStepFailure{what, failure.Reason, failure.Details});
}

void TMainState::NoteFailure(const QString &what)
{
  if (FRest.LastCallFailed())
    Failed(what, FRest.LastFailure());
}

bool TMainState::RequestToken()
{
  const QString what = QStringLiteral("Access token from ") + TdmRest::GetQuorvexItsmUrl(FICI);
  try {
    if (FRest.GetToken(FICI))
      return true;
    Failed(what, FRest.LastFailure());
  } catch (const ERestTransportError &error) {
    Failed(what, TRestFailure{error.Message(), error.Details()});
  }
  return false;
}

bool TMainState::EnsureToken()
{
  if (!FRest.TokenOk() && RequestToken())
    SaveConfigITSM();
  return FRest.TokenOk();
}

bool TMainState::RenewRefusedToken()
{
  FICI.API.Token.clear();
  const bool renewed = !FTokenRenewed && RequestToken();
  FTokenRenewed = true;
  SaveConfigITSM(); // the refused token must not be reused at the next start
  return renewed;
}

QString TMainState::RetrievalStatusText() const
{
  const int count = static_cast<int>(FTickets.size());
  if (FRetrievalFailures.isEmpty())
    return QStringLiteral("%1 open ticket(s) retrieved").arg(count);
  // What the grid shows comes first: a long failure is clipped at the end.
  QString failures = FRetrievalFailures.first().Text();
  if (FRetrievalFailures.size() > 1)
    failures += QStringLiteral(" (and %1 more failure(s))").arg(FRetrievalFailures.size() - 1);
  if (FExtractionTickets >= FRetrievalAttempt)
    return QStringLiteral("Retrieval incomplete, %1 open ticket(s) shown. %2").arg(count).arg(failures);
  const QString since = FExtractionTickets > 0
                            ? QStringLiteral("the grid still shows the %1 ticket(s) retrieved on %2")
                                  .arg(count)
                                  .arg(DateTimeToStr(FExtractionTickets))
                            : QStringLiteral("no ticket has been retrieved yet");
  return QStringLiteral("Retrieval failed, %1. %2").arg(since, failures);
}

void TMainState::bbtGetTicketsClick(TLoadingProgress &progress)
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtGetTicketsClick");
  BeginServiceStep();
  FRetrievalAttempt = NowDateTime();
  const auto keepFailures = qScopeGuard([this] { FRetrievalFailures = FStepFailures; });
  if (!ServiceReady())
    return;
  if (FSelectedOrganizations.isEmpty()) {
    // Nothing to retrieve: a report made now would be a false "all clear".
    FStepFailures.append(TStepFailure{QStringLiteral("Get tickets"),
                                      QStringLiteral("no organization is selected; choose them with "
                                                     "\"Organizations & Teams\""),
                                      QString()});
    return;
  }
  // Entries that cannot be queried are left out, and the retrieval is then
  // incomplete: the report must not pass them over in silence.
  for (const QString &reason : SelectionIdErrors(FFichINI, FSelectedOrganizations, FSelectedTeams))
    FStepFailures.append(TStepFailure{QStringLiteral("Settings"), reason, QString()});
  if (!EnsureToken())
    return;

  const auto queried = std::count_if(FSelectedOrganizations.cbegin(), FSelectedOrganizations.cend(),
                                     [](const tyRestOrganization &organization) { return organization.id > 0; });
  const int maximum = 4 * static_cast<int>(queried);
  int step = 0;
  progress.LoadingShow(1);
  const auto hide = qScopeGuard([&progress] { progress.LoadingHide(); });
  progress.LoadingSetAnimation(2);
  progress.LoadingSetProgressBar(maximum, 0);

  const TDateTime extraction = NowDateTime();
  FslLog.append(QString());
  tyRestTickets retrieved;
  int queries = 0;
  int failedQueries = 0;

  // One query of one organization: counted, traced, logged, failures remembered.
  auto query = [&](const tyRestOrganization &organization, const QString &title, const QString &search,
                   const QString &label, const QString &dots, const QString &what) {
    progress.LoadingSetTitle(title);
    progress.LoadingSetProgressBar(maximum, ++step);
    ++queries;
    const tyRestTickets tickets = FRest.GET_TicketsListOpen(FICI, organization.id, search);
    if (FRest.LastCallFailed()) {
      ++failedQueries;
      Failed(what, FRest.LastFailure());
    }
    TraceValue(lcApp(), qPrintable(label), tickets.size());
    FslLog.append(LogLine(QStringLiteral(" - * ") + label + dots + QString::number(tickets.size())));
    ProcessMessages();
    return tickets;
  };

  for (const tyRestOrganization &organization : FSelectedOrganizations) {
    if (organization.id <= 0)
      continue;
    const QString name = organization.name;
    tyRestTickets tickets = query(organization, name, QString(), name, QStringLiteral(" ....................... : "),
                                  name + QStringLiteral(" / open tickets"));
    const QString english = name + QStringLiteral(" / > 10 exchanges (E)");
    const tyRestTickets englishFound = query(organization, name + QStringLiteral(" / > 10 exchanges"),
                                             CTenExchangesEnglish, english, QStringLiteral(" .. : "), english);
    const QString french = name + QStringLiteral(" / > 10 échanges (F)");
    const tyRestTickets frenchFound = query(organization, name + QStringLiteral(" / > 10 échanges"),
                                            CTenExchangesFrench, french, QStringLiteral(" ... : "), french);
    progress.LoadingSetProgressBar(maximum, ++step);
    retrieved.append(MergeTenExchanges(std::move(tickets), englishFound, frenchFound));
    ProcessMessages();
    FslLog.append(QString());
  }

  TraceValue(lcApp(), "Nb tickets", retrieved.size());
  FslLog.append(LogLine(QStringLiteral(" - * Nb tickets: ") + QString::number(retrieved.size())));
  FslLog.append(QString());
  // Nothing came at all: the list and the grid of the last good retrieval stay.
  if (failedQueries == queries)
    return;
  FExtractionTickets = extraction;
  FTickets = std::move(retrieved);
  FTicketsGrid.SetTickets(FTickets);
}

void TMainState::bbtGET_Organization_ListClick(TLoadingProgress &progress, const TChooseOrga &chooseOrga)
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtGET_Organization_ListClick");
  BeginServiceStep();
  if (!ServiceReady())
    return;
  int errors = 0;
  {
    // The progress window goes away however the fetching ends, an error included.
    progress.LoadingShow(2);
    const auto hide = qScopeGuard([&progress] { progress.LoadingHide(); });
    progress.LoadingSetTitle(QStringLiteral("GetToken"));
    if (!EnsureToken()) {
      ++errors;
    } else {
      if (FOrganizations.isEmpty()) {
        progress.LoadingSetTitle(QStringLiteral("Get Organizations"));
        FOrganizations = FRest.GET_OrganizationsList(FICI);
        NoteFailure(QStringLiteral("Organization list"));
        if (FOrganizations.isEmpty())
          ++errors;
      }
      if (FTeams.isEmpty()) {
        progress.LoadingSetTitle(QStringLiteral("Get Teams"));
        FTeams = FRest.GET_Teams(FICI, true);
        NoteFailure(QStringLiteral("Team list"));
        if (FTeams.isEmpty()) {
          ++errors;
        } else {
          progress.LoadingSetAnimation(3);
          progress.LoadingSetTitle(QStringLiteral("Get Organizations / Teams"));
          FOrganizationsTeams = UpdateListOrganizationsTeams(FTeams);
          progress.LoadingSetAnimation(2);
        }
      }
      if (FOperators.isEmpty()) {
        progress.LoadingSetTitle(QStringLiteral("Get Operators"));
        FOperators = FRest.GET_OperatorsList(FICI);
        NoteFailure(QStringLiteral("Operator list"));
        if (FOperators.isEmpty()) {
          ++errors;
        } else {
          progress.LoadingSetAnimation(3);
          progress.LoadingSetTitle(QStringLiteral("Get Operators / Teams"));
          FTeamsOperators = UpdateListTeamsOperators(FOperators);
          progress.LoadingSetAnimation(2);
        }
      }
    }
  }
  TraceValue(lcApp(), "Errors", errors);
  if (errors == 0 &&
      chooseOrga(FOrganizations, FSelectedOrganizations, FTeams, FSelectedTeams, FOrganizationsTeams))
    SaveConfigOrgaAndTeams();
}

void TMainState::bbtStatusAndPropertiesClick(const TEditColours &editColours)
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtStatusAndPropertiesClick");
  BeginServiceStep();
  if (FStatus.isEmpty()) {
    if (!ServiceReady() || !EnsureToken())
      return;
    FStatus = BuildStatusList(FRest.GET_Objects(FICI, QStringLiteral("TICKETING"), QStringLiteral("TICKET_STATUS")),
                              Colours());
    NoteFailure(QStringLiteral("Status list"));
  }
  if (FPriorities.isEmpty()) {
    FPriorities = BuildPriorityList(
        FRest.GET_Objects(FICI, QStringLiteral("TICKETING"), QStringLiteral("TICKET_PRIORITY")), Colours());
    NoteFailure(QStringLiteral("Priority list"));
  }
  if (editColours(FStatus, FPriorities, Colours())) {
    SaveStatus();
    SavePriorities();
  }
}
