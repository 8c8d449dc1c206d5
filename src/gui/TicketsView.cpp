#include "TicketsView.h"

#include "tickets/TicketsModel.h"

#include <QApplication>
#include <QDesktopServices>
#include <QUrl>
#include <utility>
#include <QFont>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QSortFilterProxyModel>
#include <QStyle>
#include <QTableView>
#include <QVBoxLayout>

namespace {

const QString CGuide = QStringLiteral(
    "<h3>First steps</h3><ol>"
    "<li><b>Quorvex ITSM API</b>: the service's address and the API account.</li>"
    "<li><b>Organizations &amp; Teams</b>: the organizations to follow and the teams the report is about.</li>"
    "<li><b>SMPT Server</b>: the mail server and who receives the report.</li>"
    "<li><b>Get tickets</b>: the open tickets appear here.</li>"
    "<li><b>Generate Mail</b>: the report, opened in the browser to read before it goes.</li>"
    "<li><b>Send Mail</b>: the report to the people it concerns.</li></ol>");

// The tickets as the grid shows them: sorted and searched, and a warning sign on
// the tickets where the supervisor added ten exchanges.
class TShownTickets : public QSortFilterProxyModel
{
public:
  explicit TShownTickets(QObject *parent)
      : QSortFilterProxyModel(parent), FFlag(QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning))
  {
    setSortRole(Qt::EditRole); // numbers and dates in their own order
    setSortCaseSensitivity(Qt::CaseInsensitive);
    setSortLocaleAware(true);
  }

  // What the search box looks for, folded as the cells are.
  void SetSearch(const QString &text)
  {
    FSearch = Folded(text.trimmed());
    invalidateRowsFilter();
  }

  QVariant data(const QModelIndex &index, int role) const override
  {
    if (role == Qt::DecorationRole && index.column() == TTicketsModel::colType &&
        QSortFilterProxyModel::data(index, TTicketsModel::TenExchangesRole).toBool())
      return FFlag;
    // New on the report: bold; snoozed: greyed.
    if (role == Qt::FontRole && QSortFilterProxyModel::data(index, TTicketsModel::NewRole).toBool()) {
      QFont bold;
      bold.setBold(true);
      return bold;
    }
    if (role == Qt::ForegroundRole && QSortFilterProxyModel::data(index, TTicketsModel::SnoozedRole).toBool())
      return QApplication::palette().brush(QPalette::Disabled, QPalette::Text);
    // A cell cut to its column's width shows its whole text on hovering.
    if (role == Qt::ToolTipRole && index.column() == TTicketsModel::colOrganization) {
      const QString tip = QSortFilterProxyModel::data(index, role).toString();
      const QString name = QSortFilterProxyModel::data(index, Qt::DisplayRole).toString();
      return tip.isEmpty() ? name : name + u'\n' + tip;
    }
    return QSortFilterProxyModel::data(index, role);
  }

protected:
  // A row matches when one of its cells holds the search, whatever the case and
  // the accents ("ecran" finds "Écran").
  bool filterAcceptsRow(int row, const QModelIndex &parent) const override
  {
    if (FSearch.isEmpty())
      return true;
    const QAbstractItemModel *tickets = sourceModel();
    for (int column = 0; column < tickets->columnCount(parent); ++column)
      if (Folded(tickets->index(row, column, parent).data().toString()).contains(FSearch))
        return true;
    return false;
  }

private:
  // Without case nor accents: the text decomposed, its combining marks dropped.
  static QString Folded(const QString &text)
  {
    QString folded;
    for (const QChar c : text.normalized(QString::NormalizationForm_KD))
      if (c.category() != QChar::Mark_NonSpacing)
        folded.append(c);
    return folded.toCaseFolded();
  }

  QIcon FFlag;
  QString FSearch;
};

// Widest a column starts at: a long organization name is cut, with its whole
// text in a tool tip, rather than taking the grid's whole width.
constexpr int CMaxColumnWidth = 260;

} // namespace

