#include "TempConfig.h"

#include <ctime>

#include <QFile>

TScopedVariable::TScopedVariable(const char *name, const QByteArray &value, void (*changed)())
    : FName(name), FPrevious(qgetenv(name)), FHadPrevious(qEnvironmentVariableIsSet(name)), FChanged(changed)
{
  qputenv(FName, value);
  if (FChanged)
    FChanged();
}

TScopedVariable::~TScopedVariable()
{
  if (FHadPrevious)
    qputenv(FName, FPrevious);
  else
    qunsetenv(FName);
  if (FChanged)
    FChanged();
}

TScopedTimeZone::TScopedTimeZone(const char *zone) : TScopedVariable("TZ", zone, tzset) {}

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
