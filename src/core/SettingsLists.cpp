#include "SettingsLists.h"

#include "Trace.h"

#include <algorithm>

std::int32_t ReadListCount(const TIniFile &ini, const QString &section, const QString &key)
{
  const std::int32_t stored = ini.ReadInteger(section, key, 0);
  if (stored > CMaxListEntries)
    TraceError(lcSettings(), QStringLiteral("[%1] %2=%3 in \"%4\" is beyond %5 entries; only %5 are read")
                               .arg(section, key)
                               .arg(stored)
                               .arg(ini.FileName())
                               .arg(CMaxListEntries));
  return std::clamp(stored, 0, CMaxListEntries);
}
