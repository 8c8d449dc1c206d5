// The built program against the demo service program over HTTPS and a real SMTP
// server, as a scheduler would start it: no display, settings of its own.

#include "../report/SmtpTestServer.h"
#include "core/SecretCodec.h"
#include "core/SettingsKeys.h"
#include "support/DemoServiceProcess.h"
#include "support/ToolRun.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QThread>
#include <csignal>
#include <gtest/gtest.h>

namespace {

class EndToEnd : public ::testing::Test
{
protected:
  void SetUp() override
  {
    const QString failure = FService.Start(FConfig.File("demo-ca.pem"));
    ASSERT_TRUE(failure.isEmpty()) << failure.toStdString();
    ASSERT_TRUE(FSmtp.Started()) << FSmtp.Failure().toStdString();
    WriteSettings(FSmtp.Port());
  }

  QString Printed(const QString &label) const { return FService.Printed(label); }
  QString Folder() const { return FConfig.SettingsFolder(); }

  // The demo's account (its secrets in systemd's credentials when FCredentials
  // names them), organizations 101 and 102, teams 11 and 12, the SMTP server on
  // `smtpPort` without encryption, and [Delivery] with SkipWhenClear and the keys
  // of `delivery`: every run that sends a report shows that SkipWhenClear keeps a
  // report that has something to say, or that could not be checked.
  void WriteSettings(int smtpPort, const QString &delivery = {})
  {
    QDir().mkpath(Folder());
    WriteTextFile(Folder() + "quorvex-followup.ini",
                  QStringLiteral("[QuorvexITSM]\nSaaS=0\nInstance=%1\nClientID=followup-demo\nClientSecret=%2\n"
                                 "Username=lead@vellmor.example\nPassword=%3\n"
                                 "[SMTP]\nServer=127.0.0.1\nPort=%4\nUseSSL=0\nUserName=\nPassword=\n"
                                 "DefaultTo=leads@example.org; desk@example.org\nDefaultCC=boss@example.org\n"
                                 "From=followup@example.org\n"
                                 "[Teams]\nNb=2\nid_1=11\nname_1=Service Desk\nid_2=12\nname_2=Network & Security\n"
                                 "[Organizations]\nNb=2\nid_1=101\nname_1=Northwind Logistics\nticketingModuleEnabled_1=1\n"
                                 "id_2=102\nname_2=Brasserie Lefèvre & Fils\nticketingModuleEnabled_2=1\n"
                                 "[Delivery]\nSkipWhenClear=1\n")
                          .arg(Printed("Instance: "), FCredentials.isEmpty() ? Encrypt("demo secret&=1") : CKeyringMarker,
                               FCredentials.isEmpty() ? Encrypt(QString::fromUtf8("Pass word&=é")) : CKeyringMarker)
                          .arg(smtpPort)
                          .toUtf8() +
                      delivery.toUtf8());
  }

  struct TRun : TToolRun
  {
    QString Log;
  };

  // Runs the program without a display, or on the offscreen platform with
  // `window` (the unattended run then shows its main window).
  TRun RunTool(const QStringList &arguments, bool window = false)
  {
    for (const QString &old : QDir(Folder()).entryList({"quorvex-followup_*.log"}))
      QFile::remove(Folder() + old);
    QProcessEnvironment environment = ToolEnvironment(FConfig.Root(), window ? "offscreen" : "");
    // The demo writes its time stamps in UTC; the program converts them, so the
    // counts below hold on a machine far from UTC.
    environment.insert("TZ", "America/New_York");
    environment.insert("QUORVEX_EXTRA_CA_CERTS", Printed("CA certificate: "));
    if (!FCredentials.isEmpty())
      environment.insert("CREDENTIALS_DIRECTORY", FCredentials);
    return {::RunTool(arguments, environment), RunLog(Folder())};
  }

  // The lines of a run log that name a step, count the tickets or deliver a
  // mail, without their date and time ("<date> <time> - X" gives " - X").
  static QStringList Outline(const QString &log)
  {
    static const QRegularExpression line(QStringLiteral("^(?:(?! - ).)*( - (?:[A-Z]|\\* (?:Nb tickets|Mail to)).*)$"),
                                         QRegularExpression::MultilineOption);
    QStringList outline;
    for (const QRegularExpressionMatch &match : line.globalMatch(log))
      outline << match.captured(1);
    return outline;
  }

  TTempConfig FConfig;
  QString FCredentials; // the run's $CREDENTIALS_DIRECTORY when not empty
  TDemoServiceProcess FService;
  TSmtpTestServer FSmtp{TSmtpTestServer::TOptions{}};
};

} // namespace

