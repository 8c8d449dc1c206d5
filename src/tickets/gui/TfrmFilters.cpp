#include "TfrmFilters.h"

#include "core/uTools.h"
#include "gui/DialogLayout.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QStyle>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace {
constexpr std::int32_t CDefaultMinutes = 15;
constexpr std::int32_t CDefaultDays = 14;
constexpr int CArrowMinimum = 1;
constexpr int CArrowMaximum = 1000;

std::int32_t NumberOr(const QLineEdit *edit, std::int32_t fallback)
{
  bool ok = false;
  const std::int32_t value = edit->text().toInt(&ok);
  return ok ? value : fallback;
}

// Up and down arrows beside a number, kept to 1..1000.
QWidget *UpDown(QLineEdit *edit, const QString &name)
{
  auto *box = new QWidget;
  box->setObjectName(name);
  auto *layout = new QVBoxLayout(box);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  for (const int step : {+1, -1}) {
    auto *arrow = new QToolButton;
    arrow->setArrowType(step > 0 ? Qt::UpArrow : Qt::DownArrow);
    arrow->setFixedSize(18, 12);
    arrow->setAutoRepeat(true);
    QObject::connect(arrow, &QToolButton::clicked, edit, [edit, step] {
      const int value = NumberOr(edit, step > 0 ? CArrowMinimum - 1 : CArrowMinimum + 1) + step;
      edit->setText(QString::number(std::clamp(value, CArrowMinimum, CArrowMaximum)));
    });
    layout->addWidget(arrow);
  }
  return box;
}
} // namespace

TfrmFilters::TfrmFilters(QWidget *parent) : QDialog(parent)
{
  setObjectName(QStringLiteral("frmFilters"));
  setWindowTitle(QStringLiteral("Filters"));

  PageControl = new QTabWidget;
  PageControl->addTab(DelayPage(), QStringLiteral("Delay"));
  PageControl->addTab(StatusPage(), QStringLiteral("Status to be ignored (tickets not updated)"));

  SetOkCancelLayout(this, PageControl);
  layout()->setSizeConstraint(QLayout::SetFixedSize); // as large as its texts need
}

QWidget *TfrmFilters::NumberRow(QLineEdit *&edit, const char *name, const QString &label)
{
  auto *row = new QWidget;
  auto *layout = new QVBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  auto *caption = new QLabel(label);
  edit = new QLineEdit;
  edit->setObjectName(QLatin1String(name));
  edit->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d*")), edit));
  edit->setMaximumWidth(90);
  caption->setBuddy(edit);
  auto *line = new QHBoxLayout;
  line->setSpacing(2);
  line->addWidget(edit);
  line->addWidget(UpDown(edit, QLatin1String(name) == QLatin1String("ledtNbMinutes") ? QStringLiteral("udMinutes")
                                                                                       : QStringLiteral("udDays")));
  line->addStretch(1);
  layout->addWidget(caption);
  layout->addLayout(line);
  return row;
}

QWidget *TfrmFilters::DelayPage()
{
  auto *page = new QWidget;
  auto *layout = new QVBoxLayout(page);
  auto *unassigned = new QGroupBox(QStringLiteral("Unassigned"));
  (new QVBoxLayout(unassigned))
      ->addWidget(NumberRow(ledtNbMinutes, "ledtNbMinutes",
                            QStringLiteral("Number of minutes before the ticket is displayed in the list.")));
  auto *notUpdated = new QGroupBox(QStringLiteral("Tickets not updated"));
  (new QVBoxLayout(notUpdated))
      ->addWidget(NumberRow(ledtNbDays, "ledtNbDays",
                            QStringLiteral("Number of days before the ticket is displayed in the list.")));
  layout->addWidget(unassigned);
  layout->addWidget(notUpdated);
  layout->addStretch(1);
  return page;
}

QWidget *TfrmFilters::StatusPage()
{
  auto *page = new QWidget;
  auto *layout = new QVBoxLayout(page);
  ListBox = new QListWidget;
  ListBox->setObjectName(QStringLiteral("ListBox"));
  Edit = new QLineEdit;
  Edit->setObjectName(QStringLiteral("Edit"));
  Edit->setPlaceholderText(tr("Status name"));
  Edit->installEventFilter(this);

  auto button = [this](const QString &caption, const char *name, TAction action) {
    auto *b = new QPushButton(caption);
    b->setObjectName(QLatin1String(name));
    connect(b, &QPushButton::clicked, this, [this, action] { RunAction(action); });
    return b;
  };
  auto arrow = [this](QStyle::StandardPixmap icon, const QString &tip, const char *name, TAction action) {
    auto *b = new QToolButton;
    b->setObjectName(QLatin1String(name));
    b->setIcon(style()->standardIcon(icon));
    b->setToolTip(tip);
    connect(b, &QToolButton::clicked, this, [this, action] { RunAction(action); });
    return b;
  };
  bbtRemplacer = button(QStringLiteral("Replace"), "bbtRemplacer", actReplace);
  bbtAjouter = button(QStringLiteral("Add"), "bbtAjouter", actAdd);
  bbtSupprimer = button(QStringLiteral("Remove"), "bbtSupprimer", actRemove);
  bbtMonter = arrow(QStyle::SP_ArrowUp, tr("Move up"), "bbtMonter", actUp);
  bbtDescendre = arrow(QStyle::SP_ArrowDown, tr("Move down"), "bbtDescendre", actDown);
  bbtTri = arrow(QStyle::SP_FileDialogListView, tr("Sort"), "bbtTri", actSort);
  bbtTri->setText(QStringLiteral("A→Z"));
  bbtTri->setToolButtonStyle(Qt::ToolButtonTextOnly);

  auto *row = new QHBoxLayout;
  for (QWidget *w : std::initializer_list<QWidget *>{bbtRemplacer, bbtAjouter, bbtSupprimer})
    row->addWidget(w);
  row->addStretch(1);
  for (QWidget *w : std::initializer_list<QWidget *>{bbtMonter, bbtDescendre, bbtTri})
    row->addWidget(w);

  layout->addWidget(ListBox, 1);
  layout->addWidget(Edit);
  layout->addLayout(row);

  connect(ListBox, &QListWidget::itemSelectionChanged, this, &TfrmFilters::ListClick);
  // A click on the line already selected also brings its text back to the edit.
  connect(ListBox, &QListWidget::itemClicked, this, &TfrmFilters::ListClick);
  connect(Edit, &QLineEdit::textEdited, this, &TfrmFilters::EditKeyUp);
  return page;
}

