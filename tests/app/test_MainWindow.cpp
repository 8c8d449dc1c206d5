#include "report/SmtpTestServer.h"
#include "gui/TfrmMain.h"
#include "state/TMainState.h"
#include "support/OfflineRest.h"
#include "support/TempConfig.h"
#include "tickets/SelectionSettings.h"
#include "tickets/TicketsModel.h"
#include "tickets/gui/TfrmLoading.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QLabel>
#include <QMenu>
#include <QRadioButton>
#include <QMessageBox>
#include <QStatusBar>
#include <QTableView>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>
#include <QElapsedTimer>
#include <QPushButton>
#include <cstdio>
#include <QToolButton>
#include <QIcon>
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

  // Clicks a step's button and lets the window's thread run until the step ended
  // (the buttons are back).
  void ClickStep(QToolButton *button)
  {
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_TRUE(QTest::qWaitFor([this] { return FWindow->bbtGetTickets->isEnabled(); }, 30000));
  }

  void SetSmtp(const tySMTPserver &smtp)
  {
    FState.EditMailSettings([&smtp](tySMTPserver &edited, tyDelivery &) { edited = smtp; return true; });
  }

  TTempConfig FConfig;
  TOfflineRest FOffline;
  TMainState FState{"quorvex-followup", FOffline.Rest};
  std::unique_ptr<TfrmMain> FWindow;
};

// Answers the next message box once it shows, with its button `answer` or else
// Escape, and keeps its text.
void CloseNextMessageBox(QString *text, const QString &answer = {})
{
  auto *poll = new QTimer;
  QObject::connect(poll, &QTimer::timeout, [poll, text, answer] {
    if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
      poll->deleteLater();
      poll->stop();
      *text = box->text();
      for (QAbstractButton *button : box->buttons())
        if (button->text() == answer)
          return QTest::mouseClick(button, Qt::LeftButton);
      QTest::keyClick(box, Qt::Key_Escape);
    }
  });
  poll->start(10);
}

const TfrmLoading *VisibleProgress(const QWidget *window)
{
  for (const TfrmLoading *progress : window->findChildren<TfrmLoading *>())
    if (progress->isVisible())
      return progress;
  return nullptr;
}

tyRestTicket Ticket(std::int32_t id, const QString &title, bool tenExchanges)
{
  tyRestTicket ticket;
  ticket._type = "INCIDENT";
  ticket.id = id;
  ticket.title = title;
  ticket.creationDate = "2024-03-15T08:30:00.000Z";
  ticket.lastUpdate = "2024-03-16T08:30:00.000Z";
  ticket.tenExchangesAdded = tenExchanges;
  return ticket;
}

} // namespace

TEST_F(MainWindow, AFirstStartGuidesAndPointsToTheServiceSettings)
{
  EXPECT_TRUE(FWindow->findChild<QLabel *>("lblGuide")->isVisible());
  EXPECT_FALSE(FWindow->findChild<QTableView *>("asgTickets")->isVisible());
  for (QToolButton *step : {FWindow->bbtGetTickets, FWindow->bbtGET_Organization_List,
                            FWindow->bbtStatusAndProperties}) {
    QString shown;
    CloseNextMessageBox(&shown);
    ClickStep(step);
    EXPECT_EQ(shown, "Enter the service's address and API account in 'Quorvex ITSM API' first");
    EXPECT_EQ(FWindow->statusBar()->currentMessage(), shown) << step->objectName().toStdString();
  }
  // The guidance offers to open the dialog it names.
  QString shown;
  CloseNextMessageBox(&shown, "Open \"Quorvex ITSM API\"");
  bool opened = false;
  auto *poll = new QTimer(FWindow.get());
  QObject::connect(poll, &QTimer::timeout, [poll, &opened] {
    if (QWidget *dialog = QApplication::activeModalWidget(); dialog && dialog->objectName() == "frmSetQuorvexItsmConfig") {
      opened = true;
      poll->stop();
      QTest::keyClick(dialog, Qt::Key_Escape);
    }
  });
  poll->start(10);
  ClickStep(FWindow->bbtGetTickets);
  EXPECT_TRUE(QTest::qWaitFor([&opened] { return opened; }, 5000));
}

