#include "AppPaths.h"

#include "AtomicFile.h"
#include "Trace.h"
#include "uTools.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

QString WithExtension(const QString &fileName, const QString &extension)
{
  return ExeBaseName(fileName) + extension;
}

} // namespace

QString ExeBaseName(const QString &exeFileName)
{
  const QFileInfo info(exeFileName);
  return info.suffix().isEmpty() ? info.fileName() : info.completeBaseName();
}

QString BaseFolder()
{
  QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
  // The XDG base directory rules ignore a relative path: the settings never
  // land under whatever folder the program was started from.
  if (QDir::isRelativePath(config)) {
    TraceValue(lcCore(), "XDG_CONFIG_HOME is not absolute, ignored", config);
    config = QDir::homePath() + QStringLiteral("/.config");
  }
  return QDir::cleanPath(config + QStringLiteral("/Vellmor/vlmQuorvexITSM")) + u'/';
}

QString IniFileNameFor(const QString &exeFileName)
{
  QString name = WithExtension(exeFileName, QStringLiteral(".ini"));
  return name.remove(QStringLiteral("_debug"), Qt::CaseInsensitive);
}

QString LogFileNameFor(const QString &exeFileName, const QString &stamp)
{
  return WithExtension(exeFileName, QString()) + u'_' + stamp + QStringLiteral(".log");
}

QString TraceLogPathFor(const QString &iniPath, const QString &exeFileName)
{
  return QFileInfo(iniPath).absolutePath() + u'/' +
         WithExtension(exeFileName, QStringLiteral(".log"));
}

tyAppPaths InitFichIniLocation(const QString &exeFileName)
{
  const QString folder = BaseFolder();
  // It holds the access token and the enciphered secrets.
  MakePrivateFolder(folder);

  tyAppPaths paths;
  paths.FFichINI = folder + IniFileNameFor(exeFileName);
  paths.FLogFile = folder + LogFileNameFor(exeFileName, Timestamp());
  TraceValue(lcCore(), "FFichINI", paths.FFichINI);
  TraceValue(lcCore(), "FLogFile", paths.FLogFile);
  return paths;
}
