#include "SelectionSettings.h"

#include "core/IniFile.h"
#include "core/SettingsKeys.h"
#include "core/Trace.h"

namespace {

constexpr qsizetype CKeysNamed = 3;

// One message for the entries of `section` whose id cannot be queried, naming
// their keys (the first few, then how many more).
template <typename T>
QString InvalidIds(const QString &iniPath, const TListField<std::int64_t> &idField, const QList<T> &entries,
                   const QString &what)
{
  QStringList keys;
  for (qsizetype i = 0; i < entries.size(); ++i)
    if (entries[i].id <= 0)
      keys.append(idField.KeyAt(i));
  if (keys.isEmpty())
    return QString();
  const qsizetype count = keys.size();
  QString named = keys.mid(0, CKeysNamed).join(QStringLiteral(", "));
  if (count > CKeysNamed)
    named += QStringLiteral(" and %1 more").arg(count - CKeysNamed);
  return QStringLiteral("%1 of [%2] in %3 %4 no valid id, so %5; choose them again in "
                        "\"Organizations & Teams\"")
      .arg(named, idField.List.Section, iniPath, count == 1 ? QStringLiteral("has") : QStringLiteral("have"), what);
}

} // namespace

QStringList SelectionIdErrors(const QString &iniPath, const tyRestOrganizations &selectedOrganizations,
                              const tyRestTeams &selectedTeams)
{
  QStringList errors{InvalidIds(iniPath, Setting::Organizations::Id, selectedOrganizations,
                                QStringLiteral("their tickets were not retrieved")),
                     InvalidIds(iniPath, Setting::Teams::Id, selectedTeams,
                                QStringLiteral("those teams are not followed"))};
  errors.removeAll(QString());
  return errors;
}

void ReadConfigOrgaAndTeams(const QString &iniPath, tyRestOrganizations &selectedOrganizations,
                            tyRestTeams &selectedTeams)
{
  const TraceScope trace(lcSettings(), "Settings.ReadConfigOrgaAndTeams");
  const TIniFile ini(iniPath);
  namespace Organizations = Setting::Organizations;
  namespace Teams = Setting::Teams;

  selectedOrganizations.clear();
  const std::int32_t nbOrganizations = ReadListCount(ini, Organizations::List);
  for (std::int32_t i = 0; i < nbOrganizations; ++i) {
    tyRestOrganization organization;
    organization.id = ReadListEntry(ini, Organizations::Id, i);
    organization.name = ReadListEntry(ini, Organizations::Name, i);
    organization.ticketingModuleEnabled = ReadListEntry(ini, Organizations::TicketingModuleEnabled, i);
    selectedOrganizations.append(organization);
  }

  selectedTeams.clear();
  const std::int32_t nbTeams = ReadListCount(ini, Teams::List);
  for (std::int32_t i = 0; i < nbTeams; ++i) {
    tyRestTeam team;
    team.id = ReadListEntry(ini, Teams::Id, i);
    team.name = ReadListEntry(ini, Teams::Name, i);
    selectedTeams.append(team);
  }
}

void SaveConfigOrgaAndTeams(const QString &iniPath, const tyRestOrganizations &selectedOrganizations,
                            const tyRestTeams &selectedTeams)
{
  const TraceScope trace(lcSettings(), "Settings.SaveConfigOrgaAndTeams");
  TIniFile ini(iniPath);
  namespace Organizations = Setting::Organizations;
  namespace Teams = Setting::Teams;

  WriteListCount(ini, Organizations::List, selectedOrganizations.size());
  for (qsizetype i = 0; i < selectedOrganizations.size(); ++i) {
    const tyRestOrganization &organization = selectedOrganizations.at(i);
    WriteListEntry(ini, Organizations::Id, i, organization.id);
    WriteListEntry(ini, Organizations::Name, i, organization.name);
    WriteListEntry(ini, Organizations::TicketingModuleEnabled, i, organization.ticketingModuleEnabled);
  }

  WriteListCount(ini, Teams::List, selectedTeams.size());
  for (qsizetype i = 0; i < selectedTeams.size(); ++i) {
    WriteListEntry(ini, Teams::Id, i, selectedTeams.at(i).id);
    WriteListEntry(ini, Teams::Name, i, selectedTeams.at(i).name);
  }
  ini.UpdateFile();
}
