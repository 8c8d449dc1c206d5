#include "TfmChooseOrga.h"

#include "gui/DialogLayout.h"
#include "tickets/Selection.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

// A list longer than this gets its filter box.
constexpr int CLongList = 10;

void SetChecks(QListWidget *list, int tag)
{
  for (int i = 0; i < list->count(); ++i) {
    QListWidgetItem *item = list->item(i);
    if (item->isHidden())
      continue;
    const bool checked = item->checkState() == Qt::Checked;
    const bool now = tag < 0 ? false : tag > 0 ? true : !checked;
    item->setCheckState(now ? Qt::Checked : Qt::Unchecked);
  }
}

QListWidgetItem *AddCheckItem(QListWidget *list, const QString &text, bool checked)
{
  auto *item = new QListWidgetItem(text, list);
  item->setToolTip(text); // a name wider than the list is still readable
  item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable | Qt::ItemIsSelectable);
  item->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
  return item;
}

QStringList CheckedTexts(const QListWidget *list)
{
  QStringList texts;
  for (int i = 0; i < list->count(); ++i)
    if (list->item(i)->checkState() == Qt::Checked)
      texts.append(list->item(i)->text());
  return texts;
}

// Shows the lines that contain the filter's text, and the filter only for a long list.
void ApplyFilter(QListWidget *list, QLineEdit *filter)
{
  filter->setVisible(list->count() > CLongList);
  const QString text = filter->text().trimmed();
  for (int i = 0; i < list->count(); ++i)
    list->item(i)->setHidden(!list->item(i)->text().contains(text, Qt::CaseInsensitive));
}

QLineEdit *FilterBox(const char *name, QListWidget *list)
{
  auto *filter = new QLineEdit;
  filter->setObjectName(QLatin1String(name));
  filter->setPlaceholderText(QObject::tr("Filter"));
  filter->setClearButtonEnabled(true);
  QObject::connect(filter, &QLineEdit::textChanged, list, [list, filter] { ApplyFilter(list, filter); });
  return filter;
}

QWidget *CheckPage(QListWidget *list, QLineEdit *filter, QLabel *hint, const std::function<void(int)> &onButton)
{
  auto *page = new QWidget;
  auto *layout = new QVBoxLayout(page);
  layout->addWidget(filter);
  if (hint)
    layout->addWidget(hint);
  layout->addWidget(list, 1);
  auto *row = new QHBoxLayout;
  const QList<std::pair<QString, int>> buttons{
      {QStringLiteral("Select none"), -1}, {QStringLiteral("Invert selection"), 0}, {QStringLiteral("Select all"), 1}};
  for (const auto &[caption, tag] : buttons) {
    auto *button = new QPushButton(caption);
    QObject::connect(button, &QPushButton::clicked, page, [onButton, tag = tag] { onButton(tag); });
    row->addWidget(button);
  }
  row->addStretch(1);
  layout->addLayout(row);
  return page;
}

} // namespace

TfmChooseOrga::TfmChooseOrga(const tyRestOrganizations &organizations,
                             const tyRestOrganizations &selectedOrganizations, const tyRestTeams &teams,
                             const tyRestTeams &selectedTeams, const tyRestOrganizationsTeams &links, QWidget *parent)
    : QDialog(parent), FOrganizations(organizations), FSelectedOrganizations(selectedOrganizations), FTeams(teams),
      FSelectedTeams(selectedTeams), FLinks(links)
{
  setObjectName(QStringLiteral("fmChooseOrga"));
  setWindowTitle(QStringLiteral("Organizations & Teams selection"));
  setSizeGripEnabled(true);
  resize(563, 309);

  clbOrga = new QListWidget;
  clbOrga->setObjectName(QStringLiteral("clbOrga"));
  clbTeams = new QListWidget;
  clbTeams->setObjectName(QStringLiteral("clbTeams"));
  connect(clbOrga, &QListWidget::itemChanged, this, [this] { UpdateTeams(); });
  edtFilterOrga = FilterBox("edtFilterOrga", clbOrga);
  edtFilterTeams = FilterBox("edtFilterTeams", clbTeams);
  lblNoTeams = new QLabel(tr("Check an organization on the \"Organizations\" tab to list its teams here."));
  lblNoTeams->setObjectName(QStringLiteral("lblNoTeams"));
  lblNoTeams->setWordWrap(true);

  PageControl = new QTabWidget;
  PageControl->addTab(CheckPage(clbOrga, edtFilterOrga, nullptr, [this](int tag) { OrgaButton(tag); }),
                      QStringLiteral("Organizations"));
  PageControl->addTab(CheckPage(clbTeams, edtFilterTeams, lblNoTeams, [this](int tag) { TeamButton(tag); }),
                      QStringLiteral("Teams"));

  SetOkCancelLayout(this, PageControl);

  ShowOrgas();
  UpdateTeams();
  PageControl->setCurrentIndex(0);
}

