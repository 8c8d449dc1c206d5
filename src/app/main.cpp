// Entry point of quorvex-followup: options that answer at once (--help,
// --version, --encrypt), then the single-instance guard and the main window.

#include "CommandLine.h"
#include "SingleInstance.h"

#include "core/AppInfo.h"
#include "core/AppPaths.h"
#include "core/Errors.h"
#include "core/SecretCodec.h"
#include "core/Trace.h"
#include "gui/TfrmMain.h"
#include "rest/dRest.h"
#include "state/TMainState.h"

#include <QApplication>
#include <QFileInfo>
#include <QMessageBox>
#include <QNetworkAccessManager>
#include <QTextStream>
#include <cstdio>
#include <iostream>
#include <string>

namespace {

enum TExitStatus { CExitOk = 0, CExitFailed = 2 };

// Reads one line of standard input (the line break is not part of the secret)
// and prints its stored form.
int EncryptFromStdin()
{
  std::string line;
  if (!std::getline(std::cin, line) && line.empty()) {
    std::fputs("--encrypt: no secret on standard input\n", stderr);
    return CExitFailed;
  }
  if (!line.empty() && line.back() == '\r')
    line.pop_back();
  const QString stored = Encrypt(QString::fromUtf8(line.data(), static_cast<qsizetype>(line.size())));
  std::fputs(qPrintable(stored), stdout);
  std::fputc('\n', stdout);
  return CExitOk;
}

bool DisplayAvailable()
{
  return qEnvironmentVariableIsSet("QT_QPA_PLATFORM") || qEnvironmentVariableIsSet("DISPLAY") ||
         qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
}

int RunWindow(int argc, char *argv[], const QString &exeFileName)
{
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("quorvex-followup"));
  QApplication::setApplicationVersion(QStringLiteral(QUORVEX_VERSION));
  QApplication::setDesktopFileName(QStringLiteral("quorvex-followup"));

  TSingleInstance instance(BaseFolder() + IniFileNameFor(exeFileName));
  if (!instance.IsPrimary()) {
    // Another window is open on the same settings: bring it forward and leave.
    instance.AskPrimaryToRaise();
    return CExitOk;
  }

  QNetworkAccessManager network;
  TdmRest rest(network);
  TMainState state(exeFileName, rest, [](const QString &warning) {
    QMessageBox::warning(nullptr, CApplicationTitle, warning);
  });
  try {
    state.FormCreate();
  } catch (const EQuorvexError &error) {
    TraceError(lcApp(), error.Message());
    QMessageBox::critical(nullptr, CApplicationTitle, error.Message());
    return CExitFailed;
  }

  int status = CExitOk;
  {
    TfrmMain window(state);
    QObject::connect(&instance, &TSingleInstance::RaiseRequested, &window, &TfrmMain::RaiseToFront);
    window.show();
    status = application.exec();
  }
  state.FormDestroy();
  return status;
}

} // namespace

int main(int argc, char *argv[])
{
  QStringList arguments;
  for (int i = 1; i < argc; ++i)
    arguments.append(QString::fromLocal8Bit(argv[i]));
  const TCommandLine line = ParseCommandLine(arguments);
  const QString exeFileName = QFileInfo(QString::fromLocal8Bit(argv[0])).fileName();

  if (line.Help) {
    std::fputs(qPrintable(UsageText(exeFileName)), stdout);
    return CExitOk;
  }
  if (line.Version) {
    std::printf("%s %s\n", qPrintable(exeFileName), QUORVEX_VERSION);
    return CExitOk;
  }
  Trace::Install(line.Verbose);
  if (line.Encrypt)
    return EncryptFromStdin();
  if (line.Unattended()) {
    std::fprintf(stderr, "%s: the unattended run (started by \"%s\") is not available in this version yet.\n",
                 qPrintable(exeFileName), qPrintable(arguments.join(u' ')));
    return CExitFailed;
  }
  if (!DisplayAvailable()) {
    std::fprintf(stderr,
                 "%s: no display to open the window on (DISPLAY is not set). Run it from a desktop "
                 "session, or see --help for the unattended run.\n",
                 qPrintable(exeFileName));
    return CExitFailed;
  }
  return RunWindow(argc, argv, exeFileName);
}
