#include "TfrmStatusPriorities.h"

#include "core/uTools.h"
#include "gui/DialogLayout.h"
#include "tickets/ColourStore.h"

#include <QApplication>
#include <QColorDialog>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScopeGuard>
#include <QStyledItemDelegate>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

constexpr int CColourRole = Qt::UserRole + 1;

QColor ToQColor(TColor color)
{
  const tyRGBTriple triple = ColorToRGBTriple(color);
  return QColor(triple.rgbtRed, triple.rgbtGreen, triple.rgbtBlue);
}

TColor FromQColor(const QColor &color)
{
  return color.red() | (color.green() << 8) | (color.blue() << 16);
}

// A line painted in its own colour with a readable text; the selected line in
// the highlight colours.
class TColourLineDelegate : public QStyledItemDelegate
{
public:
  using QStyledItemDelegate::QStyledItemDelegate;
  void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
  {
    const bool selected = option.state & QStyle::State_Selected;
    const TColor background = index.data(CColourRole).toInt();
    painter->fillRect(option.rect, selected ? option.palette.highlight().color() : ToQColor(background));
    painter->setPen(selected ? option.palette.highlightedText().color() : ToQColor(GetContrastedColor(background)));
    painter->drawText(option.rect.adjusted(2, 2, 0, 0), Qt::AlignLeft | Qt::AlignTop,
                      index.data(Qt::DisplayRole).toString());
    if (option.state & QStyle::State_HasFocus) {
      QStyleOptionFocusRect focus;
      focus.rect = option.rect;
      focus.state = option.state;
      QApplication::style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, painter);
    }
  }
  QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
  {
    return QStyledItemDelegate::sizeHint(option, index) + QSize(0, 4);
  }
};

// The sample of a priority code, which opens the colour choice on double click.
class TSamplePanel : public QLabel
{
public:
  std::function<void()> OnDoubleClick;

protected:
  void mouseDoubleClickEvent(QMouseEvent *) override
  {
    if (OnDoubleClick)
      OnDoubleClick();
  }
};

void FillList(QListWidget *list, const tyRestObjects &objects)
{
  const int current = list->currentRow();
  list->clear();
  for (const tyRestObject &object : objects) {
    auto *item = new QListWidgetItem(object._reference, list);
    item->setData(CColourRole, object.BgColor);
  }
  if (current >= 0 && current < list->count())
    list->setCurrentRow(current);
}

std::optional<TColor> AskColour(TColor current, QWidget *parent)
{
  // The custom colours start with the current one only.
  for (int i = 0; i < QColorDialog::customCount(); ++i)
    QColorDialog::setCustomColor(i, i == 0 ? ToQColor(current) : QColor(Qt::white));
  const QColor chosen = QColorDialog::getColor(ToQColor(current), parent);
  if (!chosen.isValid())
    return std::nullopt;
  return FromQColor(chosen);
}

} // namespace

