// The unattended run against a service that misbehaves: it ends, within the
// time-out, with a log line naming what went wrong and the status of an
// incomplete retrieval.

#include "StepsFixture.h"

#include <chrono>

class ServiceFaultsTest : public StepsFixture
{
protected:
  ServiceFaultsTest()
  {
    SelectAll();
    FRest->SetTimeout(std::chrono::milliseconds(500));
  }

  // Runs the dry run with the fault on the first page of every ticket query and
  // returns the saved run log.
  QString RunWith(const QByteArray &body, int status, TDemoFaults::TDelivery delivery)
  {
    FService.SetFaults({.Bodies = {{"/api/ticket/list/open", 0, body, status, delivery}}});
    EXPECT_EQ(Run({.DryRun = true}), CExitIncomplete);
    EXPECT_TRUE(FState->ReportHtml().join('\n').contains("WARNING"));
    EXPECT_TRUE(FState->ReportHtml().join('\n').contains("This could not be checked"));
    return ReadTextFile(FState->LogFile());
  }

  QString TicketsUrl() const { return "https://" + FService.Instance() + "/api/ticket/list/open"; }
};

// Each fault on the first page of the ticket queries and the log line it gives;
// an answer above the limit is refused before it fills the memory.
TEST_F(ServiceFaultsTest, EachFaultOfTheServiceIsNamedInTheLog)
{
  const QString instance = FService.Instance();
  const struct
  {
    const char *Case;
    QByteArray Body;
    int Status;
    TDemoFaults::TDelivery Delivery;
    QString Logged;
  } cases[] = {
      {"never answers", "{}", 200, TDemoFaults::TDelivery::Never,
       "no answer from " + instance + " within 0.5 s (time-out); check the network, or try again later [" +
           TicketsUrl() + "]"},
      {"internal error", R"({"error":"internal"})", 500, TDemoFaults::TDelivery::Whole,
       instance + " answered HTTP 500 Internal Server Error: the service has a problem of its own; try again "
                  "later, and tell its administrator if it lasts [" + TicketsUrl() + "]"},
      {"cut mid-body", R"({"content":[{"id":1,"title":"cut"}],"totalNumberOfElements":1,"totalNumberOfPages":1})",
       200, TDemoFaults::TDelivery::CutMidBody,
       instance + " closed the connection before the whole answer came; try again later [" + TicketsUrl()},
      {"above the limit", "[" + QByteArray(50 << 20, ' ') + "]", 200, TDemoFaults::TDelivery::Whole,
       "the answer of " + instance + " exceeds 32 MiB and was refused"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.Case);
    const QString log = RunWith(c.Body, c.Status, c.Delivery);
    EXPECT_TRUE(log.contains(" - ERROR Acme / open tickets: " + c.Logged)) << log.toStdString();
  }
}
