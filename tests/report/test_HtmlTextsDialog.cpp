#include "report/gui/TfrmHtmlTexts.h"
#include "support/TempConfig.h"

#include <QApplication>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
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

} // namespace

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
    AnswerNextQuestion(QMessageBox::Discard, &asked);
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_EQ(asked, "Discard the changes made to the texts?");
  });
  EXPECT_FALSE(EditHtmlTexts(texts));
  EXPECT_TRUE(SameTexts(texts, expected));
}
