#include "Selection.h"

#include <algorithm>

tyRestOrganizationsTeams UpdateListOrganizationsTeams(const tyRestTeams &teams)
{
  tyRestOrganizationsTeams links;
  for (const tyRestTeam &team : teams)
    for (const tyRestSubName &organization : team.organizations)
      links.append({organization.id, team.id});
  return links;
}

tyRestTeamsOperators UpdateListTeamsOperators(const tyRestOperators &operators)
{
  tyRestTeamsOperators links;
  for (const tyRestOperator &op : operators)
    for (const tyRestSubName &team : op.teams)
      links.append({team.id, op.id});
  return links;
}

void GetTeamName(const tyRestTeams &teams, TRestId id, QString &name)
{
  for (const tyRestTeam &team : teams)
    if (team.id == id)
      name = team.name;
}

tyRestTeams GetTeamsFromOrganization(const tyRestOrganizations &organizations,
                                     const tyRestOrganizationsTeams &links, const tyRestTeams &teams)
{
  tyRestTeams result;
  QString name; // deliberately carried from one look-up to the next
  for (const tyRestOrganization &organization : organizations)
    for (const tyRestOrganizationTeam &link : links) {
      if (link.IdOrganization != organization.id || TeamInSelectedTeams(result, link.IdTeam))
        continue;
      GetTeamName(teams, link.IdTeam, name);
      tyRestTeam team;
      team.id = link.IdTeam;
      team.name = name;
      result.append(team);
    }
  return result;
}

bool TeamInSelectedTeams(const tyRestTeams &selectedTeams, TRestId id)
{
  return std::any_of(selectedTeams.cbegin(), selectedTeams.cend(),
                     [id](const tyRestTeam &team) { return team.id == id; });
}
