#include "tickets/Selection.h"
#include "tickets/TenExchanges.h"

#include <gtest/gtest.h>

namespace {

tyRestOrganization Organization(std::int32_t id) { return {id, QStringLiteral("O%1").arg(id), false, false, true}; }

QList<TRestId> Ids(const auto &items)
{
  QList<TRestId> ids;
  for (const auto &item : items)
    ids.append(item.id);
  return ids;
}

} // namespace

TEST(Selection, TeamsOfOrganizationsAreListedOnceInOrganizationOrder)
{
  const tyRestTeams teams{{1, {}, "A", {{20, {}}}, {}}, {2, {}, "B", {{10, {}}, {20, {}}}, {}}, {3, {}, "C", {{10, {}}}, {}}};
  const tyRestOrganizationsTeams links = UpdateListOrganizationsTeams(teams);
  const tyRestTeams result = GetTeamsFromOrganization({Organization(10), Organization(20)}, links, teams);
  EXPECT_EQ(Ids(result), (QList<TRestId>{2, 3, 1}));
  EXPECT_EQ(result[0].name, "B");
  EXPECT_TRUE(GetTeamsFromOrganization({Organization(99)}, links, teams).isEmpty());
}

TEST(Selection, UnknownTeamTakesTheNameLookedUpBeforeIt)
{
  const tyRestTeams teams{{1, {}, "A", {}, {}}};
  const tyRestOrganizationsTeams links{{10, 1}, {10, 42}};
  const tyRestTeams result = GetTeamsFromOrganization({Organization(10)}, links, teams);
  EXPECT_EQ(Ids(result), (QList<TRestId>{1, 42}));
  EXPECT_EQ(result[1].name, "A");
  EXPECT_EQ(GetTeamsFromOrganization({Organization(10)}, {{10, 42}}, teams)[0].name, "");
}

TEST(TenExchanges, FlagsTicketsFoundByEitherNoticeKeepingTheOrder)
{
  const auto tickets = [](QList<TRestId> ids) {
    tyRestTickets tickets;
    for (const TRestId id : ids)
      tickets.append(tyRestTicket{.id = id});
    return tickets;
  };
  // Nothing added from the notice searches, nothing removed; found by both: simply flagged.
  const tyRestTickets merged = MergeTenExchanges(tickets({3, 1, 2, 3}), tickets({1, 99}), tickets({1, 3}));
  EXPECT_EQ(Ids(merged), (QList<TRestId>{3, 1, 2, 3}));
  QList<bool> flagged;
  for (const tyRestTicket &ticket : merged)
    flagged.append(ticket.tenExchangesAdded);
  EXPECT_EQ(flagged, (QList<bool>{true, true, false, true}));
  EXPECT_TRUE(MergeTenExchanges({}, tickets({1}), {}).isEmpty());
}
