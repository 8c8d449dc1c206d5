#include "ReportTestData.h"
#include "SmtpTestServer.h"
#include "report/DeliveryPlan.h"
#include "report/MailAddress.h"
#include "report/OperatorAddresses.h"
#include "report/ReportWorkbook.h"
#include "support/TempConfig.h"
#include "tickets/ColourStore.h"
#include "tickets/Selection.h"

#include <QJsonArray>
#include <gtest/gtest.h>

namespace {

const QDateTime CNow(QDate(2026, 11, 24), QTime(7, 0));

TEST(MailAddress, OnlyOneWellFormedMailboxBecomesAnAddrSpec)
{
  const struct
  {
    QString text;
    QString address; // the addr-spec, or empty when refused
    QString refusal; // part of the reason
  } cases[] = {
      {"alice@example.test", "alice@example.test", ""},
      {"  Alice@Example.test ", "Alice@Example.test", ""},
      {"\"Alice\" <alice@example.test>", "alice@example.test", ""},
      {"alice@example.test (desk)", "alice@example.test", ""},
      {"alice@example.test>\r\nRSET\r\nMAIL FROM:<noreply@example.test>\r\nRCPT TO:<evil@attacker.test>", "",
       "control character"},
      {QStringLiteral("alice@example.test") + QChar(0) + "evil@attacker.test", "", "control character"},
      {"alice@example.test, evil@attacker.test", "", "more than one address"},
      {"team: alice@example.test, bob@example.test;", "", "group"},
      {"<@relay.example:alice@example.test>", "", "source route"},
      {"alice", "", "no local part or no domain"},
      {"", "", "not a mail address"},
      {QString(250, 'a') + "@example.test", "", "longer than 254 octets"},
  };
  for (const auto &c : cases) {
    const TParsedAddress parsed = ParseMailbox(c.text);
    EXPECT_EQ(parsed.Address.value_or(QString()), c.address) << c.text.toStdString();
    EXPECT_TRUE(parsed.Refusal.contains(c.refusal)) << c.text.toStdString() << ": " << parsed.Refusal.toStdString();
  }
}

TEST(MailAddress, OperatorsKeepOnlyUsableAddressesAndTheOthersAreNamed)
{
  tyRestOperators operators{ReportOperator(7, "alice@example.test>\r\nRCPT TO:<evil@attacker.test>"),
                             ReportOperator(8, "\"Bob\" <Bob@example.test>"), ReportOperator(9, "")};
  operators[0].login = "alice";
  const QStringList warnings = KeepUsableAddresses(operators);
  EXPECT_EQ((QStringList{operators[0].notificationEmail, operators[1].notificationEmail, operators[2].notificationEmail}),
            (QStringList{"", "Bob@example.test", ""}));
  ASSERT_EQ(warnings.size(), 1);
  EXPECT_TRUE(warnings[0].startsWith("Operator 7 (alice), field notificationEmail: the address \"alice@example.test>"
                                     "\\x0d\\x0aRCPT TO:<evil@attacker.test>\" is not used"))
      << warnings[0].toStdString();
}

// Team 10 holds Ann and Bob; ticket 1 is unassigned in it, ticket 2 is Bob's
// and without update.
class DeliveryPlanTest : public ::testing::Test
{
protected:
  DeliveryPlanTest()
  {
    for (const auto &[id, user, daysSinceUpdate] : {std::tuple{1, 0, 1}, {2, 2, 30}}) {
      FIn.Tickets.append(ReportTicket(id, "INCIDENT", CNow.addDays(-2).toString(Qt::ISODate),
                                      CNow.addDays(-daysSinceUpdate).toString(Qt::ISODate)));
      FIn.Tickets.last().assignedUser = {user, user ? "Bob" : ""};
    }
    // Ann's address as typed; the report lists it in lower case.
    FIn.Operators = {ReportOperator(1, "Ann@Example.test"), ReportOperator(2, "bob@example.test")};
    for (tyRestOperator &op : FIn.Operators)
      op.teams = {{10, "Desk"}};
    FIn.TeamsOperators = UpdateListTeamsOperators(FIn.Operators);
    FSmtp.DefaultTo = "leads@example.test, Leads@Example.test";
    FSmtp.DefaultCC = "LEADS@example.test; boss@example.test; ann@example.test";
  }

  TDeliveryPlan Plan(TDeliveryMode mode)
  {
    tyDelivery delivery;
    delivery.Mode = mode;
    return PlanDelivery(FIn, delivery, FSmtp, FColours, [] { return CNow; });
  }

