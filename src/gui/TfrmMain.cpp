#include "TfrmMain.h"

#include "core/AppInfo.h"
#include "core/Errors.h"
#include "core/Trace.h"
#include "report/gui/TfrmConfirmRecipients.h"
#include "report/gui/TfrmHtmlTexts.h"
#include "report/SmtpIdentity.h"
#include "report/gui/TfrmSMTP.h"
#include "rest/gui/TfrmSetQuorvexItsmConfig.h"
#include "state/TMainState.h"
#include "tickets/TicketsModel.h"
#include "tickets/gui/TfmChooseOrga.h"
#include "tickets/gui/TfrmFilters.h"
#include "tickets/gui/TfrmLoading.h"
#include "tickets/gui/TfrmStatusPriorities.h"
#include "FailureBox.h"
#include "GridSaving.h"
#include "TfrmAbout.h"
#include "TfrmSnooze.h"
#include "StatusLine.h"
#include "TicketsView.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QDesktopServices>
#include <QUrl>
#include <QCloseEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QMenu>
#include <QScopeGuard>
#include <QScreen>
#include <QStatusBar>
#include <QTableView>
#include <QStyle>
#include <QTime>
#include <QToolButton>
#include <QVBoxLayout>

namespace {
constexpr int CClientWidth = 784;
constexpr int CClientHeight = 561;
constexpr int CButtonIconSize = 28;
constexpr int CModeImageSize = 64;

QIcon Icon(const QString &name) { return QIcon(QStringLiteral(":/icons/%1.svg").arg(name)); }

QLabel *ModeImage(const char *objectName, const QString &icon, const QString &toolTip)
{
  auto *image = new QLabel;
  image->setObjectName(QLatin1String(objectName));
  image->setPixmap(Icon(icon).pixmap(CModeImageSize, CModeImageSize));
  image->setAlignment(Qt::AlignCenter);
  image->setToolTip(toolTip);
  return image;
}
} // namespace

// The icons are compiled into this static library; make sure they are linked.
static void InitIconResources() { Q_INIT_RESOURCE(icons); }

TfrmMain::TfrmMain(TMainState &state, QWidget *parent) : QMainWindow(parent), FState(state)
{
  InitIconResources();
  FProgress = std::make_unique<TWindowProgress>(this, [this] {
    FCancelAsked = true;
    FState.Cancel();
  });
  setObjectName(QStringLiteral("frmMain"));
  setWindowTitle(QStringLiteral("Quorvex ITSM tickets follow-up"));
  setWindowIcon(Icon(QStringLiteral("quorvex-followup")));

  auto *central = new QWidget(this);
  auto *layout = new QHBoxLayout(central);
  layout->setContentsMargins(8, 8, 8, 8);

  FButtonPanel = new QWidget(central);
  FButtonPanel->setFixedWidth(190);
  auto *buttons = new QVBoxLayout(FButtonPanel);
  buttons->setContentsMargins(0, 0, 0, 0);
  buttons->setSpacing(4);

  imgBigBrother = ModeImage("imgBigBrother", QStringLiteral("bigbrother"), tr("Interactive"));
  imgBigBrotherRed = ModeImage("imgBigBrotherRed", QStringLiteral("bigbrotherred"), tr("Working on its own"));
  imgBigBrotherRed->hide();
  buttons->addWidget(imgBigBrother);
  buttons->addWidget(imgBigBrotherRed);
  buttons->addSpacing(6);

  bbtQuorvexItsmApi = AddStepButton("bbtQuorvexItsmApi", QStringLiteral("Quorvex ITSM API"), QStringLiteral("api"));
  bbtGET_Organization_List = AddStepButton("bbtGET_Organization_List", QStringLiteral("Organizations && Teams"),
                                           QStringLiteral("organizations"));
  bbtStatusAndProperties = AddStepButton("bbtStatusAndProperties", QStringLiteral("Status && Priorities"),
                                         QStringLiteral("colours"));
  bbtFilter = AddStepButton("bbtFilter", QStringLiteral("Filters"), QStringLiteral("filters"));
  bbtGetTickets = AddStepButton("bbtGetTickets", QStringLiteral("Get tickets"), QStringLiteral("tickets"));
  bbtTexts = AddStepButton("bbtTexts", QStringLiteral("Texts"), QStringLiteral("texts"));
  bbtGenerateMail = AddStepButton("bbtGenerateMail", QStringLiteral("Generate Mail"), QStringLiteral("generatemail"));
  bbtSmtpServer = AddStepButton("bbtSmtpServer", QStringLiteral("SMPT Server"), QStringLiteral("smtp"));
  bbtSendMail = AddStepButton("bbtSendMail", QStringLiteral("Send Mail"), QStringLiteral("sendmail"));
  buttons->addStretch(1);

  FIconRow = new QWidget(FButtonPanel);
  auto *iconRow = new QHBoxLayout(FIconRow);
  iconRow->setContentsMargins(0, 0, 0, 0);
  bbtSaveGrid = AddIconButton("bbtSaveGrid", tr("Save the grid as an Excel workbook"), QStringLiteral("savegrid"));
  bbtAbout = AddIconButton("bbtAbout", tr("About (right-click: libraries)"), QStringLiteral("about"));
  bbtClose = AddIconButton("bbtClose", tr("Close"), QStringLiteral("close"));
  buttons->addWidget(FIconRow);

  auto *ticketsView = FTicketsView = new TTicketsView(FState.Grid(), central);
  connect(ticketsView->asgTickets, &QWidget::customContextMenuRequested, this,
          [this, ticketsView](const QPoint &position) { GridContextMenu(*ticketsView, position); });

  layout->addWidget(FButtonPanel);
  layout->addWidget(ticketsView, 1);
  setCentralWidget(central);
  setStatusBar(new TStatusLine(this)); // present from the start, so that the first message moves nothing

  WireButtons();
  UpdateButtons();

  resize(CClientWidth, CClientHeight);
  if (const QScreen *screen = QGuiApplication::primaryScreen())
    move(screen->availableGeometry().center() - rect().center());
  // Where the person left it last time.
  const tyWindowLayout left = FState.WindowLayout();
  if (!left.Geometry.isEmpty())
    restoreGeometry(left.Geometry);
  FTicketsView->RestoreColumns(left.ColumnWidths, left.SortColumn, left.SortDescending);
}

