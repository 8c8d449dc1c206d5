#include "AppPaths.h"

#include "Errors.h"
#include "Trace.h"
#include "uTools.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

QString WithExtension(const QString &fileName, const QString &extension)
{
  const QFileInfo info(fileName);
  const QString base = info.suffix().isEmpty() ? info.fileName() : info.completeBaseName();
  return base + extension;
}

} // namespace

QString BaseFolder()
{
  const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
  return QDir::cleanPath(config + QStringLiteral("/Vellmor/vlmQuorvexITSM")) + u'/';
}

QString IniFileNameFor(const QString &exeFileName)
{
  QString name = WithExtension(QFileInfo(exeFileName).fileName(), QStringLiteral(".ini"));
  return name.remove(QStringLiteral("_debug"), Qt::CaseInsensitive);
}

QString LogFileNameFor(const QString &exeFileName, const QString &stamp)
{
  return WithExtension(QFileInfo(exeFileName).fileName(), QString()) + u'_' + stamp + QStringLiteral(".log");
}

QString TraceLogPathFor(const QString &iniPath, const QString &exeFileName)
{
  return QFileInfo(iniPath).absolutePath() + u'/' +
         WithExtension(QFileInfo(exeFileName).fileName(), QStringLiteral(".log"));
}

tyAppPaths InitFichIniLocation(const QString &exeFileName)
{
  const QString folder = BaseFolder();
  if (!QDir().mkpath(folder))
    throw EWriteError(QStringLiteral("Unable to create the folder ") + folder);

  tyAppPaths paths;
  paths.FFichINI = folder + IniFileNameFor(exeFileName);
  paths.FLogFile = folder + LogFileNameFor(exeFileName, Timestamp(false));
  TraceValue(lcCore(), "FFichINI", paths.FFichINI);
  TraceValue(lcCore(), "FLogFile", paths.FLogFile);
  return paths;
}
