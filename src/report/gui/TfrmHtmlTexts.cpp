#include "TfrmHtmlTexts.h"

#include "HtmlHighlighter.h"
#include "gui/DialogLayout.h"

#include <QFontDatabase>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QScreen>
#include <QScrollArea>
#include <QSplitter>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>

namespace {

// Block numbers in the order of the fields of tyHtmlTexts.
constexpr std::array<int, 8> CBlockNumbers = {10, 11, 12, 20, 21, 22, 30, 40};

// One list line per editor line; an empty editor is an empty block.
QStringList EditorLines(const QPlainTextEdit *editor)
{
  const QString text = editor->toPlainText();
  return text.isEmpty() ? QStringList() : text.split(u'\n');
}

} // namespace

TfrmHtmlTexts::TfrmHtmlTexts(QWidget *parent) : QDialog(parent)
{
  setObjectName(QStringLiteral("frmHtmlTexts"));
  setWindowTitle(QStringLiteral("Texts"));
  // Large enough to edit in, never larger than the screen (scaled displays).
  resize(QSize(820, 640).boundedTo(screen()->availableGeometry().size() * 9 / 10));

  PageControl = new QTabWidget;
  PageControl->setObjectName(QStringLiteral("PageControl"));
  pcUnassigned = SectionPages("pcUnassigned", 10);
  pcWithoutUpdate = SectionPages("pcWithoutUpdate", 20);
  PageControl->addTab(pcUnassigned, QStringLiteral("Unassigned"));
  PageControl->addTab(pcWithoutUpdate, QStringLiteral("Without Update"));
  PageControl->addTab(BlockPage(30), QStringLiteral("> 10 Exchanges"));
  PageControl->addTab(BlockPage(40), QStringLiteral("Why ?"));

  SetOkCancelLayout(this, PageControl);
}

QTabWidget *TfrmHtmlTexts::SectionPages(const char *name, int firstNumber)
{
  auto *pages = new QTabWidget;
  pages->setObjectName(QLatin1String(name));
  pages->setDocumentMode(true);
  pages->addTab(BlockPage(firstNumber), QStringLiteral("Title"));
  pages->addTab(BlockPage(firstNumber + 1), QStringLiteral("If tickets are found"));
  pages->addTab(BlockPage(firstNumber + 2), QStringLiteral("If everything is OK"));
  return pages;
}

QWidget *TfrmHtmlTexts::BlockPage(int number)
{
  auto *editor = new QPlainTextEdit;
  editor->setObjectName(QStringLiteral("HtmlEditor%1").arg(number));
  editor->setProperty("Tag", number);
  editor->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  new THtmlHighlighter(editor->document());
  connect(editor, &QPlainTextEdit::textChanged, this, [this, editor] { HtmlChange(editor); });

  auto *preview = new QLabel;
  preview->setObjectName(QStringLiteral("HtmlPreview%1").arg(number));
  preview->setTextFormat(Qt::RichText);
  preview->setWordWrap(true);
  preview->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  preview->setContentsMargins(8, 6, 8, 6);
  preview->setTextInteractionFlags(Qt::TextSelectableByMouse);
  preview->setAutoFillBackground(true);
  QPalette paper = preview->palette();
  paper.setColor(QPalette::Window, Qt::white);
  paper.setColor(QPalette::WindowText, Qt::black);
  preview->setPalette(paper);
  auto *scroll = new QScrollArea;
  scroll->setWidget(preview);
  scroll->setWidgetResizable(true);

  auto *split = new QSplitter(Qt::Vertical);
  split->addWidget(editor);
  split->addWidget(scroll);
  split->setStretchFactor(0, 1);
  split->setStretchFactor(1, 1);
  split->setSizes({300, 260}); // the source a little taller than its rendering
  split->setChildrenCollapsible(false);

  auto *page = new QWidget;
  auto *layout = new QVBoxLayout(page);
  layout->setContentsMargins(6, 6, 6, 6);
  layout->addWidget(split);

  FEditors.insert(number, editor);
  FPreviews.insert(number, preview);
  return page;
}

void TfrmHtmlTexts::HtmlChange(QPlainTextEdit *editor)
{
  if (QLabel *preview = FPreviews.value(editor->property("Tag").toInt()))
    preview->setText(EditorLines(editor).join(u'\n'));
}

void TfrmHtmlTexts::showEvent(QShowEvent *event)
{
  for (QPlainTextEdit *editor : std::as_const(FEditors))
    HtmlChange(editor);
  QDialog::showEvent(event);
}

void TfrmHtmlTexts::Fill(const tyHtmlTexts &texts)
{
  for (std::size_t i = 0; i < CBlockNumbers.size(); ++i)
    FEditors.value(CBlockNumbers[i])->setPlainText((texts.*CHtmlTextBlocks[i]).join(u'\n'));
  PageControl->setCurrentIndex(0);
  FFilled = Texts(); // as the editors hold them, so that an untouched block is never "modified"
}

bool TfrmHtmlTexts::Modified() const
{
  const tyHtmlTexts now = Texts();
  return std::any_of(CHtmlTextBlocks.cbegin(), CHtmlTextBlocks.cend(),
                     [&](QStringList tyHtmlTexts::*block) { return now.*block != FFilled.*block; });
}

void TfrmHtmlTexts::reject()
{
  if (Modified() &&
      QMessageBox::question(this, windowTitle(), tr("Discard the changes made to the texts?"),
                            QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Cancel) != QMessageBox::Discard)
    return;
  QDialog::reject();
}

tyHtmlTexts TfrmHtmlTexts::Texts() const
{
  tyHtmlTexts texts;
  for (std::size_t i = 0; i < CBlockNumbers.size(); ++i)
    texts.*CHtmlTextBlocks[i] = EditorLines(FEditors.value(CBlockNumbers[i]));
  return texts;
}

bool EditHtmlTexts(tyHtmlTexts &texts, QWidget *parent)
{
  TfrmHtmlTexts dialog(parent);
  dialog.Fill(texts);
  if (dialog.exec() != QDialog::Accepted)
    return false;
  texts = dialog.Texts();
  return true;
}