TfrmMain::~TfrmMain() = default;

void TfrmMain::GridContextMenu(TTicketsView &view, const QPoint &position)
{
  const QList<TRestId> tickets = view.SelectedTickets();
  if (tickets.isEmpty() || FStepRunning)
    return;
  // The row under the pointer: its ticket's page, as the report links it.
  const QModelIndex pointed = view.asgTickets->indexAt(position);
  const QString link = pointed.data(TTicketsModel::LinkRole).toString();
  QMenu menu(this);
  menu.setObjectName(QStringLiteral("mnuGrid"));
  QAction *open = menu.addAction(tr("Open"));
  open->setEnabled(!link.isEmpty());
  QAction *copyId = menu.addAction(tr("Copy id"));
  copyId->setEnabled(pointed.isValid());
  QAction *copyLink = menu.addAction(tr("Copy link"));
  copyLink->setEnabled(!link.isEmpty());
  menu.addSeparator();
  QAction *snooze = menu.addAction(tr("Snooze…"));
  QAction *wake = menu.addAction(tr("Wake up"));
  wake->setEnabled(view.AnySnoozedSelected());
  const QAction *chosen = menu.exec(view.asgTickets->viewport()->mapToGlobal(position));
  if (chosen == open)
    QDesktopServices::openUrl(QUrl(link));
  else if (chosen == copyId)
    QGuiApplication::clipboard()->setText(pointed.data(TTicketsModel::TicketIdRole).toString());
  else if (chosen == copyLink)
    QGuiApplication::clipboard()->setText(link);
  QDate until;
  if (chosen == snooze && AskSnooze(static_cast<int>(tickets.size()), until, this) &&
      FState.SnoozeTickets(tickets, until))
    statusBar()->showMessage(tr("%1 ticket(s) snoozed %2; the next report leaves them out")
                                 .arg(tickets.size())
                                 .arg(until.isValid() ? tr("until %1").arg(until.toString(QStringLiteral("dd.MM.yyyy")))
                                                      : tr("until they change")));
  else if (chosen == wake && FState.WakeTickets(tickets))
    statusBar()->showMessage(tr("%1 ticket(s) back on the report").arg(tickets.size()));
}

TTask<> TfrmMain::bbtGetTicketsClick()
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtGetTicketsClick");
  co_await FState.RetrieveTickets(*FProgress);
  ShowRetrievalStatus();
}

