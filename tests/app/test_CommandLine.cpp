#include "app/CommandLine.h"
#include "core/SecretCodec.h"
#include "support/TempConfig.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <functional>
#include <gtest/gtest.h>

namespace {

QString Executable() { return QStringLiteral(QUORVEX_FOLLOWUP_EXE); }

struct TRun
{
  int ExitCode = -1;
  QString Out;
  QString Err;
};

TRun RunTool(const QStringList &arguments, const QByteArray &input = {},
         const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
{
  QProcess process;
  process.setProcessEnvironment(environment);
  process.start(Executable(), arguments);
  process.write(input);
  process.closeWriteChannel();
  EXPECT_TRUE(process.waitForFinished(30000)) << "still running: " << arguments.join(' ').toStdString();
  return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
          QString::fromUtf8(process.readAllStandardError())};
}

// Settings that give the report somewhere to go, and nothing else.
void WriteMailSettings(const TTempConfig &config)
{
  QDir().mkpath(config.File("Vellmor/vlmQuorvexITSM"));
  WriteTextFile(config.File("Vellmor/vlmQuorvexITSM/quorvex-followup.ini"), "[SMTP]\nDefaultTo=leads@example.org\n");
}

QProcessEnvironment Environment(const TTempConfig &config)
{
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert("XDG_CONFIG_HOME", config.Root());
  environment.insert("XDG_RUNTIME_DIR", config.Root());
  return environment;
}

// The same without any display, as a server or a scheduler has it.
QProcessEnvironment HeadlessEnvironment(const TTempConfig &config)
{
  QProcessEnvironment environment = Environment(config);
  environment.remove("DISPLAY");
  environment.remove("WAYLAND_DISPLAY");
  environment.remove("QT_QPA_PLATFORM");
  return environment;
}

} // namespace

TEST(CommandLine, RecognisedOptionsAndEverythingElse)
{
  const TCommandLine none = ParseCommandLine({});
  EXPECT_FALSE(none.Unattended());
  const TCommandLine verbose = ParseCommandLine({"--verbose"});
  EXPECT_TRUE(verbose.Verbose);
  EXPECT_FALSE(verbose.Unattended()); // the window, with the trace on stderr
  const TCommandLine dry = ParseCommandLine({"--dry-run"});
  EXPECT_TRUE(dry.DryRun);
  EXPECT_TRUE(dry.Unattended());
  const TCommandLine any = ParseCommandLine({"--verbose", "auto", "--whatever"});
  EXPECT_TRUE(any.Unattended());
  EXPECT_EQ(any.OtherArguments, (QStringList{"auto", "--whatever"}));
}

TEST(CommandLine, DeadlineInMinutesImpliesTheUnattendedRun)
{
  const TCommandLine plain = ParseCommandLine({"auto"});
  EXPECT_EQ(plain.DeadlineMinutes, 20);
  const TCommandLine spaced = ParseCommandLine({"--deadline", "5"});
  EXPECT_EQ(spaced.DeadlineMinutes, 5);
  EXPECT_TRUE(spaced.Unattended());
  EXPECT_EQ(ParseCommandLine({"--deadline=45", "auto"}).DeadlineMinutes, 45);
  for (const QStringList &wrong : {QStringList{"--deadline"}, {"--deadline", "0"}, {"--deadline=soon"}})
    EXPECT_TRUE(ParseCommandLine(wrong).Error.contains("--deadline")) << wrong.join(' ').toStdString();
}

TEST(Executable, VersionAndHelpAnswerAtOnce)
{
  const TRun version = RunTool({"--version"});
  EXPECT_EQ(version.ExitCode, 0);
  EXPECT_EQ(version.Out, QStringLiteral("quorvex-followup %1\n").arg(QUORVEX_VERSION));
  const TRun help = RunTool({"--help"});
  EXPECT_EQ(help.ExitCode, 0);
  for (const char *option : {"--help", "--version", "--verbose", "--encrypt", "--dry-run"})
    EXPECT_TRUE(help.Out.contains(option)) << option;
}

TEST(Executable, EncryptPrintsTheStoredFormOfOneLine)
{
  TTempConfig config;
  const TRun run = RunTool({"--encrypt"}, QString::fromUtf8(" s3cret é \nnext line\n").toUtf8(), Environment(config));
  EXPECT_EQ(run.ExitCode, 0) << run.Err.toStdString();
  ASSERT_TRUE(run.Out.endsWith('\n'));
  const QString stored = run.Out.chopped(1);
  EXPECT_FALSE(stored.contains('\n'));
  EXPECT_EQ(Decrypt(stored), QString::fromUtf8(" s3cret é "));

  const TRun crlf = RunTool({"--encrypt"}, "abc\r\n", Environment(config));
  EXPECT_EQ(Decrypt(crlf.Out.trimmed()), "abc");

  const TRun nothing = RunTool({"--encrypt"}, {}, Environment(config));
  EXPECT_NE(nothing.ExitCode, 0);
  EXPECT_TRUE(nothing.Err.contains("no secret"));
}

