#pragma once

#include "ConfigTypes.h"
#include "IniFile.h"
#include "TColor.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <type_traits>
#include <utility>

// Every section and key of the settings file, declared once with its type, its
// default and whether it is stored enciphered. Readers and writers name a key
// only through these constants and the typed helpers at the end, so a key's
// name, type and default cannot differ between the code that reads it and the
// code that writes it.

// One key of a fixed name. T is bool, std::int32_t, std::int64_t (ids), double or
// QString. A secret
// (QString only) names its Credential: the file of $CREDENTIALS_DIRECTORY that
// may hold it for an unattended run. In the settings file a secret is stored
// enciphered, or as CKeyringMarker when the system keyring holds it.
template <typename T>
struct TSetting
{
  QString Section;
  QString Key;
  T Default;
  QString Credential = {}; // empty: not a secret
  bool Secret() const { return !Credential.isEmpty(); }
};

// The value of a secret key whose secret the system keyring holds.
inline const QString CKeyringMarker = QStringLiteral("@keyring");

// A list kept as a count key and entries numbered from FirstNumber, one key per
// field of an entry: prefix + number.
struct TSettingsList
{
  QString Section;
  QString CountKey;
  std::int32_t FirstNumber;
};

template <typename T>
struct TListField
{
  const TSettingsList &List;
  QString Prefix;
  T Default; // what an entry missing below the count reads as
  QString KeyAt(qsizetype index) const { return Prefix + QString::number(List.FirstNumber + index); }
};

// A section whose key names are data (a status or priority text).
template <typename T>
struct TKeyedSection
{
  QString Section;
  T Default; // what a value that does not convert reads as
};

