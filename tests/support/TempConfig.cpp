#include "TempConfig.h"

#include <ctime>

#include <QFile>

TTempConfig::TTempConfig()
    : FPrevious(qgetenv("XDG_CONFIG_HOME")), FHadPrevious(qEnvironmentVariableIsSet("XDG_CONFIG_HOME"))
{
  qputenv("XDG_CONFIG_HOME", FDir.path().toUtf8());
}

TTempConfig::~TTempConfig()
{
  if (FHadPrevious)
    qputenv("XDG_CONFIG_HOME", FPrevious);
  else
    qunsetenv("XDG_CONFIG_HOME");
}

QString ReadTextFile(const QString &path)
{
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly))
    return QString();
  return QString::fromUtf8(file.readAll());
}

void WriteTextFile(const QString &path, const QByteArray &content)
{
  QFile file(path);
  if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
    file.write(content);
}

TScopedTimeZone::TScopedTimeZone(const char *zone)
    : FPrevious(qgetenv("TZ")), FHadPrevious(qEnvironmentVariableIsSet("TZ"))
{
  qputenv("TZ", zone);
  tzset();
}

TScopedTimeZone::~TScopedTimeZone()
{
  if (FHadPrevious)
    qputenv("TZ", FPrevious);
  else
    qunsetenv("TZ");
  tzset();
}
