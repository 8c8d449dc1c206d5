#include "report/SmtpTestServer.h"
#include "gui/TfrmMain.h"
#include "gui/TfrmSnooze.h"
#include "rest/gui/TfrmSetQuorvexItsmConfig.h"
#include "state/TMainState.h"
#include "support/OfflineRest.h"
#include "support/TempConfig.h"
#include "tickets/SelectionSettings.h"
#include "tickets/TicketsModel.h"
#include "tickets/gui/TfrmFilters.h"
#include "tickets/gui/TfrmLoading.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QJsonArray>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QStatusBar>
#include <QTableView>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <cstdio>
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

  // Runs `answer` once on the next modal window of type T, as soon as it shows.
  template <typename T>
  void OnNextModal(const std::function<void(T *)> &answer)
  {
    auto *poll = new QTimer(FWindow.get());
    QObject::connect(poll, &QTimer::timeout, [poll, answer] {
      if (auto *modal = qobject_cast<T *>(QApplication::activeModalWidget())) {
        poll->stop();
        poll->deleteLater();
        answer(modal);
      }
    });
    poll->start(10);
  }

  // Answers the next message box with its button `button`, or else with `key`,
  // and keeps its text.
  void CloseNextMessageBox(QString *text, const QString &button = {}, Qt::Key key = Qt::Key_Escape)
  {
    OnNextModal<QMessageBox>([text, button, key](QMessageBox *box) {
      *text = box->text();
      for (QAbstractButton *choice : box->buttons())
        if (choice->text() == button)
          return QTest::mouseClick(choice, Qt::LeftButton);
      QTest::keyClick(box, key);
    });
  }

  TfrmLoading *VisibleProgress() const
  {
    for (TfrmLoading *progress : FWindow->findChildren<TfrmLoading *>())
      if (progress->isVisible())
        return progress;
    return nullptr;
  }

  QString Status() const { return FWindow->statusBar()->currentMessage(); }

  TTempConfig FConfig;
  TOfflineRest FOffline;
  TMainState FState{"quorvex-followup", FOffline.Rest};
  std::unique_ptr<TfrmMain> FWindow;
};

tyRestTicket Ticket(std::int32_t id, const QString &title)
{
  tyRestTicket ticket;
  ticket._type = "INCIDENT";
  ticket.id = id;
  ticket.title = title;
  ticket.creationDate = "2024-03-15T08:30:00.000Z";
  ticket.lastUpdate = "2024-03-16T08:30:00.000Z";
  return ticket;
}

} // namespace

TEST_F(MainWindow, AFirstStartGuidesAndPointsToTheServiceSettings)
{
  EXPECT_TRUE(FWindow->findChild<QLabel *>("lblGuide")->isVisible());
  for (QToolButton *step : {FWindow->bbtGetTickets, FWindow->bbtGET_Organization_List,
                            FWindow->bbtStatusAndProperties}) {
    QString shown;
    CloseNextMessageBox(&shown);
    ClickStep(step);
    EXPECT_EQ(shown, "Enter the service's address and API account in 'Quorvex ITSM API' first");
    EXPECT_EQ(Status(), shown) << step->objectName().toStdString();
  }
  // The guidance offers to open the dialog it names.
  QString shown;
  bool opened = false;
  CloseNextMessageBox(&shown, "Open \"Quorvex ITSM API\"");
  OnNextModal<TfrmSetQuorvexItsmConfig>([&opened](TfrmSetQuorvexItsmConfig *dialog) {
    opened = true;
    dialog->reject();
  });
  ClickStep(FWindow->bbtGetTickets);
  EXPECT_TRUE(QTest::qWaitFor([&opened] { return opened; }, 5000));
}

