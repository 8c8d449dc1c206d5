// Sending against a real relay: the conversation (TLS, login, the message as
// built), and deliveries against a relay that refuses, delays, drops or limits
// recipients, with the journal that keeps a rerun from mailing the same people twice.

#include "SmtpTestServer.h"
#include "core/StopRequest.h"
#include "report/DeliveryJournal.h"
#include "report/DeliveryPlan.h"
#include "report/FollowUpStore.h"
#include "report/MailAddress.h"
#include "report/MailMessage.h"
#include "report/MailSender.h"
#include "report/ReportSending.h"
#include "report/SmtpIdentity.h"
#include "support/Await.h"
#include "support/TempConfig.h"
#include "tickets/ColourStore.h"

#include <QElapsedTimer>
#include <QHostInfo>
#include <QJsonArray>
#include <QTimer>
#include <gtest/gtest.h>
#include <optional>

namespace {

const QString CUser = QStringLiteral("followup@vellmor.example");
const QString CPassword = QStringLiteral("s3cret pass");

// `count` mails of `recipients` addresses each (r<mail>-<n>@example.test).
QList<TReportMail> Mails(int count, int recipients = 1)
{
  QList<TReportMail> mails;
  for (int i = 1; i <= count; ++i) {
    TReportMail mail;
    for (int n = 1; n <= recipients; ++n)
      mail.To.append(QStringLiteral("r%1-%2@example.test").arg(i).arg(n));
    mails.append(mail);
  }
  return mails;
}

class DeliveryTest : public ::testing::Test
{
protected:
  // Starts the relay (see smtp_test_server.py), without TLS nor login unless asked.
  void Relay(const TSmtpTestServer::TOptions &options)
  {
    FServer = std::make_unique<TSmtpTestServer>(options);
    ASSERT_TRUE(FServer->Started()) << FServer->Failure().toStdString();
    FSmtp = {"127.0.0.1", FServer->Port(), false, {}, {}, {}, {}, "followup@example.test"};
    FOptions.RetryPause = std::chrono::milliseconds(10);
  }

  TDeliveryResult Deliver(const QList<TReportMail> &mails) { return Await(DeliverReport(FSmtp, mails, FOptions, FColours)); }

  // Every recipient the relay delivered to, in order.
  QStringList Received() const
  {
    QStringList received;
    for (const QJsonObject &message : FServer->Messages())
      for (const QJsonValue &address : message["rcpt_tos"].toArray())
        received.append(address.toString());
    return received;
  }

  // The authorities the sending trusts beyond the system's, until the test ends;
  // none when empty.
  void TrustExtraAuthorities(const QByteArray &pemFile) { FExtraAuthorities.emplace("QUORVEX_EXTRA_CA_CERTS", pemFile); }

  static QStringList Failures(const TDeliveryResult &result)
  {
    QStringList failures;
    for (const TFailure &failure : result.Failures)
      failures.append(failure.What + ": " + failure.Reason);
    return failures;
  }

  TTempConfig FConfig;
  TColourStore FColours{FConfig.File("q.ini")};
  std::unique_ptr<TSmtpTestServer> FServer;
  tySMTPserver FSmtp;
  TDeliveryOptions FOptions;
  std::optional<TScopedVariable> FExtraAuthorities;
};

// A relay that wants STARTTLS and a login; the report goes to the settings'
// default receivers, as "Send Mail" sends it in mode "report".
class StartTlsSendingTest : public DeliveryTest
{
protected:
  void SetUp() override
  {
    Relay({TSmtpTestServer::StartTls, 0, CUser, CPassword});
    TrustExtraAuthorities(FServer->CertificateFile().toUtf8());
    FSmtp = {"127.0.0.1", FServer->Port(), true, CUser, CPassword, "leads@vellmor.example; desk@vellmor.example",
             "itsm@vellmor.example,  audit@vellmor.example", "noreply@vellmor.example"};
  }

  const QStringList FReport{"<!DOCTYPE html>", "<html>", "  <head><title>Quorvex ITSM tickets follow-up</title></head>",
                            "  <body>", "    <h1>Quorvex ITSM tickets follow-up</h1>", "    <p>Équipe &amp; réseau</p>",
                            "  </body>", "</html>"};

