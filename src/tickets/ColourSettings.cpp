#include "ColourSettings.h"

#include "core/IniFile.h"
#include "core/SettingsKeys.h"
#include "core/Trace.h"

void SavePriorities(const QString &iniPath, const tyRestObjects &priorities)
{
  const TraceScope trace(lcSettings(), "Settings.SavePriorities");
  TIniFile ini(iniPath);
  EraseKeyed(ini, Setting::PriorityCodes);
  EraseKeyed(ini, Setting::PriorityColours);
  for (const tyRestObject &priority : priorities) {
    WriteKeyed(ini, Setting::PriorityCodes, priority._reference, priority.Text);
    WriteKeyed(ini, Setting::PriorityColours, priority.Text, priority.BgColor);
  }
  ini.UpdateFile();
}

void SaveStatus(const QString &iniPath, const tyRestObjects &statuses)
{
  const TraceScope trace(lcSettings(), "Settings.SaveStatus");
  TIniFile ini(iniPath);
  EraseKeyed(ini, Setting::StatusColours);
  for (const tyRestObject &status : statuses)
    WriteKeyed(ini, Setting::StatusColours, status._reference, status.BgColor);
  ini.UpdateFile();
}