TfrmStatusPriorities::TfrmStatusPriorities(const tyRestObjects &statuses, const tyRestObjects &priorities,
                                           TColourStore &colours, QWidget *parent)
    : QDialog(parent), FStatuses(statuses), FPriorities(priorities), FColours(colours)
{
  setObjectName(QStringLiteral("frmStatusPriorities"));
  setWindowTitle(QStringLiteral("Status & Priorities"));
  resize(425, 441);
  FChooseColour = [this](TColor current) { return AskColour(current, this); };

  lbxStatus = new QListWidget;
  lbxStatus->setObjectName(QStringLiteral("lbxStatus"));
  lbxStatus->setItemDelegate(new TColourLineDelegate(lbxStatus));
  connect(lbxStatus, &QListWidget::itemDoubleClicked, this,
          [this](QListWidgetItem *item) { StatusDoubleClick(lbxStatus->row(item)); });
  connect(lbxStatus, &QListWidget::currentRowChanged, this, &TfrmStatusPriorities::UpdateColourButtons);
  lbxStatus->installEventFilter(this);

  lbxPriorities = new QListWidget;
  lbxPriorities->setObjectName(QStringLiteral("lbxPriorities"));
  lbxPriorities->setItemDelegate(new TColourLineDelegate(lbxPriorities));
  connect(lbxPriorities, &QListWidget::currentRowChanged, this, &TfrmStatusPriorities::PriorityClick);
  lbxPriorities->installEventFilter(this);

  bbtStatusColour = new QPushButton(tr("Colour…"));
  bbtStatusColour->setObjectName(QStringLiteral("bbtStatusColour"));
  bbtStatusColour->setAutoDefault(false);
  connect(bbtStatusColour, &QPushButton::clicked, this, [this] { StatusDoubleClick(lbxStatus->currentRow()); });
  bbtPriorityColour = new QPushButton(tr("Colour…"));
  bbtPriorityColour->setObjectName(QStringLiteral("bbtPriorityColour"));
  bbtPriorityColour->setAutoDefault(false);
  connect(bbtPriorityColour, &QPushButton::clicked, this, &TfrmStatusPriorities::SampleDoubleClick);

  cbPriority = new QComboBox;
  cbPriority->setObjectName(QStringLiteral("cbPriority"));
  cbPriority->setEditable(false);
  // Wide enough for a code ("P1") even while nothing is chosen.
  cbPriority->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  cbPriority->setMinimumContentsLength(4);
  connect(cbPriority, &QComboBox::textActivated, this, &TfrmStatusPriorities::PriorityCodeChanged);

  auto *sample = new TSamplePanel;
  sample->OnDoubleClick = [this] { SampleDoubleClick(); };
  pnlSamplePriority = sample;
  pnlSamplePriority->setObjectName(QStringLiteral("pnlSamplePriority"));
  pnlSamplePriority->setFrameStyle(QFrame::Panel | QFrame::Sunken);
  pnlSamplePriority->setAlignment(Qt::AlignCenter);
  pnlSamplePriority->setAutoFillBackground(true);
  pnlSamplePriority->setMinimumSize(80, 28);
  pnlSamplePriority->setToolTip(tr("Double-click to change the colour of this code"));

  auto *statusPage = new QWidget;
  auto *statusLayout = new QVBoxLayout(statusPage);
  statusLayout->addWidget(lbxStatus);
  auto *statusRow = new QHBoxLayout;
  statusRow->addWidget(new QLabel(tr("Double-click, Enter or F2 also change a colour.")), 1);
  statusRow->addWidget(bbtStatusColour);
  statusLayout->addLayout(statusRow);

  auto *priorityPage = new QWidget;
  auto *priorityLayout = new QVBoxLayout(priorityPage);
  auto *codeRow = new QHBoxLayout;
  codeRow->addWidget(new QLabel(tr("Code:")));
  codeRow->addWidget(cbPriority);
  codeRow->addStretch(1);
  codeRow->addWidget(pnlSamplePriority);
  codeRow->addWidget(bbtPriorityColour);
  priorityLayout->addWidget(lbxPriorities);
  priorityLayout->addLayout(codeRow);

  PageControl = new QTabWidget;
  PageControl->addTab(statusPage, QStringLiteral("Status"));
  PageControl->addTab(priorityPage, QStringLiteral("Priorities"));

  SetOkCancelLayout(this, PageControl);

  ShowStatus();
  ShowPriorities();
  PageControl->setCurrentIndex(0);
  UpdateColourButtons();
}

bool TfrmStatusPriorities::eventFilter(QObject *watched, QEvent *event)
{
  if ((watched == lbxStatus || watched == lbxPriorities) && event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent *>(event)->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_F2) {
      (watched == lbxStatus ? bbtStatusColour : bbtPriorityColour)->click();
      return true;
    }
  }
  return QDialog::eventFilter(watched, event);
}