  TTempConfig FConfig;
  TColourStore FColours{FConfig.File("q.ini")};
  TReportInput FIn = ReportInput(CNow);
  tySMTPserver FSmtp;
};

// Each mail: "To | Cc | rows".
QStringList Mails(const TDeliveryPlan &plan)
{
  QStringList mails;
  for (const TReportMail &mail : plan.Mails)
    mails.append(mail.To.join(',') + " | " + mail.Cc.join(',') + " | " + QString::number(mail.RowCount()));
  return mails;
}

TEST_F(DeliveryPlanTest, EachModeAddressesEveryoneOnceWhateverTheCase)
{
  EXPECT_EQ(Mails(Plan(TDeliveryMode::Report)),
            QStringList{"leads@example.test | boss@example.test,ann@example.test | 2"});
  EXPECT_EQ(Mails(Plan(TDeliveryMode::Concerned)),
            QStringList{"ann@example.test,bob@example.test | leads@example.test,boss@example.test | 2"});
  // The full report first, then one digest per person with their rows only.
  const TDeliveryPlan personal = Plan(TDeliveryMode::Personal);
  EXPECT_EQ(Mails(personal), (QStringList{"leads@example.test | boss@example.test,ann@example.test | 2",
                                          "ann@example.test |  | 1", "bob@example.test |  | 2"}));
  // A digest opens with its person's counts and says nothing of a section
  // without their rows: "All tickets have been updated recently" would read
  // as if the whole desk were clear.
  const QString ann = personal.Mails[1].Report.Text;
  EXPECT_TRUE(ann.contains("Your tickets in the Quorvex ITSM follow-up of 24.11.2026: 1 unassigned, 0 without update, "
                           "0 with ten exchanges."))
      << ann.toStdString();
  EXPECT_FALSE(ann.contains("updated recently")) << ann.toStdString();
  EXPECT_FALSE(personal.Mails[0].Report.Text.contains("Your tickets"));
  EXPECT_EQ(Confirmation(personal.Mails, TDeliveryMode::Personal).Summary,
            "3 mail(s): 2 personal digest(s) and the full report to leads@example.test");
}

TEST_F(DeliveryPlanTest, WithoutAnyoneConcernedTheDefaultsReceiveTheReport)
{
  FIn.Operators.clear();
  FIn.TeamsOperators.clear();
  FSmtp.DefaultTo = "leads@example.test;,, bad\r\nRCPT TO:<e@v.test>"; // each entry the list drops is named
  const TDeliveryPlan concerned = Plan(TDeliveryMode::Concerned);
  EXPECT_EQ(Mails(concerned), QStringList{"leads@example.test | boss@example.test,ann@example.test | 2"});
  EXPECT_EQ(concerned.Warnings, QStringList{"[SMTP] DefaultTo: the address \"bad\\x0d\\x0aRCPT TO:<e@v.test>\" is not used: "
                                            "it holds a control character (a line break, NUL or the like)"});
  EXPECT_EQ(Mails(Plan(TDeliveryMode::Personal)), QStringList{"leads@example.test | boss@example.test,ann@example.test | 2"});
}

TEST_F(DeliveryPlanTest, SkipWhenClearSendsNothingOnlyForACompleteEmptyReport)
{
  tyDelivery delivery;
  delivery.SkipWhenClear = true;
  FIn.Tickets.clear();
  EXPECT_TRUE(PlanDelivery(FIn, delivery, FSmtp, FColours, [] { return CNow; }).Mails.isEmpty());
  FIn.RetrievalWarning = "incomplete";
  EXPECT_EQ(PlanDelivery(FIn, delivery, FSmtp, FColours, [] { return CNow; }).Mails.size(), 1);
}

// The workbook a mail carries has a sheet for each section of that mail with
// rows, and those rows only (what a sheet holds: the Workbooks tests).
TEST_F(DeliveryPlanTest, TheAttachedWorkbookHoldsTheSectionsOfItsMailOnly)
{
  const TReportMail digest = Plan(TDeliveryMode::Personal).Mails[1]; // Ann's only row is unassigned
  const QJsonArray sheets = ReadWorkbook(ReportWorkbook(digest.Report, FColours));
  ASSERT_EQ(sheets.size(), 1);
  EXPECT_EQ(std::tuple(sheets[0]["name"].toString(), sheets[0]["rows"].toArray().size()),
            std::tuple(QString("Unassigned"), 2));
}

} // namespace
