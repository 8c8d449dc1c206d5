#pragma once

#include <QString>

// Where the settings file, the run log and the trace log live. Every name is
// derived from the running executable's file name, so that a renamed build keeps
// its own files; a name containing "_debug" shares the settings of the build
// without it.

struct tyAppPaths
{
  QString FFichINI;  // full path of the settings file
  QString FLogFile;  // full path of this start's run log
};

// The per-user folder of the program's files, with a trailing separator:
// <config location>/Vellmor/vlmQuorvexITSM/. It is not created here.
QString BaseFolder();

// The executable's file name without folder and without its extension.
QString ExeBaseName(const QString &exeFileName);

// Settings file name for an executable file name (no folder): extension changed to
// ".ini", every "_debug" removed whatever its case.
QString IniFileNameFor(const QString &exeFileName);

// Run log name: executable name without extension + "_" + stamp + ".log".
QString LogFileNameFor(const QString &exeFileName, const QString &stamp);

// Trace log: the settings file's folder + the executable name with ".log".
QString TraceLogPathFor(const QString &iniPath, const QString &exeFileName);

// Fixes FFichINI and FLogFile for this start, creating the base folder when
// missing. Raises EWriteError naming the folder when it cannot be created.
tyAppPaths InitFichIniLocation(const QString &exeFileName);
