#include "gui/TfrmAbout.h"
#include "gui/TfrmMain.h"
#include "state/TMainState.h"
#include "support/OfflineRest.h"
#include "support/TempConfig.h"

#include <QApplication>
#include <QLabel>
#include <QStatusBar>
#include <QTableView>
#include <QTableWidget>
#include <QTimer>
#include <QToolButton>
#include <gtest/gtest.h>

TEST(MainWindow, ShowsEveryStepWithItsCaption)
{
  TTempConfig config;
  TOfflineRest offline;
  TMainState state("quorvex-followup", offline.Rest);
  state.FormCreate();
  TfrmMain window(state);
  window.show();

  EXPECT_EQ(window.windowTitle(), "Quorvex ITSM tickets follow-up");
  EXPECT_EQ(window.size(), QSize(784, 561));

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
    const auto *button = window.findChild<QToolButton *>(name);
    ASSERT_NE(button, nullptr) << name;
    EXPECT_EQ(button->text(), caption) << name;
    EXPECT_TRUE(button->isVisible()) << name;
    EXPECT_FALSE(button->icon().isNull()) << name;
  }
  for (const char *name : {"bbtSaveGrid", "bbtAbout", "bbtClose"}) {
    const auto *button = window.findChild<QToolButton *>(name);
    ASSERT_NE(button, nullptr) << name;
    EXPECT_TRUE(button->text().isEmpty()) << name;
    EXPECT_FALSE(button->toolTip().isEmpty()) << name;
    EXPECT_FALSE(button->icon().isNull()) << name;
  }
  const auto *grid = window.findChild<QTableView *>("asgTickets");
  ASSERT_NE(grid, nullptr);
  EXPECT_TRUE(grid->model() == nullptr || grid->model()->rowCount() == 0);
  state.FormDestroy();
}

TEST(MainWindow, ModeImagesSwapForTheUnattendedRun)
{
  TTempConfig config;
  TOfflineRest offline;
  TMainState state("quorvex-followup", offline.Rest);
  TfrmMain window(state);
  window.show();
  const auto *normal = window.findChild<QLabel *>("imgBigBrother");
  const auto *red = window.findChild<QLabel *>("imgBigBrotherRed");
  ASSERT_TRUE(normal && red);
  EXPECT_TRUE(normal->isVisible());
  EXPECT_FALSE(red->isVisible());
  EXPECT_FALSE(normal->pixmap().isNull());
  window.ShowAutomaticMode(true);
  EXPECT_FALSE(normal->isVisible());
  EXPECT_TRUE(red->isVisible());
}

TEST(MainWindow, CloseButtonClosesTheWindow)
{
  TTempConfig config;
  TOfflineRest offline;
  TMainState state("quorvex-followup", offline.Rest);
  TfrmMain window(state);
  window.show();
  window.bbtClose->click();
  EXPECT_FALSE(window.isVisible());
}

TEST(MainWindow, GetTicketsSaysWhyNothingCame)
{
  TTempConfig config;
  TOfflineRest offline;
  TMainState state("quorvex-followup", offline.Rest);
  state.FormCreate();
  TfrmMain window(state);
  window.show();
  window.bbtGetTickets->click();
  EXPECT_TRUE(window.statusBar()->currentMessage().startsWith("Retrieval incomplete: no organization is selected"))
      << window.statusBar()->currentMessage().toStdString();
  state.FormDestroy();
}

TEST(MainWindow, NoStepStartsOrClosesTheWindowWhileAnotherRuns)
{
  TTempConfig config;
  TOfflineRest offline;
  TMainState state("quorvex-followup", offline.Rest);
  state.FormCreate();
  TfrmMain window(state);
  window.show();
  // While the filters dialog is open, the window's buttons are off and the
  // window stays; they come back once the dialog is gone.
  bool checked = false;
  QTimer::singleShot(0, [&] {
    checked = true;
    EXPECT_FALSE(window.bbtGetTickets->isEnabled());
    EXPECT_FALSE(window.bbtClose->isEnabled());
    EXPECT_FALSE(window.close());
    EXPECT_TRUE(window.isVisible());
    QApplication::activeModalWidget()->close();
  });
  window.bbtFilter->click();
  EXPECT_TRUE(checked);
  EXPECT_TRUE(window.bbtGetTickets->isEnabled());
  EXPECT_TRUE(window.bbtClose->isEnabled());
  EXPECT_TRUE(window.close());
  state.FormDestroy();
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