TEST_F(MainWindow, EachStepEndsWithALineSayingWhatItDid)
{
  TSmtpTestServer server({});
  ASSERT_TRUE(server.Started()) << server.Failure().toStdString();
  SetSmtp({"127.0.0.1", server.Port(), false, "", "", "leads@vellmor.example", "itsm@vellmor.example", ""});

  // Before any retrieval a report would check nothing: none is built.
  QString refused;
  CloseNextMessageBox(&refused);
  ClickStep(FWindow->bbtGenerateMail);
  EXPECT_TRUE(refused.contains("Generate Mail: no ticket has been retrieved yet: \"Get tickets\" first"))
      << refused.toStdString();
  EXPECT_FALSE(FWindow->bbtSendMail->isEnabled()); // no report to send

  FState.SetTicketsForTest({}); // a retrieval that found nothing open
  ClickStep(FWindow->bbtGenerateMail);
  // No browser on this platform: the path is shown all the same.
  EXPECT_EQ(Status(), "No browser could be started; the report is written to " + FState.ReportFile());

  ClickStep(FWindow->bbtSendMail);
  EXPECT_TRUE(Status().startsWith(
      QStringLiteral("Report sent to leads@vellmor.example and itsm@vellmor.example through 127.0.0.1:%1 at ")
          .arg(server.Port())))
      << Status().toStdString();
  EXPECT_EQ(server.Messages().size(), 1);

  // The same report again the same day: the person is asked, and Escape skips it.
  QString asked;
  CloseNextMessageBox(&asked);
  ClickStep(FWindow->bbtSendMail);
  EXPECT_EQ(asked, "1 mail(s) of this report were already delivered today to the same people.");
  EXPECT_TRUE(Status().startsWith("Already sent at ")) << Status().toStdString();
  EXPECT_EQ(server.Messages().size(), 1);
  CloseNextMessageBox(&asked, "Send again");
  ClickStep(FWindow->bbtSendMail);
  EXPECT_EQ(server.Messages().size(), 2);
}

// Sorting and searching change the view only; the search ignores case and
// accents, and the count beside it follows. "Save the grid" with the search on
// asks whether to save all the tickets or those shown (Enter: those shown,
// Escape: nothing), adds ".xlsx" and keeps the grid's order.
TEST_F(MainWindow, TheGridSortsAndSearchesItsViewAndSavesWhatItShows)
{
  FState.SetTicketsForTest({Ticket(4521, "Printer"), Ticket(99, "Écran noir"), Ticket(17, "ECRAN figé")});
  ClickStep(FWindow->bbtGenerateMail); // any step brings the buttons up to date
  auto *grid = FWindow->findChild<QTableView *>("asgTickets");
  auto *count = FWindow->findChild<QLabel *>("lblCount");
  EXPECT_EQ(count->text(), "3 ticket(s)");
  QHeaderView *header = grid->horizontalHeader();
  QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                    QPoint(header->sectionViewportPosition(TTicketsModel::colId) + 4, header->height() / 2));
  QTest::keyClicks(FWindow->findChild<QLineEdit *>("edtSearch"), "ecran");
  EXPECT_EQ(count->text(), "2 of 3 shown");
  EXPECT_EQ(FState.Grid().data(FState.Grid().index(0, TTicketsModel::colId)).toInt(), 4521);
  grid->setFocus();
  QTest::keyClick(grid, Qt::Key_Tab); // Tab leaves the grid
  EXPECT_FALSE(grid->hasFocus());

  const struct
  {
    QString Button; // clicked, or else the key
    Qt::Key Key;
    QList<int> Ids;
  } answers[] = {{{}, Qt::Key_Return, {17, 99}}, {"All 3", {}, {17, 99, 4521}}, {{}, Qt::Key_Escape, {}}};
  for (const auto &[button, key, ids] : answers) {
    SCOPED_TRACE(ids.size());
    const QString typed = FConfig.File(QStringLiteral("saved %1").arg(ids.size())); // without its suffix
    QString asked;
    CloseNextMessageBox(&asked, button, key);
    if (!ids.isEmpty())
      OnNextModal<QFileDialog>([&typed](QFileDialog *dialog) {
        auto *name = dialog->findChild<QLineEdit *>("fileNameEdit");
        name->setText(typed); // typed, its completer would take the Enter
        QTest::keyClick(name, Qt::Key_Return);
      });
    FWindow->statusBar()->clearMessage();
    QTest::mouseClick(FWindow->bbtSaveGrid, Qt::LeftButton);
    EXPECT_EQ(asked, "The search shows 2 of the 3 tickets. Save all 3 or the 2 shown?");
    if (ids.isEmpty()) {
      EXPECT_EQ(Status(), "");
      continue;
    }
    EXPECT_EQ(Status(), QString("%1 ticket(s) saved to %2.xlsx").arg(ids.size()).arg(typed));
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
    const TfrmLoading *progress = VisibleProgress();
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
  EXPECT_EQ(VisibleProgress(), nullptr);
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
  OnNextModal<TfrmFilters>([&](TfrmFilters *dialog) {
    checked = true;
    EXPECT_FALSE(FWindow->bbtGetTickets->isEnabled());
    EXPECT_FALSE(FWindow->bbtClose->isEnabled());
    EXPECT_FALSE(FWindow->close()); // the window stays
    dialog->reject();
  });
  FWindow->bbtFilter->click();
  EXPECT_TRUE(checked);
  EXPECT_TRUE(FWindow->bbtClose->isEnabled());
  EXPECT_TRUE(FWindow->close());
}

