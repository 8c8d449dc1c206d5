// Entry point of quorvex-followup: options that answer at once (--help,
// --version, --encrypt), then the single-instance guard, and the main window or
// the unattended run.

#include "CommandLine.h"
#include "StoreCommands.h"
#include "core/FileLock.h"
#include "SingleInstance.h"

#include "core/AppInfo.h"
#include "core/AppPaths.h"
#include "core/Errors.h"
#include "core/SecretCodec.h"
#include "core/SecretLookup.h"
#include "core/SystemKeyring.h"
#include "core/StopRequest.h"
#include "core/Trace.h"
#ifdef QUORVEX_WITH_WIDGETS
#include "gui/TfrmMain.h"
#endif
#include "rest/dRest.h"
#include "state/TMainState.h"
#include "state/UnattendedRun.h"
#include "tickets/LoadingProgress.h"

#ifdef QUORVEX_WITH_WIDGETS
#include <QApplication>
#include <QMessageBox>
#endif
#include <QCoreApplication>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QTimer>
#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

namespace {

// Reads one line of standard input (the line break is not part of the secret)
// and prints its stored form.
int EncryptFromStdin()
{
  std::string line;
  if (!std::getline(std::cin, line) && line.empty()) {
    std::fputs("--encrypt: no secret on standard input\n", stderr);
    return CExitStepFailed;
  }
  if (!line.empty() && line.back() == '\r')
    line.pop_back();
  const QString stored = Encrypt(QString::fromUtf8(line.data(), static_cast<qsizetype>(line.size())));
  std::fputs(qPrintable(stored), stdout);
  std::fputc('\n', stdout);
  return CExitOk;
}

// A window can be opened: on X11 or Wayland when their display is named, or on
// a platform that needs none (offscreen, vnc, ...). A QT_QPA_PLATFORM of xcb or
// wayland alone, as a scheduler's environment may carry, is not a display.
bool DisplayAvailable()
{
#ifndef QUORVEX_WITH_WIDGETS
  return false; // a build without the window is headless wherever it runs
#endif
  const QString platform = qEnvironmentVariable("QT_QPA_PLATFORM");
  if (!platform.isEmpty() && !platform.startsWith(QLatin1String("xcb")) &&
      !platform.startsWith(QLatin1String("wayland")))
    return true;
  return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

void PrintLine(const QString &text)
{
  std::fputs(qPrintable(text + u'\n'), stderr);
}

// Starts the program proper: the window, or the unattended run (in the window
// when there is a display, without any otherwise).
int Run(int argc, char *argv[], const QString &exeFileName, const TCommandLine &line)
{
  // The settings' secrets need the key soon: it is derived while Qt starts.
  const std::jthread keyAhead = DeriveKeyAhead();
  const bool unattended = line.Unattended();
  std::unique_ptr<QCoreApplication> application;
#ifdef QUORVEX_WITH_WIDGETS
  if (DisplayAvailable()) {
    application = std::make_unique<QApplication>(argc, argv);
    QGuiApplication::setDesktopFileName(QStringLiteral("quorvex-followup"));
  }
#endif
  if (!application)
    application = std::make_unique<QCoreApplication>(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("quorvex-followup"));
  QCoreApplication::setApplicationVersion(QStringLiteral(QUORVEX_VERSION));

  const QString settings = BaseFolder() + IniFileNameFor(exeFileName);
  // One unattended run at a time per settings file; a window left open does not
  // count: the run goes on beside it, without a window of its own.
  std::optional<TFileLock> runLock;
  if (unattended)
    runLock.emplace(settings + QStringLiteral(".run.lock"));
  if (runLock && !runLock->IsHeld()) {
    PrintLine(QStringLiteral("%1: another unattended run is under way on the same settings (%2); this run does "
                             "nothing.")
                  .arg(exeFileName, runLock->Path()));
    return CExitOtherInstance;
  }
  TSingleInstance instance(settings);
  if (!instance.IsPrimary() && !unattended) {
    // Another window is open on the same settings: bring it forward and leave.
    instance.AskPrimaryToRaise();
    return CExitOk;
  }
  const bool window = DisplayAvailable() && instance.IsPrimary();

  // Nobody is there to answer a message box during an unattended run.
  const bool askPerson = window && !unattended;
  auto tell = [askPerson](const QString &message, bool error) {
    if (!askPerson)
      PrintLine(error ? message : QStringLiteral("WARNING ") + message);
#ifdef QUORVEX_WITH_WIDGETS
    else if (error)
      QMessageBox::critical(nullptr, CApplicationTitle, message);
    else
      QMessageBox::warning(nullptr, CApplicationTitle, message);
#endif
  };

  QNetworkAccessManager network;
  TdmRest rest(network);
  TUnattendedOptions options;
  options.DryRun = line.DryRun;
  options.Resend = line.Resend;
  // A scheduler's stop (SIGTERM), a Ctrl+C or a closed terminal ends the run
  // cleanly: what was sent is journaled and logged, the lock released.
  TStopRequest stop;
  if (unattended) {
    InstallStopSignals(stop);
    options.Stop = &stop;
  }
  options.Deadline = QDeadlineTimer(std::chrono::minutes(line.DeadlineMinutes));
  options.Echo = PrintLine;

  TSystemKeyring keyring;
  TMainState state(exeFileName, rest, [&tell](const QString &warning) { tell(warning, false); });
  // Secrets entered in the dialogs of a desktop session go to its keyring.
  state.SetSecretSources(TSecretSources::FromEnvironment(keyring, askPerson));
  try {
    state.FormCreate();
  } catch (const EQuorvexError &error) {
    if (unattended) {
      SaveStartFailureLog(state, error.Message(), options);
    } else {
      TraceError(lcApp(), error.Message());
      tell(error.Message(), true);
    }
    return CExitStepFailed;
  }
  int status = CExitOk;
  if (!window) {
    TStderrProgress progress;
    // Started from the event loop, which the run's end then quits.
    QTimer::singleShot(0, application.get(), [&] {
      Launch(RunUnattended(state, progress, options), [&status](TExitStatus ended) {
        status = ended;
        QCoreApplication::quit();
      });
    });
    application->exec();
  }
#ifdef QUORVEX_WITH_WIDGETS
  else {
    TfrmMain form(state);
    QObject::connect(&instance, &TSingleInstance::RaiseRequested, &form, &TfrmMain::RaiseToFront);
    form.show();
    if (unattended)
      QTimer::singleShot(100, &form, [&] {
        form.TimerTimer(options, [&](TExitStatus ended) {
          status = ended;
          form.close();
        });
      });
    const int loopStatus = application->exec();
    if (!unattended)
      status = loopStatus;
  }
#endif
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
  // A command line that cannot be obtained does nothing: a typo must never
  // start a run that mails everyone.
  if (!line.Error.isEmpty()) {
    PrintLine(QStringLiteral("%1: %2 (see --help)").arg(exeFileName, line.Error));
    return TCommandLine::CExitUsage;
  }

  if (line.Help) {
    std::fputs(qPrintable(UsageText(exeFileName)), stdout);
    return CExitOk;
  }
  if (line.Version) {
    std::printf("%s %s\n", qPrintable(exeFileName), QUORVEX_VERSION);
    return CExitOk;
  }
  // Logging rules set in the environment ask for the trace on stderr as well.
  Trace::Install(line.Verbose || qEnvironmentVariableIsSet("QT_LOGGING_RULES"));
  if (line.Encrypt)
    return EncryptFromStdin();
  if (line.StoreCommand())
    return RunStoreCommand(line, exeFileName);
  if (!line.Unattended() && !DisplayAvailable()) {
#ifdef QUORVEX_WITH_WIDGETS
    PrintLine(QStringLiteral("%1: no display to open the window on (DISPLAY is not set). Run it from a desktop "
                             "session, or give an argument for the unattended run (see --help).")
                  .arg(exeFileName));
#else
    PrintLine(QStringLiteral("%1: this build has no window; give an argument for the unattended run (see --help).")
                  .arg(exeFileName));
#endif
    return CExitStepFailed;
  }
  return Run(argc, argv, exeFileName, line);
}
