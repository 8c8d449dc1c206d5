#include "tickets/Selection.h"
#include "tickets/TenExchanges.h"

#include <gtest/gtest.h>

namespace {

tyRestTeam Team(std::int32_t id, const QString &name, const QList<std::int32_t> &organizations)
{
  tyRestTeam team;
  team.id = id;
  team.name = name;
  for (const std::int32_t organization : organizations)
    team.organizations.append({organization, QString()});
  return team;
}

tyRestOrganization Organization(std::int32_t id) { return {id, QStringLiteral("O%1").arg(id), false, false, true}; }

tyRestTicket Ticket(std::int32_t id)
{
  tyRestTicket ticket;
  ticket.id = id;
  return ticket;
}

QList<std::int32_t> Ids(const tyRestTeams &teams)
{
  QList<std::int32_t> ids;
  for (const tyRestTeam &team : teams)
    ids.append(team.id);
  return ids;
}

} // namespace

TEST(Selection, TeamsOfOrganizationsAreListedOnceInOrganizationOrder)
{
  const tyRestTeams teams{Team(1, "A", {20}), Team(2, "B", {10, 20}), Team(3, "C", {10})};
  const tyRestOrganizationsTeams links = UpdateListOrganizationsTeams(teams);
  const tyRestTeams result = GetTeamsFromOrganization({Organization(10), Organization(20)}, links, teams);
  EXPECT_EQ(Ids(result), (QList<std::int32_t>{2, 3, 1}));
  EXPECT_EQ(result[0].name, "B");
  EXPECT_TRUE(GetTeamsFromOrganization({Organization(99)}, links, teams).isEmpty());
}

TEST(Selection, UnknownTeamTakesTheNameLookedUpBeforeIt)
{
  const tyRestTeams teams{Team(1, "A", {})};
  const tyRestOrganizationsTeams links{{10, 1}, {10, 42}};
  const tyRestTeams result = GetTeamsFromOrganization({Organization(10)}, links, teams);
  ASSERT_EQ(result.size(), 2);
  EXPECT_EQ(result[1].id, 42);
  EXPECT_EQ(result[1].name, "A");
  EXPECT_EQ(GetTeamsFromOrganization({Organization(10)}, {{10, 42}}, teams)[0].name, "");
}

TEST(TenExchanges, FlagsTicketsFoundByEitherNoticeKeepingTheOrder)
{
  const tyRestTickets merged = MergeTenExchanges({Ticket(3), Ticket(1), Ticket(2), Ticket(3)},
                                                 {Ticket(1), Ticket(99)}, {Ticket(1), Ticket(3)});
  ASSERT_EQ(merged.size(), 4); // nothing added from the notice searches, nothing removed
  EXPECT_EQ(merged[0].id, 3);
  EXPECT_TRUE(merged[0].tenExchangesAdded);
  EXPECT_TRUE(merged[1].tenExchangesAdded); // found by both: simply flagged
  EXPECT_FALSE(merged[2].tenExchangesAdded);
  EXPECT_TRUE(merged[3].tenExchangesAdded);
  EXPECT_TRUE(MergeTenExchanges({}, {Ticket(1)}, {}).isEmpty());
}
