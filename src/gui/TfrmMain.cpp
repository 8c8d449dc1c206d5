#include "TfrmMain.h"

#include "core/AppInfo.h"
#include "core/Errors.h"
#include "core/Trace.h"
#include "report/gui/TfrmConfirmRecipients.h"
#include "report/gui/TfrmHtmlTexts.h"
#include "report/gui/TfrmSMTP.h"
#include "rest/gui/TfrmSetQuorvexItsmConfig.h"
#include "state/TMainState.h"
#include "tickets/GridExport.h"
#include "tickets/TicketsModel.h"
#include "tickets/gui/TfmChooseOrga.h"
#include "tickets/gui/TfrmFilters.h"
#include "tickets/gui/TfrmLoading.h"
#include "tickets/gui/TfrmStatusPriorities.h"
#include "FailureBox.h"
#include "TfrmAbout.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIcon>
#include <QDesktopServices>
#include <QFileDialog>
#include <QUrl>
#include <QCloseEvent>
#include <QLabel>
#include <QMenu>
#include <QScopeGuard>
#include <QScreen>
#include <QStatusBar>
#include <QStyle>
#include <QTableView>
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
  FProgress = std::make_unique<TWindowProgress>(this);
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

  asgTickets = new QTableView(central);
  asgTickets->setObjectName(QStringLiteral("asgTickets"));
  asgTickets->setAlternatingRowColors(true);
  asgTickets->setSelectionBehavior(QAbstractItemView::SelectRows);
  asgTickets->setEditTriggers(QAbstractItemView::NoEditTriggers);
  asgTickets->horizontalHeader()->setHighlightSections(false);
  QFont headerFont = asgTickets->horizontalHeader()->font();
  headerFont.setBold(true);
  asgTickets->horizontalHeader()->setFont(headerFont);
  asgTickets->verticalHeader()->hide();
  asgTickets->verticalHeader()->setDefaultSectionSize(asgTickets->fontMetrics().height() + 6);

  layout->addWidget(FButtonPanel);
  layout->addWidget(asgTickets, 1);
  setCentralWidget(central);

  asgTickets->setModel(&FState.FTicketsGrid);
  WireButtons();

  resize(CClientWidth, CClientHeight);
  if (const QScreen *screen = QGuiApplication::primaryScreen())
    move(screen->availableGeometry().center() - rect().center());
}

TfrmMain::~TfrmMain() = default;

void TfrmMain::bbtGetTicketsClick()
{
  FState.bbtGetTicketsClick(*FProgress);
  FitColumns();
  ShowRetrievalStatus();
}

void TfrmMain::FitColumns()
{
  constexpr int CPadding = 5;
  asgTickets->resizeColumnsToContents();
  for (int column = 0; column < TTicketsModel::ColumnCount; ++column)
    asgTickets->setColumnWidth(column, asgTickets->columnWidth(column) + CPadding);
}

void TfrmMain::ShowRetrievalStatus()
{
  const QString status = FState.RetrievalStatusText();
  statusBar()->showMessage(status);
  statusBar()->setToolTip(status); // a long line is clipped
}

void TfrmMain::bbtGET_Organization_ListClick()
{
  FState.bbtGET_Organization_ListClick(
      *FProgress, [this](const tyRestOrganizations &organizations, tyRestOrganizations &selectedOrganizations,
                         const tyRestTeams &teams, tyRestTeams &selectedTeams, const tyRestOrganizationsTeams &links) {
        return ChooseOrga(organizations, selectedOrganizations, teams, selectedTeams, links, this);
      });
}

void TfrmMain::bbtStatusAndPropertiesClick()
{
  FState.bbtStatusAndPropertiesClick([this](tyRestObjects &statuses, tyRestObjects &priorities, TColourStore &colours) {
    return EditStatusAndPriorities(statuses, priorities, colours, this);
  });
}

void TfrmMain::bbtSendMailClick()
{
  const QStringList mails = FState.bbtSendMailClick(
      [this](const QStringList &to, const QStringList &cc) { return ConfirmRecipients(to, cc, this); });
  if (!mails.isEmpty())
    statusBar()->showMessage(mails.size() == 1 ? mails.first() : tr("%1 mails sent").arg(mails.size()));
}