namespace Setting {

namespace Itsm {
inline const QString Section = QStringLiteral("QuorvexITSM");
inline const TSetting<bool> SaaS{Section, QStringLiteral("SaaS"), true};
inline const TSetting<QString> Instance{Section, QStringLiteral("Instance"), QStringLiteral("acme")};
inline const TSetting<QString> ClientID{Section, QStringLiteral("ClientID"), QString()};
inline const TSetting<QString> ClientSecret{Section, QStringLiteral("ClientSecret"), QString(),
                                            QStringLiteral("client-secret")};
inline const TSetting<QString> Username{Section, QStringLiteral("Username"), QString()};
inline const TSetting<QString> Password{Section, QStringLiteral("Password"), QString(), QStringLiteral("api-password")};
inline const TSetting<double> TokenRequest{Section, QStringLiteral("TokenRequest"), 0};
inline const TSetting<std::int32_t> TokenValidity{Section, QStringLiteral("TokenValidity"), 24};
inline const TSetting<QString> Token{Section, QStringLiteral("Token"), QString()};
inline const TSetting<std::int32_t> ParallelRequests{Section, QStringLiteral("ParallelRequests"), 1};
// A PEM file of certificate authorities trusted besides the system's, for HTTPS
// and SMTP; the variable QUORVEX_EXTRA_CA_CERTS wins when set.
inline const TSetting<QString> CaFile{Section, QStringLiteral("CaFile"), QString()};
inline constexpr std::int32_t MaxParallelRequests = 8;
} // namespace Itsm

// No server, mailbox or address is made up: the user enters them.
namespace Smtp {
inline const QString Section = QStringLiteral("SMTP");
inline const TSetting<QString> Server{Section, QStringLiteral("Server"), QString()};
inline const TSetting<std::int32_t> Port{Section, QStringLiteral("Port"), 465};
inline const TSetting<bool> UseSSL{Section, QStringLiteral("UseSSL"), true};
inline const TSetting<QString> UserName{Section, QStringLiteral("UserName"), QString()};
inline const TSetting<QString> Password{Section, QStringLiteral("Password"), QString(), QStringLiteral("smtp-password")};
inline const TSetting<QString> DefaultTo{Section, QStringLiteral("DefaultTo"), QString()};
inline const TSetting<QString> DefaultCC{Section, QStringLiteral("DefaultCC"), QString()};
inline const TSetting<QString> From{Section, QStringLiteral("From"), QString()};
// Relays limit the recipients of one message (often to 100): more go as several
// identical mails. Set by hand in the file; no dialog writes it.
inline const TSetting<std::int32_t> MaxRecipients{Section, QStringLiteral("MaxRecipients"), 100};
} // namespace Smtp

namespace Delivery {
inline const QString Section = QStringLiteral("Delivery");
// The stored names of the modes; the first is the default.
inline const QList<std::pair<TDeliveryMode, QString>> ModeNames{{TDeliveryMode::Report, QStringLiteral("report")},
                                                                {TDeliveryMode::Concerned, QStringLiteral("concerned")},
                                                                {TDeliveryMode::Personal, QStringLiteral("personal")}};
inline const TSetting<QString> Mode{Section, QStringLiteral("Mode"), ModeNames.first().second};
inline const TSetting<bool> SkipWhenClear{Section, QStringLiteral("SkipWhenClear"), false};
inline const TSetting<bool> AttachWorkbook{Section, QStringLiteral("AttachWorkbook"), false};
} // namespace Delivery

// The follow-up's memory lives in the store; only these choices are settings.
namespace FollowUp {
inline const QString Section = QStringLiteral("FollowUp");
inline const TSetting<bool> History{Section, QStringLiteral("History"), true};
inline const TSetting<std::int32_t> EscalateAfter{Section, QStringLiteral("EscalateAfter"), 0};
inline const TSetting<QString> EscalateTo{Section, QStringLiteral("EscalateTo"), QString()};
} // namespace FollowUp

// The main window's layout, written when it closes if it changed.
namespace Window {
inline const QString Section = QStringLiteral("Window");
inline const TSetting<QString> Geometry{Section, QStringLiteral("Geometry"), QString()}; // Base64
inline const TSetting<QString> ColumnWidths{Section, QStringLiteral("ColumnWidths"), QString()}; // "80,120,…"
inline const TSetting<std::int32_t> SortColumn{Section, QStringLiteral("SortColumn"), -1};
inline const TSetting<bool> SortDescending{Section, QStringLiteral("SortDescending"), false};
} // namespace Window

namespace Filters {
inline const QString Section = QStringLiteral("Filters");
inline const TSetting<std::int32_t> NbMinutes{Section, QStringLiteral("NbMinutes"), 15};
inline const TSetting<std::int32_t> NbDays{Section, QStringLiteral("NbDays"), 14};
// When no status is stored the list holds this one.
inline const QString DefaultIgnoredStatus = QStringLiteral("Planned (without SLA)");
inline const TSettingsList IgnoredStatuses{Section, QStringLiteral("NbIgnore"), 0};
inline const TListField<QString> IgnoredStatus{IgnoredStatuses, QStringLiteral("Status_"), QString()};
} // namespace Filters

namespace Organizations {
inline const TSettingsList List{QStringLiteral("Organizations"), QStringLiteral("Nb"), 1};
inline const TListField<std::int64_t> Id{List, QStringLiteral("id_"), -1}; // the service's ids are 64-bit
inline const TListField<QString> Name{List, QStringLiteral("name_"), QString()};
inline const TListField<bool> TicketingModuleEnabled{List, QStringLiteral("ticketingModuleEnabled_"), false};
} // namespace Organizations

namespace Teams {
inline const TSettingsList List{QStringLiteral("Teams"), QStringLiteral("Nb"), 1};
inline const TListField<std::int64_t> Id{List, QStringLiteral("id_"), -1}; // the service's ids are 64-bit
inline const TListField<QString> Name{List, QStringLiteral("name_"), QString()};
} // namespace Teams

// Colours as decimal integers, keyed by status name or by short priority code;
// the short code of each long priority text.
inline const TKeyedSection<TColor> StatusColours{QStringLiteral("Status"), clWhite};
inline const TKeyedSection<TColor> PriorityColours{QStringLiteral("Priority"), clWhite};
inline const TKeyedSection<QString> PriorityCodes{QStringLiteral("PriorityLong"), QString()};

} // namespace Setting

