#pragma once

#include <QLocale>
#include <QString>
#include <QTemporaryDir>
#include <ostream>

// Points XDG_CONFIG_HOME at a fresh temporary folder for the life of the object,
// so that a test never reads or writes a real home folder.
class TTempConfig
{
public:
  TTempConfig();
  ~TTempConfig();
  QString Root() const { return FDir.path(); }
  // Path of a file directly in the temporary folder.
  QString File(const QString &name) const { return FDir.filePath(name); }
  // The program's settings folder in it, with its final slash.
  QString SettingsFolder() const { return FDir.filePath(QStringLiteral("Vellmor/vlmQuorvexITSM/")); }

private:
  QTemporaryDir FDir;
  QByteArray FPrevious;
  bool FHadPrevious;
};

// Sets the default locale for the life of the object.
class TScopedLocale
{
public:
  explicit TScopedLocale(const QLocale &locale) : FPrevious(QLocale()) { QLocale::setDefault(locale); }
  ~TScopedLocale() { QLocale::setDefault(FPrevious); }

private:
  QLocale FPrevious;
};

// Sets the process's time zone (TZ, as a machine in that zone has it) for the
// life of the object.
class TScopedTimeZone
{
public:
  explicit TScopedTimeZone(const char *zone);
  ~TScopedTimeZone();

private:
  QByteArray FPrevious;
  bool FHadPrevious;
};

// Whole content of a text file, empty when missing.
QString ReadTextFile(const QString &path);
void WriteTextFile(const QString &path, const QByteArray &content);

// Readable QString values in test failure messages.
inline void PrintTo(const QString &value, std::ostream *out) { *out << '"' << value.toStdString() << '"'; }
