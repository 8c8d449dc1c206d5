// The steps of the main window that talk to the service: tickets, organizations
// and teams, statuses and priorities.

#include "TMainState.h"

#include "core/Errors.h"
#include "core/RunLog.h"
#include "core/uTools.h"
#include "FailureSummary.h"
#include "core/Trace.h"
#include "rest/dRest.h"
#include "tickets/ColourStore.h"
#include "tickets/LoadingProgress.h"
#include "tickets/Selection.h"
#include "tickets/SelectionSettings.h"
#include "tickets/StatusPriorities.h"
#include "tickets/TenExchanges.h"

#include <QScopeGuard>
#include <QSet>
#include <utility>
#include <algorithm>

namespace {
// The dates the report sorts tickets by that cannot be read: such a ticket
// stays listed but goes in no section by that date, and the retrieval is
// incomplete, as nobody could check it.
TFailures UnreadableDates(const tyRestTickets &tickets)
{
  TFailures warnings;
  for (const tyRestTicket &ticket : tickets)
    for (const auto &[field, stamp] : {std::pair{"creationDate", &ticket.creationDate}, {"lastUpdate", &ticket.lastUpdate}})
      if (!RestTimestamp2DateTime(*stamp))
        warnings.append(TFailure{
            QStringLiteral("%1 / ticket %2").arg(ticket.organization.name).arg(ticket.id),
            QStringLiteral("its %1 \"%2\" is not a date the program can read; the ticket is listed, but in no "
                           "section that depends on that date; tell the service's administrator")
                .arg(QLatin1String(field), *stamp),
            QString(), /*Warning*/ true});
  return warnings;
}
} // namespace

void TMainState::BeginServiceStep()
{
  FStepFailures.clear();
  if (!FAutomatic)
    FTokenRenewed = false;
  // A Cancel ends one step only; a stop of the whole run holds for every step.
  FCancel.Reset();
  if (FStop && FStop->IsRequested())
    FCancel.Request(FStop->Reason());
}

void TMainState::Cancel()
{
  FCancel.Request(TStopRequest::CancelReason());
}

bool TMainState::Cancelled() const
{
  return FCancel.IsRequested();
}

void TMainState::NoteCancelled(const QString &step)
{
  if (FStop && FStop->IsRequested())
    return;
  FStepFailures.prepend(TFailure{step, QStringLiteral("cancelled before its end; nothing more was asked"), QString()});
}

void TMainState::Failed(const QString &what, const TFailure &failure)
{
  TFailure named = failure;
  named.What = what;
  FStepFailures.append(std::move(named));
}

TTask<bool> TMainState::RequestToken()
{
  const TRestResult<> token = co_await FRest.GetToken(FICI);
  if (token.Failure)
    Failed(QStringLiteral("Access token from ") + TdmRest::GetQuorvexItsmUrl(FICI), *token.Failure);
  co_return !token.Failed();
}

TTask<bool> TMainState::EnsureToken()
{
  // (No co_await inside a condition that may skip it: the compiler mishandles it.)
  if (!FRest.TokenOk()) {
    const bool obtained = co_await RequestToken();
    if (obtained)
      SaveConfigITSM();
  }
  co_return FRest.TokenOk();
}

TTask<bool> TMainState::RenewRefusedToken()
{
  FICI.API.Token.clear();
  const bool first = !FTokenRenewed;
  FTokenRenewed = true;
  bool renewed = false;
  if (first)
    renewed = co_await RequestToken();
  SaveConfigITSM(); // the refused token must not be reused at the next start
  co_return renewed;
}

