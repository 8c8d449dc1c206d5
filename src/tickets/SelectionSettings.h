#pragma once

#include "rest/uTypes.h"

// The organizations and teams chosen by the user, kept in the settings file as
// the numbered lists Setting::Organizations and Setting::Teams.
// Entries missing below the count read as id -1 and an empty name.

void ReadConfigOrgaAndTeams(const QString &iniPath, tyRestOrganizations &selectedOrganizations,
                            tyRestTeams &selectedTeams);
void SaveConfigOrgaAndTeams(const QString &iniPath, const tyRestOrganizations &selectedOrganizations,
                            const tyRestTeams &selectedTeams);

// The settings errors of a selection read from `iniPath`: one reason per
// section whose entries have an id that is missing or not positive, naming their
// keys. Such an organization cannot be queried, such a team never matches.
QStringList SelectionIdErrors(const QString &iniPath, const tyRestOrganizations &selectedOrganizations,
                              const tyRestTeams &selectedTeams);
