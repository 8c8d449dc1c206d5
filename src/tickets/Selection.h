#pragma once

#include "rest/uTypes.h"

// Links between organizations, teams and operators, and the look-ups of the
// selection screen and the report.

// For each team, each organization it serves: (organization id, team id).
tyRestOrganizationsTeams UpdateListOrganizationsTeams(const tyRestTeams &teams);

// For each operator, each team it belongs to: (team id, operator id).
tyRestTeamsOperators UpdateListTeamsOperators(const tyRestOperators &operators);

// Name of the team with that id (the last one when several share it). When none
// has it, `name` is left as it was.
void GetTeamName(const tyRestTeams &teams, TRestId id, QString &name);

// The teams of the given organizations, in organization then link order, each
// once, with only id and name filled. A team id missing from `teams` takes the
// name looked up just before it (empty for the first).
tyRestTeams GetTeamsFromOrganization(const tyRestOrganizations &organizations,
                                     const tyRestOrganizationsTeams &links, const tyRestTeams &teams);

bool TeamInSelectedTeams(const tyRestTeams &selectedTeams, TRestId id);
