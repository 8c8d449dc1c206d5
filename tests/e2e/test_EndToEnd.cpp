// The built program against the demo service program over HTTPS and a real SMTP
// server, as a scheduler would start it: no display, settings of its own.

#include "../report/SmtpTestServer.h"
#include "core/IniFile.h"
#include "DemoData.h"
#include "core/SecretCodec.h"
#include "core/SettingsKeys.h"
#include "support/DemoServiceProcess.h"
#include "support/ToolRun.h"

#include <QBuffer>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QSet>
#include <QSslConfiguration>
#include <QSslCertificate>
#include <QElapsedTimer>
#include <QThread>
#include <csignal>
#include <gtest/gtest.h>

namespace {

const QString CTwoOrganizations = QString::fromUtf8(
    "[Organizations]\nNb=2\nid_1=101\nname_1=Northwind Logistics\nticketingModuleEnabled_1=1\n"
    "id_2=102\nname_2=Brasserie Lefèvre & Fils\nticketingModuleEnabled_2=1\n");

class EndToEnd : public ::testing::Test
{
protected:
  void SetUp() override
  {
    StartService({});
    ASSERT_TRUE(FSmtp.Started()) << FSmtp.Failure().toStdString();
    WriteSettings(FSmtp.Port());
  }

  void StartService(const QStringList &options)
  {
    const QString failure = FService.Start(FConfig.File("demo-ca.pem"), options);
    ASSERT_TRUE(failure.isEmpty()) << failure.toStdString();
  }

  QString Printed(const QString &label) const { return FService.Printed(label); }
  QString Folder() const { return FConfig.SettingsFolder(); }