  // What could not be delivered, one line each.
  QStringList SendReport()
  {
    TReportMail mail;
    QStringList warnings;
    mail.To = ParseAddressList(FSmtp.DefaultTo, "To", warnings);
    mail.Cc = ParseAddressList(FSmtp.DefaultCC, "Cc", warnings);
    mail.Report.HtmlContent = FReport;
    mail.Report.Text = QStringLiteral("Quorvex ITSM tickets follow-up\n.\nÉquipe & réseau"); // a dot alone on its line
    return Failures(Deliver({mail}));
  }
};

using PlainSendingTest = DeliveryTest;

} // namespace

TEST_F(StartTlsSendingTest, ReportReachesEveryReceiverAsAlternativeTextAndHtml)
{
  const QDateTime before = QDateTime::currentDateTime().addSecs(-2);
  SendReport();

  const QJsonObject message = FServer->Messages().last();
  EXPECT_EQ((QVariantList{message["tls"].toBool(), message["authenticated"].toBool(), message["mail_from"].toString(),
                          message["content_type"].toString()}),
            (QVariantList{true, true, "noreply@vellmor.example", "multipart/alternative"}));
  EXPECT_EQ(message["rcpt_tos"].toArray().toVariantList(), (QVariantList{"leads@vellmor.example", "desk@vellmor.example",
                                                                          "itsm@vellmor.example", "audit@vellmor.example"}));
  const QJsonObject headers = message["headers"].toObject();
  EXPECT_EQ((QStringList{headers["Subject"].toString(), headers["From"].toString(), headers["To"].toString(),
                         headers["Cc"].toString()}),
            (QStringList{"Quorvex ITSM tickets follow-up", "noreply@vellmor.example",
                         "leads@vellmor.example, desk@vellmor.example", "itsm@vellmor.example, audit@vellmor.example"}));
  EXPECT_GE(QDateTime::fromString(headers["Date"].toString(), Qt::RFC2822Date), before);

  const QJsonArray parts = message["parts"].toArray();
  ASSERT_EQ(parts.size(), 2);
  EXPECT_EQ((QStringList{parts[0]["type"].toString(), parts[0]["text"].toString(), parts[1]["type"].toString(),
                         parts[1]["text"].toString().trimmed()}),
            (QStringList{"text/plain", "Quorvex ITSM tickets follow-up\r\n.\r\nÉquipe & réseau", "text/html",
                         FReport.join("\r\n")}));
}

TEST_F(StartTlsSendingTest, ServerRefusalsCarryTheServersWords)
{
  const QString server = QStringLiteral("Unable to send the mail through 127.0.0.1:%1: ").arg(FServer->Port());
  FSmtp.Password = "wrong";
  const QString login = SendReport().join("\n");
  EXPECT_TRUE(login.contains(server) && login.contains("535")) << login.toStdString();
  FSmtp.Password = CPassword;
  FSmtp.UseSSL = false; // STARTTLS is required before the login
  const QString clear = SendReport().join("\n");
  EXPECT_TRUE(clear.contains(server) && clear.contains("530")) << clear.toStdString();
}

TEST_F(StartTlsSendingTest, UntrustedCertificateIsRefusedAndUnreadableExtraCertificatesAreNamed)
{
  TrustExtraAuthorities({});
  const qsizetype before = FServer->Messages().size();
  const QString error = SendReport().join("\n");
  EXPECT_TRUE(error.contains(QStringLiteral("127.0.0.1:%1").arg(FServer->Port())) &&
              error.contains("certificate", Qt::CaseInsensitive))
      << error.toStdString();
  EXPECT_EQ(FServer->Messages().size(), before);

  TrustExtraAuthorities("/nonexistent/ca.pem");
  const QString unreadable = SendReport().join("\n");
  EXPECT_TRUE(unreadable.contains("QUORVEX_EXTRA_CA_CERTS cannot be read from /nonexistent/ca.pem"))
      << unreadable.toStdString();
}