TEST_F(MainWindow, EachStepEndsWithALineSayingWhatItDid)
{
  TSmtpTestServer server({});
  ASSERT_TRUE(server.Started()) << server.Failure().toStdString();
  SetSmtp({"127.0.0.1", server.Port(), false, "", "", "leads@vellmor.example", "itsm@vellmor.example", ""});
  EXPECT_FALSE(FWindow->bbtSendMail->isEnabled()); // no report yet
  EXPECT_FALSE(FWindow->bbtSaveGrid->isEnabled()); // no ticket yet

  // Before any retrieval a report would check nothing: none is built.
  QString refused;
  CloseNextMessageBox(&refused);
  ClickStep(FWindow->bbtGenerateMail);
  EXPECT_TRUE(refused.contains("Generate Mail: no ticket has been retrieved yet: \"Get tickets\" first"))
      << refused.toStdString();
  EXPECT_FALSE(FWindow->bbtSendMail->isEnabled());

  FState.SetTicketsForTest({}); // a retrieval that found nothing open
  ClickStep(FWindow->bbtGenerateMail);
  // No browser on this platform: the path is shown all the same.
  EXPECT_EQ(FWindow->statusBar()->currentMessage(),
            "No browser could be started; the report is written to " + FState.ReportFile());

  ASSERT_TRUE(FWindow->bbtSendMail->isEnabled());
  ClickStep(FWindow->bbtSendMail);
  EXPECT_TRUE(FWindow->statusBar()->currentMessage().startsWith(
      QStringLiteral("Report sent to leads@vellmor.example and itsm@vellmor.example through 127.0.0.1:%1 at ")
          .arg(server.Port())))
      << FWindow->statusBar()->currentMessage().toStdString();
  EXPECT_EQ(server.Messages().size(), 1);

  // The same report again the same day: the person is asked, and Escape skips it.
  QString asked;
  CloseNextMessageBox(&asked);
  ClickStep(FWindow->bbtSendMail);
  EXPECT_EQ(asked, "1 mail(s) of this report were already delivered today to the same people.");
  EXPECT_TRUE(FWindow->statusBar()->currentMessage().startsWith("Already sent at "))
      << FWindow->statusBar()->currentMessage().toStdString();
  EXPECT_EQ(server.Messages().size(), 1);
  asked.clear();
  CloseNextMessageBox(&asked, "Send again");
  ClickStep(FWindow->bbtSendMail);
  EXPECT_FALSE(asked.isEmpty());
  EXPECT_EQ(server.Messages().size(), 2);
}