  // The demo's account, organizations 101 and 102 (or those of `organizations`),
  // teams 11 and 12, the SMTP server on `smtpPort` without encryption, and the
  // settings of `more`.
  void WriteSettings(int smtpPort, const QString &more = {}, const QString &organizations = CTwoOrganizations)
  {
    QDir().mkpath(Folder());
    WriteTextFile(Folder() + "quorvex-followup.ini",
                  QStringLiteral("[QuorvexITSM]\nSaaS=0\nInstance=%1\nClientID=followup-demo\nClientSecret=%2\n"
                                 "Username=lead@vellmor.example\nPassword=%3\n"
                                 "[SMTP]\nServer=127.0.0.1\nPort=%4\nUseSSL=0\nUserName=\nPassword=\n"
                                 "DefaultTo=leads@example.org; desk@example.org\nDefaultCC=boss@example.org\n"
                                 "From=followup@example.org\n"
                                 "[Teams]\nNb=2\nid_1=11\nname_1=Service Desk\nid_2=12\nname_2=Network & Security\n")
                          .arg(Printed("Instance: "), Encrypt("demo secret&=1"), Encrypt(QString::fromUtf8("Pass word&=é")))
                          .arg(smtpPort)
                          .toUtf8() +
                      organizations.toUtf8() + more.toUtf8());
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

  // Sends a request to the running demo service and returns its answer.
  QJsonObject CallService(const QByteArray &method, const QString &path, const QByteArray &json = {})
  {
    QNetworkAccessManager manager;
    QNetworkRequest request(QUrl("https://" + Printed("Instance: ") + path));
    QSslConfiguration ssl = QSslConfiguration::defaultConfiguration();
    ssl.addCaCertificates(QSslCertificate::fromPath(Printed("CA certificate: ")));
    request.setSslConfiguration(ssl);
    request.setHeader(QNetworkRequest::ContentTypeHeader, "application/json");
    QBuffer body;
    body.setData(json);
    QNetworkReply *reply = manager.sendCustomRequest(request, method, &body);
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    EXPECT_EQ(reply->error(), QNetworkReply::NoError) << reply->errorString().toStdString();
    reply->deleteLater();
    return QJsonDocument::fromJson(reply->readAll()).object();
  }

  // The requests the demo service answered so far, as "METHOD path status".
  QStringList Answered()
  {
    QStringList answered;
    for (const QJsonValue &line : CallService("GET", "/demo/requests")["answered"].toArray())
      answered << line.toString();
    return answered;
  }

  // The lines of a run log without their date and time ("<date> <time> - X"
  // gives " - X"; a line without that prefix is kept whole); blank lines stay.
  static QStringList Steps(const QString &log)
  {
    QStringList steps;
    for (const QString &line : log.split('\n')) {
      const qsizetype text = line.indexOf(QStringLiteral(" - "));
      steps << (text > 0 ? line.mid(text) : line);
    }
    if (!steps.isEmpty() && steps.last().isEmpty())
      steps.removeLast();
    return steps;
  }

  QString PartText(const QJsonObject &message, const QString &type) const
  {
    for (const QJsonValue &part : message["parts"].toArray())
      if (part["type"].toString() == type)
        return part["text"].toString();
    return {};
  }

  TTempConfig FConfig;
  QString FCredentials; // the run's $CREDENTIALS_DIRECTORY when not empty
  TDemoServiceProcess FService;
  TSmtpTestServer FSmtp{TSmtpTestServer::TOptions{}};
};

} // namespace

// The log of a clean run of the demo data, each line after its date and time.
const QStringList CCleanRunSteps{
    " - BEGIN",
    " - Retrieve all tickets",
    "",
    " - * Northwind Logistics ....................... : 180",
    " - * Northwind Logistics / > 10 exchanges (E) .. : 15",
    " - * Northwind Logistics / > 10 échanges (F) ... : 15",
    "",
    " - * Brasserie Lefèvre & Fils ....................... : 140",
    " - * Brasserie Lefèvre & Fils / > 10 exchanges (E) .. : 8",
    " - * Brasserie Lefèvre & Fils / > 10 échanges (F) ... : 12",
    "",
    " - * Nb tickets: 320",
    "",
    " - Generate email",
    " - * Unassigned: 48",
    " - * Without update: 13",
    " - * >10 exchanges: 50",
    " - * To: 35",
    " - * Cc: 0",
    " - Send email",
    " - * Mail to 3 recipient(s), 111 row(s): leads@example.org…",
    " - END"};

TEST_F(EndToEnd, FullRunSendsTheReportToTheDefaultRecipientsAndLogsEveryStep)
{
  const TRun run = RunTool({"auto"});
  ASSERT_EQ(run.ExitCode, 0) << run.Err.toStdString() << run.Log.toStdString();
  EXPECT_EQ(Steps(run.Log), CCleanRunSteps) << run.Log.toStdString();
  // Whoever watches the run sees the same lines as they come.
  EXPECT_TRUE(run.Err.contains(" - END\n"));
  EXPECT_TRUE(run.Err.contains(QString::fromUtf8("Loading - Brasserie Lefèvre & Fils / > 10 échanges [7/8]\n")))
      << run.Err.toStdString();
  // A clean run says ERROR nowhere, for a watcher that greps it.
  EXPECT_FALSE(run.Err.contains("ERROR")) << run.Err.toStdString();
  EXPECT_FALSE(ReadTextFile(Folder() + "quorvex-followup.log").contains("ERROR"));

  const QList<QJsonObject> messages = FSmtp.Messages();
  ASSERT_EQ(messages.size(), 1);
  const QJsonObject mail = messages[0];
  EXPECT_EQ(mail["headers"]["From"].toString(), "followup@example.org"); // To and Cc: see DeliveryEndToEnd
  const QString html = PartText(mail, "text/html");
  EXPECT_TRUE(html.contains("<h2>DEBUG</h2>"));
  EXPECT_TRUE(html.contains("@vellmor.example")); // the computed recipients, listed for information
  EXPECT_FALSE(html.contains("WARNING"));

  // Unattended, no report file is left beside the settings.
  EXPECT_FALSE(QFile::exists(Folder() + "quorvex-followup.html"));
  EXPECT_FALSE(QFile::exists(Folder() + "quorvex-followup.to"));
  EXPECT_FALSE(QFile::exists(Folder() + "quorvex-followup.cc"));
}

TEST_F(EndToEnd, SystemdCredentialsGiveTheSecretsAndNeverReachTheSettingsFile)
{
  {
    TIniFile ini(Folder() + "quorvex-followup.ini"); // secrets said to be in a keyring this run cannot reach
    ini.WriteString("QuorvexITSM", "ClientSecret", CKeyringMarker);
    ini.WriteString("QuorvexITSM", "Password", CKeyringMarker);
    ini.UpdateFile();
  }
  FCredentials = FConfig.File("credentials");
  QDir().mkpath(FCredentials);
  WriteTextFile(FCredentials + "/client-secret", "demo secret&=1\n");
  WriteTextFile(FCredentials + "/api-password", QString::fromUtf8("Pass word&=é").toUtf8());
  const TRun run = RunTool({"auto"});
  ASSERT_EQ(run.ExitCode, 0) << run.Err.toStdString() << run.Log.toStdString();
  EXPECT_FALSE(run.Err.contains("WARNING")) << run.Err.toStdString();
  EXPECT_EQ(FSmtp.Messages().size(), 1);
  const QString settings = ReadTextFile(Folder() + "quorvex-followup.ini");
  EXPECT_TRUE(settings.contains("\nClientSecret=@keyring\nUsername=lead@vellmor.example\nPassword=@keyring\n"))
      << settings.toStdString();
  EXPECT_FALSE(TIniFile(Folder() + "quorvex-followup.ini").ReadString("QuorvexITSM", "Token", "").isEmpty());
}

TEST_F(EndToEnd, WithADisplayTheWindowRunsTheSameRoutineAndClosesEvenWhenAStepFails)
{
  const TRun run = RunTool({"auto"}, true);
  ASSERT_EQ(run.ExitCode, 0) << run.Err.toStdString() << run.Log.toStdString();
  EXPECT_EQ(Steps(run.Log), CCleanRunSteps) << run.Log.toStdString();
  EXPECT_EQ(FSmtp.Messages().size(), 1);

  // A failing step never leaves the window waiting for a person; the log is kept.
  WriteSettings(UnusedPort());
  const TRun failed = RunTool({"auto", "--resend"}, true);
  EXPECT_EQ(failed.ExitCode, 2) << failed.Err.toStdString();
  EXPECT_TRUE(failed.Log.contains(": Unable to send the mail through 127.0.0.1:")) << failed.Log.toStdString();
  EXPECT_TRUE(failed.Log.contains(" - ERROR Mail to 3 recipient(s), 111 row(s)")) << failed.Log.toStdString();
}

TEST_F(EndToEnd, ASavedTokenIsReusedAndRenewedOnceWhenARestartedServiceRefusesIt)
{
  const auto savedToken = [this] {
    return TIniFile(Folder() + "quorvex-followup.ini").ReadString("QuorvexITSM", "Token", "");
  };
  ASSERT_EQ(RunTool({"auto"}).ExitCode, 0);
  const QString token = savedToken();
  ASSERT_FALSE(token.isEmpty());
  ASSERT_EQ(RunTool({"auto"}).ExitCode, 0);
  EXPECT_EQ(savedToken(), token);
  EXPECT_EQ(Answered().filter("/oauth/token").size(), 1); // the first run's only
  // The same service comes back on the same port, having forgotten every token.
  const QString port = Printed("Instance: ").section(':', 1);
  FService.Stop();
  StartService({"--port", port});

  const TRun run = RunTool({"auto", "--resend"});
  ASSERT_EQ(run.ExitCode, 0) << run.Err.toStdString() << run.Log.toStdString();
  EXPECT_EQ(Steps(run.Log), CCleanRunSteps) << run.Log.toStdString();
  const QStringList answered = Answered();
  EXPECT_EQ(answered.mid(0, 3), (QStringList{"GET /api/ticket/list/open 401", "POST /oauth/token 200",
                                             "GET /api/ticket/list/open 200"}));
  EXPECT_EQ(answered.filter("/oauth/token").size() + answered.filter(" 401").size(), 2)
      << answered.join('\n').toStdString();
  EXPECT_FALSE(savedToken().isEmpty());
  EXPECT_NE(savedToken(), token);
}

// A token refused, or answers that are not ticket lists: the run still sends a
// report, which checks nothing and says why, and ends as incomplete.
TEST_F(EndToEnd, AFailedRetrievalStillSendsAReportThatChecksNothingAndSaysWhyInPlainWords)
{
  const QString instance = Printed("Instance: ");
  const auto page = [](const char *body) {
    const QJsonObject fault{{"path", "/api/ticket/list/open"}, {"page", 0}, {"body", body}, {"status", 200}};
    return QJsonObject{{"bodies", QJsonArray{fault}}};
  };
  const struct
  {
    QJsonObject Faults;
    QString Logged;
  } cases[] = {
      {{{"refuseToken", true}},
       "ERROR Access token from https://" + instance + ": " + instance + " answered HTTP 401 Unauthorized: the "
       "service refused the access token or the credentials; check the client ID, client secret, user name and "
       "password in \"Quorvex ITSM API\" ["},
      {page("garbage"), "ERROR Northwind Logistics / open tickets: the answer of " + instance + " was not understood"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(QJsonDocument(c.Faults).toJson().toStdString());
    CallService("POST", "/demo/faults", QJsonDocument(c.Faults).toJson());
    const TRun run = RunTool({"auto"});
    EXPECT_EQ(run.ExitCode, 3) << run.Err.toStdString();
    EXPECT_TRUE(run.Log.contains(" - " + c.Logged)) << run.Log.toStdString();
    EXPECT_TRUE(run.Log.contains(" - * Unassigned: 0\n")) << run.Log.toStdString();
    // Each message once on stderr, and the trace's own words stay in the trace.
    EXPECT_EQ(run.Err.count(c.Logged), 1) << run.Err.toStdString();
    EXPECT_FALSE(run.Err.contains("Erreur")) << run.Err.toStdString();
    const QString html = PartText(FSmtp.Messages().last(), "text/html");
    EXPECT_TRUE(html.contains("WARNING: the retrieval of the tickets was incomplete"));
    EXPECT_EQ(html.count("This could not be checked: the retrieval of the tickets was incomplete."), 2);
    EXPECT_FALSE(html.contains("All tickets have been"));
    EXPECT_FALSE(html.contains("1899"));
  }
}

namespace {

QStringList Addresses(const QJsonObject &mail)
{
  QStringList addresses;
  for (const char *header : {"To", "Cc"})
    for (const QString &address : mail["headers"][header].toString().split(", ", Qt::SkipEmptyParts))
      addresses << address;
  return addresses;
}

QStringList Envelope(const QJsonObject &mail)
{
  QStringList addresses;
  for (const QJsonValue &address : mail["rcpt_tos"].toArray())
    addresses << address.toString();
  return addresses;
}

// The sheets of a mail's workbook, by name; each a list of rows, the header first.
QMap<QString, QJsonArray> Workbook(const QJsonObject &mail)
{
  QMap<QString, QJsonArray> sheets;
  for (const QJsonValue &part : mail["parts"].toArray()) {
    if (!part["filename"].toString().startsWith("tickets-follow-up-"))
      continue;
    EXPECT_EQ(part["filename"].toString(),
              "tickets-follow-up-" + QDate::currentDate().toString("yyyyMMdd") + ".xlsx");
    for (const QJsonValue &sheet : ReadWorkbook(QByteArray::fromBase64(part["data"].toString().toLatin1())))
      sheets.insert(sheet["name"].toString(), sheet["rows"].toArray());
  }
  return sheets;
}

qsizetype Rows(const QMap<QString, QJsonArray> &sheets)
{
  qsizetype rows = 0;
  for (const QJsonArray &sheet : sheets)
    rows += sheet.size() - 1;
  return rows;
}

// Column `name` of the data rows of a sheet.
QStringList Column(const QJsonArray &sheet, const QString &name)
{
  const qsizetype column = sheet.first().toArray().toVariantList().indexOf(name);
  QStringList values;
  for (qsizetype row = 1; row < sheet.size(); ++row)
    values << sheet[row][column].toVariant().toString();
  return values;
}

// The demo's people by address: name and team names.
QMap<QString, QPair<QString, QStringList>> DemoPeople()
{
  QMap<QString, QPair<QString, QStringList>> people;
  for (const QJsonValue &op : MakeSampleData(QDateTime::currentDateTime())["operators"].toArray()) {
    QStringList teams;
    for (const QJsonValue &team : op["teams"].toArray())
      teams << team["name"].toString();
    people.insert(op["notificationEmail"].toString(),
                  {op["firstName"].toString() + ' ' + op["lastName"].toString(), teams});
  }
  return people;
}

struct TDeliveryCase
{
  const char *Mode;
  qsizetype Mails;          // the last one carries every row
  QString FullTo;           // of the mail with every row
  QString FullCc;
};

// The mode names the case in the test's output.
void PrintTo(const TDeliveryCase &deliveryCase, std::ostream *out) { *out << deliveryCase.Mode; }

class DeliveryEndToEnd : public EndToEnd, public ::testing::WithParamInterface<TDeliveryCase>
{
};

} // namespace

TEST_P(DeliveryEndToEnd, EveryMailGoesToItsHeadersWithItsRowsAttached)
{
  const TDeliveryCase mode = GetParam();
  WriteSettings(FSmtp.Port(), QStringLiteral("[Delivery]\nMode=%1\nAttachWorkbook=1\n").arg(mode.Mode));
  const TRun run = RunTool({"auto"});
  ASSERT_EQ(run.ExitCode, 0) << run.Err.toStdString();
  const QList<QJsonObject> mails = FSmtp.Messages();
  ASSERT_EQ(mails.size(), mode.Mails);
  const QStringList logged = Steps(run.Log).filter(QRegularExpression("^ - \\* Mail to "));
  ASSERT_EQ(logged.size(), mode.Mails) << run.Log.toStdString();

  const auto people = DemoPeople();
  QSet<QString> digestUnassigned;
  QSet<QString> fullUnassigned;
  for (qsizetype i = 0; i < mails.size(); ++i) {
    const QJsonObject &mail = mails[i];
    const bool full = i == 0; // the full report goes first
    SCOPED_TRACE(mail["headers"]["To"].toString().toStdString());
    EXPECT_EQ(mail["headers"]["Auto-Submitted"].toString(), "auto-generated");
    EXPECT_EQ(mail["headers"]["X-Auto-Response-Suppress"].toString(), "All");
    QStringList headers = Addresses(mail);
    QStringList envelope = Envelope(mail);
    EXPECT_EQ(QSet<QString>(headers.begin(), headers.end()).size(), headers.size()); // each address once
    headers.sort();
    envelope.sort();
    EXPECT_EQ(envelope, headers);
    EXPECT_EQ(PartText(mail, "text/html").contains("<h2>DEBUG</h2>"), full && mode.Mode == QLatin1String("report"));

    const auto sheets = Workbook(mail);
    const QString first = Addresses(mail).first();
    EXPECT_EQ(logged[i], QStringLiteral(" - * Mail to %1 recipient(s), %2 row(s): %3%4")
                             .arg(envelope.size())
                             .arg(Rows(sheets))
                             .arg(first, envelope.size() > 1 ? "…" : ""));
    if (full) {
      EXPECT_EQ(Rows(sheets), 111);
      EXPECT_EQ(mail["headers"]["Cc"].toString(), mode.FullCc);
      if (!mode.FullTo.isEmpty()) {
        EXPECT_EQ(mail["headers"]["To"].toString(), mode.FullTo);
      }
      const QStringList ids = Column(sheets["Unassigned"], "Ticket");
      fullUnassigned = QSet<QString>(ids.begin(), ids.end());
      continue;
    }
    // A digest: the unassigned tickets of the person's teams, the others assigned to them.
    ASSERT_EQ(Envelope(mail).size(), 1);
    const auto person = people.value(first);
    EXPECT_GT(Rows(sheets), 0);
    for (const QString &team : Column(sheets["Unassigned"], "Assigned Team"))
      EXPECT_TRUE(person.second.contains(team)) << team.toStdString();
    for (const QString &ticket : Column(sheets["Unassigned"], "Ticket"))
      digestUnassigned.insert(ticket);
    for (const char *section : {"Without update", "More than 10 exchanges"})
      for (const QString &user : Column(sheets[section], "Assigned User"))
        EXPECT_EQ(user, person.first);
  }
  // Between them the digests carry every unassigned ticket of the full report.
  if (mails.size() > 1) {
    EXPECT_EQ(digestUnassigned, fullUnassigned);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Modes, DeliveryEndToEnd,
    ::testing::Values(
        TDeliveryCase{"report", 1, "leads@example.org, desk@example.org", "boss@example.org"},
        TDeliveryCase{"concerned", 1, "", "leads@example.org, desk@example.org, boss@example.org"},
        TDeliveryCase{"personal", 36, "leads@example.org, desk@example.org", "boss@example.org"}),
    [](const ::testing::TestParamInfo<TDeliveryCase> &info) { return std::string(info.param.Mode); });

TEST_F(EndToEnd, SkipWhenClearSendsNothingOnlyWhenThereIsNothingToReport)
{
  const QString harbourOnly =
      QStringLiteral("[Organizations]\nNb=1\nid_1=103\nname_1=Harbour Clinic\nticketingModuleEnabled_1=1\n");
  for (const bool clear : {true, false}) {
    SCOPED_TRACE(clear);
    const qsizetype before = FSmtp.Messages().size();
    WriteSettings(FSmtp.Port(), "[Delivery]\nSkipWhenClear=1\n", clear ? harbourOnly : CTwoOrganizations);
    const TRun run = RunTool({"auto"});
    EXPECT_EQ(run.ExitCode, 0) << run.Err.toStdString();
    EXPECT_EQ(Steps(run.Log).contains(" - * Nothing to report: no mail sent"), clear) << run.Log.toStdString();
    EXPECT_EQ(FSmtp.Messages().size() - before, clear ? 0 : 1);
  }
}

TEST_F(EndToEnd, DryRunOfThePersonalModeWritesEveryMailWhole)
{
  QDir().mkpath(Folder());
  WriteTextFile(Folder() + "quorvex-followup_99.eml", "left by an earlier dry run");
  WriteSettings(FSmtp.Port(), "[Delivery]\nMode=personal\nAttachWorkbook=1\n");
  const TRun run = RunTool({"--dry-run"});
  ASSERT_EQ(run.ExitCode, 0) << run.Err.toStdString();
  EXPECT_TRUE(FSmtp.Messages().isEmpty());
  const QStringList files = QDir(Folder()).entryList({"quorvex-followup_*.eml"});
  EXPECT_EQ(files.size(), 36);
  EXPECT_EQ(Steps(run.Log).filter(QRegularExpression("^ - \\* Would send: Mail to ")).size(), 36);
  EXPECT_FALSE(files.contains("quorvex-followup_99.eml"));

  // The full report goes first, then the digests.
  const QString full = ReadTextFile(Folder() + "quorvex-followup_1.eml");
  for (const char *line : {"To: leads@example.org, desk@example.org", "Cc: boss@example.org",
                           "Auto-Submitted: auto-generated", "Content-Type: multipart/mixed",
                           "Content-Type: multipart/alternative", "Content-Type: text/plain; charset=utf-8",
                           "Content-Type: text/html; charset=utf-8", "filename=tickets-follow-up-"})
    EXPECT_TRUE(full.contains(line)) << line;
  EXPECT_FALSE(full.contains("DEBUG"));
  // Every header line stays within what mail servers accept.
  for (const QString &line : ReadTextFile(Folder() + "quorvex-followup_1.eml").split("\r\n"))
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
  WriteSettings(slow.Port(), "[Delivery]\nMode=personal\n");
  QProcessEnvironment environment = ToolEnvironment(FConfig.Root());
  environment.insert("QUORVEX_EXTRA_CA_CERTS", Printed("CA certificate: "));
  QProcess tool;
  tool.setProcessEnvironment(environment);
  tool.start(QUORVEX_FOLLOWUP_EXE, {"auto"});
  ASSERT_TRUE(tool.waitForStarted(10000));
  QElapsedTimer waited;
  waited.start();
  while (slow.Messages().size() < 3 && waited.elapsed() < 60000)
    QThread::msleep(20);
  ASSERT_GE(slow.Messages().size(), 3);
  ::kill(static_cast<pid_t>(tool.processId()), SIGTERM);
  QElapsedTimer ending;
  ending.start();
  ASSERT_TRUE(tool.waitForFinished(30000));
  std::printf("ended %lld ms after SIGTERM, %lld of 36 mails sent\n", static_cast<long long>(ending.elapsed()),
              static_cast<long long>(slow.Messages().size()));
  EXPECT_EQ(tool.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(tool.exitCode(), 2);
  const qsizetype sent = slow.Messages().size();
  EXPECT_LT(sent, 36);
  const QString log = RunLog(Folder());
  EXPECT_TRUE(log.contains(" - ERROR Stopped by SIGTERM: the mails and recipients above were not served")) << log.toStdString();
  EXPECT_EQ(Steps(log).filter(QRegularExpression("^ - \\* Mail to ")).size(), sent) << log.toStdString();
  // The mail under way when the signal came is cut; the others never start.
  EXPECT_EQ(Steps(log).filter(QRegularExpression("^ - ERROR Mail to .*(stopped before the server confirmed it|"
                                                 "not sent: the run was stopped \\(SIGTERM\\))$"))
                .size(),
            36 - sent)
      << log.toStdString();

  WriteSettings(FSmtp.Port(), "[Delivery]\nMode=personal\n");
  const TRun rerun = RunTool({"auto"});
  EXPECT_EQ(rerun.ExitCode, 0) << rerun.Err.toStdString();
  EXPECT_EQ(FSmtp.Messages().size(), 36 - sent);
  EXPECT_EQ(Steps(rerun.Log).filter("Already sent at ").size(), sent);
}
