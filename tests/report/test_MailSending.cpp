#include "SmtpTestServer.h"
#include "report/MailAddress.h"
#include "report/MailMessage.h"
#include "report/MailSender.h"
#include "report/DeliveryPlan.h"
#include "report/SmtpIdentity.h"
#include "report/ReportSending.h"
#include "support/Await.h"
#include "support/Raised.h"
#include "support/TempConfig.h"
#include "tickets/ColourStore.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QHostInfo>
#include <QJsonArray>
#include <QRegularExpression>
#include <gtest/gtest.h>

namespace {

const QString CUser = QStringLiteral("followup@vellmor.example");
const QString CPassword = QStringLiteral("s3cret pass");

QStringList Report()
{
  return {"<!DOCTYPE html>", "<html>", "  <head><title>Quorvex ITSM tickets follow-up</title></head>", "  <body>",
          "    <h1>Quorvex ITSM tickets follow-up</h1>", "    <p>Équipe &amp; réseau</p>", "  </body>", "</html>"};
}

// The report to the default receivers, as "Send Mail" sends it in mode "report";
// what could not be delivered, one line each.
QStringList SendReport(const tySMTPserver &smtp, const QStringList &lines)
{
  TReportMail mail;
  QStringList warnings;
  mail.To = ParseAddressList(smtp.DefaultTo, "To", warnings);
  mail.Cc = ParseAddressList(smtp.DefaultCC, "Cc", warnings);
  mail.Report.HtmlContent = lines;
  mail.Report.Text = QStringLiteral("Quorvex ITSM tickets follow-up\n.\nÉquipe & réseau"); // a dot alone on its line
  TTempConfig config;
  TColourStore colours(config.File("colours.ini"));
  QStringList failures;
  for (const TFailure &failure : Await(DeliverReport(smtp, {mail}, {}, colours)).Failures)
    failures.append(failure.What + ": " + failure.Reason);
  return failures;
}

QString Header(const QJsonObject &message, const char *name)
{
  return message["headers"].toObject()[QLatin1String(name)].toString();
}

// A server that wants STARTTLS and a login, shared by the tests of the suite.
class StartTlsSendingTest : public ::testing::Test
{
protected:
  static void SetUpTestSuite()
  {
    FServer = new TSmtpTestServer({TSmtpTestServer::StartTls, 0, CUser, CPassword});
  }
  static void TearDownTestSuite()
  {
    delete FServer;
    FServer = nullptr;
  }
  void SetUp() override
  {
    ASSERT_TRUE(FServer->Started()) << FServer->Failure().toStdString();
    qputenv("QUORVEX_EXTRA_CA_CERTS", FServer->CertificateFile().toUtf8());
    FSmtp = {"127.0.0.1", FServer->Port(), true, CUser, CPassword, "leads@vellmor.example; desk@vellmor.example",
             "itsm@vellmor.example,  audit@vellmor.example", "noreply@vellmor.example"};
  }

  static TSmtpTestServer *FServer;
  tySMTPserver FSmtp;
};
TSmtpTestServer *StartTlsSendingTest::FServer = nullptr;

} // namespace

TEST_F(StartTlsSendingTest, ReportReachesEveryReceiverAsAlternativeTextAndHtml)
{
  const QDateTime before = QDateTime::currentDateTime().addSecs(-2);
  SendReport(FSmtp, Report());

  const QJsonObject message = FServer->Messages().last();
  EXPECT_EQ((QVariantList{message["tls"].toBool(), message["authenticated"].toBool(), message["mail_from"].toString(),
                          message["content_type"].toString()}),
            (QVariantList{true, true, "noreply@vellmor.example", "multipart/alternative"}));
  EXPECT_EQ(message["rcpt_tos"].toArray().toVariantList(), (QVariantList{"leads@vellmor.example", "desk@vellmor.example",
                                                                          "itsm@vellmor.example", "audit@vellmor.example"}));
  EXPECT_EQ((QStringList{Header(message, "Subject"), Header(message, "From"), Header(message, "To"), Header(message, "Cc")}),
            (QStringList{"Quorvex ITSM tickets follow-up", "noreply@vellmor.example",
                         "leads@vellmor.example, desk@vellmor.example", "itsm@vellmor.example, audit@vellmor.example"}));
  EXPECT_GE(QDateTime::fromString(Header(message, "Date"), Qt::RFC2822Date), before) << Header(message, "Date").toStdString();
  EXPECT_TRUE(QRegularExpression("^<[0-9a-f-]{36}@vellmor\\.example>$").match(Header(message, "Message-ID")).hasMatch())
      << Header(message, "Message-ID").toStdString();

  const QJsonArray parts = message["parts"].toArray();
  ASSERT_EQ(parts.size(), 2);
  EXPECT_EQ((QStringList{parts[0]["type"].toString(), parts[0]["text"].toString(), parts[1]["type"].toString(),
                         parts[1]["text"].toString().trimmed()}),
            (QStringList{"text/plain", "Quorvex ITSM tickets follow-up\r\n.\r\nÉquipe & réseau", "text/html",
                         Report().join("\r\n")}));
}