// Sorting and searching change the view only. "Save the grid" with the search
// on asks whether to save all the tickets or those shown (Enter: those shown,
// Escape: nothing), proposes a dated name, adds ".xlsx" and keeps the grid's order.
TEST_F(MainWindow, TheGridSortsAndSearchesItsViewAndSavesWhatItShows)
{
  FState.SetTicketsForTest({Ticket(4521, "Printer", false), Ticket(99, "VPN slow", false), Ticket(17, "VPN down", true)});
  ClickStep(FWindow->bbtGenerateMail); // any step brings the buttons up to date
  ASSERT_TRUE(FWindow->bbtSaveGrid->isEnabled());
  auto *grid = FWindow->findChild<QTableView *>("asgTickets");
  QHeaderView *header = grid->horizontalHeader();
  QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                    QPoint(header->sectionViewportPosition(TTicketsModel::colId) + 4, header->height() / 2));
  QTest::keyClicks(FWindow->findChild<QLineEdit *>("edtSearch"), "vpn");
  const QAbstractItemModel *shown = grid->model();
  EXPECT_EQ(shown->rowCount(), 2);
  EXPECT_FALSE(shown->data(shown->index(0, TTicketsModel::colType), Qt::DecorationRole).value<QIcon>().isNull());
  EXPECT_EQ(FState.Grid().data(FState.Grid().index(0, TTicketsModel::colId)).toInt(), 4521);

  const struct
  {
    Qt::Key Key;
    const char *Button; // clicked instead of a key
    QList<int> Ids;
  } answers[] = {{Qt::Key_Return, nullptr, {17, 99}},
                 {Qt::Key_unknown, "All 3", {17, 99, 4521}},
                 {Qt::Key_Escape, nullptr, {}}};
  for (const auto &[key, button, ids] : answers) {
    SCOPED_TRACE(ids.size());
    const QString typed = FConfig.File(QStringLiteral("saved %1").arg(ids.size())); // without its suffix
    QString asked;
    QString proposed;
    QTimer::singleShot(0, [&] {
      auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr);
      asked = box->text();
      if (!ids.isEmpty())
        QTimer::singleShot(0, [&] {
          auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
          ASSERT_NE(dialog, nullptr);
          auto *name = dialog->findChild<QLineEdit *>("fileNameEdit");
          proposed = name->text();
          name->setText(typed); // typed, its completer would take the Enter
          QTest::keyClick(name, Qt::Key_Return);
        });
      for (QAbstractButton *choice : box->buttons())
        if (button && choice->text() == button)
          QTest::mouseClick(choice, Qt::LeftButton);
      if (!button)
        QTest::keyClick(box, key);
    });
    FWindow->statusBar()->clearMessage();
    QTest::mouseClick(FWindow->bbtSaveGrid, Qt::LeftButton);
    EXPECT_EQ(asked, "The search shows 2 of the 3 tickets. Save all 3 or the 2 shown?");
    if (ids.isEmpty()) {
      EXPECT_EQ(FWindow->statusBar()->currentMessage(), "");
      continue;
    }
    EXPECT_EQ(proposed, "tickets-" + QDate::currentDate().toString("yyyyMMdd") + ".xlsx");
    EXPECT_EQ(FWindow->statusBar()->currentMessage(),
              QString("%1 ticket(s) saved to %2.xlsx").arg(ids.size()).arg(typed));
    QFile saved(typed + ".xlsx");
    ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
    QList<int> rows;
    for (const QJsonValue row : ReadWorkbook(saved.readAll()).first().toObject()["rows"].toArray())
      if (row[1].isDouble())
        rows.append(row[1].toInt());
    EXPECT_EQ(rows, ids);
  }
}

