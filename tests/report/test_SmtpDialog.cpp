#include "SmtpTestServer.h"
#include "report/MailSender.h"
#include "report/gui/TfrmSMTP.h"
#include "tickets/gui/TfrmLoading.h"
#include "support/TempConfig.h"

#include <QSpinBox>
#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScopeGuard>
#include <QTest>
#include <QThread>
#include <QTimer>
#include <QValidator>
#include <atomic>
#include <gtest/gtest.h>

namespace {

tySMTPserver Settings()
{
  return {"mail.vellmor.example", 587, true, "followup@vellmor.example", " pass word ", "leads@vellmor.example",
          "itsm@vellmor.example", "noreply@vellmor.example"};
}

bool Same(const tySMTPserver &a, const tySMTPserver &b)
{
  return a.Server == b.Server && a.Port == b.Port && a.UseSSL == b.UseSSL && a.UserName == b.UserName &&
         a.Password == b.Password && a.DefaultTo == b.DefaultTo && a.DefaultCC == b.DefaultCC && a.From == b.From;
}

// Test actions that record what the dialog did.
struct TRecorder
{
  QString Answer;
  QString Proposed;
  QList<std::pair<tySMTPserver, QString>> Sent;
  QString Failure; // raised by Send when set
  QStringList Informed;
  QStringList Errors;

  TfrmSMTP::TTestActions Actions()
  {
    return {[this](QWidget *, const QString &proposed) {
              Proposed = proposed;
              return Answer;
            },
            [this](const tySMTPserver &smtp, const QString &recipient) {
              if (!Failure.isEmpty())
                throw ESmtpError(Failure);
              Sent.append({smtp, recipient});
            },
            [this](QWidget *, const QString &text) { Informed.append(text); },
            [this](QWidget *, const QString &text) { Errors.append(text); }};
  }
};

} // namespace

TEST(SmtpDialogTest, TestSendsTheTypedValuesConfirmsAndAFailureKeepsTheValues)
{
  TRecorder recorder;
  TfrmSMTP dialog(nullptr, recorder.Actions());
  dialog.Fill(Settings());
  dialog.BitBtn1->click(); // no recipient given: no test
  EXPECT_EQ(recorder.Proposed, "leads@vellmor.example");
  EXPECT_TRUE(recorder.Sent.isEmpty() && recorder.Informed.isEmpty());

  recorder.Answer = "tester@vellmor.example";
  dialog.ledtServer->setText("typed.example");
  dialog.BitBtn1->click();
  ASSERT_EQ(recorder.Sent.size(), 1);
  EXPECT_EQ(recorder.Sent[0].first.Server, "typed.example");
  EXPECT_EQ(recorder.Sent[0].second, "tester@vellmor.example");
  EXPECT_EQ(recorder.Informed, QStringList{"Check your inbox, the email has been sent."});

  recorder.Failure = "Unable to send the mail through mail.vellmor.example:587: Login denied";
  dialog.ledtServer->setText("mail.vellmor.example");
  dialog.show();
  dialog.BitBtn1->click();
  EXPECT_EQ(recorder.Errors, QStringList{recorder.Failure});
  EXPECT_EQ(recorder.Informed.size(), 1);
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_TRUE(Same(dialog.Values(), Settings()));
}

TEST(SmtpDialogTest, TestRunsOffTheWindowThreadWithTheButtonsOff)
{
  TRecorder recorder;
  recorder.Answer = "tester@vellmor.example";
  TfrmSMTP::TTestActions actions = recorder.Actions();
  std::atomic<bool> released = false;
  actions.Send = [&released](const tySMTPserver &, const QString &) {
    while (!released)
      QThread::msleep(5);
  };
  TfrmSMTP dialog(nullptr, actions);
  dialog.Fill(Settings());
  dialog.show();
  bool seen = false;
  QTimer::singleShot(0, [&] {
    const auto release = qScopeGuard([&released] { released = true; });
    seen = true; // the window thread runs while the server is slow
    EXPECT_FALSE(dialog.BitBtn1->isEnabled());
    EXPECT_FALSE(dialog.findChild<QPushButton *>("bbtOk")->isEnabled());
    const auto *progress = dialog.findChild<TfrmLoading *>();
    ASSERT_NE(progress, nullptr);
    EXPECT_TRUE(progress->isVisible());
    EXPECT_EQ(progress->Step(), QString::fromUtf8("Sending to mail.vellmor.example:587…"));
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_TRUE(dialog.isVisible());
  });
  QTest::mouseClick(dialog.BitBtn1, Qt::LeftButton);
  EXPECT_TRUE(seen);
  EXPECT_TRUE(dialog.BitBtn1->isEnabled());
  EXPECT_EQ(recorder.Informed, QStringList{"Check your inbox, the email has been sent."});
}