void TfrmFilters::Fill(std::int32_t minutes, std::int32_t days, const QStringList &statuses)
{
  ledtNbMinutes->setText(QString::number(minutes));
  ledtNbDays->setText(QString::number(days));
  ListBox->clear();
  ListBox->addItems(statuses);
  PageControl->setCurrentIndex(0);
  ListClick();
}

std::int32_t TfrmFilters::Minutes() const { return NumberOr(ledtNbMinutes, CDefaultMinutes); }
std::int32_t TfrmFilters::Days() const { return NumberOr(ledtNbDays, CDefaultDays); }

QStringList TfrmFilters::Statuses() const
{
  QStringList lines;
  for (int i = 0; i < ListBox->count(); ++i)
    lines.append(ListBox->item(i)->text());
  return lines;
}

void TfrmFilters::ListClick()
{
  const int selected = ListBox->currentRow();
  const bool hasSelection = selected >= 0 && ListBox->currentItem() && ListBox->currentItem()->isSelected();
  Edit->setText(hasSelection ? ListBox->currentItem()->text() : QString());
  bbtSupprimer->setEnabled(hasSelection);
  bbtRemplacer->setEnabled(false);
  bbtAjouter->setEnabled(false);
  bbtMonter->setEnabled(hasSelection && selected > 0);
  bbtDescendre->setEnabled(hasSelection && selected <= ListBox->count() - 2);
  bbtTri->setEnabled(ListBox->count() > 1);
}

bool TfrmFilters::eventFilter(QObject *watched, QEvent *event)
{
  if (watched == Edit && event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent *>(event)->key();
    if ((key == Qt::Key_Return || key == Qt::Key_Enter) && !TrimBlanks(Edit->text()).isEmpty()) {
      if (bbtAjouter->isEnabled())
        RunAction(actAdd);
      return true;
    }
  }
  return QDialog::eventFilter(watched, event);
}

void TfrmFilters::EditKeyUp()
{
  const QString text = TrimBlanks(Edit->text());
  if (ListBox->count() == 0) {
    bbtRemplacer->setEnabled(false);
    bbtSupprimer->setEnabled(false);
    bbtAjouter->setEnabled(!text.isEmpty());
    return;
  }
  const QString selected = ListBox->currentItem() ? ListBox->currentItem()->text() : QString();
  bool known = false;
  for (int i = 0; i < ListBox->count() && !known; ++i)
    known = ListBox->item(i)->text().compare(text, Qt::CaseInsensitive) == 0;
  bbtRemplacer->setEnabled(text != selected);
  bbtAjouter->setEnabled(text != selected && !known);
}

void TfrmFilters::RunAction(TAction action)
{
  const int selected = ListBox->currentRow();
  switch (action) {
  case actReplace:
    if (selected >= 0)
      ListBox->item(selected)->setText(Edit->text());
    break;
  case actAdd:
    ListBox->addItem(Edit->text());
    ListBox->setCurrentRow(ListBox->count() - 1);
    break;
  case actRemove:
    if (selected >= 0) {
      delete ListBox->takeItem(selected);
      ListBox->setCurrentRow(selected - 1); // the line above; none after the first
      if (selected == 0)
        ListBox->clearSelection();
    }
    break;
  case actUp:
  case actDown: {
    const int other = action == actUp ? selected - 1 : selected + 1;
    if (selected >= 0 && other >= 0 && other < ListBox->count()) {
      const QString text = ListBox->item(selected)->text();
      ListBox->item(selected)->setText(ListBox->item(other)->text());
      ListBox->item(other)->setText(text);
      ListBox->setCurrentRow(other);
    }
    break;
  }
  case actSort: {
    const QString current = selected >= 0 ? ListBox->item(selected)->text() : QString();
    QStringList lines = Statuses();
    lines.sort(Qt::CaseInsensitive);
    ListBox->clear();
    ListBox->addItems(lines);
    if (selected >= 0)
      ListBox->setCurrentRow(static_cast<int>(lines.indexOf(current)));
    break;
  }
  }
  ListClick();
}

bool EditFilters(std::int32_t &minutes, std::int32_t &days, QStringList &statuses, QWidget *parent)
{
  TfrmFilters dialog(parent);
  dialog.Fill(minutes, days, statuses);
  if (dialog.exec() != QDialog::Accepted)
    return false;
  minutes = dialog.Minutes();
  days = dialog.Days();
  statuses = dialog.Statuses();
  return true;
}
