#include "SelectionSettings.h"

#include "core/IniFile.h"
#include "core/SettingsLists.h"
#include "core/Trace.h"

namespace {

const QString COrganizations = QStringLiteral("Organizations");
const QString CTeams = QStringLiteral("Teams");
const QString CNb = QStringLiteral("Nb");
const QString CId = QStringLiteral("id_");
const QString CName = QStringLiteral("name_");
const QString CTicketing = QStringLiteral("ticketingModuleEnabled_");
constexpr std::int32_t CMissingId = -1;
constexpr qsizetype CKeysNamed = 3;

// One message for the entries of `section` whose id cannot be queried, naming
// their keys (the first few, then how many more).
template <typename T>
QString InvalidIds(const QString &iniPath, const QString &section, const QList<T> &entries, const QString &what)
{
  QStringList keys;
  for (qsizetype i = 0; i < entries.size(); ++i)
    if (entries[i].id <= 0)
      keys.append(CId + QString::number(i + 1));
  if (keys.isEmpty())
    return QString();
  const qsizetype count = keys.size();
  QString named = keys.mid(0, CKeysNamed).join(QStringLiteral(", "));
  if (count > CKeysNamed)
    named += QStringLiteral(" and %1 more").arg(count - CKeysNamed);
  return QStringLiteral("%1 of [%2] in %3 %4 no valid id, so %5; choose them again in "
                        "\"Organizations & Teams\"")
      .arg(named, section, iniPath, count == 1 ? QStringLiteral("has") : QStringLiteral("have"), what);
}

} // namespace

QStringList SelectionIdErrors(const QString &iniPath, const tyRestOrganizations &selectedOrganizations,
                              const tyRestTeams &selectedTeams)
{
  QStringList errors{InvalidIds(iniPath, COrganizations, selectedOrganizations,
                                QStringLiteral("their tickets were not retrieved")),
                     InvalidIds(iniPath, CTeams, selectedTeams, QStringLiteral("those teams are not followed"))};
  errors.removeAll(QString());
  return errors;
}

void ReadConfigOrgaAndTeams(const QString &iniPath, tyRestOrganizations &selectedOrganizations,
                            tyRestTeams &selectedTeams)
{
  const TraceScope trace(lcSettings(), "TfrmMain.ReadConfigOrgaAndTeams");
  const TIniFile ini(iniPath);

  selectedOrganizations.clear();
  const std::int32_t nbOrganizations = ReadListCount(ini, COrganizations, CNb);
  for (std::int32_t i = 1; i <= nbOrganizations; ++i) {
    const QString n = QString::number(i);
    tyRestOrganization organization;
    organization.id = ini.ReadInteger(COrganizations, CId + n, CMissingId);
    organization.name = ini.ReadString(COrganizations, CName + n, QString());
    organization.ticketingModuleEnabled = ini.ReadBool(COrganizations, CTicketing + n, false);
    selectedOrganizations.append(organization);
  }

  selectedTeams.clear();
  const std::int32_t nbTeams = ReadListCount(ini, CTeams, CNb);
  for (std::int32_t i = 1; i <= nbTeams; ++i) {
    const QString n = QString::number(i);
    tyRestTeam team;
    team.id = ini.ReadInteger(CTeams, CId + n, CMissingId);
    team.name = ini.ReadString(CTeams, CName + n, QString());
    selectedTeams.append(team);
  }
}

void SaveConfigOrgaAndTeams(const QString &iniPath, const tyRestOrganizations &selectedOrganizations,
                            const tyRestTeams &selectedTeams)
{
  const TraceScope trace(lcSettings(), "TfrmMain.SaveConfigOrgaAndTeams");
  TIniFile ini(iniPath);

  ini.WriteInteger(COrganizations, CNb, static_cast<std::int32_t>(selectedOrganizations.size()));
  for (qsizetype i = 0; i < selectedOrganizations.size(); ++i) {
    const QString n = QString::number(i + 1);
    const tyRestOrganization &organization = selectedOrganizations.at(i);
    ini.WriteInteger(COrganizations, CId + n, organization.id);
    ini.WriteString(COrganizations, CName + n, organization.name);
    ini.WriteBool(COrganizations, CTicketing + n, organization.ticketingModuleEnabled);
  }

  ini.WriteInteger(CTeams, CNb, static_cast<std::int32_t>(selectedTeams.size()));
  for (qsizetype i = 0; i < selectedTeams.size(); ++i) {
    const QString n = QString::number(i + 1);
    ini.WriteInteger(CTeams, CId + n, selectedTeams.at(i).id);
    ini.WriteString(CTeams, CName + n, selectedTeams.at(i).name);
  }
  ini.UpdateFile();
}
