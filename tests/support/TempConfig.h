#pragma once

#include <QLocale>
#include <QString>
#include <QTemporaryDir>
#include <ostream>

// Sets an environment variable for the life of the object, then puts back what
// was there; `changed`, when given, is called after each change.
class TScopedVariable
{
public:
  TScopedVariable(const char *name, const QByteArray &value, void (*changed)() = nullptr);
  ~TScopedVariable();

private:
  const char *FName;
  QByteArray FPrevious;
  bool FHadPrevious;
  void (*FChanged)();
};

// Points XDG_CONFIG_HOME at a fresh temporary folder for the life of the object,
// so that a test never reads or writes a real home folder.
class TTempConfig
{
public:
  QString Root() const { return FDir.path(); }
  // Path of a file directly in the temporary folder.
  QString File(const QString &name) const { return FDir.filePath(name); }
  // The program's settings folder in it, with its final slash.
  QString SettingsFolder() const { return FDir.filePath(QStringLiteral("Vellmor/vlmQuorvexITSM/")); }

private:
  QTemporaryDir FDir;
  TScopedVariable FHome{"XDG_CONFIG_HOME", FDir.path().toUtf8()};
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
class TScopedTimeZone : TScopedVariable
{
public:
  explicit TScopedTimeZone(const char *zone);
};

// Whole content of a text file, empty when missing.
QString ReadTextFile(const QString &path);
void WriteTextFile(const QString &path, const QByteArray &content);

// Readable QString values in test failure messages.
inline void PrintTo(const QString &value, std::ostream *out) { *out << '"' << value.toStdString() << '"'; }
