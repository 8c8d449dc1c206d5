#include "TDemoService.h"
#include "core/ExtraAuthorities.h"
#include "rest/gui/TfrmSetQuorvexItsmConfig.h"

#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QJsonObject>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

namespace {
tyQuorvexITSM Complete() { return {true, "acme", {}, {}, {}, {"id", "s3cret", "api", "pw", 0, 33, "kept"}, 3, {}}; }
} // namespace

TEST(ApiDialog, PreviewFollowsTheHostingModeSecretsAreReadableAndOkNeedsEveryField)
{
  TfrmSetQuorvexItsmConfig dialog;
  dialog.Fill(Complete());
  EXPECT_EQ(dialog.hlblInstance1->text(), "https://<b>acme</b>." QUORVEX_SAAS_DOMAIN);
  dialog.chkSaaS->click();
  EXPECT_EQ(dialog.hlblInstance1->text(), "https://<b>acme</b>");
  EXPECT_EQ(dialog.ledtClientSecret->echoMode(), QLineEdit::Normal);
  EXPECT_EQ(dialog.ledtClientSecret->text(), "s3cret");
  EXPECT_TRUE(dialog.bbtOk->isEnabled());

  // Every field is needed, and blanks are no value.
  for (QLineEdit *edit : {dialog.edtInstance, dialog.ledtClientID, dialog.ledtClientSecret,
                          dialog.ledtApiOperatorUsername, dialog.ledtApiOperatorPassword}) {
    const QString kept = edit->text();
    edit->setText("   ");
    EXPECT_FALSE(dialog.bbtOk->isEnabled()) << edit->objectName().toStdString();
    edit->setText(kept);
  }
  dialog.ledtApiOperatorPassword->setText("  pw ");
  EXPECT_TRUE(dialog.bbtOk->isEnabled());

  EXPECT_EQ(dialog.spnParallelRequests->value(), 3);
  dialog.spnParallelRequests->setValue(12);
  tyQuorvexITSM settings = Complete();
  dialog.CopyTo(settings);
  // At most 8 requests; the password as typed; the token state is not the dialog's.
  EXPECT_EQ(std::tuple(settings.ParallelRequests, settings.API.Password, settings.API.Token, settings.API.TokenValidity),
            std::tuple(8, QString("  pw "), QString("kept"), 33));
}

TEST(ApiDialog, OkFollowsEveryKeystrokeSoThatEnterConfirmsAndCancelChangesNothing)
{
  for (const bool ok : {false, true}) {
    tyQuorvexITSM settings;
    QTimer::singleShot(0, [ok] {
      auto *dialog = qobject_cast<TfrmSetQuorvexItsmConfig *>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      for (QLineEdit *edit : {dialog->edtInstance, dialog->ledtClientID, dialog->ledtClientSecret,
                              dialog->ledtApiOperatorUsername})
        QTest::keyClicks(edit, "v");
      EXPECT_FALSE(dialog->bbtOk->isEnabled());
      QTest::keyClicks(dialog->ledtApiOperatorPassword, "p"); // the focus never left the field
      EXPECT_TRUE(dialog->bbtOk->isEnabled());
      ok ? QTest::keyClick(dialog->ledtApiOperatorPassword, Qt::Key_Return) : dialog->reject();
    });
    EXPECT_EQ(SetQuorvexItsmConfig(settings), ok);
    EXPECT_EQ(settings.API.Password, ok ? "p" : "");
  }
}

// "Test connection" asks the service typed in the dialog for a token, trusting
// the authorities file typed there too, and says in one line what happened.
TEST(ApiDialog, TestConnectionAsksForATokenWithTheTypedValuesAndSaysWhatHappened)
{
  TDemoService service(QJsonObject{{"credentials", QJsonObject{{"clientId", "id"}, {"clientSecret", "s3cret"},
                                                                {"username", "api"}, {"password", "pw"}}}});
  service.Listen();
  QTemporaryDir folder;
  const QString authorities = folder.filePath("ca.pem");
  QFile pem(authorities);
  ASSERT_TRUE(pem.open(QIODevice::WriteOnly) && pem.write(service.CertificatePem()) > 0);
  pem.close();
  const auto forget = qScopeGuard([] { SetConfiguredAuthorities({}); });

  TfrmSetQuorvexItsmConfig dialog;
  dialog.Fill(Complete());
  dialog.chkSaaS->setChecked(false);
  dialog.edtInstance->setText(service.Instance());
  dialog.edtCaFile->setText(authorities);
  for (const bool refused : {false, true}) {
    TDemoFaults faults;
    faults.RefuseToken = refused;
    service.SetFaults(faults);
    QTest::mouseClick(dialog.btnTest, Qt::LeftButton);
    EXPECT_TRUE(QTest::qWaitFor([&dialog] { return dialog.btnTest->isEnabled(); }, 20000));
    EXPECT_TRUE(dialog.lblTest->text().startsWith(
        refused ? service.Instance() + " answered HTTP 401"
                : "The connection works: https://" + service.Instance() + " gave a token."))
        << dialog.lblTest->text().toStdString();
  }
  EXPECT_TRUE(dialog.bbtOk->isEnabled());
  EXPECT_EQ(ConfiguredAuthorities(), "") << "the settings in force keep their authorities";
}

// A first start leaves the instance and the hosting mode to choose: "acme" is
// only an example.
TEST(ApiDialog, AFirstStartOffersAnExampleAndSavesNoneOfIt)
{
  tyQuorvexITSM defaults;
  defaults.SaaS = true;
  defaults.Instance = "acme";
  TfrmSetQuorvexItsmConfig dialog;
  dialog.Fill(defaults, true);
  EXPECT_EQ(std::tuple(dialog.edtInstance->text(), dialog.edtInstance->placeholderText(), dialog.chkSaaS->isChecked()),
            std::tuple(QString(), QString("acme"), false));
  dialog.Fill(Complete()); // a later start shows what was saved
  EXPECT_EQ(std::pair(dialog.edtInstance->text(), dialog.chkSaaS->isChecked()), std::pair(QString("acme"), true));
}
