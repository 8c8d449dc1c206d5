#include "SmtpTestServer.h"
#include "report/ReportSending.h"
#include "report/gui/TfrmSMTP.h"
#include "tickets/gui/TfrmLoading.h"
#include "support/TempConfig.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

namespace {

tySMTPserver Settings()
{
  return {"mail.vellmor.example", 587, true, "followup@vellmor.example", " pass word ", "leads@vellmor.example",
          "itsm@vellmor.example", "noreply@vellmor.example"};
}

auto Fields(const tySMTPserver &m)
{
  return std::tie(m.Server, m.Port, m.UseSSL, m.UserName, m.Password, m.DefaultTo, m.DefaultCC, m.From);
}

// The dialog's real test, with the recipient answered and what the person is
// told kept instead of shown.
struct TTestRun
{
  QString Answer, Proposed;
  QStringList Informed, Errors;

  TfrmSMTP::TTestActions Actions()
  {
    return {[this](QWidget *, const QString &proposed) { return Proposed = proposed, Answer; }, SendTestMail,
            [this](QWidget *, const QString &text) { Informed.append(text); },
            [this](QWidget *, const QString &text) { Errors.append(text); }};
  }
};

// Clicks the test button and waits while the window's thread runs, until the
// test has ended (the button is back).
void TestAndWait(TfrmSMTP &dialog)
{
  dialog.BitBtn1->click();
  EXPECT_TRUE(QTest::qWaitFor([&dialog] { return dialog.BitBtn1->isEnabled(); }, 30000));
}

} // namespace

// The test sends the gateway test mail with the typed values, off the window's
// thread with the buttons off; Escape does not close the dialog, and a failure
// keeps the values.
TEST(SmtpDialogTest, TestSendsTheTypedValuesOffTheWindowThreadAndAFailureKeepsThem)
{
  TSmtpTestServer server({});
  ASSERT_TRUE(server.Started()) << server.Failure().toStdString();
  TTestRun run;
  TfrmSMTP dialog(nullptr, run.Actions());
  dialog.Fill(Settings());
  dialog.BitBtn1->click(); // no recipient given: no test
  EXPECT_EQ(run.Proposed, "leads@vellmor.example");

  run.Answer = "tester@vellmor.example";
  // Typed, not yet kept: the server on 127.0.0.1, without TLS nor login.
  dialog.ledtServer->setText(" 127.0.0.1 ");
  dialog.ledtPort->setText(QString::number(server.Port()));
  dialog.chkSSL->setChecked(false);
  dialog.ledtUsername->clear();
  const TScopedVariable unreadable("QUORVEX_EXTRA_CA_CERTS", "/nonexistent/ca.pem"); // without encryption none is read
  TestAndWait(dialog);
  const QList<QJsonObject> messages = server.Messages();
  ASSERT_EQ(messages.size(), 1);
  EXPECT_EQ((QVariantList{messages[0]["mail_from"].toString(), messages[0]["rcpt_tos"].toArray().toVariantList(),
                          messages[0]["headers"]["Subject"].toString(), messages[0]["parts"][0]["text"].toString().trimmed()}),
            (QVariantList{"noreply@vellmor.example", QVariantList{"tester@vellmor.example"}, "SMTP gateway test",
                          "This is an SMTP gateway test. If you can read this message, then the gateway is working correctly."}));
  EXPECT_EQ(run.Informed, QStringList{"Check your inbox, the email has been sent."});

  QTcpServer silent; // accepts, never answers
  ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
  dialog.ledtPort->setText(QString::number(silent.serverPort()));
  const tySMTPserver typed = dialog.TypedValues();
  dialog.show();
  bool seen = false;
  QObject::connect(&silent, &QTcpServer::newConnection, [&] {
    seen = true; // the window's thread runs while the server keeps silent
    EXPECT_FALSE(dialog.BitBtn1->isEnabled());
    EXPECT_FALSE(dialog.findChild<QPushButton *>("bbtOk")->isEnabled());
    const auto *progress = dialog.findChild<TfrmLoading *>();
    ASSERT_NE(progress, nullptr);
    EXPECT_TRUE(progress->isVisible());
    QTest::keyClick(&dialog, Qt::Key_Escape);
    silent.nextPendingConnection()->abort(); // the exchange ends with an error
  });
  TestAndWait(dialog);
  EXPECT_TRUE(seen);
  ASSERT_EQ(run.Errors.size(), 1);
  EXPECT_TRUE(run.Errors[0].startsWith(QStringLiteral("Unable to send the mail through 127.0.0.1:%1: ").arg(silent.serverPort())))
      << run.Errors[0].toStdString();
  EXPECT_EQ(run.Informed.size(), 1);
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_EQ(Fields(dialog.TypedValues()), Fields(typed));
}

// OK copies the edited values back; Cancel, nothing.
TEST(SmtpDialogTest, OkCopiesTheEditedValuesBackTrimmingOnlyServerAndUserAndCancelNothing)
{
  for (const bool ok : {false, true}) {
    SCOPED_TRACE(ok);
    tySMTPserver smtp = Settings();
    tyDelivery delivery;
    delivery.SkipWhenClear = true;
    QTimer::singleShot(0, [&] {
      auto *dialog = qobject_cast<TfrmSMTP *>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      dialog->ledtServer->setText(" smtp.other.example\t");
      dialog->ledtUsername->setText(" robot ");
      dialog->ledtDefaultTo->setText(" a@x.example ");
      dialog->ledtPort->setText("99999999999"); // pasted past the digits-only check
      dialog->ledtFrom->setText("robot@other.example");
      dialog->rbtModePersonal->click();
      dialog->chkAttachWorkbook->click();
      dialog->spnEscalateAfter->setValue(3);
      dialog->ledtEscalateTo->setText("boss@x.example");
      ok ? dialog->findChild<QPushButton *>("bbtOk")->click() : dialog->reject();
    });
    EXPECT_EQ(ConfigureSMTPserver(smtp, delivery), ok);
    const tySMTPserver expected = ok ? tySMTPserver{"smtp.other.example", 25, true, "robot", " pass word ",
                                                    " a@x.example ", "itsm@vellmor.example", "robot@other.example"}
                                     : Settings();
    EXPECT_EQ(Fields(smtp), Fields(expected));
    const auto &[mode, skip, attach, followUp] = delivery;
    EXPECT_EQ(std::tuple(mode, skip, attach, followUp.History, followUp.EscalateAfter, followUp.EscalateTo),
              ok ? std::tuple(TDeliveryMode::Personal, true, true, true, 3, QString("boss@x.example"))
                 : std::tuple(TDeliveryMode::Report, true, false, true, 0, QString()));
  }
}
