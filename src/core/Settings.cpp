#include "Settings.h"

#include "Errors.h"
#include "IniFile.h"
#include "SecretCodec.h"
#include "SettingsLists.h"
#include "Trace.h"

#include <algorithm>

// Every section, key and default is named once here; each group's reader and
// writer use the same names, in the order the file keeps them.

namespace {

namespace Itsm {
const QString Section = QStringLiteral("QuorvexITSM");
const QString SaaS = QStringLiteral("SaaS");
const QString Instance = QStringLiteral("Instance");
const QString ClientID = QStringLiteral("ClientID");
const QString ClientSecret = QStringLiteral("ClientSecret");
const QString Username = QStringLiteral("Username");
const QString Password = QStringLiteral("Password");
const QString TokenRequest = QStringLiteral("TokenRequest");
const QString TokenValidity = QStringLiteral("TokenValidity");
const QString Token = QStringLiteral("Token");
const QString ParallelRequests = QStringLiteral("ParallelRequests");

constexpr bool DefaultSaaS = true;
const QString DefaultInstance = QStringLiteral("acme");
constexpr double DefaultTokenRequest = 0;
constexpr std::int32_t DefaultTokenValidity = 24;
constexpr std::int32_t DefaultParallelRequests = 1;
constexpr std::int32_t MaxParallelRequests = 8;
} // namespace Itsm

namespace Smtp {
const QString Section = QStringLiteral("SMTP");
const QString Server = QStringLiteral("Server");
const QString Port = QStringLiteral("Port");
const QString UseSSL = QStringLiteral("UseSSL");
const QString UserName = QStringLiteral("UserName");
const QString Password = QStringLiteral("Password");
const QString DefaultTo = QStringLiteral("DefaultTo");
const QString DefaultCC = QStringLiteral("DefaultCC");
const QString From = QStringLiteral("From");

// No server, mailbox or address is made up: the user enters them.
constexpr std::int32_t DefaultPort = 465;
constexpr bool DefaultUseSSL = true;
} // namespace Smtp

namespace Delivery {
const QString Section = QStringLiteral("Delivery");
const QString Mode = QStringLiteral("Mode");
const QString SkipWhenClear = QStringLiteral("SkipWhenClear");
const QString AttachWorkbook = QStringLiteral("AttachWorkbook");

const QList<std::pair<TDeliveryMode, QString>> ModeNames{{TDeliveryMode::Report, QStringLiteral("report")},
                                                         {TDeliveryMode::Concerned, QStringLiteral("concerned")},
                                                         {TDeliveryMode::Personal, QStringLiteral("personal")}};
} // namespace Delivery

namespace Filters {
const QString Section = QStringLiteral("Filters");
const QString NbMinutes = QStringLiteral("NbMinutes");
const QString NbDays = QStringLiteral("NbDays");
const QString NbIgnore = QStringLiteral("NbIgnore");
const QString StatusPrefix = QStringLiteral("Status_");

constexpr std::int32_t DefaultNbMinutes = 15;
constexpr std::int32_t DefaultNbDays = 14;
} // namespace Filters

// A stored secret, deciphered. A damaged one reads as empty with a warning.
QString ReadSecret(const TIniFile &ini, const QString &section, const QString &key,
                   const QString &storedDefault, TSettingsWarnings &warnings)
{
  try {
    return Decrypt(ini.ReadString(section, key, storedDefault));
  } catch (const ESecretError &error) {
    const QString warning =
        QStringLiteral("The stored secret \"%1\" of section [%2] in \"%3\" cannot be read (%4); it is taken as "
                       "empty. Enter it again in its settings dialog.")
            .arg(key, section, ini.FileName(), error.Message());
    TraceFailure(lcSettings(), warning); // the warning itself reaches the person
    warnings.append(warning);
    return QString();
  }
}

// Writes a secret enciphered, unless the stored text already holds it (each
// enciphering differs, and a save that changes nothing must write nothing). A
// stored value that cannot be deciphered read as empty: while the secret is
// still empty it stays as found, so that a save of the group never destroys
// what the user may still repair or recover.
void WriteSecret(TIniFile &ini, const QString &section, const QString &key, const QString &secret)
{
  try {
    if (Decrypt(ini.ReadString(section, key, QString())) == secret)
      return;
  } catch (const ESecretError &) {
    if (secret.isEmpty())
      return;
  }
  ini.WriteString(section, key, Encrypt(secret));
}

} // namespace

