#define SI_NO_CONVERSION
#include <SimpleIni.h>

#include "IniFile.h"

#include "FileLock.h"

#include "AtomicFile.h"
#include "Errors.h"
#include "TextFiles.h"
#include "Trace.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QMap>

struct TIniFile::TData
{
  // Multi-key so that a duplicated key keeps every occurrence and the first one
  // is read, as the profile API does; writes replace them with one entry.
  CSimpleIniA Ini{/*a_bIsUtf8*/ true, /*a_bMultiKey*/ true, /*a_bMultiLine*/ false};
  // Every value as read, so that a save that changes none writes nothing, and
  // a save writes only what this object changed.
  QMap<QString, TEntry> Loaded;

  // Reads `path`; a missing file is empty.
  void Load(const QString &path)
  {
    Ini.SetSpaces(false);
    const QByteArray utf8 = QFileInfo::exists(path) ? ReadText(path).toUtf8() : QByteArray();
    Ini.LoadData(utf8.constData(), static_cast<size_t>(utf8.size()));
    Loaded = Entries();
  }

  // Each key's value (its first occurrence), keyed by section and key in lower
  // case, as the profile rules compare them.
  QMap<QString, TEntry> Entries() const
  {
    QMap<QString, TEntry> entries;
    CSimpleIniA::TNamesDepend sections;
    Ini.GetAllSections(sections);
    for (const auto &section : sections) {
      CSimpleIniA::TNamesDepend keys;
      Ini.GetAllKeys(section.pItem, keys);
      for (const auto &key : keys) {
        const QString id = QString::fromUtf8(section.pItem).toLower() + u'\n' + QString::fromUtf8(key.pItem).toLower();
        if (!entries.contains(id))
          entries.insert(id, {section.pItem, key.pItem, QString::fromUtf8(Ini.GetValue(section.pItem, key.pItem, ""))});
      }
    }
    return entries;
  }
};

namespace {

// A float as another locale wrote it: its digits (Arabic-Indic ones included)
// and its decimal comma, in the ASCII form.
QString AsciiNumber(const QString &text)
{
  QString ascii;
  for (const QChar c : text)
    if (c.isDigit())
      ascii += QChar(u'0' + c.digitValue());
    else if (c == u',' || c == QChar(0x066B)) // the Arabic decimal separator
      ascii += u'.';
    else if (c == QChar(0x2212)) // a typographic minus
      ascii += u'-';
    else
      ascii += c;
  return ascii;
}

} // namespace

TIniFile::TIniFile(const QString &path) : FPath(path), FData(std::make_unique<TData>())
{
  // A missing file is empty; one that exists but cannot be read raises an error,
  // so that defaults are never taken for it and then saved over it.
  FData->Load(path);
}

TIniFile::~TIniFile() = default;

bool TIniFile::ValueExists(const QString &section, const QString &key) const
{
  return FData->Ini.GetValue(section.toUtf8().constData(), key.toUtf8().constData(), nullptr) != nullptr;
}

QStringList TIniFile::ReadSection(const QString &section) const
{
  CSimpleIniA::TNamesDepend keys;
  FData->Ini.GetAllKeys(section.toUtf8().constData(), keys);
  keys.sort(CSimpleIniA::Entry::LoadOrder());
  QStringList result;
  for (const auto &entry : keys) {
    const QString name = QString::fromUtf8(entry.pItem);
    if (!result.contains(name, Qt::CaseInsensitive))
      result.append(name);
  }
  return result;
}

QString TIniFile::ReadString(const QString &section, const QString &key, const QString &defaultValue) const
{
  const char *value = FData->Ini.GetValue(section.toUtf8().constData(), key.toUtf8().constData(), nullptr);
  return value ? QString::fromUtf8(value) : defaultValue;
}

qint32 TIniFile::ReadInteger(const QString &section, const QString &key, qint32 defaultValue) const
{
  bool ok = false;
  const qint32 value = ReadString(section, key, QString()).toInt(&ok, 10);
  return ok ? value : defaultValue;
}

qint64 TIniFile::ReadInt64(const QString &section, const QString &key, qint64 defaultValue) const
{
  bool ok = false;
  const qint64 value = ReadString(section, key, QString()).toLongLong(&ok, 10);
  return ok ? value : defaultValue;
}

