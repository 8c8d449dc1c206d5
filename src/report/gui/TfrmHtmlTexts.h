#pragma once

#include "report/HtmlTexts.h"

#include <QDialog>
#include <QMap>

class QLabel;
class QPlainTextEdit;
class QTabWidget;

// The editor of the report's eight text blocks: one page per block, with the HTML
// source above and its rendering below, grouped as the report's sections.
class TfrmHtmlTexts : public QDialog
{
  Q_OBJECT

public:
  explicit TfrmHtmlTexts(QWidget *parent = nullptr);

  void Fill(const tyHtmlTexts &texts);
  tyHtmlTexts Texts() const;
  // Whether a block differs from what Fill gave.
  bool Modified() const;

  // The editor and the preview of a block by its number: 10, 11, 12 (unassigned
  // title, with, without), 20, 21, 22 (without update), 30 (more than ten
  // exchanges), 40 (why).
  QPlainTextEdit *Editor(int number) const { return FEditors.value(number); }
  QLabel *Preview(int number) const { return FPreviews.value(number); }

  // Gives the preview of the editor's block the editor's current text.
  void HtmlChange(QPlainTextEdit *editor);
  // Cancel, Escape or the close box: asks before throwing edits away.
  void reject() override;

  QTabWidget *PageControl;
  QTabWidget *pcUnassigned;
  QTabWidget *pcWithoutUpdate;

protected:
  // FormShow: every preview filled from its editor.
  void showEvent(QShowEvent *event) override;

private:
  QWidget *BlockPage(int number);
  QTabWidget *SectionPages(const char *name, int firstNumber);

  QMap<int, QPlainTextEdit *> FEditors;
  QMap<int, QLabel *> FPreviews;
  tyHtmlTexts FFilled;
};

// Edits the eight blocks; on OK writes them back and returns true.
bool EditHtmlTexts(tyHtmlTexts &texts, QWidget *parent = nullptr);
