#include "ColourSettings.h"

#include "core/IniFile.h"
#include "core/Trace.h"

namespace {
const QString CPriorityLong = QStringLiteral("PriorityLong");
const QString CPriority = QStringLiteral("Priority");
const QString CStatus = QStringLiteral("Status");
} // namespace

void SavePriorities(const QString &iniPath, const tyRestObjects &priorities)
{
  const TraceScope trace(lcSettings(), "TfrmMain.SavePriorities");
  TIniFile ini(iniPath);
  ini.EraseSection(CPriorityLong);
  ini.EraseSection(CPriority);
  for (const tyRestObject &priority : priorities) {
    ini.WriteString(CPriorityLong, priority._reference, priority.Text);
    ini.WriteInteger(CPriority, priority.Text, priority.BgColor);
  }
  ini.UpdateFile();
}

void SaveStatus(const QString &iniPath, const tyRestObjects &statuses)
{
  const TraceScope trace(lcSettings(), "TfrmMain.SaveStatus");
  TIniFile ini(iniPath);
  ini.EraseSection(CStatus);
  for (const tyRestObject &status : statuses)
    ini.WriteInteger(CStatus, status._reference, status.BgColor);
  ini.UpdateFile();
}