bool TIniFile::ReadBool(const QString &section, const QString &key, bool defaultValue) const
{
  return ReadInteger(section, key, defaultValue ? 1 : 0) != 0;
}

double TIniFile::ReadFloat(const QString &section, const QString &key, double defaultValue) const
{
  // Written with ASCII digits and a point; a file written by an older version
  // under a locale with a decimal comma or other digits reads all the same.
  const QString text = ReadString(section, key, QString()).trimmed();
  QLocale ascii = QLocale::c();
  ascii.setNumberOptions(QLocale::RejectGroupSeparator); // "1,5" is one and a half, never 15
  bool ok = false;
  double value = ascii.toDouble(text, &ok);
  if (!ok)
    value = ascii.toDouble(AsciiNumber(text), &ok);
  return ok ? value : defaultValue;
}

void TIniFile::WriteString(const QString &section, const QString &key, const QString &value)
{
  // A value is one line of the file: a line break would cut it and turn the rest
  // into a stray line.
  // A line "=value" could never be read back.
  if (key.trimmed().isEmpty()) {
    TraceValue(lcSettings(), "Not written, no key name in section", section);
    return;
  }
  QString line = value;
  line.replace(QStringLiteral("\r\n"), QStringLiteral(" ")).replace(u'\n', u' ').replace(u'\r', u' ');
  FData->Ini.SetValue(section.toUtf8().constData(), key.toUtf8().constData(), line.toUtf8().constData(),
                      nullptr, /*a_bForceReplace*/ true);
}

void TIniFile::WriteInteger(const QString &section, const QString &key, qint64 value)
{
  WriteString(section, key, QString::number(value));
}

void TIniFile::WriteBool(const QString &section, const QString &key, bool value)
{
  WriteString(section, key, value ? QStringLiteral("1") : QStringLiteral("0"));
}

void TIniFile::WriteFloat(const QString &section, const QString &key, double value)
{
  // Whatever the locale: a file carried to another machine or read by a
  // scheduled run under another locale keeps its numbers.
  WriteString(section, key, QString::number(value, 'g', 15));
}

void TIniFile::EraseSection(const QString &section)
{
  FData->Ini.Delete(section.toUtf8().constData(), nullptr);
}

void TIniFile::UpdateFile()
{
  const QMap<QString, TEntry> current = FData->Entries();
  if (current == FData->Loaded)
    return;
  // Another instance (an unattended run beside an open window) may have saved
  // since this object read the file: under the write lock, what it changed
  // there and this object did not is taken over first, so that neither writer
  // loses the other's values.
  const TFileLock lock(FPath + QStringLiteral(".write-lock"), TFileLock::TWait::UntilFree);
  TData latest;
  latest.Load(FPath);
  const auto unchangedHere = [&](const QString &id) {
    return current.contains(id) == FData->Loaded.contains(id) && current.value(id) == FData->Loaded.value(id);
  };
  for (auto entry = latest.Loaded.cbegin(); entry != latest.Loaded.cend(); ++entry)
    if (unchangedHere(entry.key()) &&
        (!FData->Loaded.contains(entry.key()) || FData->Loaded.value(entry.key()) != *entry))
      FData->Ini.SetValue(entry->Section.constData(), entry->Key.constData(), entry->Value.toUtf8().constData(),
                          nullptr, /*a_bForceReplace*/ true);
  for (auto entry = FData->Loaded.cbegin(); entry != FData->Loaded.cend(); ++entry)
    if (!latest.Loaded.contains(entry.key()) && unchangedHere(entry.key()))
      FData->Ini.Delete(entry->Section.constData(), entry->Key.constData(), /*bRemoveEmpty*/ true);
  std::string text;
  if (FData->Ini.Save(text) < 0)
    throw EWriteError(QStringLiteral("Unable to write to ") + FPath);
  // The file holds the access token and enciphered secrets: nobody else reads it.
  WriteFileAtomically(FPath, QByteArray(text.data(), static_cast<qsizetype>(text.size())), /*ownerOnly*/ true);
  FData->Loaded = FData->Entries();
}
