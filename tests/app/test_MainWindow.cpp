#include "gui/TfrmAbout.h"
#include "gui/TfrmMain.h"
#include "state/TMainState.h"
#include "support/OfflineRest.h"
#include "support/TempConfig.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QStatusBar>
#include <QTableView>
#include <QTableWidget>
#include <QTimer>
#include <QToolButton>
#include <gtest/gtest.h>
#include <memory>

namespace {

// The main window shown over a state whose settings were read from an empty
// settings folder, with a service client that never goes on the network.
class MainWindow : public ::testing::Test
{
protected:
  MainWindow()
  {
    FState.FormCreate();
    FWindow = std::make_unique<TfrmMain>(FState);
    FWindow->show();
  }
  ~MainWindow() override
  {
    FWindow.reset();
    FState.FormDestroy();
  }

  TTempConfig FConfig;
  TOfflineRest FOffline;
  TMainState FState{"quorvex-followup", FOffline.Rest};
  std::unique_ptr<TfrmMain> FWindow;
};

} // namespace

TEST_F(MainWindow, ShowsEveryStepWithItsCaption)
{
  EXPECT_EQ(FWindow->windowTitle(), "Quorvex ITSM tickets follow-up");
  EXPECT_EQ(FWindow->size(), QSize(784, 561));

  const QList<std::pair<const char *, QString>> captions{
      {"bbtQuorvexItsmApi", "Quorvex ITSM API"},
      {"bbtGET_Organization_List", "Organizations && Teams"},
      {"bbtGetTickets", "Get tickets"},
      {"bbtGenerateMail", "Generate Mail"},
      {"bbtSendMail", "Send Mail"},
      {"bbtSmtpServer", "SMPT Server"},
      {"bbtTexts", "Texts"},
      {"bbtFilter", "Filters"},
      {"bbtStatusAndProperties", "Status && Priorities"},
  };
  for (const auto &[name, caption] : captions) {
    const auto *button = FWindow->findChild<QToolButton *>(name);
    ASSERT_NE(button, nullptr) << name;
    EXPECT_EQ(button->text(), caption) << name;
    EXPECT_TRUE(button->isVisible()) << name;
    EXPECT_FALSE(button->icon().isNull()) << name;
  }
  for (const char *name : {"bbtSaveGrid", "bbtAbout", "bbtClose"}) {
    const auto *button = FWindow->findChild<QToolButton *>(name);
    ASSERT_NE(button, nullptr) << name;
    EXPECT_TRUE(button->text().isEmpty()) << name;
    EXPECT_FALSE(button->toolTip().isEmpty()) << name;
    EXPECT_FALSE(button->icon().isNull()) << name;
  }
  const auto *grid = FWindow->findChild<QTableView *>("asgTickets");
  ASSERT_NE(grid, nullptr);
  EXPECT_TRUE(grid->model() == nullptr || grid->model()->rowCount() == 0);
}

TEST_F(MainWindow, ModeImagesSwapForTheUnattendedRun)
{
  const auto *normal = FWindow->findChild<QLabel *>("imgBigBrother");
  const auto *red = FWindow->findChild<QLabel *>("imgBigBrotherRed");
  ASSERT_TRUE(normal && red);
  EXPECT_TRUE(normal->isVisible());
  EXPECT_FALSE(red->isVisible());
  EXPECT_FALSE(normal->pixmap().isNull());
  FWindow->ShowAutomaticMode(true);
  EXPECT_FALSE(normal->isVisible());
  EXPECT_TRUE(red->isVisible());
}

TEST_F(MainWindow, CloseButtonClosesTheWindow)
{
  FWindow->bbtClose->click();
  EXPECT_FALSE(FWindow->isVisible());
}

TEST_F(MainWindow, AFailedGetTicketsSaysWhyInAMessageBoxAndTheStatusBar)
{
  QString shown;
  QTimer::singleShot(0, [&] {
    auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
    ASSERT_NE(box, nullptr);
    shown = box->text();
    box->accept();
  });
  FWindow->bbtGetTickets->click();
  EXPECT_EQ(shown, "\"Get tickets\" could not be completed.\n\nGet tickets: no organization is selected; choose them "
                   "with \"Organizations & Teams\".");
  EXPECT_EQ(FWindow->statusBar()->currentMessage(),
            "Retrieval failed, no ticket has been retrieved yet. Get tickets: no organization is selected; choose "
            "them with \"Organizations & Teams\"");
}

TEST_F(MainWindow, NoStepStartsOrClosesTheWindowWhileAnotherRuns)
{
  // While the filters dialog is open, the window's buttons are off and the
  // window stays; they come back once the dialog is gone.
  bool checked = false;
  QTimer::singleShot(0, [&] {
    checked = true;
    EXPECT_FALSE(FWindow->bbtGetTickets->isEnabled());
    EXPECT_FALSE(FWindow->bbtClose->isEnabled());
    EXPECT_FALSE(FWindow->close());
    EXPECT_TRUE(FWindow->isVisible());
    QApplication::activeModalWidget()->close();
  });
  FWindow->bbtFilter->click();
  EXPECT_TRUE(checked);
  EXPECT_TRUE(FWindow->bbtGetTickets->isEnabled());
  EXPECT_TRUE(FWindow->bbtClose->isEnabled());
  EXPECT_TRUE(FWindow->close());
}

TEST(AboutBox, NamesTheProgramAndListsTheLibrariesWithTheirVersions)
{
  TfrmAbout about;
  const auto *text = about.findChild<QLabel *>("lblAbout");
  ASSERT_NE(text, nullptr);
  EXPECT_TRUE(text->text().contains("Quorvex ITSM ticket tracking")) << text->text().toStdString();
  EXPECT_TRUE(text->text().contains(QStringLiteral("Version %1").arg(QUORVEX_VERSION)));

  TfrmLibraries libraries;
  const auto *table = libraries.findChild<QTableWidget *>("tblLibraries");
  ASSERT_NE(table, nullptr);
  QStringList names;
  for (int row = 0; row < table->rowCount(); ++row) {
    names << table->item(row, 0)->text();
    EXPECT_FALSE(table->item(row, 1)->text().trimmed().isEmpty()) << names.last().toStdString();
  }
  EXPECT_EQ(names, (QStringList{"Qt", "OpenSSL", "libcurl", "libxlsxwriter", "SimpleIni"}));
  // Versions read from the libraries the program runs on.
  EXPECT_EQ(table->item(0, 1)->text(), QString::fromLatin1(qVersion()));
}
