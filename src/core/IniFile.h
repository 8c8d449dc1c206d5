#pragma once

#include <QString>
#include <QStringList>
#include <memory>

// One access to the settings file with Windows-profile semantics: section and key
// names are case-insensitive, the first occurrence of a key wins, values are
// trimmed, unknown sections, keys and comments are kept. The file is read when the
// object is made; changes reach the disk only through UpdateFile, which replaces
// the file atomically. A key with an empty name is never written. A missing file reads as empty; one that exists but cannot
// be read raises EReadError "Unable to read <path>: <reason>".
//
// Typed reads follow the profile rules: a value that does not convert gives the
// default. Floats are written with ASCII digits and a point whatever the locale,
// and read in that form or with another locale's digits and decimal comma.
class TIniFile
{
public:
  explicit TIniFile(const QString &path);
  ~TIniFile();
  TIniFile(const TIniFile &) = delete;
  TIniFile &operator=(const TIniFile &) = delete;

  const QString &FileName() const { return FPath; }

  bool ValueExists(const QString &section, const QString &key) const;
  QStringList ReadSection(const QString &section) const; // key names, in file order

  QString ReadString(const QString &section, const QString &key, const QString &defaultValue) const;
  qint32 ReadInteger(const QString &section, const QString &key, qint32 defaultValue) const;
  qint64 ReadInt64(const QString &section, const QString &key, qint64 defaultValue) const; // ids
  bool ReadBool(const QString &section, const QString &key, bool defaultValue) const;
  double ReadFloat(const QString &section, const QString &key, double defaultValue) const;

  void WriteString(const QString &section, const QString &key, const QString &value);
  void WriteInteger(const QString &section, const QString &key, qint64 value);
  void WriteBool(const QString &section, const QString &key, bool value);
  void WriteFloat(const QString &section, const QString &key, double value);
  void EraseSection(const QString &section);

  // Writes the file when a value differs from what was read (a save that
  // changes nothing writes nothing), through WriteFileAtomically, readable by
  // its owner only. Only the keys this object changed or erased are written:
  // a value another instance saved in the meantime stays. Two saves on one file
  // never run at once (a lock beside it, "<path>.write-lock"). Raises
  // EWriteError "Unable to write to <path>: <reason>".
  void UpdateFile();

private:
  struct TEntry
  {
    QByteArray Section; // as spelled in the file
    QByteArray Key;
    QString Value;
    bool operator==(const TEntry &other) const { return Value == other.Value; }
  };
  struct TData;
  QString FPath;
  std::unique_ptr<TData> FData;
};