TEST_F(MainWindow, MailIsSentOffTheWindowThreadWithEveryButtonOff)
{
  QTcpServer silent; // accepts, never answers
  ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
  SetSmtp({"127.0.0.1", silent.serverPort(), false, "", "", "leads@vellmor.example", "", ""});
  FState.SetTicketsForTest({});
  ClickStep(FWindow->bbtGenerateMail);

  bool seen = false;
  QObject::connect(&silent, &QTcpServer::newConnection, [&] {
    seen = true; // the window's thread runs while the server keeps silent
    const TfrmLoading *progress = VisibleProgress(FWindow.get());
    ASSERT_NE(progress, nullptr);
    EXPECT_EQ(progress->Step(), QString::fromUtf8("Sending to 127.0.0.1:%1…").arg(silent.serverPort()));
    EXPECT_FALSE(FWindow->bbtSendMail->isEnabled());
    EXPECT_FALSE(FWindow->bbtClose->isEnabled());
    silent.nextPendingConnection()->abort(); // the exchange ends with an error
  });
  QString shown;
  CloseNextMessageBox(&shown);
  ClickStep(FWindow->bbtSendMail);
  EXPECT_TRUE(seen);
  EXPECT_TRUE(shown.contains(QStringLiteral("Mail to 1 recipient(s), 0 row(s) (leads@vellmor.example): Unable to send "
                                           "the mail through 127.0.0.1:%1")
                                 .arg(silent.serverPort())))
      << shown.toStdString();
  EXPECT_EQ(VisibleProgress(FWindow.get()), nullptr);
  EXPECT_TRUE(FWindow->bbtSendMail->isEnabled());
  // A report nobody would receive cannot be sent.
  SetSmtp({"127.0.0.1", silent.serverPort(), false, "", "", " ", "", ""});
  ClickStep(FWindow->bbtGenerateMail);
  EXPECT_FALSE(FWindow->bbtSendMail->isEnabled());
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

// A right click on the grid takes the selected tickets off the report until they
// change, and puts them back; the grid shows it at once.
TEST_F(MainWindow, TheGridsMenuSnoozesWakesAndCopiesTheTicket)
{
  FState.SetTicketsForTest({Ticket(24012, "printer", false), Ticket(24013, "vpn", false)});
  auto *grid = FWindow->findChild<QTableView *>("asgTickets");
  grid->selectRow(1);
  const QModelIndex listed = grid->model()->index(1, TTicketsModel::colListed);
  // Picks an action of the grid's menu, then answers the dialog it opens.
  auto choose = [grid](const QString &action, bool untilChange) {
    QTimer::singleShot(0, [action, untilChange] {
      auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
      ASSERT_NE(menu, nullptr);
      for (QAction *item : menu->actions())
        if (item->text() == action)
          menu->setActiveAction(item);
      QTest::keyClick(menu, Qt::Key_Return);
      if (action != "Snooze…")
        return;
      QTimer::singleShot(0, [untilChange] {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        if (untilChange)
          dialog->findChild<QRadioButton *>("rbtUntilChange")->setChecked(true);
        QTest::keyClick(dialog, Qt::Key_Return);
      });
    });
    emit grid->customContextMenuRequested(grid->visualRect(grid->model()->index(1, 1)).center());
  };
  choose("Snooze…", true);
  EXPECT_EQ(listed.data().toString(), "snoozed until it changes");
  EXPECT_EQ(FWindow->statusBar()->currentMessage(), "1 ticket(s) snoozed until they change; the next report leaves them out");
  EXPECT_EQ(grid->model()->index(0, TTicketsModel::colListed).data().toString(), "");
  choose("Wake up", false);
  EXPECT_EQ(listed.data().toString(), "");
  EXPECT_EQ(FWindow->statusBar()->currentMessage(), "1 ticket(s) back on the report");
  choose("Copy id", false);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "24013");
}

// "Get tickets" against a service that never answers: Escape in the progress
// window cancels the step, and the window is idle at once and says in its
// status bar, without a message box, that the retrieval failed.
TEST_F(MainWindow, EscapeCancelsAStepThatWaitsForAServiceThatNeverAnswers)
{
  QTcpServer silent; // accepts, never answers
  ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
  FState.EditServiceSettings([&silent](tyQuorvexITSM &settings) {
    settings.Instance = QStringLiteral("127.0.0.1:%1").arg(silent.serverPort());
    settings.SaaS = false;
    settings.API.ClientID = "client";
    return true;
  });
  SaveConfigOrgaAndTeams(FState.SettingsFile(), {tyRestOrganization{1, "Acme", false, false, true}}, {});
  FState.ReadConfigOrgaAndTeams();
  QElapsedTimer sinceCancel;
  QObject::connect(&silent, &QTcpServer::newConnection, [&] {
    const TfrmLoading *progress = VisibleProgress(FWindow.get());
    ASSERT_NE(progress, nullptr);
    EXPECT_NE(progress->findChild<QPushButton *>("btnCancel"), nullptr);
    sinceCancel.start();
    QTest::keyClick(const_cast<TfrmLoading *>(progress), Qt::Key_Escape);
  });
  QString shown;
  QTimer guard; // closes a message box that must not come
  QObject::connect(&guard, &QTimer::timeout, [&shown] {
    if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
      shown = box->text();
      box->reject();
    }
  });
  guard.start(10);
  ClickStep(FWindow->bbtGetTickets);
  guard.stop();
  std::printf("the window was idle %lld ms after Escape\n", static_cast<long long>(sinceCancel.elapsed()));
  EXPECT_TRUE(sinceCancel.isValid());
  EXPECT_TRUE(shown.isEmpty()) << shown.toStdString();
  EXPECT_EQ(VisibleProgress(FWindow.get()), nullptr);
  EXPECT_EQ(FWindow->statusBar()->currentMessage(), "Get tickets cancelled before its end; no ticket has been retrieved yet.");
  EXPECT_TRUE(FWindow->findChild<QLabel *>("lblGuide")->isVisible()); // no row came: the guide stays
  // The next step is not taken for a cancelled one.
  QTimer::singleShot(0, [] { QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Escape); });
  ClickStep(FWindow->bbtFilter);
  EXPECT_EQ(FWindow->statusBar()->currentMessage(), "Filters left as they were");
}