TEST_F(DeliveryTest, Port465SpeaksTlsFromTheStart)
{
  FServer = std::make_unique<TSmtpTestServer>(TSmtpTestServer::TOptions{TSmtpTestServer::ImplicitTls, 465, CUser, CPassword});
  if (!FServer->Started())
    GTEST_SKIP() << "port 465 is not available here: " << FServer->Failure().toStdString();
  TrustExtraAuthorities(FServer->CertificateFile().toUtf8());
  FSmtp = {"localhost", 465, true, CUser, CPassword, {}, {}, {}};
  Deliver(Mails(1));
  const QList<QJsonObject> messages = FServer->Messages();
  ASSERT_EQ(messages.size(), 1);
  EXPECT_TRUE(messages[0]["tls"].toBool() && messages[0]["authenticated"].toBool());
}

TEST_F(PlainSendingTest, AServerSilentAfterTheMessageCostsNoMoreThanTheTimeOut)
{
  Relay({.Faults = {"--stall-after-data"}});
  TMailMessage mail{.To = {"a@vellmor.example"}, .Subject = "x", .Text = "y"};
  QElapsedTimer clock;
  clock.start();
  const QString error = TSmtpConnection(FSmtp).Send(BuildMail(mail, "a@vellmor.example", QDateTime::currentDateTime()),
                                                   mail.To, std::chrono::seconds(3))
                            .Error;
  // Before, the goodbye alone could wait two more minutes for its answer.
  EXPECT_LT(clock.elapsed(), 6000);
  EXPECT_TRUE(error.contains("Timeout", Qt::CaseInsensitive) || error.contains("timed out", Qt::CaseInsensitive))
      << error.toStdString();
}

TEST(SenderAddress, TheFromSettingElseTheUserNameWhenAnAddressElseThisMachine)
{
  const auto sender = [](const QString &from, const QString &userName) {
    tySMTPserver smtp;
    smtp.From = from;
    smtp.UserName = userName;
    return SenderAddress(smtp);
  };
  EXPECT_EQ((QStringList{sender(" robot@vellmor.example ", "login@vellmor.example"), sender("", " login@vellmor.example"),
                         sender("", "login")}),
            (QStringList{"robot@vellmor.example", "login@vellmor.example", "quorvex-followup@" + QHostInfo::localHostName()}));
}

TEST_F(DeliveryTest, ARefusedRecipientNeitherStopsTheOthersNorTheNextMails)
{
  Relay({.Faults = {"--refuse", "r1-5@example.test", "r1-9@example.test=501", "r20-1@example.test"}});
  const TDeliveryResult result = Deliver(Mails(1, 12) + Mails(36).mid(1));
  EXPECT_EQ(result.MailsSent, 35);                  // every mail but the one whose only recipient is refused
  EXPECT_EQ(Received().size(), 12 - 2 + 35 - 1);   // and every recipient but the three refused
  const QString at = QStringLiteral(": 127.0.0.1:%1 replied: ").arg(FServer->Port());
  EXPECT_EQ(Failures(result),
            (QStringList{"Mail to r1-5@example.test" + at + "550 5.1.1 <r1-5@example.test>: mailbox unavailable",
                         "Mail to r1-9@example.test" + at + "501 5.1.3 <r1-9@example.test>: bad recipient address syntax",
                         "Mail to r20-1@example.test" + at + "550 5.1.1 <r20-1@example.test>: mailbox unavailable"}));
}

TEST_F(DeliveryTest, TemporaryFailuresAreTriedThreeTimesInAll)
{
  // A busy mailbox stays busy: three tries, then named with its reply.
  Relay({.Faults = {"--refuse", "r1-2@example.test=450", "--fail-data", "1", "--drop-at", "3"}});
  const TDeliveryResult result = Deliver(Mails(1, 3) + Mails(2).mid(1));
  // The first DATA is refused (451) and tried again; the connection drops at the
  // third DATA, which goes again on a new one.
  EXPECT_EQ(Received(), (QStringList{"r1-1@example.test", "r1-3@example.test", "r2-1@example.test"}));
  const QStringList failures = Failures(result);
  ASSERT_EQ(failures.size(), 1);
  EXPECT_TRUE(failures[0].startsWith("Mail to r1-2@example.test: ") && failures[0].contains("450 4.2.1"))
      << failures[0].toStdString();
}