TTicketsView::TTicketsView(QAbstractItemModel &tickets, QWidget *parent)
    : QStackedWidget(parent), FShown(new TShownTickets(this))
{
  lblGuide = new QLabel(CGuide);
  lblGuide->setObjectName(QStringLiteral("lblGuide"));
  lblGuide->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  lblGuide->setMargin(16);
  lblGuide->setWordWrap(true);
  lblGuide->setFrameShape(QFrame::StyledPanel);

  edtSearch = new QLineEdit;
  edtSearch->setObjectName(QStringLiteral("edtSearch"));
  edtSearch->setPlaceholderText(tr("Search the grid"));
  edtSearch->setClearButtonEnabled(true);
  connect(edtSearch, &QLineEdit::textChanged, this,
          [this](const QString &text) { static_cast<TShownTickets *>(FShown)->SetSearch(text); });
  lblCount = new QLabel;
  lblCount->setObjectName(QStringLiteral("lblCount"));

  asgTickets = new QTableView;
  asgTickets->setObjectName(QStringLiteral("asgTickets"));
  asgTickets->setAlternatingRowColors(true);
  asgTickets->setSelectionBehavior(QAbstractItemView::SelectRows);
  asgTickets->setEditTriggers(QAbstractItemView::NoEditTriggers);
  asgTickets->setContextMenuPolicy(Qt::CustomContextMenu);
  asgTickets->setTabKeyNavigation(false); // Tab leaves the grid; arrows move in it
  asgTickets->setTextElideMode(Qt::ElideRight);
  // Double-click or Enter opens the ticket's page, as the report's link does.
  connect(asgTickets, &QAbstractItemView::activated, this, [](const QModelIndex &index) {
    const QString link = index.data(TTicketsModel::LinkRole).toString();
    if (!link.isEmpty())
      QDesktopServices::openUrl(QUrl(link));
  });
  QHeaderView *header = asgTickets->horizontalHeader();
  header->setHighlightSections(false);
  QFont headerFont = header->font();
  headerFont.setBold(true);
  header->setFont(headerFont);
  asgTickets->verticalHeader()->hide();
  asgTickets->verticalHeader()->setDefaultSectionSize(asgTickets->fontMetrics().height() + 6);
  FShown->setSourceModel(&tickets);
  asgTickets->setModel(FShown);
  // Unsorted until a header is clicked; a third click returns to the retrieval's order.
  header->setSortIndicatorClearable(true);
  header->setSortIndicator(-1, Qt::AscendingOrder);
  asgTickets->setSortingEnabled(true);

  auto *grid = new QWidget;
  auto *layout = new QVBoxLayout(grid);
  layout->setContentsMargins(0, 0, 0, 0);
  auto *searchRow = new QHBoxLayout;
  searchRow->addWidget(edtSearch, 1);
  searchRow->addWidget(lblCount);
  layout->addLayout(searchRow);
  layout->addWidget(asgTickets, 1);
  connect(FShown, &QAbstractItemModel::rowsInserted, this, &TTicketsView::ShowCount);
  connect(FShown, &QAbstractItemModel::rowsRemoved, this, &TTicketsView::ShowCount);
  connect(FShown, &QAbstractItemModel::modelReset, this, &TTicketsView::ShowCount);
  connect(FShown, &QAbstractItemModel::layoutChanged, this, &TTicketsView::ShowCount);

  addWidget(lblGuide);
  addWidget(grid);
  // The guide stays until rows come (a first retrieval cancelled brings none).
  // The first page of a retrieval fits the columns for the time it fills; the
  // whole list fits them again, flags and marks included.
  connect(&tickets, &QAbstractItemModel::rowsInserted, this, [this, grid] {
    if (!std::exchange(FFilling, true)) {
      setCurrentWidget(grid);
      FitColumns(/*whole*/ false);
    }
  });
  connect(&tickets, &QAbstractItemModel::modelReset, this, [this, grid] {
    FFilling = false;
    if (FShown->sourceModel()->rowCount() > 0) {
      setCurrentWidget(grid);
      FitColumns(/*whole*/ true);
    }
  });
  // The follow-up's marks come after the tickets: their column fits them then.
  connect(&tickets, &QAbstractItemModel::dataChanged, this,
          [this] { asgTickets->resizeColumnToContents(TTicketsModel::colListed); });
}

QList<TRestId> TTicketsView::SelectedTickets() const
{
  QList<TRestId> tickets;
  for (const QModelIndex &row : asgTickets->selectionModel()->selectedRows())
    tickets.append(row.data(TTicketsModel::TicketIdRole).toLongLong());
  return tickets;
}

bool TTicketsView::AnySnoozedSelected() const
{
  const QModelIndexList rows = asgTickets->selectionModel()->selectedRows();
  return std::any_of(rows.cbegin(), rows.cend(),
                     [](const QModelIndex &row) { return row.data(TTicketsModel::SnoozedRole).toBool(); });
}

const QAbstractItemModel &TTicketsView::ShownRows() const { return *FShown; }

std::unique_ptr<QAbstractItemModel> TTicketsView::AllRowsInShownOrder() const
{
  auto rows = std::make_unique<TShownTickets>(nullptr);
  rows->setSourceModel(FShown->sourceModel());
  rows->sort(FShown->sortColumn(), FShown->sortOrder());
  return rows;
}

void TTicketsView::RestoreColumns(const QList<int> &widths, int sortColumn, bool descending)
{
  FRememberedWidths = widths;
  if (sortColumn >= 0 && sortColumn < FShown->columnCount())
    asgTickets->sortByColumn(sortColumn, descending ? Qt::DescendingOrder : Qt::AscendingOrder);
}

QList<int> TTicketsView::ColumnWidths() const
{
  QList<int> widths;
  if (currentWidget() == lblGuide)
    return FRememberedWidths; // never shown: what was remembered stays
  for (int column = 0; column < FShown->columnCount(); ++column)
    widths.append(asgTickets->columnWidth(column));
  return widths;
}

int TTicketsView::SortColumn() const
{
  return asgTickets->horizontalHeader()->sortIndicatorSection();
}

bool TTicketsView::SortDescending() const
{
  return asgTickets->horizontalHeader()->sortIndicatorOrder() == Qt::DescendingOrder;
}

void TTicketsView::FitColumns(bool whole)
{
  if (FRememberedWidths.size() == FShown->columnCount()) {
    for (int column = 0; column < FShown->columnCount(); ++column)
      asgTickets->setColumnWidth(column, FRememberedWidths.at(column));
    if (whole)
      FRememberedWidths.clear(); // later retrievals fit their contents again
    return;
  }
  constexpr int CPadding = 5;
  asgTickets->resizeColumnsToContents();
  for (int column = 0; column < FShown->columnCount(); ++column)
    asgTickets->setColumnWidth(column, std::min(asgTickets->columnWidth(column) + CPadding, CMaxColumnWidth));
}

void TTicketsView::ShowCount()
{
  const int shown = FShown->rowCount();
  const int all = FShown->sourceModel()->rowCount();
  lblCount->setText(shown == all ? tr("%n ticket(s)", nullptr, all) : tr("%1 of %2 shown").arg(shown).arg(all));
}