QString TMainState::RetrievalStatusText() const
{
  const int count = static_cast<int>(FTickets.size());
  if (FRetrievalFailures.isEmpty())
    return QStringLiteral("%1 open ticket(s) retrieved").arg(count);
  // What the grid shows comes first, then the cause the failure box puts first:
  // a long line is elided at its end.
  const QStringList causes = FailureLines(FRetrievalFailures);
  QString failures = causes.first();
  if (causes.size() > 1)
    failures += QStringLiteral(" (and %1 more cause(s))").arg(causes.size() - 1);
  if (FExtractionTickets >= FRetrievalAttempt)
    return QStringLiteral("Retrieval incomplete, %1 open ticket(s) shown. %2").arg(count).arg(failures);
  const QString since = FExtractionTickets.isValid()
                            ? QStringLiteral("the grid still shows the %1 ticket(s) retrieved on %2")
                                  .arg(count)
                                  .arg(DateTimeToStr(FExtractionTickets))
                            : QStringLiteral("no ticket has been retrieved yet");
  if (FRetrievalCancelled)
    return QStringLiteral("Get tickets cancelled before its end; %1.").arg(since);
  return QStringLiteral("Retrieval failed, %1. %2").arg(since, failures);
}

TTask<> TMainState::RetrieveTickets(TLoadingProgress &progress)
{
  const TraceScope trace(lcApp(), "Session.RetrieveTickets");
  BeginServiceStep();
  FRetrievalAttempt = QDateTime::currentDateTime();
  // Until the tickets came, none of them can be compared with the last report.
  FUncomparedOrganizations = FSelectedOrganizations;
  const auto keepFailures = qScopeGuard([this] {
    FRetrievalFailures = FStepFailures;
    FRetrievalCancelled = Cancelled();
  });
  if (!ServiceReady())
    co_return;
  if (FSelectedOrganizations.isEmpty()) {
    // Nothing to retrieve: a report made now would be a false "all clear".
    const QString missing =
        QStringLiteral("no organization is selected; choose them with \"Organizations & Teams\"");
    FStepFailures.append(TFailure{QStringLiteral("Get tickets"), missing, QString()});
    if (!FAutomatic)
      throw EGuidance(QStringLiteral("No organization is selected: choose them with \"Organizations & Teams\" "
                                     "first"),
                      QStringLiteral("Organizations & Teams"));
    co_return;
  }
  // Entries that cannot be queried are left out, and the retrieval is then
  // incomplete: the report must not pass them over in silence.
  for (const QString &reason : SelectionIdErrors(FFichINI, FSelectedOrganizations, FSelectedTeams))
    FStepFailures.append(TFailure{QStringLiteral("Settings"), reason, QString()});
  // Shown from the token request on: it may wait as long as any query, and
  // the window's Cancel is there.
  progress.LoadingShow(1);
  const auto hide = qScopeGuard([&progress] { progress.LoadingHide(); });
  const bool tokenInForce = co_await EnsureToken();
  if (!tokenInForce) {
    if (Cancelled())
      NoteCancelled(QStringLiteral("Get tickets"));
    co_return;
  }
  // The report needs the operators; when requests overlap anyway their query
  // travels with the tickets' instead of after them. One at a time, the
  // requests keep their order: tickets first.
  if (FICI.ParallelRequests > 1 && FTeamsOperators.isEmpty())
    FRest.StartOperatorsListAhead(FICI);

  const auto queried = std::count_if(FSelectedOrganizations.cbegin(), FSelectedOrganizations.cend(),
                                     [](const tyRestOrganization &organization) { return organization.id > 0; });
  const int maximum = 4 * static_cast<int>(queried);
  int step = 0;
  progress.LoadingSetAnimation(2);
  progress.LoadingSetProgressBar(maximum, 0);

  const QDateTime extraction = QDateTime::currentDateTime();
  FslLog.append(QString());
  tyRestTickets retrieved;
  int queries = 0;
  int failedQueries = 0;

  // Three queries per organization, in this order: all open tickets, then the
  // tickets carrying the English and the French ten-exchanges notice.
  tyRestOrganizations organizations;
  for (const tyRestOrganization &organization : std::as_const(FSelectedOrganizations))
    if (organization.id > 0)
      organizations.append(organization);
  QList<TTicketQuery> requested;
  for (const tyRestOrganization &organization : std::as_const(organizations))
    requested << TTicketQuery{organization.id, QString()} << TTicketQuery{organization.id, CTenExchangesEnglish}
              << TTicketQuery{organization.id, CTenExchangesFrench};
  tyRestTickets tickets;
  tyRestTickets english;
  QList<tyRestTickets> merged; // per organization
  QSet<qsizetype> failedOrganizations; // by position in `organizations`
  // Each query's result, in order: counted, traced, logged, failures remembered,
  // and each organization's three lists merged once the last is in.
  // The window shows each organization's open tickets as their pages come;
  // their ten-exchanges flags and follow-up marks come with the whole list.
  bool gridShowsThisRetrieval = false;
  TTicketRetrieval::TPageKept showPage;
  if (!FAutomatic)
    showPage = [this, &gridShowsThisRetrieval](qsizetype index, const tyRestTickets &kept, qsizetype from) {
      if (index % 3 != 0)
        return;
      if (!std::exchange(gridShowsThisRetrieval, true))
        FTicketsGrid.SetTickets({});
      FTicketsGrid.AppendTickets(kept, from);
    };
  co_await FRest.GET_TicketsListsOpen(FICI, requested, [&](qsizetype index, TRestResult<tyRestTickets> &&result) {
    const QString name = organizations.at(index / 3).name;
    const int kind = static_cast<int>(index % 3);
    const QString title = kind == 0   ? name
                          : kind == 1 ? name + QStringLiteral(" / > 10 exchanges")
                                      : name + QStringLiteral(" / > 10 échanges");
    const QString label = kind == 0   ? name
                          : kind == 1 ? name + QStringLiteral(" / > 10 exchanges (E)")
                                      : name + QStringLiteral(" / > 10 échanges (F)");
    const QString dots = kind == 0   ? QStringLiteral(" ....................... : ")
                         : kind == 1 ? QStringLiteral(" .. : ")
                                     : QStringLiteral(" ... : ");
    progress.LoadingSetTitle(title);
    progress.LoadingSetProgressBar(maximum, ++step);
    ++queries;
    if (result.Failure) {
      ++failedQueries;
      failedOrganizations.insert(index / 3);
      Failed(kind == 0 ? name + QStringLiteral(" / open tickets") : label, *result.Failure);
    }
    TraceValue(lcApp(), qPrintable(label), result.Value.size());
    FslLog.append(LogLine(QStringLiteral(" - * ") + label + dots + QString::number(result.Value.size())));
    if (kind == 0) {
      tickets = std::move(result.Value);
    } else if (kind == 1) {
      english = std::move(result.Value);
    } else {
      progress.LoadingSetProgressBar(maximum, ++step);
      merged.append(MergeTenExchanges(std::exchange(tickets, {}), english, result.Value));
      FslLog.append(QString());
    }
  }, std::move(showPage));
  // Room for exactly the tickets held, each organization's list freed as soon
  // as its tickets moved.
  qsizetype count = 0;
  for (const tyRestTickets &organizationTickets : std::as_const(merged))
    count += organizationTickets.size();
  retrieved.reserve(count);
  for (tyRestTickets &organizationTickets : merged)
    retrieved.append(std::exchange(organizationTickets, {}));

  TraceValue(lcApp(), "Nb tickets", retrieved.size());
  FslLog.append(LogLine(QStringLiteral(" - * Nb tickets: ") + QString::number(retrieved.size())));
  FslLog.append(QString());
  // Nothing came at all, or the person cancelled: the list and the grid of the
  // last good retrieval stay.
  if (failedQueries == queries || Cancelled()) {
    if (Cancelled())
      NoteCancelled(QStringLiteral("Get tickets"));
    if (gridShowsThisRetrieval)
      FTicketsGrid.SetTickets(FTickets);
    co_return;
  }
  FStepFailures.append(UnreadableDates(retrieved));
  FExtractionTickets = extraction;
  FTickets = std::move(retrieved);
  FRetrievedOrganizations = FSelectedOrganizations;
  FRetrievedTeams = FSelectedTeams;
  FUncomparedOrganizations.clear();
  for (qsizetype i = 0; i < organizations.size(); ++i)
    if (failedOrganizations.contains(i))
      FUncomparedOrganizations.append(organizations.at(i));
  for (const tyRestOrganization &organization : std::as_const(FSelectedOrganizations))
    if (organization.id <= 0)
      FUncomparedOrganizations.append(organization);
  FTicketsGrid.SetServiceUrl(TdmRest::GetQuorvexItsmUrl(FICI));
  FTicketsGrid.SetTickets(FTickets);
  if (!FAutomatic)
    MarkGrid();
}