// A right click on the grid takes the selected tickets off the report until they
// change, and puts them back; the grid shows it at once.
TEST_F(MainWindow, TheGridsMenuSnoozesWakesAndCopiesTheTicket)
{
  FState.SetTicketsForTest({Ticket(24012, "printer"), Ticket(24013, "vpn")});
  auto *grid = FWindow->findChild<QTableView *>("asgTickets");
  grid->selectRow(1);
  const QModelIndex listed = grid->model()->index(1, TTicketsModel::colListed);
  // Picks an action of the grid's menu.
  auto choose = [grid](const QString &action) {
    QTimer::singleShot(0, [action] {
      auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
      ASSERT_NE(menu, nullptr);
      for (QAction *item : menu->actions())
        if (item->text() == action)
          menu->setActiveAction(item);
      QTest::keyClick(menu, Qt::Key_Return);
    });
    emit grid->customContextMenuRequested(grid->visualRect(grid->model()->index(1, 1)).center());
  };
  OnNextModal<TfrmSnooze>([](TfrmSnooze *dialog) {
    dialog->rbtUntilChange->setChecked(true);
    QTest::keyClick(dialog, Qt::Key_Return);
  });
  choose("Snooze…");
  EXPECT_EQ(listed.data().toString(), "snoozed until it changes");
  EXPECT_EQ(Status(), "1 ticket(s) snoozed until they change; the next report leaves them out");
  EXPECT_EQ(grid->model()->index(0, TTicketsModel::colListed).data().toString(), "");
  choose("Wake up");
  EXPECT_EQ(listed.data().toString(), "");
  EXPECT_EQ(Status(), "1 ticket(s) back on the report");
  choose("Copy id");
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
    TfrmLoading *progress = VisibleProgress();
    ASSERT_NE(progress, nullptr);
    EXPECT_NE(progress->findChild<QPushButton *>("btnCancel"), nullptr);
    sinceCancel.start();
    QTest::keyClick(progress, Qt::Key_Escape);
  });
  QString shown; // no message box may come
  CloseNextMessageBox(&shown);
  ClickStep(FWindow->bbtGetTickets);
  std::printf("the window was idle %lld ms after Escape\n", static_cast<long long>(sinceCancel.elapsed()));
  EXPECT_TRUE(sinceCancel.isValid());
  EXPECT_TRUE(shown.isEmpty()) << shown.toStdString();
  EXPECT_EQ(Status(), "Get tickets cancelled before its end; no ticket has been retrieved yet.");
  EXPECT_TRUE(FWindow->findChild<QLabel *>("lblGuide")->isVisible()); // no row came: the guide stays
  // The next step is not taken for a cancelled one.
  OnNextModal<TfrmFilters>([](TfrmFilters *dialog) { dialog->reject(); });
  ClickStep(FWindow->bbtFilter);
  EXPECT_EQ(Status(), "Filters left as they were");
}

// The grid's column widths and its sort come back at the next start, and the
// widths hold while a retrieval fills the grid.
TEST_F(MainWindow, TheNextStartRestoresTheLayoutAPersonLeft)
{
  const tyRestTickets tickets{Ticket(4521, "Printer"), Ticket(99, "VPN slow")};
  FState.SetTicketsForTest(tickets);
  auto *grid = FWindow->findChild<QTableView *>("asgTickets");
  grid->sortByColumn(TTicketsModel::colId, Qt::DescendingOrder);
  grid->setColumnWidth(TTicketsModel::colTitle, 333);
  ASSERT_TRUE(FWindow->close());

  FWindow = std::make_unique<TfrmMain>(FState);
  FWindow->show();
  // As a retrieval fills the grid: emptied, a first page, then the whole list.
  FState.Grid().SetTickets({});
  FState.Grid().AppendTickets(tickets, 1);
  grid = FWindow->findChild<QTableView *>("asgTickets");
  EXPECT_EQ(grid->columnWidth(TTicketsModel::colTitle), 333);
  FState.SetTicketsForTest(tickets);
  EXPECT_EQ(grid->columnWidth(TTicketsModel::colTitle), 333);
  EXPECT_EQ(grid->horizontalHeader()->sortIndicatorSection(), TTicketsModel::colId);
  EXPECT_EQ(grid->model()->index(0, TTicketsModel::colId).data().toString(), "4521");
}