void ReadConfigITSM(const QString &iniPath, tyQuorvexITSM &ici, TSettingsWarnings &warnings)
{
  const TraceScope trace(lcSettings(), "TfrmMain.ReadConfigITSM");
  const TIniFile ini(iniPath);
  using namespace Itsm;
  ici.SaaS = ini.ReadBool(Section, SaaS, DefaultSaaS);
  ici.Instance = ini.ReadString(Section, Instance, DefaultInstance);
  ici.API.ClientID = ini.ReadString(Section, ClientID, QString());
  ici.API.ClientSecret = ReadSecret(ini, Section, ClientSecret, QString(), warnings);
  ici.API.Username = ini.ReadString(Section, Username, QString());
  ici.API.Password = ReadSecret(ini, Section, Password, QString(), warnings);
  ici.API.TokenRequest = ini.ReadFloat(Section, TokenRequest, DefaultTokenRequest);
  ici.API.TokenValidity = ini.ReadInteger(Section, TokenValidity, DefaultTokenValidity);
  ici.API.Token = ini.ReadString(Section, Token, QString());
  const std::int32_t parallel = ini.ReadInteger(Section, ParallelRequests, DefaultParallelRequests);
  ici.ParallelRequests = std::clamp(parallel, DefaultParallelRequests, MaxParallelRequests);
  if (ici.ParallelRequests != parallel)
    warnings.append(QStringLiteral("%1 of [%2] in \"%3\" is %4, outside 1 to %5: %6 is used. Correct it in "
                                   "\"Quorvex ITSM API\".")
                        .arg(ParallelRequests, Section, iniPath)
                        .arg(parallel)
                        .arg(MaxParallelRequests)
                        .arg(ici.ParallelRequests));
}

void SaveConfigITSM(const QString &iniPath, const tyQuorvexITSM &ici)
{
  const TraceScope trace(lcSettings(), "TfrmMain.SaveConfigITSM");
  TIniFile ini(iniPath);
  using namespace Itsm;
  ini.WriteBool(Section, SaaS, ici.SaaS);
  ini.WriteString(Section, Instance, ici.Instance);
  ini.WriteString(Section, ClientID, ici.API.ClientID);
  WriteSecret(ini, Section, ClientSecret, ici.API.ClientSecret);
  ini.WriteString(Section, Username, ici.API.Username);
  WriteSecret(ini, Section, Password, ici.API.Password);
  ini.WriteFloat(Section, TokenRequest, ici.API.TokenRequest);
  ini.WriteInteger(Section, TokenValidity, ici.API.TokenValidity);
  ini.WriteString(Section, Token, ici.API.Token);
  ini.WriteInteger(Section, ParallelRequests, ici.ParallelRequests);
  ini.UpdateFile();
}

void ReadConfigSMTP(const QString &iniPath, tySMTPserver &smtp, TSettingsWarnings &warnings)
{
  const TraceScope trace(lcSettings(), "TfrmMain.ReadConfigSMTP");
  const TIniFile ini(iniPath);
  using namespace Smtp;
  smtp.Server = ini.ReadString(Section, Server, QString());
  smtp.Port = ini.ReadInteger(Section, Port, DefaultPort);
  smtp.UseSSL = ini.ReadBool(Section, UseSSL, DefaultUseSSL);
  smtp.UserName = ini.ReadString(Section, UserName, QString());
  // The default of an enciphered key is given enciphered, so that a missing key
  // and a present one go through the same Decrypt.
  smtp.Password = ReadSecret(ini, Section, Password, Encrypt(QString()), warnings);
  smtp.DefaultTo = ini.ReadString(Section, DefaultTo, QString());
  smtp.DefaultCC = ini.ReadString(Section, DefaultCC, QString());
  smtp.From = ini.ReadString(Section, From, QString());
}