TTask<> TMainState::ChooseOrganizations(TLoadingProgress &progress, TChooseOrga chooseOrga)
{
  const TraceScope trace(lcApp(), "Session.ChooseOrganizations");
  BeginServiceStep();
  if (!ServiceReady())
    co_return;
  int errors = 0;
  {
    // The progress window goes away however the fetching ends, an error included.
    progress.LoadingShow(2);
    const auto hide = qScopeGuard([&progress] { progress.LoadingHide(); });
    progress.LoadingSetTitle(QStringLiteral("GetToken"));
    const bool tokenInForce = co_await EnsureToken();
    if (!tokenInForce) {
      ++errors;
    } else {
      if (FOrganizations.isEmpty()) {
        progress.LoadingSetTitle(QStringLiteral("Get Organizations"));
        FOrganizations = Noted(co_await FRest.GET_OrganizationsList(FICI), QStringLiteral("Organization list"));
        if (FOrganizations.isEmpty())
          ++errors;
      }
      if (FTeams.isEmpty()) {
        progress.LoadingSetTitle(QStringLiteral("Get Teams"));
        FTeams = Noted(co_await FRest.GET_Teams(FICI, true), QStringLiteral("Team list"));
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
        TakeOperators(co_await FRest.GET_OperatorsList(FICI), QStringLiteral("Operator list"));
        if (FOperators.isEmpty()) {
          ++errors;
        } else {
          progress.LoadingSetAnimation(3);
          progress.LoadingSetTitle(QStringLiteral("Get Operators / Teams"));
          progress.LoadingSetAnimation(2);
        }
      }
    }
  }
  TraceValue(lcApp(), "Errors", errors);
  if (Cancelled()) {
    NoteCancelled(QStringLiteral("Organizations & Teams"));
    co_return;
  }
  if (errors == 0 &&
      chooseOrga(FOrganizations, FSelectedOrganizations, FTeams, FSelectedTeams, FOrganizationsTeams))
    SaveConfigOrgaAndTeams();
}

