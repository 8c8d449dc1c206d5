#pragma once

#include "ConfigTypes.h"
#include "SettingsKeys.h"

#include <QHash>
#include <QString>
#include <chrono>
#include <optional>

class TKeyring;

// The longest wait for the keyring: a run must never hang on an unlock prompt.
inline constexpr std::chrono::milliseconds CKeyringTimeout{5000};

// Where the secrets of the settings may come from besides the settings file.
struct TSecretSources
{
  QString CredentialsDirectory; // systemd credentials ($CREDENTIALS_DIRECTORY); empty: none
  TKeyring *Keyring = nullptr;  // null: no keyring is asked
  bool StoreInKeyring = false;  // secrets entered by a person go to the keyring
  std::chrono::milliseconds KeyringTimeout = CKeyringTimeout;

  // $CREDENTIALS_DIRECTORY, and `keyring` when this process has a session bus;
  // entered secrets are stored there in a desktop session.
  static TSecretSources FromEnvironment(TKeyring &keyring, bool desktopSession);
};

// The one place that decides where each secret of the settings comes from and
// goes to. Reading takes each secret from the first source that has it:
//  1. the file named by its credential in the credentials folder (a missing or
//     empty file is skipped; an unreadable one too, with a warning);
//  2. the keyring, waiting at most the time-out; a keyring that does not answer
//     in time is not asked again by this object, and the run goes on with the
//     settings file's value, with a warning;
//  3. the settings file (enciphered value, or the keyring marker, which then
//     reads as empty with a warning naming the key).
// Writing stores nothing when the secret is what was last read or written, so a
// secret from the credentials or the keyring never reaches the settings file.
// A changed secret goes to the keyring when StoreInKeyring (an empty one only
// when the keyring held the secret), the settings file keeping only
// CKeyringMarker; when the keyring refuses or does not answer, or
// without StoreInKeyring, it is stored enciphered in the settings file.
// No secret is ever traced or put in a warning.
class TSecretLookup
{
public:
  explicit TSecretLookup(TSecretSources sources = {}) : FSources(std::move(sources)) {}
  TSecretLookup(const TSecretLookup &) = delete;
  TSecretLookup &operator=(const TSecretLookup &) = delete;

  void SetSources(TSecretSources sources) { FSources = std::move(sources); }
  QString Read(const TIniFile &ini, const TSetting<QString> &setting, TSettingsWarnings &warnings);
  void Write(TIniFile &ini, const TSetting<QString> &setting, const QString &secret, TSettingsWarnings &warnings);

private:
  std::optional<QString> FromCredentials(const TSetting<QString> &setting, TSettingsWarnings &warnings) const;
  std::optional<QString> FromKeyring(const TIniFile &ini, const TSetting<QString> &setting,
                                     TSettingsWarnings &warnings);
  bool ToKeyring(const TIniFile &ini, const TSetting<QString> &setting, const QString &secret,
                 TSettingsWarnings &warnings);

  TSecretSources FSources;
  bool FKeyringSilent = false;   // it once let the time-out pass
  QHash<QString, QString> FKnown; // by KeyringKey: the secret last read or written
};

// The keyring's key of a secret: its section and key, and the settings file, so
// that two settings files (a demo, a second account) never share a secret.
QString KeyringKey(const TIniFile &ini, const TSetting<QString> &setting);