void TfrmMain::bbtTextsClick()
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtTextsClick");
  if (EditHtmlTexts(FState.FHtmlTexts, this))
    FState.SaveHtmlTexts();
}

void TfrmMain::bbtSmtpServerClick()
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtSmtpServerClick");
  if (ConfigureSMTPserver(FState.FSmtp, FState.FDelivery, this)) {
    FState.SaveConfigSMTP();
    FState.SaveConfigDelivery();
  }
}

void TfrmMain::bbtGenerateMailClick()
{
  FState.bbtGenerateMailClick(
      [](const QString &page) { QDesktopServices::openUrl(QUrl::fromLocalFile(page)); });
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

TExitStatus TfrmMain::RunUnattended(const TUnattendedOptions &options)
{
  TUnattendedOptions shown = options;
  shown.ShowAutomaticMode = [this](bool automatic) { ShowAutomaticMode(automatic); };
  SetStepRunning(true);
  const TExitStatus status = TimerTimer(FState, *FProgress, shown);
  SetStepRunning(false);
  FitColumns();
  ShowRetrievalStatus();
  return status;
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
}

void TfrmMain::closeEvent(QCloseEvent *event)
{
  // A step lets window events through while it waits for the service; closing
  // the window then would pull its state away from under it.
  if (FStepRunning) {
    statusBar()->showMessage(tr("Wait for the current step to end before closing."));
    event->ignore();
    return;
  }
  QMainWindow::closeEvent(event);
}

void TfrmMain::RunStep(const QString &caption, const std::function<void()> &step)
{
  // The buttons stay disabled while a step runs: a long step lets window events
  // through to keep the window painted, and no step may start inside another.
  SetStepRunning(true);
  const auto restore = qScopeGuard([this] { SetStepRunning(false); });
  try {
    step();
  } catch (const EQuorvexError &error) {
    TraceFailure(lcApp(), error.Message());
    ShowFailure(this, error.Message(), error.Details());
    return;
  } catch (const std::exception &error) {
    TraceFailure(lcApp(), QString::fromLocal8Bit(error.what()));
    ShowFailure(this, QString::fromLocal8Bit(error.what()), QString());
    return;
  }
  const TStepFailures failures = FState.TakeStepFailures();
  if (!failures.isEmpty())
    ShowStepFailures(this, tr("\"%1\" could not be completed.").arg(caption), failures);
}

void TfrmMain::WireButtons()
{
  auto wire = [this](QToolButton *button, void (TfrmMain::*handler)()) {
    connect(button, &QToolButton::clicked, this, [this, button, handler] {
      QString caption = button->text().isEmpty() ? button->toolTip() : button->text();
      caption.replace(QStringLiteral("&&"), QStringLiteral("&"));
      RunStep(caption, [this, handler] { (this->*handler)(); });
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

void TfrmMain::bbtQuorvexItsmApiClick()
{
  FState.bbtQuorvexItsmApiClick([this](tyQuorvexITSM &settings) { return SetQuorvexItsmConfig(settings, this); });
}

void TfrmMain::bbtFilterClick()
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtFilterClick");
  if (EditFilters(FState.FNbMinutes, FState.FNbDays, FState.FStatusToIgnore, this))
    FState.SaveConfigFilters();
}

void TfrmMain::bbtSaveGridClick()
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtSaveGridClick");
  const QString fileName =
      QFileDialog::getSaveFileName(this, tr("Save the tickets"), QString(), QStringLiteral("Excel file (*.xlsx)"));
  if (!fileName.isEmpty())
    ExportGridToXlsx(FState.FTicketsGrid, fileName);
}

void TfrmMain::bbtAboutClick()
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtAboutClick");
  TfrmAbout(this).exec();
}

void TfrmMain::bbtAboutContextMenu(const QPoint &position)
{
  const TraceScope trace(lcApp(), "TfrmMain.bbtAboutContextMenu");
  QMenu menu(this);
  menu.addAction(QStringLiteral("Librairies"), this, [this] { TfrmLibraries(this).exec(); });
  menu.exec(bbtAbout->mapToGlobal(position));
}