namespace SettingsDetail {
template <typename T>
T Read(const TIniFile &ini, const QString &section, const QString &key, const T &defaultValue)
{
  if constexpr (std::is_same_v<T, bool>)
    return ini.ReadBool(section, key, defaultValue);
  else if constexpr (std::is_same_v<T, std::int32_t>)
    return ini.ReadInteger(section, key, defaultValue);
  else if constexpr (std::is_same_v<T, std::int64_t>)
    return ini.ReadInt64(section, key, defaultValue);
  else if constexpr (std::is_same_v<T, double>)
    return ini.ReadFloat(section, key, defaultValue);
  else {
    static_assert(std::is_same_v<T, QString>, "a setting is bool, std::int32_t, std::int64_t, double or QString");
    return ini.ReadString(section, key, defaultValue);
  }
}

template <typename T>
void Write(TIniFile &ini, const QString &section, const QString &key, const T &value)
{
  if constexpr (std::is_same_v<T, bool>)
    ini.WriteBool(section, key, value);
  else if constexpr (std::is_same_v<T, std::int32_t> || std::is_same_v<T, std::int64_t>)
    ini.WriteInteger(section, key, value);
  else if constexpr (std::is_same_v<T, double>)
    ini.WriteFloat(section, key, value);
  else {
    static_assert(std::is_same_v<T, QString>, "a setting is bool, std::int32_t, std::int64_t, double or QString");
    ini.WriteString(section, key, value);
  }
}
} // namespace SettingsDetail

// Typed access. Text goes through its own overloads, which take the secret path
// when the table says so: deciphered on reading (a damaged secret, or the keyring
// marker read where no keyring answered, reads as empty, with a warning naming the
// file and key added to `warnings`), enciphered on writing (a save that changes
// nothing writes nothing; a damaged stored secret or a keyring marker stays as
// found while the new one is empty). Where else a secret may come from, and when
// it goes to the keyring, is TSecretLookup's business.
template <typename T>
  requires(!std::is_same_v<T, QString>)
T ReadSetting(const TIniFile &ini, const TSetting<T> &setting)
{
  return SettingsDetail::Read(ini, setting.Section, setting.Key, setting.Default);
}

template <typename T>
  requires(!std::is_same_v<T, QString>)
void WriteSetting(TIniFile &ini, const TSetting<T> &setting, const std::type_identity_t<T> &value)
{
  SettingsDetail::Write(ini, setting.Section, setting.Key, value);
}

QString ReadSetting(const TIniFile &ini, const TSetting<QString> &setting, TSettingsWarnings &warnings);
void WriteSetting(TIniFile &ini, const TSetting<QString> &setting, const QString &value);
// Marks a secret key as held by the system keyring, and tells whether it is.
void WriteKeyringMarker(TIniFile &ini, const TSetting<QString> &setting);
bool HeldInKeyring(const TIniFile &ini, const TSetting<QString> &setting);

// A count beyond this bound can only come from a damaged file; it is cut so that
// reading stays quick.
inline constexpr std::int32_t CMaxListEntries = 100000;

// The stored count, 0 when missing or not a number, cut to [0, CMaxListEntries]
// (a cut is traced).
std::int32_t ReadListCount(const TIniFile &ini, const TSettingsList &list);
void WriteListCount(TIniFile &ini, const TSettingsList &list, qsizetype count);

// Entry `index` (from 0) of a list.
template <typename T>
T ReadListEntry(const TIniFile &ini, const TListField<T> &field, qsizetype index)
{
  return SettingsDetail::Read(ini, field.List.Section, field.KeyAt(index), field.Default);
}

template <typename T>
void WriteListEntry(TIniFile &ini, const TListField<T> &field, qsizetype index, const T &value)
{
  SettingsDetail::Write(ini, field.List.Section, field.KeyAt(index), value);
}

// A key of a keyed section; HasKeyedValue is false for a missing or empty value.
template <typename T>
T ReadKeyed(const TIniFile &ini, const TKeyedSection<T> &section, const QString &key)
{
  return SettingsDetail::Read(ini, section.Section, key, section.Default);
}

template <typename T>
bool HasKeyedValue(const TIniFile &ini, const TKeyedSection<T> &section, const QString &key)
{
  return !ini.ReadString(section.Section, key, QString()).isEmpty();
}

template <typename T>
void WriteKeyed(TIniFile &ini, const TKeyedSection<T> &section, const QString &key, const T &value)
{
  SettingsDetail::Write(ini, section.Section, key, value);
}

template <typename T>
void EraseKeyed(TIniFile &ini, const TKeyedSection<T> &section)
{
  ini.EraseSection(section.Section);
}
