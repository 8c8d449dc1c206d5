// The steps of the main window that talk to the service: tickets, organizations
// and teams, statuses and priorities.

#include "TMainState.h"

#include "core/RunLog.h"
#include "core/Trace.h"
#include "rest/RestErrors.h"
#include "rest/dRest.h"
#include "tickets/ColourStore.h"
#include "tickets/LoadingProgress.h"
#include "tickets/Selection.h"
#include "tickets/StatusPriorities.h"
#include "tickets/TenExchanges.h"

#include <QCoreApplication>
#include <QScopeGuard>

namespace {
// Keeps windows painted between two service calls of a long step.
void ProcessMessages() { QCoreApplication::processEvents(); }
} // namespace

bool TMainState::EnsureToken()
{
  try {
    if (!FRest.TokenOk() && FRest.GetToken(FICI))
      SaveConfigITSM();
  } catch (const ERestTransportError &error) {
    // A person sees the error; an unattended run goes on and its report says
    // that the retrieval was incomplete.
    if (!FAutomatic)
      throw;
    FRetrievalFailures.append(error.Message());
    return false;
  }
  if (FRest.TokenOk())
    return true;
  FRetrievalFailures.append(QStringLiteral("no access token from %1: %2")
                                .arg(TdmRest::GetQuorvexItsmUrl(FICI), FRest.LastError()));
  return false;
}

void TMainState::bbtGetTicketsClick(TLoadingProgress &progress)
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtGetTicketsClick");
  FRetrievalFailures.clear();
  if (!ServiceReady())
    return;
  if (FSelectedOrganizations.isEmpty()) {
    // Nothing to retrieve: a report made now would be a false "all clear".
    FRetrievalFailures.append(QStringLiteral("no organization is selected (\"Organizations & Teams\")"));
    return;
  }
  if (!EnsureToken())
    return;

  const int maximum = 4 * static_cast<int>(FSelectedOrganizations.size());
  int step = 0;
  progress.LoadingShow(1);
  const auto hide = qScopeGuard([&progress] { progress.LoadingHide(); });
  progress.LoadingSetAnimation(2);
  progress.LoadingSetProgressBar(maximum, 0);

  FExtractionTickets = NowDateTime();
  FslLog.append(QString());
  FTickets.clear();

  // One query of one organization: counted, traced, logged, failures remembered.
  auto query = [&](const tyRestOrganization &organization, const QString &title, const QString &search,
                   const QString &label, const QString &dots) {
    progress.LoadingSetTitle(title);
    progress.LoadingSetProgressBar(maximum, ++step);
    const tyRestTickets tickets = FRest.GET_TicketsListOpen(FICI, organization.id, search);
    if (FRest.LastCallFailed())
      FRetrievalFailures.append(QStringLiteral("%1: %2").arg(label, FRest.LastError()));
    TraceValue(lcApp(), qPrintable(label), tickets.size());
    FslLog.append(LogLine(QStringLiteral(" - * ") + label + dots + QString::number(tickets.size())));
    ProcessMessages();
    return tickets;
  };

  for (const tyRestOrganization &organization : FSelectedOrganizations) {
    const QString name = organization.name;
    tyRestTickets tickets = query(organization, name, QString(), name, QStringLiteral(" ....................... : "));
    const tyRestTickets english = query(organization, name + QStringLiteral(" / > 10 exchanges"),
                                        CTenExchangesEnglish, name + QStringLiteral(" / > 10 exchanges (E)"),
                                        QStringLiteral(" .. : "));
    const tyRestTickets french = query(organization, name + QStringLiteral(" / > 10 échanges"),
                                       CTenExchangesFrench, name + QStringLiteral(" / > 10 échanges (F)"),
                                       QStringLiteral(" ... : "));
    progress.LoadingSetProgressBar(maximum, ++step);
    FTickets.append(MergeTenExchanges(std::move(tickets), english, french));
    ProcessMessages();
    FslLog.append(QString());
  }

  TraceValue(lcApp(), "Nb tickets", FTickets.size());
  FslLog.append(LogLine(QStringLiteral(" - * Nb tickets: ") + QString::number(FTickets.size())));
  FslLog.append(QString());
  FTicketsGrid.SetTickets(FTickets);
}

void TMainState::bbtGET_Organization_ListClick(TLoadingProgress &progress, const TChooseOrga &chooseOrga)
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtGET_Organization_ListClick");
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
        if (FOrganizations.isEmpty())
          ++errors;
      }
      if (FTeams.isEmpty()) {
        progress.LoadingSetTitle(QStringLiteral("Get Teams"));
        FTeams = FRest.GET_Teams(FICI, true);
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
  if (FStatus.isEmpty()) {
    if (!ServiceReady() || !EnsureToken())
      return;
    FStatus = BuildStatusList(FRest.GET_Objects(FICI, QStringLiteral("TICKETING"), QStringLiteral("TICKET_STATUS")),
                              Colours());
  }
  if (FPriorities.isEmpty())
    FPriorities = BuildPriorityList(
        FRest.GET_Objects(FICI, QStringLiteral("TICKETING"), QStringLiteral("TICKET_PRIORITY")), Colours());
  if (editColours(FStatus, FPriorities, Colours())) {
    SaveStatus();
    SavePriorities();
  }
}