// A start that cannot go on says why, names what is in the way, and is never
// taken for another instance; once the settings folder exists, the run leaves a log.
TEST(Executable, AStartThatCannotGoOnSaysWhy)
{
  const QString folder = "/Vellmor/vlmQuorvexITSM/";
  const struct
  {
    const char *Case;
    std::function<void(const TTempConfig &)> Setup;
    QStringList Arguments;
    QString Said; // relative to the settings root
  } cases[] = {
      {"a file where the settings folder goes",
       [](const TTempConfig &config) { WriteTextFile(config.File("Vellmor"), "a file"); }, {"auto"}, "/Vellmor"},
      {"a folder where the settings file goes",
       [&](const TTempConfig &config) { QDir().mkpath(config.Root() + folder + "quorvex-followup.ini"); }, {"auto"},
       folder + "quorvex-followup.ini"},
      {"no display for the window", [](const TTempConfig &) {}, {}, {}},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.Case);
    TTempConfig config;
    c.Setup(config);
    const TRun run = RunTool(c.Arguments, {}, HeadlessEnvironment(config));
    EXPECT_EQ(run.ExitCode, 2) << run.Err.toStdString();
    EXPECT_TRUE(run.Err.contains(c.Said.isEmpty() ? "no display" : config.Root() + c.Said)) << run.Err.toStdString();
    EXPECT_FALSE(run.Err.contains("another instance")) << run.Err.toStdString();
    const QStringList logs = QDir(config.Root() + folder).entryList({"quorvex-followup_*.log"});
    if (c.Said == folder + "quorvex-followup.ini") {
      ASSERT_EQ(logs.size(), 1);
      EXPECT_TRUE(ReadTextFile(config.Root() + folder + logs[0]).contains(" - BEGIN\n"));
    }
  }
}

TEST(Executable, ALockWhoseOwnerIsGoneNeverBlocksARun)
{
  TTempConfig config;
  const QProcessEnvironment environment = HeadlessEnvironment(config);
  WriteMailSettings(config);
  const QString folder = config.File("Vellmor/vlmQuorvexITSM");
  const QString lock = folder + "/quorvex-followup.ini.lock";
  // Left by a process killed as it made it: empty, or with a dead owner's data.
  WriteTextFile(lock, "");
  // Nothing selected: incomplete, not refused, and never an all-clear.
  EXPECT_EQ(RunTool({"--dry-run"}, {}, environment).ExitCode, 3);
  const QStringList logs = QDir(folder).entryList({"quorvex-followup_*.log"});
  ASSERT_EQ(logs.size(), 1);
  const QString log = ReadTextFile(folder + '/' + logs[0]);
  EXPECT_TRUE(log.contains(" - ERROR Quorvex ITSM API: Enter the service's address and API account in "
                           "'Quorvex ITSM API' first"))
      << log.toStdString();
  EXPECT_TRUE(log.contains(" - END"));
  QFile page(folder + "/quorvex-followup.html");
  ASSERT_TRUE(page.open(QIODevice::ReadOnly));
  const QByteArray bytes = page.readAll().mid(2); // UTF-16 after its mark
  EXPECT_TRUE(QString::fromUtf16(reinterpret_cast<const char16_t *>(bytes.constData()), bytes.size() / 2)
                  .contains("WARNING: the retrieval of the tickets was incomplete"));

  // A live owner is seen at once; once it is killed, its lock goes with it.
  QProcess owner;
  owner.start("flock", {"--close", lock, "sleep", "60"}); // the lock is flock's own, not its child's
  ASSERT_TRUE(owner.waitForStarted(5000));
  // The owner holds the lock once a try to take it fails.
  QProcess probe;
  for (int i = 0; i < 100; ++i) {
    probe.start("flock", {"-n", lock, "true"});
    probe.waitForFinished(5000);
    if (probe.exitCode() != 0)
      break;
  }
  EXPECT_EQ(RunTool({"--dry-run"}, {}, environment).ExitCode, 4);
  owner.kill();
  owner.waitForFinished(5000);
  EXPECT_EQ(RunTool({"--dry-run"}, {}, environment).ExitCode, 3);
}

TEST(Executable, ASecondStartLeavesTheFirstWindowAlone)
{
  TTempConfig config;
  QProcessEnvironment environment = Environment(config);
  environment.insert("QT_QPA_PLATFORM", "offscreen");

  QProcess first;
  first.setProcessEnvironment(environment);
  first.start(Executable(), QStringList{"--verbose"});
  ASSERT_TRUE(first.waitForStarted(10000));
  // The first instance is ready once its trace shows the window's settings read.
  QString trace;
  for (int i = 0; i < 100 && !trace.contains("Exiting TfrmMain.FormCreate"); ++i) {
    first.waitForReadyRead(100);
    trace += QString::fromUtf8(first.readAllStandardError());
  }
  ASSERT_TRUE(trace.contains("Exiting TfrmMain.FormCreate")) << trace.toStdString();

  const TRun second = RunTool({}, {}, environment);
  EXPECT_EQ(second.ExitCode, 0) << second.Err.toStdString();
  EXPECT_EQ(first.state(), QProcess::Running);
  // An unattended start cannot raise anything: it says why and does nothing,
  // even from cron's environment, which has no session runtime folder.
  QProcessEnvironment cron = HeadlessEnvironment(config);
  cron.remove("XDG_RUNTIME_DIR");
  const TRun unattended = RunTool({"auto"}, {}, cron);
  EXPECT_EQ(unattended.ExitCode, 4);
  EXPECT_TRUE(unattended.Err.contains("another instance")) << unattended.Err.toStdString();

  first.terminate();
  first.waitForFinished(10000);
}