TEST_F(StartTlsSendingTest, ServerRefusalsCarryTheServersWords)
{
  const QString server = QStringLiteral("Unable to send the mail through 127.0.0.1:%1: ").arg(FServer->Port());
  FSmtp.Password = "wrong";
  const QString login = SendReport(FSmtp, Report()).join("\n");
  EXPECT_TRUE(login.contains(server) && login.contains("535")) << login.toStdString();
  FSmtp.Password = CPassword;
  FSmtp.UseSSL = false; // STARTTLS is required before the login
  const QString clear = SendReport(FSmtp, Report()).join("\n");
  EXPECT_TRUE(clear.contains(server) && clear.contains("530")) << clear.toStdString();
}

TEST_F(StartTlsSendingTest, UntrustedCertificateIsRefusedAndUnreadableExtraCertificatesAreNamed)
{
  qunsetenv("QUORVEX_EXTRA_CA_CERTS");
  const qsizetype before = FServer->Messages().size();
  const QString error = SendReport(FSmtp, Report()).join("\n");
  EXPECT_TRUE(error.contains(QStringLiteral("127.0.0.1:%1").arg(FServer->Port())) &&
              error.contains("certificate", Qt::CaseInsensitive))
      << error.toStdString();
  EXPECT_EQ(FServer->Messages().size(), before);

  qputenv("QUORVEX_EXTRA_CA_CERTS", "/nonexistent/ca.pem");
  const QString unreadable = SendReport(FSmtp, Report()).join("\n");
  EXPECT_TRUE(unreadable.contains("QUORVEX_EXTRA_CA_CERTS cannot be read from /nonexistent/ca.pem"))
      << unreadable.toStdString();
}

TEST(ImplicitTlsSendingTest, Port465SpeaksTlsFromTheStart)
{
  TSmtpTestServer server({TSmtpTestServer::ImplicitTls, 465, CUser, CPassword});
  if (!server.Started())
    GTEST_SKIP() << "port 465 is not available here: " << server.Failure().toStdString();
  qputenv("QUORVEX_EXTRA_CA_CERTS", server.CertificateFile().toUtf8());
  SendReport({"localhost", 465, true, CUser, CPassword, "leads@vellmor.example", {}, {}}, Report());
  const QList<QJsonObject> messages = server.Messages();
  ASSERT_EQ(messages.size(), 1);
  EXPECT_TRUE(messages[0]["tls"].toBool() && messages[0]["authenticated"].toBool());
}

TEST(PlainSendingTest, AServerSilentAfterTheMessageCostsNoMoreThanTheTimeOut)
{
  TSmtpTestServer server({.Faults = {"--stall-after-data"}});
  ASSERT_TRUE(server.Started()) << server.Failure().toStdString();
  const tySMTPserver smtp{"127.0.0.1", server.Port(), false, {}, {}, {}, {}, {}}; // no TLS nor login
  TMailMessage mail{.To = {"a@vellmor.example"}, .Subject = "x", .Text = "y"};
  QElapsedTimer clock;
  clock.start();
  const QString error = TSmtpConnection(smtp).Send(BuildMail(mail, "a@vellmor.example", QDateTime::currentDateTime()),
                                                   mail.To, std::chrono::seconds(3))
                            .Error;
  // Before, the goodbye alone could wait two more minutes for its answer.
  EXPECT_LT(clock.elapsed(), 6000);
  EXPECT_TRUE(error.contains("Timeout", Qt::CaseInsensitive) || error.contains("timed out", Qt::CaseInsensitive))
      << error.toStdString();
}

TEST(SenderAddress, TheFromSettingElseTheUserNameWhenAnAddressElseThisMachine)
{
  struct
  {
    QString From, UserName, Expected;
  } const cases[] = {
      {" robot@vellmor.example ", "login@vellmor.example", "robot@vellmor.example"},
      {"", " login@vellmor.example", "login@vellmor.example"},
      {"", "login", "quorvex-followup@" + QHostInfo::localHostName()},
  };
  for (const auto &c : cases) {
    tySMTPserver smtp;
    smtp.From = c.From;
    smtp.UserName = c.UserName;
    EXPECT_EQ(SenderAddress(smtp), c.Expected) << c.From.toStdString() << " / " << c.UserName.toStdString();
  }
}
