#include "SettingsKeys.h"

#include "Errors.h"
#include "SecretCodec.h"
#include "Trace.h"

#include <algorithm>

namespace {

// A stored secret, deciphered. A damaged one, or a keyring marker (this is read
// only when no keyring gave the secret), reads as empty with a warning.
QString ReadSecret(const TIniFile &ini, const TSetting<QString> &setting, TSettingsWarnings &warnings)
{
  if (HeldInKeyring(ini, setting)) {
    const QString warning =
        QStringLiteral("The secret \"%1\" of section [%2] in \"%3\" is kept in the system keyring, which "
                       "did not give it (no session bus, keyring locked or not answering); it is taken as empty. "
                       "Unlock the keyring, or give the secret as the credential \"%4\" of an unattended run.")
            .arg(setting.Key, setting.Section, ini.FileName(), setting.Credential);
    TraceFailure(lcSettings(), warning); // the warning itself reaches the person
    warnings.append(warning);
    return QString();
  }
  try {
    return Decrypt(ini.ReadString(setting.Section, setting.Key, QString()));
  } catch (const ESecretError &error) {
    const QString warning =
        QStringLiteral("The stored secret \"%1\" of section [%2] in \"%3\" cannot be read (%4); it is taken as "
                       "empty. Enter it again in its settings dialog.")
            .arg(setting.Key, setting.Section, ini.FileName(), error.Message());
    TraceFailure(lcSettings(), warning); // the warning itself reaches the person
    warnings.append(warning);
    return QString();
  }
}

// Writes a secret enciphered, unless the stored text already holds it (each
// enciphering differs, and a save that changes nothing must write nothing). A
// stored value that cannot be deciphered (or the keyring marker) read as empty:
// while the secret is still empty it stays as found, so that a save of the group
// never destroys what the user may still repair or recover.
void WriteSecret(TIniFile &ini, const TSetting<QString> &setting, const QString &secret)
{
  try {
    if (Decrypt(ini.ReadString(setting.Section, setting.Key, QString())) == secret)
      return;
  } catch (const ESecretError &) {
    if (secret.isEmpty())
      return;
  }
  ini.WriteString(setting.Section, setting.Key, Encrypt(secret));
}

} // namespace

QString ReadSetting(const TIniFile &ini, const TSetting<QString> &setting, TSettingsWarnings &warnings)
{
  if (setting.Secret() && ini.ValueExists(setting.Section, setting.Key))
    return ReadSecret(ini, setting, warnings);
  return ini.ReadString(setting.Section, setting.Key, setting.Default);
}

void WriteSetting(TIniFile &ini, const TSetting<QString> &setting, const QString &value)
{
  if (setting.Secret())
    WriteSecret(ini, setting, value);
  else
    ini.WriteString(setting.Section, setting.Key, value);
}

void WriteKeyringMarker(TIniFile &ini, const TSetting<QString> &setting)
{
  ini.WriteString(setting.Section, setting.Key, CKeyringMarker);
}

bool HeldInKeyring(const TIniFile &ini, const TSetting<QString> &setting)
{
  return ini.ReadString(setting.Section, setting.Key, QString()) == CKeyringMarker;
}

std::int32_t ReadListCount(const TIniFile &ini, const TSettingsList &list)
{
  const std::int32_t stored = ini.ReadInteger(list.Section, list.CountKey, 0);
  if (stored > CMaxListEntries)
    TraceError(lcSettings(), QStringLiteral("[%1] %2=%3 in \"%4\" is beyond %5 entries; only %5 are read")
                               .arg(list.Section, list.CountKey)
                               .arg(stored)
                               .arg(ini.FileName())
                               .arg(CMaxListEntries));
  return std::clamp(stored, 0, CMaxListEntries);
}

void WriteListCount(TIniFile &ini, const TSettingsList &list, qsizetype count)
{
  ini.WriteInteger(list.Section, list.CountKey, static_cast<std::int32_t>(count));
}
