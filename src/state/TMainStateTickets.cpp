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
#include <utility>

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
  FTickets = tyRestTickets(); // its room goes too

  // Three queries per organization, in this order: all open tickets, then the
  // tickets carrying the English and the French ten-exchanges notice.
  QList<TTicketQuery> queries;
  for (const tyRestOrganization &organization : std::as_const(FSelectedOrganizations))
    queries << TTicketQuery{organization.id, QString()} << TTicketQuery{organization.id, CTenExchangesEnglish}
            << TTicketQuery{organization.id, CTenExchangesFrench};
  tyRestTickets tickets;
  tyRestTickets english;
  QList<tyRestTickets> merged; // per organization
  // Each query's result, in order: counted, traced, logged, failures remembered,
  // and each organization's three lists merged once the last is in.
  FRest.GET_TicketsListsOpen(FICI, queries, [&](qsizetype index, TTicketQueryResult &&result) {
    const QString name = FSelectedOrganizations.at(index / 3).name;
    const int kind = static_cast<int>(index % 3);
    const QString title = kind == 0 ? name
                          : kind == 1 ? name + QStringLiteral(" / > 10 exchanges")
                                      : name + QStringLiteral(" / > 10 échanges");
    const QString label = kind == 0 ? name
                          : kind == 1 ? name + QStringLiteral(" / > 10 exchanges (E)")
                                      : name + QStringLiteral(" / > 10 échanges (F)");
    const QString dots = kind == 0   ? QStringLiteral(" ....................... : ")
                         : kind == 1 ? QStringLiteral(" .. : ")
                                     : QStringLiteral(" ... : ");
    progress.LoadingSetTitle(title);
    progress.LoadingSetProgressBar(maximum, ++step);
    if (result.Failed)
      FRetrievalFailures.append(QStringLiteral("%1: %2").arg(label, result.Error));
    TraceValue(lcApp(), qPrintable(label), result.Tickets.size());
    FslLog.append(LogLine(QStringLiteral(" - * ") + label + dots + QString::number(result.Tickets.size())));
    ProcessMessages();
    if (kind == 0) {
      tickets = std::move(result.Tickets);
    } else if (kind == 1) {
      english = std::move(result.Tickets);
    } else {
      progress.LoadingSetProgressBar(maximum, ++step);
      merged.append(MergeTenExchanges(std::exchange(tickets, {}), english, result.Tickets));
      ProcessMessages();
      FslLog.append(QString());
    }
  });
  // Room for exactly the tickets held, each organization's list freed as soon
  // as its tickets moved.
  qsizetype count = 0;
  for (const tyRestTickets &organizationTickets : std::as_const(merged))
    count += organizationTickets.size();
  FTickets.reserve(count);
  for (tyRestTickets &organizationTickets : merged)
    FTickets.append(std::exchange(organizationTickets, {}));

  TraceValue(lcApp(), "Nb tickets", FTickets.size());
  FslLog.append(LogLine(QStringLiteral(" - * Nb tickets: ") + QString::number(FTickets.size())));
  FslLog.append(QString());
  FTicketsGrid.SetTickets(FTickets);
}

void TMainState::bbtGET_Organization_ListClick(TLoadingProgress &progress, const TChooseOrga &chooseOrga)
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtGET_Organization_ListClick");
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
    if (!EnsureToken())
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