TEST_F(DeliveryTest, RecipientsBeyondTheRelaysLimitGoAsIdenticalMails)
{
  Relay({.Faults = {"--max-recipients", "3"}});
  FOptions.MaxRecipients = 3;
  const TDeliveryResult result = Deliver(Mails(1, 10));
  EXPECT_TRUE(result.Failures.isEmpty()) << Failures(result).join('\n').toStdString();
  const QList<QJsonObject> messages = FServer->Messages();
  ASSERT_EQ(messages.size(), 4);
  EXPECT_EQ(Received().size(), 10);
  for (const QJsonObject &message : messages)
    EXPECT_EQ(message["raw"].toString(), messages[0]["raw"].toString()); // the same bytes, Message-ID included
}

TEST_F(DeliveryTest, ARerunOfTheSameDaySendsOnlyWhatWasNotDelivered)
{
  Relay({.Faults = {"--refuse", "r2-1@example.test"}});
  QStringList warnings;
  const auto store = TFollowUpStore::Open(FConfig.File("journal.db"), warnings);
  ASSERT_TRUE(store);
  TDeliveryJournal journal(*store);
  FOptions.Journal = &journal;
  const QList<TReportMail> mails = Mails(3, 2);
  Deliver(mails);
  ASSERT_EQ(Received().size(), 5);

  const TDeliveryResult rerun = Deliver(mails);
  EXPECT_EQ(Received().size(), 5); // nobody served twice; the refused one tried again
  EXPECT_EQ(rerun.Texts.filter("Already sent at ").size(), 2) << rerun.Texts.join('\n').toStdString();
  EXPECT_EQ(rerun.Failures.size(), 1);
  EXPECT_EQ(DeliveredEarlier(mails, TDeliveryMode::Report, journal, QDate::currentDate()).size(), 2);

  // Other rows are another mail; a resend sends everything again.
  QList<TReportMail> changed = mails;
  changed[0].Report.Rows[0] = TReportRows(tyRestTickets(1));
  changed[0].Report.Rows[0].Append(0);
  Deliver(changed.mid(0, 1));
  EXPECT_EQ(Received().size(), 7);
  FOptions.Resend = true;
  Deliver(mails);
  EXPECT_EQ(Received().size(), 12);
  EXPECT_TRUE(warnings.isEmpty());
}

TEST_F(DeliveryTest, ADamagedStoreIsMovedAsideAndMadeAnew)
{
  WriteTextFile(FConfig.File("journal.db"), QByteArray(4096, 'x'));
  QStringList warnings;
  const auto store = TFollowUpStore::Open(FConfig.File("journal.db"), warnings);
  ASSERT_TRUE(store);
  ASSERT_EQ(warnings.size(), 1);
  EXPECT_TRUE(warnings[0].contains("was moved aside as " + FConfig.File("journal.db.damaged-")))
      << warnings[0].toStdString();
  EXPECT_EQ(QFile::permissions(FConfig.File("journal.db")) & 0x0077, 0); // nobody else reads it
  TDeliveryJournal journal(*store);
  journal.BeginRun("report", QDateTime::currentDateTime());
  EXPECT_GE(journal.Plan(1, "k", {"a@example.test"}, "0:1"), 0);
  EXPECT_TRUE(journal.Warnings().isEmpty());
}

TEST_F(DeliveryTest, AStopOrThePassedDeadlineStartsNoFurtherMail)
{
  Relay({.Faults = {"--delay", "0.5"}});
  TStopRequest stop;
  FOptions.Stop = &stop;
  // The request comes while the third mail is on its way.
  QTimer::singleShot(1500, &stop, [&stop] { stop.Request("SIGTERM"); });
  const TDeliveryResult stopped = Deliver(Mails(10));
  EXPECT_GE(stopped.MailsSent, 1);
  EXPECT_LT(stopped.MailsSent, 10);
  EXPECT_EQ(stopped.Failures.size(), 10 - stopped.MailsSent);
  EXPECT_TRUE(stopped.Failures.last().Reason.contains("not sent: the run was stopped (SIGTERM)"))
      << stopped.Failures.last().Reason.toStdString();

  FOptions.Stop = nullptr;
  FOptions.Deadline = QDeadlineTimer(1500);
  const TDeliveryResult late = Deliver(Mails(10));
  EXPECT_LT(late.MailsSent, 10);
  EXPECT_EQ(late.Failures.size(), 10 - late.MailsSent);
  EXPECT_TRUE(late.Failures.last().Reason.contains("time limit had passed")) << late.Failures.last().Reason.toStdString();
}
