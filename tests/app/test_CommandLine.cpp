#include "app/CommandLine.h"
#include "core/SecretCodec.h"
#include "support/ToolRun.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

// Settings that give the report somewhere to go, and nothing else.
void WriteMailSettings(const TTempConfig &config)
{
  QDir().mkpath(config.SettingsFolder());
  WriteTextFile(config.SettingsFolder() + "quorvex-followup.ini", "[SMTP]\nDefaultTo=leads@example.org\n");
}

} // namespace

TEST(CommandLine, RecognisedOptionsBareWordsAndRefusedTypos)
{
  const struct
  {
    QStringList Arguments;
    bool Unattended, Verbose, DryRun;
    int DeadlineMinutes;
    QString Error; // empty: accepted
  } cases[] = {
      {{}, false, false, false, 20, {}},
      {{"--verbose"}, false, true, false, 20, {}}, // the window, with the trace on stderr
      {{"--dry-run"}, true, false, true, 20, {}},
      {{"--verbose", "auto"}, true, true, false, 20, {}},
      {{"--deadline", "5"}, true, false, false, 5, {}},
      {{"--deadline=45", "auto"}, true, false, false, 45, {}},
      // A typo is refused with the closest known option, never taken for "run".
      {{"--dryrun"}, false, false, false, 20, "unknown option --dryrun; did you mean --dry-run?"},
      {{"-dry-run"}, true, false, true, 20, {}},
      {{"--deadlin=5"}, false, false, false, 20, "unknown option --deadlin; did you mean --deadline?"},
      {{"-x", "auto"}, false, false, false, 20, "unknown option -x; did you mean --help?"},
      {{"--deadline"}, false, false, false, 20, "Missing value after '--deadline'"},
      {{"--deadline", "0"}, true, false, false, 0, "--deadline takes a number of minutes greater than 0, not \"0\""},
      {{"--deadline=soon"}, true, false, false, 0, "--deadline takes a number of minutes greater than 0, not \"soon\""},
  };
  for (const auto &c : cases) {
    const TCommandLine line = ParseCommandLine(c.Arguments);
    SCOPED_TRACE(c.Arguments.join(' ').toStdString());
    EXPECT_EQ(std::tuple(line.Unattended(), line.Verbose, line.DryRun, line.DeadlineMinutes),
              std::tuple(c.Unattended, c.Verbose, c.DryRun, c.DeadlineMinutes));
    EXPECT_TRUE(c.Error.isEmpty() ? line.Error.isEmpty() : line.Error.startsWith(c.Error)) << line.Error.toStdString();
  }
}

// The store's commands, one after the other on one settings folder: what each
// prints and its exit status; a refused one changes nothing, and a typo is
// refused before anything is read, retrieved or sent.
TEST(Executable, StoreCommandsAnswerWithTheirStatusAndATypoRunsNothing)
{
  TTempConfig config;
  const QString until = QDate::currentDate().addDays(7).toString(Qt::ISODate);
  const QString shown = QDate::currentDate().addDays(7).toString("dd.MM.yyyy");
  const struct
  {
    QStringList Arguments;
    int Exit;
    QString Out; // the start of standard output, or of standard error when refused
  } steps[] = {
      {{"--history"}, 0, "No report has been sent yet."},
      {{"--snooze", "24012,24013", "--until", until}, 0, "Snoozed 2 ticket(s) until " + shown},
      {{"--snooze", "24020", "--until-change"}, 0, "Snoozed 1 ticket(s) until they change"},
      {{"--snooze", "24021"}, 64, "quorvex-followup: --snooze needs either --until DATE or --until-change"},
      {{"--snooze", "x1", "--until-change"}, 64, "quorvex-followup: --snooze takes ticket ids"},
      {{"--snooze", "5", "--until", "2001-01-01"}, 64, "quorvex-followup: --until takes a day after today"},
      {{"--until-change"}, 64, "quorvex-followup: --until and --until-change go with --snooze LIST"},
      {{"--history=0"}, 64, "quorvex-followup: --history takes a number of runs greater than 0"},
      {{"--wake", "24013,99"}, 0, "Woke 1 ticket(s) up"},
      {{"--snoozed"}, 0, "24012  until " + shown + "  by "},
      {{"--history", "3", "--snoozed"}, 0, "24012"},
      {{"--dryrun"}, 64, "quorvex-followup: unknown option --dryrun; did you mean --dry-run? (see --help)\n"},
  };
  for (const auto &step : steps) {
    SCOPED_TRACE(step.Arguments.join(' ').toStdString());
    const TToolRun run = RunTool(step.Arguments, ToolEnvironment(config.Root()));
    EXPECT_EQ(run.ExitCode, step.Exit) << run.Err.toStdString();
    EXPECT_TRUE((step.Exit == 0 ? run.Out : run.Err).startsWith(step.Out)) << run.Out.toStdString() << run.Err.toStdString();
  }
  // The refused ones snoozed nothing, and the typo ran nothing: no run log.
  EXPECT_EQ(RunTool({"--snoozed"}, ToolEnvironment(config.Root())).Out.split('\n', Qt::SkipEmptyParts).size(), 2);
  EXPECT_TRUE(QDir(config.SettingsFolder()).entryList({"quorvex-followup_*.log"}).isEmpty());
}

