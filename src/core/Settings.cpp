#include "Settings.h"

#include "IniFile.h"
#include "SecretLookup.h"
#include "SettingsKeys.h"
#include "Trace.h"

#include <algorithm>

// Each group's reader and writer name its keys through the settings table, in the
// order the file keeps them.

void ReadConfigITSM(const QString &iniPath, tyQuorvexITSM &ici, TSettingsWarnings &warnings, TSecretLookup &secrets)
{
  const TraceScope trace(lcSettings(), "Settings.ReadConfigITSM");
  const TIniFile ini(iniPath);
  using namespace Setting::Itsm;
  ici.SaaS = ReadSetting(ini, SaaS);
  ici.Instance = ReadSetting(ini, Instance, warnings);
  ici.API.ClientID = ReadSetting(ini, ClientID, warnings);
  ici.API.ClientSecret = secrets.Read(ini, ClientSecret, warnings);
  ici.API.Username = ReadSetting(ini, Username, warnings);
  ici.API.Password = secrets.Read(ini, Password, warnings);
  ici.API.TokenRequest = ReadSetting(ini, TokenRequest);
  ici.API.TokenValidity = ReadSetting(ini, TokenValidity);
  ici.API.Token = ReadSetting(ini, Token, warnings);
  ici.CaFile = ReadSetting(ini, CaFile, warnings);
  const std::int32_t parallel = ReadSetting(ini, ParallelRequests);
  ici.ParallelRequests = std::clamp(parallel, ParallelRequests.Default, MaxParallelRequests);
  if (ici.ParallelRequests != parallel)
    warnings.append(QStringLiteral("%1 of [%2] in \"%3\" is %4, outside 1 to %5: %6 is used. Correct it in "
                                   "\"Quorvex ITSM API\".")
                        .arg(ParallelRequests.Key, Section, iniPath)
                        .arg(parallel)
                        .arg(MaxParallelRequests)
                        .arg(ici.ParallelRequests));
}

void ReadConfigITSM(const QString &iniPath, tyQuorvexITSM &ici, TSettingsWarnings &warnings)
{
  TSecretLookup fileOnly;
  ReadConfigITSM(iniPath, ici, warnings, fileOnly);
}

void SaveConfigITSM(const QString &iniPath, const tyQuorvexITSM &ici, TSecretLookup &secrets,
                    TSettingsWarnings &warnings)
{
  const TraceScope trace(lcSettings(), "Settings.SaveConfigITSM");
  TIniFile ini(iniPath);
  using namespace Setting::Itsm;
  WriteSetting(ini, SaaS, ici.SaaS);
  WriteSetting(ini, Instance, ici.Instance);
  WriteSetting(ini, ClientID, ici.API.ClientID);
  secrets.Write(ini, ClientSecret, ici.API.ClientSecret, warnings);
  WriteSetting(ini, Username, ici.API.Username);
  secrets.Write(ini, Password, ici.API.Password, warnings);
  WriteSetting(ini, TokenRequest, ici.API.TokenRequest);
  WriteSetting(ini, TokenValidity, ici.API.TokenValidity);
  WriteSetting(ini, Token, ici.API.Token);
  WriteSetting(ini, ParallelRequests, ici.ParallelRequests);
  WriteSetting(ini, CaFile, ici.CaFile);
  ini.UpdateFile();
}

void SaveConfigITSM(const QString &iniPath, const tyQuorvexITSM &ici)
{
  TSecretLookup fileOnly;
  TSettingsWarnings warnings; // only the keyring gives any
  SaveConfigITSM(iniPath, ici, fileOnly, warnings);
}

void ReadConfigSMTP(const QString &iniPath, tySMTPserver &smtp, TSettingsWarnings &warnings, TSecretLookup &secrets)
{
  const TraceScope trace(lcSettings(), "Settings.ReadConfigSMTP");
  const TIniFile ini(iniPath);
  using namespace Setting::Smtp;
  smtp.Server = ReadSetting(ini, Server, warnings);
  smtp.Port = ReadSetting(ini, Port);
  smtp.UseSSL = ReadSetting(ini, UseSSL);
  smtp.UserName = ReadSetting(ini, UserName, warnings);
  smtp.Password = secrets.Read(ini, Password, warnings);
  smtp.DefaultTo = ReadSetting(ini, DefaultTo, warnings);
  smtp.DefaultCC = ReadSetting(ini, DefaultCC, warnings);
  smtp.From = ReadSetting(ini, From, warnings);
  smtp.MaxRecipients = ReadSetting(ini, MaxRecipients);
  if (smtp.MaxRecipients < 1) {
    const QString warning = QStringLiteral("The recipient limit %1 (key \"%2\" of section [%3] in \"%4\") is not a "
                                           "positive number; %5 is used. Correct it in the settings file.")
                                .arg(smtp.MaxRecipients)
                                .arg(MaxRecipients.Key, Section, ini.FileName())
                                .arg(MaxRecipients.Default);
    TraceError(lcSettings(), warning);
    warnings.append(warning);
    smtp.MaxRecipients = MaxRecipients.Default;
  }
}

void ReadConfigSMTP(const QString &iniPath, tySMTPserver &smtp, TSettingsWarnings &warnings)
{
  TSecretLookup fileOnly;
  ReadConfigSMTP(iniPath, smtp, warnings, fileOnly);
}