void TfrmMain::ShowSettingsResult(bool saved, const QString &what)
{
  statusBar()->showMessage(saved ? tr("%1 saved").arg(what) : tr("%1 left as they were").arg(what));
}

void TfrmMain::ShowRetrievalStatus()
{
  statusBar()->showMessage(FState.RetrievalStatusText());
}

TTask<> TfrmMain::bbtGET_Organization_ListClick()
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtGET_Organization_ListClick");
  co_await FState.ChooseOrganizations(
      *FProgress, [this](const tyRestOrganizations &organizations, tyRestOrganizations &selectedOrganizations,
                         const tyRestTeams &teams, tyRestTeams &selectedTeams, const tyRestOrganizationsTeams &links) {
        const bool chosen = ChooseOrga(organizations, selectedOrganizations, teams, selectedTeams, links, this);
        if (chosen)
          statusBar()->showMessage(tr("%n organization(s) selected", nullptr, static_cast<int>(selectedOrganizations.size())) +
                                   tr(" and %n team(s); choice saved", nullptr, static_cast<int>(selectedTeams.size())));
        else
          ShowSettingsResult(false, tr("Organizations and teams"));
        return chosen;
      });
}

TTask<> TfrmMain::bbtStatusAndPropertiesClick()
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtStatusAndPropertiesClick");
  co_await FState.EditStatusColours(*FProgress, [this](tyRestObjects &statuses, tyRestObjects &priorities,
                                                        TColourStore &colours) {
    const bool changed = EditStatusAndPriorities(statuses, priorities, colours, this);
    ShowSettingsResult(changed, tr("Status and priority colours"));
    return changed;
  });
}

TTask<> TfrmMain::bbtSendMailClick()
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtSendMailClick");
  const QStringList mails = co_await FState.SendReport(
      *FProgress, [this](const TMailConfirmation &confirmation) { return ConfirmRecipients(confirmation, this); },
      [this](const QStringList &earlier) { return ConfirmResend(earlier, this); });
  if (mails.isEmpty()) {
    statusBar()->showMessage(!FState.HasReport()
                                 ? tr("Nothing sent: generate the report first (\"Generate Mail\")")
                                 : tr("Nothing sent"));
    co_return;
  }
  const QString through = tr("through %1 at %2")
                              .arg(SmtpServerName(FState.Smtp()), QTime::currentTime().toString(QStringLiteral("HH:mm")));
  if (FState.Delivery().Mode == TDeliveryMode::Report && mails.size() == 1 &&
      mails.first().startsWith(QLatin1String("Mail to"))) {
    QStringList receivers{FState.Smtp().DefaultTo.trimmed()};
    if (!FState.Smtp().DefaultCC.trimmed().isEmpty())
      receivers.append(FState.Smtp().DefaultCC.trimmed());
    statusBar()->showMessage(tr("Report sent to %1 %2").arg(receivers.join(tr(" and ")), through));
  } else {
    statusBar()->showMessage(mails.size() == 1 ? mails.first() : tr("%1 mails sent %2").arg(mails.size()).arg(through));
  }
}

TTask<> TfrmMain::bbtTextsClick()
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtTextsClick");
  const bool changed = FState.EditTexts([this](tyHtmlTexts &texts) { return EditHtmlTexts(texts, this); });
  ShowSettingsResult(changed, tr("Texts"));
  co_return;
}

TTask<> TfrmMain::bbtSmtpServerClick()
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtSmtpServerClick");
  const bool changed = FState.EditMailSettings(
      [this](tySMTPserver &smtp, tyDelivery &delivery) { return ConfigureSMTPserver(smtp, delivery, this); });
  ShowSettingsResult(changed, tr("SMTP settings"));
  co_return;
}

TTask<> TfrmMain::bbtGenerateMailClick()
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtGenerateMailClick");
  bool opened = false;
  const bool built = co_await FState.GenerateReport(
      [&opened](const QString &page) { opened = QDesktopServices::openUrl(QUrl::fromLocalFile(page)); });
  if (!built)
    co_return; // the step's failure says why
  const QString page = QDir::toNativeSeparators(FState.ReportFile());
  statusBar()->showMessage(opened ? tr("Report written to %1 and opened in the browser").arg(page)
                                  : tr("No browser could be started; the report is written to %1").arg(page));
}