void TfrmStatusPriorities::UpdateColourButtons()
{
  bbtStatusColour->setEnabled(lbxStatus->currentRow() >= 0);
  bbtPriorityColour->setEnabled(FSelectedPriority >= 0 && pnlSamplePriority->text().size() == 2);
}

void TfrmStatusPriorities::ShowStatus() { FillList(lbxStatus, FStatuses); }

void TfrmStatusPriorities::ShowPriorities()
{
  const QSignalBlocker blocker(lbxPriorities);
  FillList(lbxPriorities, FPriorities);
  QStringList codes;
  for (const tyRestObject &priority : FPriorities)
    if (priority.Text.size() == 2 && !codes.contains(priority.Text))
      codes.append(priority.Text);
  codes.sort(Qt::CaseInsensitive);
  const QSignalBlocker comboBlocker(cbPriority);
  const QString current = cbPriority->currentText();
  cbPriority->clear();
  cbPriority->addItems(codes);
  cbPriority->setCurrentIndex(static_cast<int>(codes.indexOf(current)));
}

void TfrmStatusPriorities::StatusDoubleClick(int row)
{
  if (row < 0 || row >= FStatuses.size())
    return;
  if (const std::optional<TColor> chosen = FChooseColour(FStatuses[row].BgColor)) {
    FStatuses[row].BgColor = *chosen;
    ShowStatus();
    lbxStatus->setCurrentRow(row);
  }
}

void TfrmStatusPriorities::PriorityClick(int row)
{
  FSelectedPriority = row >= 0 && row < FPriorities.size() ? row : -1;
  const QSignalBlocker blocker(cbPriority);
  cbPriority->setCurrentIndex(FSelectedPriority >= 0 ? cbPriority->findText(FPriorities[row].Text) : -1);
  ShowSample();
}

void TfrmStatusPriorities::ShowSample()
{
  const auto buttons = qScopeGuard([this] { UpdateColourButtons(); });
  if (FSelectedPriority < 0) {
    pnlSamplePriority->clear();
    pnlSamplePriority->setPalette(palette());
    return;
  }
  const tyRestObject &priority = FPriorities[FSelectedPriority];
  pnlSamplePriority->setText(priority.Text);
  QPalette colours = pnlSamplePriority->palette();
  colours.setColor(QPalette::Window, ToQColor(priority.BgColor));
  colours.setColor(QPalette::WindowText, ToQColor(GetContrastedColor(priority.BgColor)));
  pnlSamplePriority->setPalette(colours);
}

void TfrmStatusPriorities::SelectPriority(int row)
{
  ShowPriorities();
  const QSignalBlocker blocker(lbxPriorities);
  lbxPriorities->setCurrentRow(row);
  PriorityClick(row);
}

void TfrmStatusPriorities::PriorityCodeChanged(const QString &code)
{
  if (FSelectedPriority < 0)
    return;
  FPriorities[FSelectedPriority].Text = code;
  FPriorities[FSelectedPriority].BgColor = FColours.GetSavedColor(Setting::PriorityColours, code);
  SelectPriority(FSelectedPriority);
}

void TfrmStatusPriorities::SampleDoubleClick()
{
  const QString code = pnlSamplePriority->text();
  if (code.size() != 2 || FSelectedPriority < 0)
    return;
  if (const std::optional<TColor> chosen = FChooseColour(FPriorities[FSelectedPriority].BgColor)) {
    // Every priority sharing the code takes the colour.
    for (tyRestObject &priority : FPriorities)
      if (priority.Text == code)
        priority.BgColor = *chosen;
    SelectPriority(FSelectedPriority);
  }
}

bool EditStatusAndPriorities(tyRestObjects &statuses, tyRestObjects &priorities, TColourStore &colours,
                             QWidget *parent)
{
  TfrmStatusPriorities dialog(statuses, priorities, colours, parent);
  if (dialog.exec() != QDialog::Accepted)
    return false;
  statuses = dialog.Statuses();
  priorities = dialog.Priorities();
  return true;
}