void SaveConfigSMTP(const QString &iniPath, const tySMTPserver &smtp)
{
  const TraceScope trace(lcSettings(), "TfrmMain.SaveConfigSMTP");
  TIniFile ini(iniPath);
  using namespace Smtp;
  ini.WriteString(Section, Server, smtp.Server);
  ini.WriteInteger(Section, Port, smtp.Port);
  ini.WriteBool(Section, UseSSL, smtp.UseSSL);
  ini.WriteString(Section, UserName, smtp.UserName);
  WriteSecret(ini, Section, Password, smtp.Password);
  ini.WriteString(Section, DefaultTo, smtp.DefaultTo);
  ini.WriteString(Section, DefaultCC, smtp.DefaultCC);
  ini.WriteString(Section, From, smtp.From);
  ini.UpdateFile();
}

void ReadConfigDelivery(const QString &iniPath, tyDelivery &delivery, TSettingsWarnings &warnings)
{
  const TraceScope trace(lcSettings(), "ReadConfigDelivery");
  const TIniFile ini(iniPath);
  using namespace Delivery;
  const QString mode = ini.ReadString(Section, Mode, ModeNames.first().second);
  delivery.Mode = TDeliveryMode::Report;
  bool known = false;
  for (const auto &[value, name] : ModeNames)
    if (mode.compare(name, Qt::CaseInsensitive) == 0) {
      delivery.Mode = value;
      known = true;
    }
  if (!known) {
    const QString warning = QStringLiteral("The delivery mode \"%1\" (key \"%2\" of section [%3] in \"%4\") is not "
                                           "one of report, concerned or personal; the report goes to the default "
                                           "receivers. Choose the mode in the \"SMPT Server\" settings.")
                                .arg(mode, Mode, Section, ini.FileName());
    TraceError(lcSettings(), warning);
    warnings.append(warning);
  }
  delivery.SkipWhenClear = ini.ReadBool(Section, SkipWhenClear, false);
  delivery.AttachWorkbook = ini.ReadBool(Section, AttachWorkbook, false);
}

void SaveConfigDelivery(const QString &iniPath, const tyDelivery &delivery)
{
  const TraceScope trace(lcSettings(), "SaveConfigDelivery");
  TIniFile ini(iniPath);
  using namespace Delivery;
  for (const auto &[value, name] : ModeNames)
    if (value == delivery.Mode)
      ini.WriteString(Section, Mode, name);
  ini.WriteBool(Section, SkipWhenClear, delivery.SkipWhenClear);
  ini.WriteBool(Section, AttachWorkbook, delivery.AttachWorkbook);
  ini.UpdateFile();
}

void ReadConfigFilters(const QString &iniPath, std::int32_t &nbMinutes, std::int32_t &nbDays,
                       QStringList &statusToIgnore)
{
  const TraceScope trace(lcSettings(), "TfrmMain.ReadConfigFilters");
  const TIniFile ini(iniPath);
  using namespace Filters;
  nbMinutes = ini.ReadInteger(Section, NbMinutes, DefaultNbMinutes);
  nbDays = ini.ReadInteger(Section, NbDays, DefaultNbDays);
  statusToIgnore.clear();
  const std::int32_t count = ReadListCount(ini, Section, NbIgnore);
  if (count <= 0) {
    statusToIgnore.append(CDefaultIgnoredStatus);
    return;
  }
  for (std::int32_t i = 0; i < count; ++i)
    statusToIgnore.append(ini.ReadString(Section, StatusPrefix + QString::number(i), QString()));
}

void SaveConfigFilters(const QString &iniPath, std::int32_t nbMinutes, std::int32_t nbDays,
                       const QStringList &statusToIgnore)
{
  const TraceScope trace(lcSettings(), "TfrmMain.SaveConfigFilters");
  TIniFile ini(iniPath);
  using namespace Filters;
  ini.WriteInteger(Section, NbMinutes, nbMinutes);
  ini.WriteInteger(Section, NbDays, nbDays);
  ini.WriteInteger(Section, NbIgnore, static_cast<std::int32_t>(statusToIgnore.size()));
  for (qsizetype i = 0; i < statusToIgnore.size(); ++i)
    ini.WriteString(Section, StatusPrefix + QString::number(i), statusToIgnore.at(i));
  ini.UpdateFile();
}