TEST(SmtpDialogTest, CancelAfterARealTestLeavesTheSettingsUnchanged)
{
  TSmtpTestServer server({});
  ASSERT_TRUE(server.Started()) << server.Failure().toStdString();
  TfrmSMTP::TTestActions actions = TfrmSMTP::DefaultTestActions();
  actions.AskRecipient = [](QWidget *, const QString &) { return QStringLiteral("tester@vellmor.example"); };
  QStringList informed;
  actions.Inform = [&](QWidget *, const QString &text) { informed.append(text); };

  tySMTPserver smtp = Settings();
  QTimer::singleShot(0, [&] {
    auto *dialog = qobject_cast<TfrmSMTP *>(QApplication::activeModalWidget());
    ASSERT_NE(dialog, nullptr);
    dialog->ledtServer->setText(" 127.0.0.1 ");
    dialog->ledtPort->setText(QString::number(server.Port()));
    dialog->chkSSL->setChecked(false);
    dialog->ledtUsername->clear();
    dialog->BitBtn1->click();
    dialog->reject();
  });
  tyDelivery delivery;
  EXPECT_FALSE(ConfigureSMTPserver(smtp, delivery, nullptr, actions));

  EXPECT_TRUE(Same(smtp, Settings()));
  EXPECT_EQ(informed, QStringList{"Check your inbox, the email has been sent."});
  EXPECT_EQ(server.Messages().size(), 1);
}

TEST(SmtpDialogTest, OkCopiesTheEditedValuesBackTrimmingOnlyServerAndUser)
{
  tySMTPserver smtp = Settings();
  tyDelivery delivery;
  delivery.SkipWhenClear = true;
  QTimer::singleShot(0, [] {
    auto *dialog = qobject_cast<TfrmSMTP *>(QApplication::activeModalWidget());
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(dialog->rbtModeReport->isChecked());
    EXPECT_TRUE(dialog->chkSkipWhenClear->isChecked());
    dialog->ledtServer->setText(" smtp.other.example\t");
    dialog->ledtUsername->setText(" robot ");
    dialog->ledtDefaultTo->setText(" a@x.example ");
    dialog->ledtPort->setText("99999999999"); // pasted past the digits-only check
    QString typed = "12a";
    int position = 3;
    EXPECT_EQ(dialog->ledtPort->validator()->validate(typed, position), QValidator::Invalid);
    dialog->ledtFrom->setText("robot@other.example");
    dialog->rbtModePersonal->click();
    dialog->chkAttachWorkbook->click();
    EXPECT_TRUE(dialog->chkHistory->isChecked());
    dialog->spnEscalateAfter->setValue(3);
    dialog->ledtEscalateTo->setText("boss@x.example");
    dialog->findChild<QPushButton *>("bbtOk")->click();
  });
  EXPECT_TRUE(ConfigureSMTPserver(smtp, delivery));
  EXPECT_EQ(smtp.Server, "smtp.other.example");
  EXPECT_EQ(smtp.UserName, "robot");
  EXPECT_EQ(smtp.Password, " pass word ");
  EXPECT_EQ(smtp.DefaultTo, " a@x.example ");
  EXPECT_EQ(smtp.Port, 25);
  EXPECT_EQ(smtp.From, "robot@other.example");
  EXPECT_EQ(delivery.Mode, TDeliveryMode::Personal);
  EXPECT_TRUE(delivery.SkipWhenClear);
  EXPECT_TRUE(delivery.AttachWorkbook);
  EXPECT_EQ(std::tuple(delivery.FollowUp.History, delivery.FollowUp.EscalateAfter, delivery.FollowUp.EscalateTo),
            std::tuple(true, 3, QString("boss@x.example")));
}