void SaveConfigSMTP(const QString &iniPath, const tySMTPserver &smtp, TSecretLookup &secrets,
                    TSettingsWarnings &warnings)
{
  const TraceScope trace(lcSettings(), "Settings.SaveConfigSMTP");
  TIniFile ini(iniPath);
  using namespace Setting::Smtp;
  WriteSetting(ini, Server, smtp.Server);
  WriteSetting(ini, Port, smtp.Port);
  WriteSetting(ini, UseSSL, smtp.UseSSL);
  WriteSetting(ini, UserName, smtp.UserName);
  secrets.Write(ini, Password, smtp.Password, warnings);
  WriteSetting(ini, DefaultTo, smtp.DefaultTo);
  WriteSetting(ini, DefaultCC, smtp.DefaultCC);
  WriteSetting(ini, From, smtp.From);
  ini.UpdateFile();
}

void SaveConfigSMTP(const QString &iniPath, const tySMTPserver &smtp)
{
  TSecretLookup fileOnly;
  TSettingsWarnings warnings; // only the keyring gives any
  SaveConfigSMTP(iniPath, smtp, fileOnly, warnings);
}

void ReadConfigDelivery(const QString &iniPath, tyDelivery &delivery, TSettingsWarnings &warnings)
{
  const TraceScope trace(lcSettings(), "ReadConfigDelivery");
  const TIniFile ini(iniPath);
  using namespace Setting::Delivery;
  const QString mode = ReadSetting(ini, Mode, warnings);
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
                                .arg(mode, Mode.Key, Section, ini.FileName());
    TraceError(lcSettings(), warning);
    warnings.append(warning);
  }
  delivery.SkipWhenClear = ReadSetting(ini, SkipWhenClear);
  delivery.AttachWorkbook = ReadSetting(ini, AttachWorkbook);
  delivery.FollowUp.History = ReadSetting(ini, Setting::FollowUp::History);
  delivery.FollowUp.EscalateAfter = ReadSetting(ini, Setting::FollowUp::EscalateAfter);
  delivery.FollowUp.EscalateTo = ReadSetting(ini, Setting::FollowUp::EscalateTo, warnings);
}

void SaveConfigDelivery(const QString &iniPath, const tyDelivery &delivery)
{
  const TraceScope trace(lcSettings(), "SaveConfigDelivery");
  TIniFile ini(iniPath);
  using namespace Setting::Delivery;
  for (const auto &[value, name] : ModeNames)
    if (value == delivery.Mode)
      WriteSetting(ini, Mode, name);
  WriteSetting(ini, SkipWhenClear, delivery.SkipWhenClear);
  WriteSetting(ini, AttachWorkbook, delivery.AttachWorkbook);
  WriteSetting(ini, Setting::FollowUp::History, delivery.FollowUp.History);
  WriteSetting(ini, Setting::FollowUp::EscalateAfter, delivery.FollowUp.EscalateAfter);
  WriteSetting(ini, Setting::FollowUp::EscalateTo, delivery.FollowUp.EscalateTo);
  ini.UpdateFile();
}

tyWindowLayout ReadWindowLayout(const QString &iniPath)
{
  const TIniFile ini(iniPath);
  using namespace Setting::Window;
  TSettingsWarnings ignored; // a layout that cannot be read is the default one
  tyWindowLayout layout;
  layout.Geometry = QByteArray::fromBase64(ReadSetting(ini, Geometry, ignored).toLatin1());
  for (const QString &width : ReadSetting(ini, ColumnWidths, ignored).split(u',', Qt::SkipEmptyParts))
    layout.ColumnWidths.append(width.toInt());
  layout.SortColumn = ReadSetting(ini, SortColumn);
  layout.SortDescending = ReadSetting(ini, SortDescending);
  return layout;
}

void SaveWindowLayout(const QString &iniPath, const tyWindowLayout &layout)
{
  TIniFile ini(iniPath);
  using namespace Setting::Window;
  QStringList widths;
  for (const int width : layout.ColumnWidths)
    widths.append(QString::number(width));
  WriteSetting(ini, Geometry, QString::fromLatin1(layout.Geometry.toBase64()));
  WriteSetting(ini, ColumnWidths, widths.join(u','));
  WriteSetting(ini, SortColumn, layout.SortColumn);
  WriteSetting(ini, SortDescending, layout.SortDescending);
  ini.UpdateFile();
}

void ReadConfigFilters(const QString &iniPath, std::int32_t &nbMinutes, std::int32_t &nbDays,
                       QStringList &statusToIgnore)
{
  const TraceScope trace(lcSettings(), "Settings.ReadConfigFilters");
  const TIniFile ini(iniPath);
  using namespace Setting::Filters;
  nbMinutes = ReadSetting(ini, NbMinutes);
  nbDays = ReadSetting(ini, NbDays);
  statusToIgnore.clear();
  const std::int32_t count = ReadListCount(ini, IgnoredStatuses);
  if (count <= 0) {
    statusToIgnore.append(DefaultIgnoredStatus);
    return;
  }
  for (std::int32_t i = 0; i < count; ++i)
    statusToIgnore.append(ReadListEntry(ini, IgnoredStatus, i));
}

void SaveConfigFilters(const QString &iniPath, std::int32_t nbMinutes, std::int32_t nbDays,
                       const QStringList &statusToIgnore)
{
  const TraceScope trace(lcSettings(), "Settings.SaveConfigFilters");
  TIniFile ini(iniPath);
  using namespace Setting::Filters;
  WriteSetting(ini, NbMinutes, nbMinutes);
  WriteSetting(ini, NbDays, nbDays);
  WriteListCount(ini, IgnoredStatuses, statusToIgnore.size());
  for (qsizetype i = 0; i < statusToIgnore.size(); ++i)
    WriteListEntry(ini, IgnoredStatus, i, statusToIgnore.at(i));
  ini.UpdateFile();
}
