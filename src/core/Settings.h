#pragma once

#include "ConfigTypes.h"

#include <QString>
#include <QStringList>

class TSecretLookup;

// Reading and writing the settings groups of the settings file. Each call opens
// the file, reads or writes its group, and closes it; a write is on disk when the
// call returns (EWriteError "Unable to write to <path>" otherwise).
//
// A stored secret that cannot be deciphered reads as empty: the reader adds a
// warning naming the file and the key to `warnings`, reads the other keys as
// usual and rewrites nothing.
//
// The secrets (client secret, API and SMTP passwords) go through `secrets`, which
// may take them from systemd credentials or the system keyring instead (see
// SecretLookup.h); without it they are the settings file's own.

void ReadConfigITSM(const QString &iniPath, tyQuorvexITSM &ici, TSettingsWarnings &warnings, TSecretLookup &secrets);
void ReadConfigITSM(const QString &iniPath, tyQuorvexITSM &ici, TSettingsWarnings &warnings);
void SaveConfigITSM(const QString &iniPath, const tyQuorvexITSM &ici, TSecretLookup &secrets,
                    TSettingsWarnings &warnings);
void SaveConfigITSM(const QString &iniPath, const tyQuorvexITSM &ici);

void ReadConfigSMTP(const QString &iniPath, tySMTPserver &smtp, TSettingsWarnings &warnings, TSecretLookup &secrets);
void ReadConfigSMTP(const QString &iniPath, tySMTPserver &smtp, TSettingsWarnings &warnings);
void SaveConfigSMTP(const QString &iniPath, const tySMTPserver &smtp, TSecretLookup &secrets,
                    TSettingsWarnings &warnings);
void SaveConfigSMTP(const QString &iniPath, const tySMTPserver &smtp);

// Delivery of the report. A mode other than "report", "concerned" or "personal"
// reads as "report", with a warning naming the file and the key.
void ReadConfigDelivery(const QString &iniPath, tyDelivery &delivery, TSettingsWarnings &warnings);
void SaveConfigDelivery(const QString &iniPath, const tyDelivery &delivery);

// Report filters: minutes before an unassigned ticket is reported, days without an
// update, statuses left out. When no status is stored the list holds the one entry
// Setting::Filters::DefaultIgnoredStatus.
tyWindowLayout ReadWindowLayout(const QString &iniPath);
void SaveWindowLayout(const QString &iniPath, const tyWindowLayout &layout);
void ReadConfigFilters(const QString &iniPath, std::int32_t &nbMinutes, std::int32_t &nbDays,
                       QStringList &statusToIgnore);
void SaveConfigFilters(const QString &iniPath, std::int32_t nbMinutes, std::int32_t nbDays,
                       const QStringList &statusToIgnore);
