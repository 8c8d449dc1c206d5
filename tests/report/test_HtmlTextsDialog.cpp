#include "report/gui/HtmlHighlighter.h"
#include "report/gui/TfrmHtmlTexts.h"
#include "support/TempConfig.h"

#include <QApplication>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QLabel>
#include <QTabWidget>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

namespace {

tyHtmlTexts Sample()
{
  tyHtmlTexts texts = DefaultHtmlTexts();
  texts.Unassigned_Without = {};
  texts.More10 = {"<h2>More</h2>", "", "<p>end</p>"};
  return texts;
}

bool SameTexts(const tyHtmlTexts &a, const tyHtmlTexts &b)
{
  for (const auto block : CHtmlTextBlocks)
    if (a.*block != b.*block)
      return false;
  return true;
}

// Runs `edit` on the dialog once it is shown modally.
void WhenShown(const std::function<void(TfrmHtmlTexts &)> &edit)
{
  QTimer::singleShot(0, [edit] {
    auto *dialog = qobject_cast<TfrmHtmlTexts *>(QApplication::activeModalWidget());
    ASSERT_NE(dialog, nullptr);
    edit(*dialog);
  });
}

// The format the highlighter gave to the character at `position` of the block.
QTextCharFormat FormatAt(const QTextBlock &block, int position)
{
  for (const QTextLayout::FormatRange &range : block.layout()->formats())
    if (position >= range.start && position < range.start + range.length)
      return range.format;
  return {};
}

} // namespace

TEST(HtmlTextsDialogTest, PreviewsAreFilledOnShowAndFollowTheirEditor)
{
  TfrmHtmlTexts dialog;
  dialog.Fill(Sample());
  dialog.Preview(40)->clear();
  dialog.show();
  EXPECT_EQ(dialog.Preview(40)->text(), Sample().Why.join('\n'));
  EXPECT_EQ(dialog.Preview(40)->textFormat(), Qt::RichText);

  EXPECT_EQ(dialog.Preview(30)->text(), "<h2>More</h2>\n\n<p>end</p>");
  dialog.Editor(21)->setPlainText("<p>Changed %NBDAYS%</p>");
  EXPECT_EQ(dialog.Preview(21)->text(), "<p>Changed %NBDAYS%</p>");
  EXPECT_EQ(dialog.Preview(22)->text(), Sample().WithoutUpdate_Without.join('\n'));
}

// Clicks `answer` in the next message box and keeps its question.
void AnswerNextQuestion(QMessageBox::StandardButton answer, QString *asked)
{
  QTimer::singleShot(0, [answer, asked] {
    auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
    ASSERT_NE(box, nullptr);
    *asked = box->text();
    QTest::mouseClick(box->button(answer), Qt::LeftButton);
  });
}

TEST(HtmlTextsDialogTest, OkCopiesEveryBlockBackCancelAsksAndTouchesNothing)
{
  tyHtmlTexts texts = Sample();
  WhenShown([](TfrmHtmlTexts &dialog) {
    dialog.Editor(12)->setPlainText("<p>All good</p>\n<p>really</p>");
    dialog.findChild<QPushButton *>("bbtOk")->click();
  });
  ASSERT_TRUE(EditHtmlTexts(texts));
  tyHtmlTexts expected = Sample();
  expected.Unassigned_Without = {"<p>All good</p>", "<p>really</p>"};
  EXPECT_TRUE(SameTexts(texts, expected));

  WhenShown([](TfrmHtmlTexts &dialog) {
    QTest::keyClicks(dialog.Editor(40), "edited");
    QString asked;
    AnswerNextQuestion(QMessageBox::Cancel, &asked);
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_EQ(asked, "Discard the changes made to the texts?");
    EXPECT_TRUE(dialog.isVisible()); // the edits are still there
    AnswerNextQuestion(QMessageBox::Discard, &asked);
    QTest::mouseClick(dialog.findChild<QPushButton *>("bbtCancel"), Qt::LeftButton);
  });
  EXPECT_FALSE(EditHtmlTexts(texts));
  EXPECT_TRUE(SameTexts(texts, expected));
}

TEST(HtmlHighlighterTest, TagsAttributesValuesEntitiesCommentsAndPlaceholders)
{
  QTextDocument document;
  THtmlHighlighter highlighter(&document);
  document.setPlainText("<p class=\"note\">a &amp; b %NBDAYS%</p> <!-- one\ntwo --> <a\nhref='x'>");
  highlighter.rehighlight();
  const QTextBlock first = document.firstBlock();
  const QString line = first.text();
  EXPECT_EQ(FormatAt(first, 0), highlighter.FTag);                          // <p
  EXPECT_EQ(FormatAt(first, line.indexOf("class")), highlighter.FAttribute);
  EXPECT_EQ(FormatAt(first, line.indexOf("\"note\"")), highlighter.FValue);
  EXPECT_EQ(FormatAt(first, line.indexOf("&amp;")), highlighter.FEntity);
  EXPECT_EQ(FormatAt(first, line.indexOf("%NBDAYS%")), highlighter.FPlaceholder);
  EXPECT_EQ(FormatAt(first, line.indexOf(" b ")), QTextCharFormat());       // plain text
  EXPECT_EQ(FormatAt(first, line.indexOf("one")), highlighter.FComment);
  const QTextBlock second = first.next();
  EXPECT_EQ(FormatAt(second, 0), highlighter.FComment);                     // comment goes on
  EXPECT_EQ(FormatAt(second, second.text().indexOf("<a")), highlighter.FTag);
  const QTextBlock third = second.next();
  EXPECT_EQ(FormatAt(third, 0), highlighter.FAttribute);                    // tag goes on
  EXPECT_EQ(FormatAt(third, third.text().indexOf("'x'")), highlighter.FValue);
}