// The outline of the log of a clean run of the demo data: its steps in their
// order, each line after its date and time. (What each counts: the unit tests
// of the retrieval, the report and the delivery plan.)
const QStringList CCleanRunOutline{" - BEGIN", " - Retrieve all tickets", " - * Nb tickets: 320", " - Generate email",
                                   " - Send email", " - * Mail to 3 recipient(s), 111 row(s): leads@example.org…",
                                   " - END"};

// The secrets come from systemd's credentials, the settings file saying that
// they are in a keyring this run cannot reach; they never reach the file.
TEST_F(EndToEnd, FullRunWithSystemdCredentialsSendsTheReportToTheDefaultRecipientsAndLogsEveryStep)
{
  FCredentials = FConfig.File("credentials");
  QDir().mkpath(FCredentials);
  WriteTextFile(FCredentials + "/client-secret", "demo secret&=1\n");
  WriteTextFile(FCredentials + "/api-password", QString::fromUtf8("Pass word&=é").toUtf8());
  WriteSettings(FSmtp.Port());
  const TRun run = RunTool({"auto"});
  ASSERT_EQ(run.ExitCode, 0) << run.Err.toStdString() << run.Log.toStdString();
  EXPECT_EQ(Outline(run.Log), CCleanRunOutline) << run.Log.toStdString();
  // Whoever watches the run sees the same lines as they come.
  EXPECT_TRUE(run.Err.contains(" - END\n"));
  EXPECT_TRUE(run.Err.contains(QString::fromUtf8("Loading - Brasserie Lefèvre & Fils / > 10 échanges [7/8]\n")))
      << run.Err.toStdString();
  // A clean run says ERROR (or WARNING) nowhere, for a watcher that greps it.
  EXPECT_FALSE(run.Err.contains("ERROR") || run.Err.contains("WARNING")) << run.Err.toStdString();

  // The recipients of the report mode: DeliveryPlanTest.
  ASSERT_EQ(FSmtp.Messages().size(), 1);
  const QString html = FSmtp.Messages()[0]["parts"][1]["text"].toString();
  EXPECT_TRUE(html.contains("<h2>DEBUG</h2>"));
  EXPECT_TRUE(html.contains("@vellmor.example")); // the computed recipients, listed for information
  EXPECT_FALSE(html.contains("WARNING"));

  // Unattended, no report file is left beside the settings.
  for (const char *left : {"html", "to", "cc"})
    EXPECT_FALSE(QFile::exists(Folder() + "quorvex-followup." + left)) << left;
  const QString settings = ReadTextFile(Folder() + "quorvex-followup.ini");
  EXPECT_TRUE(settings.contains("\nClientSecret=@keyring\nUsername=lead@vellmor.example\nPassword=@keyring\n"))
      << settings.toStdString();
}

TEST_F(EndToEnd, WithADisplayTheWindowRunsTheSameRoutineAndClosesEvenWhenAStepFails)
{
  // A failing step never leaves the window waiting for a person; the log is kept.
  WriteSettings(UnusedPort());
  const TRun failed = RunTool({"auto"}, true);
  EXPECT_EQ(failed.ExitCode, 2) << failed.Err.toStdString();
  EXPECT_TRUE(failed.Log.contains(": Unable to send the mail through 127.0.0.1:")) << failed.Log.toStdString();
  EXPECT_TRUE(failed.Log.contains(" - ERROR Mail to 3 recipient(s), 111 row(s)")) << failed.Log.toStdString();
}

// A refused token: the run still sends a report, which says that the retrieval
// was incomplete, and ends so; stderr shows the failure once, without the trace's
// own words. (What such a report holds: MailReportTest; other faults of the
// service: ServiceFaultsTest.)
TEST_F(EndToEnd, AFailedRetrievalStillSendsAReportThatChecksNothingAndSaysWhyInPlainWords)
{
  FService.Stop();
  const QString failure = FService.Start(FConfig.File("demo-ca.pem"), {"--refuse-token"});
  ASSERT_TRUE(failure.isEmpty()) << failure.toStdString();
  WriteSettings(FSmtp.Port(), "Mode=concerned\n"); // nobody computed: to the defaults, without the DEBUG list
  const QString instance = Printed("Instance: ");
  const QString logged = "ERROR Access token from https://" + instance + ": " + instance +
                         " answered HTTP 401 Unauthorized: the service refused the access token or the credentials; "
                         "check the client ID, client secret, user name and password in \"Quorvex ITSM API\" [";
  const TRun run = RunTool({"auto"});
  EXPECT_EQ(run.ExitCode, 3) << run.Err.toStdString();
  EXPECT_TRUE(run.Log.contains(" - " + logged)) << run.Log.toStdString();
  // Each message once on stderr, and the trace's own words stay in the trace.
  EXPECT_EQ(run.Err.count(logged), 1) << run.Err.toStdString();
  EXPECT_FALSE(run.Err.contains("Erreur")) << run.Err.toStdString();
  EXPECT_EQ(FSmtp.Messages().size(), 1); // saying it checked nothing: MailReportTest.IncompleteRetrievalIsNeverAnAllClear
}