void TfmChooseOrga::ShowOrgas()
{
  const QSignalBlocker blocker(clbOrga);
  clbOrga->clear();
  for (const tyRestOrganization &organization : FOrganizations) {
    if (!organization.ticketingModuleEnabled)
      continue;
    const bool selected = std::any_of(FSelectedOrganizations.cbegin(), FSelectedOrganizations.cend(),
                                      [&](const tyRestOrganization &o) { return o.id == organization.id; });
    AddCheckItem(clbOrga, organization.name, selected);
  }
  ApplyFilter(clbOrga, edtFilterOrga);
}

void TfmChooseOrga::UpdateTeams()
{
  const tyRestTeams teams = GetTeamsFromOrganization(GetSelectedOrgas(), FLinks, FTeams);
  clbTeams->clear();
  for (const tyRestTeam &team : teams)
    AddCheckItem(clbTeams, team.name, false);
  UpdateSelectedTeams();
  ApplyFilter(clbTeams, edtFilterTeams);
  lblNoTeams->setVisible(clbTeams->count() == 0);
}

void TfmChooseOrga::UpdateSelectedTeams()
{
  for (int i = 0; i < clbTeams->count(); ++i) {
    QListWidgetItem *item = clbTeams->item(i);
    if (std::any_of(FSelectedTeams.cbegin(), FSelectedTeams.cend(),
                    [&](const tyRestTeam &team) { return team.name == item->text(); }))
      item->setCheckState(Qt::Checked);
  }
}

tyRestOrganizations TfmChooseOrga::GetSelectedOrgas() const
{
  tyRestOrganizations selected;
  for (const QString &name : CheckedTexts(clbOrga))
    for (const tyRestOrganization &organization : FOrganizations)
      if (organization.name == name)
        selected.append(organization);
  return selected;
}

tyRestTeams TfmChooseOrga::GetSelectedTeams() const
{
  tyRestTeams selected;
  for (const QString &name : CheckedTexts(clbTeams))
    for (const tyRestTeam &team : FTeams)
      if (team.name == name) {
        tyRestTeam chosen;
        chosen.id = team.id;
        chosen.name = team.name;
        selected.append(chosen);
      }
  return selected;
}

void TfmChooseOrga::OrgaButton(int tag)
{
  {
    const QSignalBlocker blocker(clbOrga);
    SetChecks(clbOrga, tag);
  }
  UpdateTeams();
}

void TfmChooseOrga::TeamButton(int tag) { SetChecks(clbTeams, tag); }

bool ChooseOrga(const tyRestOrganizations &organizations, tyRestOrganizations &selectedOrganizations,
                const tyRestTeams &teams, tyRestTeams &selectedTeams, const tyRestOrganizationsTeams &links,
                QWidget *parent)
{
  TfmChooseOrga dialog(organizations, selectedOrganizations, teams, selectedTeams, links, parent);
  if (dialog.exec() != QDialog::Accepted)
    return false;
  selectedOrganizations = dialog.GetSelectedOrgas();
  selectedTeams = dialog.GetSelectedTeams();
  return true;
}