QToolButton *TfrmMain::AddStepButton(const char *objectName, const QString &caption, const QString &icon)
{
  auto *button = new QToolButton(FButtonPanel);
  button->setObjectName(QLatin1String(objectName));
  button->setText(caption);
  button->setIcon(Icon(icon));
  button->setIconSize(QSize(CButtonIconSize, CButtonIconSize));
  button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  button->setAutoRaise(false);
  FButtonPanel->layout()->addWidget(button);
  return button;
}

QToolButton *TfrmMain::AddIconButton(const char *objectName, const QString &toolTip, const QString &icon)
{
  auto *button = new QToolButton(FIconRow);
  button->setObjectName(QLatin1String(objectName));
  button->setIcon(Icon(icon));
  button->setIconSize(QSize(CButtonIconSize, CButtonIconSize));
  button->setToolTip(toolTip);
  button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  FIconRow->layout()->addWidget(button);
  return button;
}

void TfrmMain::RaiseToFront()
{
  setWindowState((windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
  show();
  raise();
  activateWindow();
}

void TfrmMain::TimerTimer(const TUnattendedOptions &options, std::function<void(TExitStatus status)> ended)
{
  const TraceScope trace(lcApp(), "TfrmMain.TimerTimer");
  TUnattendedOptions shown = options;
  shown.ShowAutomaticMode = [this](bool automatic) { ShowAutomaticMode(automatic); };
  SetStepRunning(true);
  Launch(RunUnattended(FState, *FProgress, shown), [this, ended = std::move(ended)](TExitStatus status) {
    SetStepRunning(false);
    ShowRetrievalStatus();
    ended(status);
  });
}

void TfrmMain::ShowAutomaticMode(bool automatic)
{
  imgBigBrother->setVisible(!automatic);
  imgBigBrotherRed->setVisible(automatic);
}

void TfrmMain::SetStepRunning(bool running)
{
  FStepRunning = running;
  for (QToolButton *button : FButtonPanel->findChildren<QToolButton *>())
    button->setEnabled(!running);
  if (!running)
    UpdateButtons();
}

void TfrmMain::UpdateButtons()
{
  bbtSendMail->setEnabled(!FStepRunning && FState.CanSend());
  bbtSaveGrid->setEnabled(!FStepRunning && FState.Grid().rowCount() > 0);
}

void TfrmMain::closeEvent(QCloseEvent *event)
{
  // The step's work refers to this window and its state: it is cancelled, and
  // the window closes once it ended.
  if (FStepRunning) {
    FCloseWhenIdle = true;
    FCancelAsked = true;
    FState.Cancel();
    statusBar()->showMessage(tr("Cancelling the current step; the window closes once it has ended."));
    event->ignore();
    return;
  }
  try {
    FState.KeepWindowLayout({saveGeometry(), FTicketsView->ColumnWidths(), FTicketsView->SortColumn(),
                             FTicketsView->SortDescending()});
  } catch (const EQuorvexError &error) {
    // The window closes all the same: only its layout is not kept.
    TraceFailure(lcApp(), error.Message());
  }
  QMainWindow::closeEvent(event);
}

void TfrmMain::RunStep(const QString &caption, TTask<> step)
{
  // The buttons stay disabled while a step runs: no step may start inside another.
  SetStepRunning(true);
  FCancelAsked = false;
  // A line from an earlier step must not stand for this one.
  statusBar()->clearMessage();
  Launch(std::move(step), [this, caption](std::exception_ptr failure) {
    SetStepRunning(false);
    if (FCloseWhenIdle) {
      close();
      return;
    }
    try {
      if (failure)
        std::rethrow_exception(failure);
    } catch (const EGuidance &guidance) {
      statusBar()->showMessage(guidance.Message());
      ShowGuidance(guidance);
      return;
    } catch (const EQuorvexError &error) {
      TraceFailure(lcApp(), error.Message());
      statusBar()->showMessage(error.Message());
      ShowFailure(this, error.Message(), error.Details());
      return;
    } catch (const std::exception &error) {
      TraceFailure(lcApp(), QString::fromLocal8Bit(error.what()));
      statusBar()->showMessage(QString::fromLocal8Bit(error.what()));
      ShowFailure(this, QString::fromLocal8Bit(error.what()), QString());
      return;
    }
    const TFailures failures = FState.TakeStepFailures();
    if (FCancelAsked) {
      // The person asked for it: the status bar says so, without a message box.
      const QString said = statusBar()->currentMessage();
      if (!said.contains(QLatin1String("cancelled")))
        statusBar()->showMessage(tr("\"%1\" cancelled.").arg(caption) + (said.isEmpty() ? QString() : u' ' + said));
      return;
    }
    if (!failures.isEmpty())
      ShowStepFailures(this, tr("\"%1\" could not be completed.").arg(caption), failures);
  });
}

void TfrmMain::ShowGuidance(const EGuidance &guidance)
{
  QMessageBox box(QMessageBox::Information, CApplicationTitle, guidance.Message(), QMessageBox::Close, this);
  box.setObjectName(QStringLiteral("boxGuidance"));
  QPushButton *open = box.addButton(tr("Open \"%1\"").arg(guidance.Dialog()), QMessageBox::AcceptRole);
  box.setDefaultButton(open);
  box.exec();
  if (box.clickedButton() != open)
    return;
  // The step named, once this one has ended.
  for (QToolButton *button : FButtonPanel->findChildren<QToolButton *>())
    if (QString(button->text()).replace(QStringLiteral("&&"), QStringLiteral("&")) == guidance.Dialog())
      QTimer::singleShot(0, button, &QToolButton::click);
}

void TfrmMain::WireButtons()
{
  auto wire = [this](QToolButton *button, TTask<> (TfrmMain::*handler)()) {
    connect(button, &QToolButton::clicked, this, [this, button, handler] {
      QString caption = button->text().isEmpty() ? button->toolTip() : button->text();
      caption.replace(QStringLiteral("&&"), QStringLiteral("&"));
      RunStep(caption, (this->*handler)());
    });
  };
  wire(bbtQuorvexItsmApi, &TfrmMain::bbtQuorvexItsmApiClick);
  wire(bbtGetTickets, &TfrmMain::bbtGetTicketsClick);
  wire(bbtGET_Organization_List, &TfrmMain::bbtGET_Organization_ListClick);
  wire(bbtStatusAndProperties, &TfrmMain::bbtStatusAndPropertiesClick);
  wire(bbtGenerateMail, &TfrmMain::bbtGenerateMailClick);
  wire(bbtSendMail, &TfrmMain::bbtSendMailClick);
  wire(bbtTexts, &TfrmMain::bbtTextsClick);
  wire(bbtSmtpServer, &TfrmMain::bbtSmtpServerClick);
  wire(bbtFilter, &TfrmMain::bbtFilterClick);
  wire(bbtSaveGrid, &TfrmMain::bbtSaveGridClick);
  wire(bbtAbout, &TfrmMain::bbtAboutClick);
  bbtAbout->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(bbtAbout, &QWidget::customContextMenuRequested, this, &TfrmMain::bbtAboutContextMenu);
  connect(bbtClose, &QToolButton::clicked, this, [this] {
    const TraceScope trace(lcApp(), "TfrmMain.bbtCloseClick");
    close();
  });
}

TTask<> TfrmMain::bbtQuorvexItsmApiClick()
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtQuorvexItsmApiClick");
  const bool changed =
      FState.EditServiceSettings([this, firstStart = !QFileInfo::exists(FState.SettingsFile())](tyQuorvexITSM &settings) {
        return SetQuorvexItsmConfig(settings, this, firstStart);
      });
  ShowSettingsResult(changed, tr("Service settings"));
  co_return;
}

TTask<> TfrmMain::bbtFilterClick()
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtFilterClick");
  const bool changed = FState.EditFilters([this](std::int32_t &nbMinutes, std::int32_t &nbDays, QStringList &statusToIgnore) {
    return EditFilters(nbMinutes, nbDays, statusToIgnore, this);
  });
  ShowSettingsResult(changed, tr("Filters"));
  co_return;
}

TTask<> TfrmMain::bbtSaveGridClick()
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtSaveGridClick");
  if (const QString saved = SaveGrid(*findChild<TTicketsView *>(), this); !saved.isEmpty())
    statusBar()->showMessage(saved);
  co_return;
}

TTask<> TfrmMain::bbtAboutClick()
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtAboutClick");
  TfrmAbout(this).exec();
  co_return;
}

void TfrmMain::bbtAboutContextMenu(const QPoint &position)
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtAboutContextMenu");
  QMenu menu(this);
  menu.addAction(QStringLiteral("Librairies"), this, [this] { TfrmLibraries(this).exec(); });
  menu.exec(bbtAbout->mapToGlobal(position));
}
