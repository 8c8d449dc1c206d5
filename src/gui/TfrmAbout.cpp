#include "TfrmAbout.h"

#include "core/AppInfo.h"
#include "core/LibraryVersions.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>

TfrmAbout::TfrmAbout(QWidget *parent) : QDialog(parent)
{
  setObjectName(QStringLiteral("frmAbout"));
  setWindowTitle(tr("About"));
  auto *icon = new QLabel;
  icon->setPixmap(QIcon(QStringLiteral(":/icons/quorvex-followup.svg")).pixmap(64, 64));
  auto *text = new QLabel(QStringLiteral("<h3>%1</h3><p>Version %2<br>Built on %3</p>"
                                         "<p><a href=\"%4\">Documentation</a></p>")
                              .arg(CApplicationTitle, QStringLiteral(QUORVEX_VERSION), QStringLiteral(__DATE__),
                                   QStringLiteral(QUORVEX_DOC_URL)));
  text->setObjectName(QStringLiteral("lblAbout"));
  text->setOpenExternalLinks(true);
  text->setTextInteractionFlags(Qt::TextBrowserInteraction);
  auto *row = new QHBoxLayout;
  row->addWidget(icon, 0, Qt::AlignTop);
  row->addSpacing(12);
  row->addWidget(text, 1);
  auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  auto *layout = new QVBoxLayout(this);
  layout->addLayout(row);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

TfrmLibraries::TfrmLibraries(QWidget *parent) : QDialog(parent)
{
  setObjectName(QStringLiteral("frmLibraries"));
  setWindowTitle(QStringLiteral("Librairies"));
  const auto libraries = LibraryVersions();
  auto *table = new QTableWidget(static_cast<int>(libraries.size()), 2);
  table->setObjectName(QStringLiteral("tblLibraries"));
  table->setHorizontalHeaderLabels({tr("Library"), tr("Version")});
  table->verticalHeader()->hide();
  table->setEditTriggers(QAbstractItemView::NoEditTriggers);
  for (int row = 0; row < libraries.size(); ++row) {
    table->setItem(row, 0, new QTableWidgetItem(libraries[row].first));
    table->setItem(row, 1, new QTableWidgetItem(libraries[row].second));
  }
  table->horizontalHeader()->setStretchLastSection(true);
  table->resizeColumnsToContents();
  auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  auto *layout = new QVBoxLayout(this);
  layout->addWidget(table);
  layout->addWidget(buttons);
  resize(420, 240);
}
