#include "SecretLookup.h"

#include "Keyring.h"
#include "SystemKeyring.h"
#include "Trace.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QPointer>
#include <QTimer>
#include <memory>

namespace {

// Asks the keyring through `ask` and waits for its answer, at most `timeout`.
// User input is held back meanwhile, so that nothing else starts. nullopt: no
// answer in time (one arriving later is dropped).
std::optional<TKeyring::TAnswer> Await(const std::function<void(TKeyring::TDone)> &ask,
                                       std::chrono::milliseconds timeout)
{
  auto answer = std::make_shared<std::optional<TKeyring::TAnswer>>();
  QEventLoop loop;
  QPointer<QEventLoop> waiting(&loop);
  ask([answer, waiting](const TKeyring::TAnswer &given) {
    *answer = given;
    if (waiting)
      waiting->quit();
  });
  if (!answer->has_value()) {
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    timer.start(timeout);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
  }
  return *answer;
}

QString Seconds(std::chrono::milliseconds duration)
{
  return QString::number(static_cast<double>(duration.count()) / 1000.0);
}

} // namespace

TSecretSources TSecretSources::FromEnvironment(TKeyring &keyring, bool desktopSession)
{
  TSecretSources sources;
  sources.CredentialsDirectory = qEnvironmentVariable("CREDENTIALS_DIRECTORY");
  if (SessionBusAvailable())
    sources.Keyring = &keyring;
  sources.StoreInKeyring = desktopSession && sources.Keyring;
  return sources;
}

QString KeyringKey(const TIniFile &ini, const TSetting<QString> &setting)
{
  return QStringLiteral("[%1] %2 of %3").arg(setting.Section, setting.Key, ini.FileName());
}

QString TSecretLookup::Read(const TIniFile &ini, const TSetting<QString> &setting, TSettingsWarnings &warnings)
{
  std::optional<QString> secret = FromCredentials(setting, warnings);
  if (!secret)
    secret = FromKeyring(ini, setting, warnings);
  if (!secret)
    secret = ReadSetting(ini, setting, warnings);
  FKnown.insert(KeyringKey(ini, setting), *secret);
  return *secret;
}

void TSecretLookup::Write(TIniFile &ini, const TSetting<QString> &setting, const QString &secret,
                          TSettingsWarnings &warnings)
{
  const QString key = KeyringKey(ini, setting);
  if (const auto known = FKnown.constFind(key); known != FKnown.constEnd() && *known == secret)
    return;
  // An empty secret goes to the keyring only to replace the one it holds.
  const bool toKeyring = FSources.StoreInKeyring && (!secret.isEmpty() || HeldInKeyring(ini, setting));
  if (toKeyring && ToKeyring(ini, setting, secret, warnings))
    WriteKeyringMarker(ini, setting);
  else
    WriteSetting(ini, setting, secret);
  FKnown.insert(key, secret);
}

std::optional<QString> TSecretLookup::FromCredentials(const TSetting<QString> &setting,
                                                      TSettingsWarnings &warnings) const
{
  if (FSources.CredentialsDirectory.isEmpty())
    return std::nullopt;
  QFile file(QDir(FSources.CredentialsDirectory).filePath(setting.Credential));
  if (!file.exists()) {
    TraceValue(lcSettings(), "No credential file", file.fileName());
    return std::nullopt;
  }
  std::optional<QString> secret;
  if (file.open(QIODevice::ReadOnly))
    secret = QString::fromUtf8(file.readAll());
  if (!secret || file.error() != QFileDevice::NoError) {
    warnings.append(QStringLiteral("The credential file \"%1\" cannot be read (%2); the secret \"%3\" of section [%4] "
                                   "is taken from the keyring or the settings file. Check the LoadCredential= line "
                                   "of the service.")
                        .arg(file.fileName(), file.errorString(), setting.Key, setting.Section));
    return std::nullopt;
  }
  // The line break that echo or an editor leave at the end is not part of the secret.
  if (secret->endsWith(u'\n'))
    secret->chop(1);
  if (secret->endsWith(u'\r'))
    secret->chop(1);
  // The shipped unit gives an empty credential (SetCredential=) for each secret
  // that has no file of its own: the next source holds it.
  if (secret->isEmpty()) {
    TraceValue(lcSettings(), "Empty credential file, not used", file.fileName());
    return std::nullopt;
  }
  TraceValue(lcSettings(), "Secret taken from the credential file", file.fileName());
  return secret;
}

std::optional<QString> TSecretLookup::FromKeyring(const TIniFile &ini, const TSetting<QString> &setting,
                                                  TSettingsWarnings &warnings)
{
  if (!FSources.Keyring || FKeyringSilent)
    return std::nullopt;
  const QString key = KeyringKey(ini, setting);
  TKeyring &keyring = *FSources.Keyring;
  const std::optional<TKeyring::TAnswer> answer =
      Await([&](TKeyring::TDone done) { keyring.Read(key, std::move(done)); }, FSources.KeyringTimeout);
  if (!answer) {
    FKeyringSilent = true;
    const QString warning = QStringLiteral("The system keyring did not answer within %1 s (locked, or waiting for "
                                           "a password nobody types); the secrets are taken from the settings file "
                                           "\"%2\". Unlock the keyring, or give the secrets to an unattended run as "
                                           "systemd credentials.")
                                .arg(Seconds(FSources.KeyringTimeout), ini.FileName());
    TraceFailure(lcSettings(), warning);
    warnings.append(warning);
    return std::nullopt;
  }
  switch (answer->Status) {
  case TKeyring::TAnswer::Done:
    TraceValue(lcSettings(), "Secret taken from the system keyring", key);
    return answer->Secret;
  case TKeyring::TAnswer::NotFound:
    TraceValue(lcSettings(), "Not in the system keyring", key);
    break;
  case TKeyring::TAnswer::Failed:
    TraceFailure(lcSettings(), QStringLiteral("The system keyring did not give \"%1\": %2").arg(key, answer->Error));
    break;
  }
  return std::nullopt;
}

bool TSecretLookup::ToKeyring(const TIniFile &ini, const TSetting<QString> &setting, const QString &secret,
                              TSettingsWarnings &warnings)
{
  if (!FSources.Keyring)
    return false;
  QString reason = QStringLiteral("it did not answer earlier");
  if (!FKeyringSilent) {
    TKeyring &keyring = *FSources.Keyring;
    const QString key = KeyringKey(ini, setting);
    const std::optional<TKeyring::TAnswer> answer =
        Await([&](TKeyring::TDone done) { keyring.Write(key, secret, std::move(done)); }, FSources.KeyringTimeout);
    if (answer && answer->Status == TKeyring::TAnswer::Done) {
      TraceValue(lcSettings(), "Secret stored in the system keyring", key);
      return true;
    }
    FKeyringSilent = !answer;
    reason = answer ? answer->Error : QStringLiteral("no answer within %1 s").arg(Seconds(FSources.KeyringTimeout));
  }
  const QString warning = QStringLiteral("The secret \"%1\" of section [%2] could not be stored in the system keyring "
                                         "(%3); it is kept enciphered in \"%4\" instead.")
                              .arg(setting.Key, setting.Section, reason, ini.FileName());
  TraceFailure(lcSettings(), warning);
  warnings.append(warning);
  return false;
}
