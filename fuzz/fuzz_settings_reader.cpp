// The settings file, any text: every settings group read from it. The program's
// own errors (each naming the file and key) are expected; anything else is not.

#include "FuzzSupport.h"
#include "core/Errors.h"
#include "core/Settings.h"
#include "tickets/SelectionSettings.h"

#include <QFile>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>

namespace {

QString IniPath;

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
  FuzzInitialize();
  static QTemporaryDir folder;
  if (!folder.isValid()) {
    std::fprintf(stderr, "No temporary folder for the settings file: %s\n", qPrintable(folder.errorString()));
    std::exit(1);
  }
  IniPath = folder.filePath(QStringLiteral("quorvex-followup.ini"));
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
  QFile file(IniPath);
  if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
      file.write(reinterpret_cast<const char *>(data), static_cast<qint64>(size)) != static_cast<qint64>(size)) {
    std::fprintf(stderr, "Cannot write %s: %s\n", qPrintable(IniPath), qPrintable(file.errorString()));
    std::abort();
  }
  file.close();
  try {
    TSettingsWarnings warnings;
    tyQuorvexITSM ici;
    ReadConfigITSM(IniPath, ici, warnings);
    tySMTPserver smtp;
    ReadConfigSMTP(IniPath, smtp, warnings);
    std::int32_t minutes = 0;
    std::int32_t days = 0;
    QStringList ignored;
    ReadConfigFilters(IniPath, minutes, days, ignored);
    tyRestOrganizations organizations;
    tyRestTeams teams;
    ReadConfigOrgaAndTeams(IniPath, organizations, teams);
  } catch (const EQuorvexError &) {
  }
  return 0;
}