TTask<> TMainState::EditStatusColours(TLoadingProgress &progress, TEditColours editColours)
{
  const TraceScope trace(lcApp(), "Session.EditStatusColours");
  BeginServiceStep();
  const QString module = QStringLiteral("TICKETING");
  if (FStatus.isEmpty() || FPriorities.isEmpty()) {
    progress.LoadingShow(2);
    const auto hide = qScopeGuard([&progress] { progress.LoadingHide(); });
    if (FStatus.isEmpty()) {
      if (!ServiceReady())
        co_return;
      const bool tokenInForce = co_await EnsureToken();
      if (!tokenInForce) {
        if (Cancelled())
          NoteCancelled(QStringLiteral("Status & Priorities"));
        co_return;
      }
      progress.LoadingSetTitle(QStringLiteral("Get Status"));
      FStatus = BuildStatusList(Noted(co_await FRest.GET_Objects(FICI, module, QStringLiteral("TICKET_STATUS")),
                                      QStringLiteral("Status list")),
                                Colours());
    }
    if (FPriorities.isEmpty()) {
      progress.LoadingSetTitle(QStringLiteral("Get Priorities"));
      FPriorities = BuildPriorityList(Noted(co_await FRest.GET_Objects(FICI, module, QStringLiteral("TICKET_PRIORITY")),
                                            QStringLiteral("Priority list")),
                                      Colours());
    }
  }
  if (Cancelled()) {
    NoteCancelled(QStringLiteral("Status & Priorities"));
    co_return;
  }
  if (editColours(FStatus, FPriorities, Colours())) {
    SaveStatus();
    SavePriorities();
  }
}