// The search ignores case and accents and the count beside it follows; Tab
// leaves the grid; a long organization name is cut, whole in its tool tip.
TEST_F(MainWindow, TheSearchIgnoresAccentsCountsWhatItShowsAndTabLeavesTheGrid)
{
  tyRestTicket screen = Ticket(1, QString::fromUtf8("Écran noir au démarrage"), false);
  screen.organization.name = QString(120, u'N');
  FState.SetTicketsForTest({screen, Ticket(2, "VPN down", false)});
  auto *grid = FWindow->findChild<QTableView *>("asgTickets");
  auto *search = FWindow->findChild<QLineEdit *>("edtSearch");
  auto *count = FWindow->findChild<QLabel *>("lblCount");
  EXPECT_EQ(count->text(), "2 ticket(s)");
  QTest::keyClicks(search, "ECRAN");
  EXPECT_EQ(grid->model()->rowCount(), 1);
  EXPECT_EQ(count->text(), "1 of 2 shown");
  search->clear();
  EXPECT_EQ(count->text(), "2 ticket(s)");

  const QModelIndex organization = grid->model()->index(0, TTicketsModel::colOrganization);
  EXPECT_LE(grid->columnWidth(TTicketsModel::colOrganization), 260);
  EXPECT_EQ(organization.data(Qt::ToolTipRole).toString(), screen.organization.name);

  grid->setFocus();
  QTest::keyClick(grid, Qt::Key_Tab);
  EXPECT_FALSE(grid->hasFocus());
}

// The window's size, the grid's column widths and its sort come back at the
// next start; a close that changed nothing writes nothing.
TEST_F(MainWindow, TheNextStartRestoresTheLayoutAPersonLeft)
{
  FState.SetTicketsForTest({Ticket(4521, "Printer", false), Ticket(99, "VPN slow", false)});
  auto *grid = FWindow->findChild<QTableView *>("asgTickets");
  FWindow->resize(900, 640);
  grid->sortByColumn(TTicketsModel::colId, Qt::DescendingOrder);
  grid->setColumnWidth(TTicketsModel::colTitle, 333);
  ASSERT_TRUE(FWindow->close());

  FWindow = std::make_unique<TfrmMain>(FState);
  FWindow->show();
  // As a retrieval fills the grid: emptied, a first page, then the whole list.
  const tyRestTickets tickets{Ticket(4521, "Printer", false), Ticket(99, "VPN slow", false)};
  FState.Grid().SetTickets({});
  FState.Grid().AppendTickets(tickets, 1);
  grid = FWindow->findChild<QTableView *>("asgTickets");
  EXPECT_EQ(grid->columnWidth(TTicketsModel::colTitle), 333);
  FState.SetTicketsForTest(tickets);
  EXPECT_EQ(FWindow->size(), QSize(900, 640));
  EXPECT_EQ(grid->columnWidth(TTicketsModel::colTitle), 333);
  EXPECT_EQ(grid->horizontalHeader()->sortIndicatorSection(), TTicketsModel::colId);
  EXPECT_EQ(grid->model()->index(0, TTicketsModel::colId).data().toString(), "4521");

  const QDateTime written = QFileInfo(FState.SettingsFile()).lastModified();
  QTest::qWait(20);
  ASSERT_TRUE(FWindow->close());
  EXPECT_EQ(QFileInfo(FState.SettingsFile()).lastModified(), written);
}