TEST_F(EndToEnd, DryRunOfThePersonalModeWritesEveryMailWhole)
{
  WriteTextFile(Folder() + "quorvex-followup_99.eml", "left by an earlier dry run");
  WriteSettings(FSmtp.Port(), "Mode=personal\nAttachWorkbook=1\n");
  const TRun run = RunTool({"--dry-run"});
  ASSERT_EQ(run.ExitCode, 0) << run.Err.toStdString();
  EXPECT_TRUE(FSmtp.Messages().isEmpty());
  // The full report and a digest for each of 35 people (their order and
  // recipients: DeliveryPlanTest).
  const QStringList files = QDir(Folder()).entryList({"quorvex-followup_*.eml"});
  EXPECT_EQ(files.size(), 36);
  EXPECT_FALSE(files.contains("quorvex-followup_99.eml"));

  const QString full = ReadTextFile(Folder() + "quorvex-followup_1.eml");
  for (const QString &line : {QString("To: leads@example.org, desk@example.org"), QString("Cc: boss@example.org"),
                              QString("Auto-Submitted: auto-generated"), QString("X-Auto-Response-Suppress: All"),
                              QString("Content-Type: text/plain; charset=utf-8"),
                              QString("Content-Type: text/html; charset=utf-8"), QString("filename=tickets-follow-up-")})
    EXPECT_TRUE(full.contains(line)) << line.toStdString();
  EXPECT_FALSE(full.contains("DEBUG"));
  // Every header line stays within what mail servers accept.
  for (const QString &line : full.split("\r\n"))
    EXPECT_LE(line.size(), 998);
}

// SIGTERM in the middle of 36 personal mails: the mail under way ends or is cut,
// no other starts, the run log and the journal say what went and what did not,
// the lock is released, and the next run sends only what was not sent.
TEST_F(EndToEnd, ASignalEndsTheRunWithItsLogAndARerunSendsOnlyWhatWasNotSent)
{
  TSmtpTestServer::TOptions options;
  options.Faults = {"--delay", "0.2"};
  TSmtpTestServer slow(options);
  ASSERT_TRUE(slow.Started()) << slow.Failure().toStdString();
  WriteSettings(slow.Port(), "Mode=personal\n");
  QProcessEnvironment environment = ToolEnvironment(FConfig.Root());
  environment.insert("QUORVEX_EXTRA_CA_CERTS", Printed("CA certificate: "));
  QProcess tool;
  tool.setProcessEnvironment(environment);
  tool.start(QUORVEX_FOLLOWUP_EXE, {"auto"});
  ASSERT_TRUE(tool.waitForStarted(10000));
  for (const QDeadlineTimer limit(60000); slow.Messages().size() < 3 && !limit.hasExpired();)
    QThread::msleep(20);
  ASSERT_GE(slow.Messages().size(), 3);
  ::kill(static_cast<pid_t>(tool.processId()), SIGTERM);
  ASSERT_TRUE(tool.waitForFinished(30000));
  EXPECT_EQ(tool.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(tool.exitCode(), 2);
  const qsizetype sent = slow.Messages().size();
  EXPECT_LT(sent, 36);
  const QString log = RunLog(Folder());
  EXPECT_TRUE(log.contains(" - ERROR Stopped by SIGTERM: the mails and recipients above were not served")) << log.toStdString();
  EXPECT_EQ(log.count(" - ERROR Mail to "), 36 - sent) << log.toStdString(); // each mail not sent named

  WriteSettings(FSmtp.Port(), "Mode=personal\n");
  const TRun rerun = RunTool({"auto"});
  EXPECT_EQ(rerun.ExitCode, 0) << rerun.Err.toStdString();
  EXPECT_EQ(FSmtp.Messages().size(), 36 - sent);
  EXPECT_EQ(rerun.Log.count("Already sent at "), sent);
}