TEST(Executable, EncryptPrintsTheStoredFormOfOneLine)
{
  TTempConfig config;
  const QProcessEnvironment environment = ToolEnvironment(config.Root());
  const TToolRun run = RunTool({"--encrypt"}, environment, QString::fromUtf8(" s3cret é \nnext line\n").toUtf8());
  EXPECT_EQ(run.ExitCode, 0) << run.Err.toStdString();
  ASSERT_EQ(run.Out.indexOf('\n'), run.Out.size() - 1); // one line
  EXPECT_EQ(Decrypt(run.Out.chopped(1)), QString::fromUtf8(" s3cret é "));

  EXPECT_EQ(Decrypt(RunTool({"--encrypt"}, environment, "abc\r\n").Out.trimmed()), "abc");
  const TToolRun nothing = RunTool({"--encrypt"}, environment);
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
    const TToolRun run = RunTool(c.Arguments, ToolEnvironment(config.Root()));
    EXPECT_EQ(run.ExitCode, 2) << run.Err.toStdString();
    EXPECT_TRUE(run.Err.contains(c.Said.isEmpty() ? "no display" : config.Root() + c.Said)) << run.Err.toStdString();
    EXPECT_FALSE(run.Err.contains("another instance")) << run.Err.toStdString();
    if (c.Said == folder + "quorvex-followup.ini") {
      EXPECT_TRUE(RunLog(config.Root() + folder).contains(" - BEGIN\n"));
    }
  }
}

TEST(Executable, ALockWhoseOwnerIsGoneNeverBlocksARun)
{
  TTempConfig config;
  const QProcessEnvironment environment = ToolEnvironment(config.Root());
  WriteMailSettings(config);
  const QString folder = config.SettingsFolder();
  const QString lock = folder + "quorvex-followup.ini.run.lock";
  // Left by a process killed as it made it: empty, or with a dead owner's data.
  WriteTextFile(lock, "");
  // Nothing selected: incomplete, not refused.
  EXPECT_EQ(RunTool({"--dry-run"}, environment).ExitCode, 3);
  const QString log = RunLog(folder);
  EXPECT_TRUE(log.contains(" - ERROR Quorvex ITSM API: Enter the service's address and API account in "
                           "'Quorvex ITSM API' first"))
      << log.toStdString();

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
  EXPECT_EQ(RunTool({"--dry-run"}, environment).ExitCode, 4);
  owner.kill();
  owner.waitForFinished(5000);
  EXPECT_EQ(RunTool({"--dry-run"}, environment).ExitCode, 3);
}

TEST(Executable, ASecondStartLeavesTheFirstWindowAlone)
{
  TTempConfig config;
  const QProcessEnvironment environment = ToolEnvironment(config.Root(), "offscreen");
  QProcess first;
  first.setProcessEnvironment(environment);
  first.start(QUORVEX_FOLLOWUP_EXE, QStringList{"--verbose"});
  ASSERT_TRUE(first.waitForStarted(10000));
  // The first instance is ready once its trace shows the window's settings read.
  QString trace;
  for (int i = 0; i < 100 && !trace.contains("Exiting Session.FormCreate"); ++i) {
    first.waitForReadyRead(100);
    trace += QString::fromUtf8(first.readAllStandardError());
  }
  ASSERT_TRUE(trace.contains("Exiting Session.FormCreate")) << trace.toStdString();

  const TToolRun second = RunTool({}, environment);
  EXPECT_EQ(second.ExitCode, 0) << second.Err.toStdString();
  EXPECT_EQ(first.state(), QProcess::Running);
  // A window left open never costs the scheduled run: it is carried out beside
  // the window, with its log and its own status (nothing is selected here: an
  // incomplete retrieval), even from cron's environment, which has no session
  // runtime folder.
  QProcessEnvironment cron = ToolEnvironment(config.Root());
  cron.remove("XDG_RUNTIME_DIR");
  const TToolRun unattended = RunTool({"auto"}, cron);
  EXPECT_EQ(unattended.ExitCode, 3) << unattended.Err.toStdString();
  EXPECT_TRUE(RunLog(config.SettingsFolder()).contains(" - END")) << unattended.Err.toStdString();
  EXPECT_EQ(first.state(), QProcess::Running);

  first.terminate();
  first.waitForFinished(10000);
}
