#pragma once

#include "TDemoService.h"
#include "rest/dRest.h"
#include "state/TMainState.h"
#include "state/UnattendedRun.h"
#include "support/Await.h"
#include "support/TempConfig.h"
#include "tickets/LoadingProgress.h"

#include <QNetworkAccessManager>
#include <gtest/gtest.h>
#include <functional>
#include <memory>

// Progress calls as a list of words, e.g. "show 1", "bar 8/3", "title Acme", "hide".
class TRecordedProgress : public TLoadingProgress
{
public:
  QStringList Calls;
  void LoadingShow(int animation) override { Calls << QStringLiteral("show %1").arg(animation); }
  void LoadingSetTitle(const QString &title) override { Calls << QStringLiteral("title ") + title; }
  void LoadingSetAnimation(int) override {}
  void LoadingSetProgressBar(int maximum, int position) override
  {
    Calls << QStringLiteral("bar %1/%2").arg(maximum).arg(position);
  }
  void LoadingHide() override { Calls << QStringLiteral("hide"); }
};

// The moment `daysAgo` days before now, as the service writes it.
QString Stamp(double daysAgo);
// A ticket of team 10 "Desk", status "New", at organization 1 "Acme" or 2 "Beta
// & Co", assigned to operator 1 "Ann", 2 "Bob" or, when `user` is empty, nobody.
QJsonObject DemoTicket(int id, int organization, const QString &user, double ageDays, double updatedDaysAgo,
                       const QString &exchange = {});
// The ids, with a star for a ticket flagged for its ten-exchanges notice.
QStringList TicketIds(const tyRestTickets &tickets);

// The main window's state over a demo service on 127.0.0.1 that serves a small
// data set: organization 1 "Acme" (three tickets: 11 unassigned and stale, 12
// carrying the English notice, 13 the French one), organization 2 "Beta & Co"
// (ticket 21), organization 3 without the ticketing module; teams 10 "Desk" and
// 20 "Network"; operators 1 to 3 (3 inactive). Acme can have more tickets,
// numbered from 1000, of various ages, some unassigned, some with a notice.
class StepsFixture : public ::testing::Test
{
protected:
  explicit StepsFixture(int extraAcmeTickets = 0);
  ~StepsFixture() override;

  // Selects organizations 1 and 2 and team 10.
  void SelectAll();
  QString IniText() const;
  // A new session on the same settings, as at the program's next start.
  void Restart();
  // The unattended run, to its end.
  TExitStatus Run(const TUnattendedOptions &options = {}) { return Await(RunUnattended(*FState, FProgress, options)); }
  // The service's tickets from now on: `change` is applied to ticket `id`, which
  // goes when it is emptied; AddTicket appends one.
  void ChangeTicket(int id, const std::function<void(QJsonObject &)> &change);
  void AddTicket(const QJsonObject &ticket);

  TTempConfig FConfig;
  const TScopedVariable FTrust{"QUORVEX_EXTRA_CA_CERTS", FConfig.File("ca.pem").toUtf8()};
  TDemoService FService;
  QNetworkAccessManager FManager;
  std::unique_ptr<TdmRest> FRest; // made once the certificate is trusted
  std::unique_ptr<TMainState> FState;
  TRecordedProgress FProgress;
};
