#include "GridSaving.h"

#include "TicketsView.h"
#include "tickets/GridExport.h"

#include <QDate>
#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <optional>

namespace {

const QString CSuffix = QStringLiteral("xlsx");

// Whether to save only the rows shown: asked when the search hides some.
// Empty when the person cancelled.
std::optional<bool> AskOnlyShown(int shown, int all, QWidget *parent)
{
  if (shown == all)
    return false;
  const QString question = QObject::tr("The search shows %1 of the %2 tickets. Save all %2 or the %1 shown?");
  QMessageBox box(QMessageBox::Question, QObject::tr("Save the grid"), question.arg(shown).arg(all),
                  QMessageBox::Cancel, parent);
  const QAbstractButton *allRows = box.addButton(QObject::tr("All %1").arg(all), QMessageBox::AcceptRole);
  QPushButton *shownRows = box.addButton(QObject::tr("The %1 shown").arg(shown), QMessageBox::AcceptRole);
  box.setDefaultButton(shownRows);
  box.exec();
  if (box.clickedButton() == allRows)
    return false;
  if (box.clickedButton() == shownRows)
    return true;
  return std::nullopt;
}

QString AskFileName(QWidget *parent)
{
  QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
  if (folder.isEmpty() || !QDir(folder).exists())
    folder = QDir::homePath();
  const QString proposed =
      QStringLiteral("tickets-%1.%2").arg(QDate::currentDate().toString(QStringLiteral("yyyyMMdd")), CSuffix);
  QFileDialog dialog(parent, QObject::tr("Save the tickets"), QDir(folder).filePath(proposed),
                     QStringLiteral("Excel file (*.xlsx)"));
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setDefaultSuffix(CSuffix); // so that the dialog asks before replacing the file with the suffix
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
    return {};
  QString fileName = dialog.selectedFiles().first();
  if (!fileName.endsWith(u'.' + CSuffix, Qt::CaseInsensitive))
    fileName += u'.' + CSuffix; // "report.v2", or a dialog of the desktop that kept the name as typed
  return fileName;
}

} // namespace

QString SaveGrid(const TTicketsView &view, QWidget *parent)
{
  const QAbstractItemModel &shown = view.ShownRows();
  const std::unique_ptr<QAbstractItemModel> all = view.AllRowsInShownOrder();
  const std::optional<bool> onlyShown = AskOnlyShown(shown.rowCount(), all->rowCount(), parent);
  if (!onlyShown)
    return {};
  const QString fileName = AskFileName(parent);
  if (fileName.isEmpty())
    return {};
  const QAbstractItemModel &rows = *onlyShown ? shown : std::as_const(*all);
  ExportGridToXlsx(rows, fileName);
  return QObject::tr("%n ticket(s) saved to %1", nullptr, rows.rowCount()).arg(QDir::toNativeSeparators(fileName));
}
