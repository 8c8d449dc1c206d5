// The mail steps over the demo service and a real SMTP server: what the people
// concerned receive when the service's data is hostile or cannot be read.

#include "RelayStepsFixture.h"

#include "core/StopRequest.h"

#include <QJsonArray>
#include <QRegularExpression>
#include <QTimer>

namespace {

class MailStepsTest : public RelayStepsFixture
{
protected:
  // The operators list the service answers instead of its own.
  void Operators(const QByteArray &body, int status = 200)
  {
    FService.SetFaults({.Bodies = {{"/api/operators/list", -1, body, status}}});
  }
};

TEST_F(MailStepsTest, AnAddressThatCouldCarrySmtpCommandsNeverReachesTheRelay)
{
  ASSERT_TRUE(FRelay.Started()) << FRelay.Failure().toStdString();
  Operators(R"({"totalNumberOfElements":3,"content":[)"
            R"({"id":1,"status":"ACTIVE","teams":[{"id":10}],"notificationEmail":)"
            R"("ann@example.org>\r\nRSET\r\nMAIL FROM:<noreply@example.test>\r\nRCPT TO:<evil@attacker.test>\r\nDATA\r\nSubject: x\r\n\r\nhi\r\n.\r\n"},)"
            R"({"id":2,"status":"ACTIVE","teams":[{"id":10}],"notificationEmail":"bob@example.org, evil@attacker.test"},)"
            R"({"id":4,"status":"ACTIVE","teams":[{"id":10}],"notificationEmail":"\"Dee\" <Dee@example.org>"}]})");
  EXPECT_EQ(Run(), CExitOk);

  const QList<QJsonObject> messages = FRelay.Messages();
  ASSERT_EQ(messages.size(), 1);
  EXPECT_EQ(messages[0]["rcpt_tos"].toArray().toVariantList(),
            (QVariantList{"dee@example.org", "leads@vellmor.example"}));
  EXPECT_EQ(messages[0]["headers"]["To"].toString(), "dee@example.org");
  const QString log = ReadTextFile(FState->LogFile());
  // Each address dropped is named (the reasons: MailAddress tests).
  EXPECT_EQ(log.count(QRegularExpression(" - WARNING Operator [12] \\(\\), field notificationEmail: the address ")), 2)
      << log.toStdString();
}

// An operators list that cannot be read: the report still goes, to the default
// recipients, says that the people concerned are unknown, and the run counts as
// incomplete. (Each bad answer the client tells apart:
// ReferenceQueries.BadAnswersFailWithTheirOwnErrorLines.)
TEST_F(MailStepsTest, AnOperatorsListThatCannotBeReadSendsToTheDefaultsAndIsIncomplete)
{
  ASSERT_TRUE(FRelay.Started()) << FRelay.Failure().toStdString();
  Operators(R"({"error":"internal"})", 500);
  EXPECT_EQ(Run(), CExitIncomplete);
  const QString log = ReadTextFile(FState->LogFile());
  EXPECT_TRUE(log.contains(" - ERROR Operator list (the report's recipients): ")) << log.toStdString();
  EXPECT_TRUE(log.contains("HTTP 500")) << log.toStdString();
  ASSERT_EQ(FRelay.Messages().size(), 1);
  const QJsonObject mail = FRelay.Messages()[0];
  EXPECT_EQ(mail["headers"]["To"].toString(), "leads@vellmor.example");
  EXPECT_TRUE(mail["parts"][1]["text"].toString().contains("the people concerned could not be computed"));
}

TEST_F(MailStepsTest, AnOperatorsPageThatLeavesPeopleOutSaysHowMany)
{
  Operators(R"({"totalNumberOfElements":502,"content":[{"id":2,"status":"ACTIVE","teams":[{"id":10}],)"
            R"("notificationEmail":"bob@example.org"}]})");
  Run({.DryRun = true});
  EXPECT_TRUE(ReadTextFile(FState->LogFile())
                  .contains("announces 501 more operator(s) than its page of 1 holds: they were left out"));
}

// A stop during the retrieval cuts the requests in flight at once: nothing is
// sent, and the log says why.
TEST_F(MailStepsTest, AStopDuringTheRetrievalCutsTheRequestsAndSendsNothing)
{
  FService.SetFaults({.Bodies = {{"/api/ticket/list/open", -1, {}, 200, TDemoFaults::TDelivery::Never}}});
  TStopRequest stop;
  QTimer::singleShot(300, &stop, [&stop] { stop.Request("SIGTERM"); });
  EXPECT_EQ(Run({.Stop = &stop}), CExitStepFailed);
  const QString log = ReadTextFile(FState->LogFile());
  EXPECT_TRUE(log.contains("the run was stopped (SIGTERM) before")) << log.toStdString();
  EXPECT_TRUE(log.contains(" - ERROR Stopped by SIGTERM during the retrieval: no report was sent")) << log.toStdString();
  EXPECT_TRUE(FRelay.Messages().isEmpty());
}

} // namespace
