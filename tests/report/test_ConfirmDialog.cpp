// The send confirmation, driven by keys as a person drives it: Enter sends,
// Escape cancels, whichever of its lists has the focus.

#include "report/gui/TfrmConfirmRecipients.h"

#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

namespace {

// Answers the confirmation with `key`, after Tab has moved the focus `tabs` times;
// gives what the dialog returned and what it showed.
struct TAnswered
{
  bool Sent = false;
  QString Focused; // the class of the widget the answering key went to
  QStringList Labels;
};

TAnswered Answer(const TMailConfirmation &confirmation, int tabs, Qt::Key key)
{
  TAnswered answered;
  QTimer::singleShot(0, [&] {
    auto *dialog = dynamic_cast<TfrmConfirmRecipients *>(QApplication::activeModalWidget());
    ASSERT_NE(dialog, nullptr);
    for (const QLabel *label : dialog->findChildren<QLabel *>())
      answered.Labels << label->text();
    // The keys go where the dialog's focus is, as a person's would.
    auto focused = [dialog] { return dialog->focusWidget() ? dialog->focusWidget() : dialog; };
    for (int i = 0; i < tabs; ++i)
      QTest::keyClick(focused(), Qt::Key_Tab);
    answered.Focused = focused()->metaObject()->className();
    QTest::keyClick(focused(), key);
  });
  answered.Sent = ConfirmRecipients(confirmation);
  return answered;
}

} // namespace

TEST(ConfirmDialog, EnterSendsAndEscapeCancelsWithTheQuestionAndTheCountInTheBody)
{
  const TMailConfirmation personal{
      QStringLiteral("3 mails: 2 personal digests and the full report to leads@vellmor.example"),
      {QStringLiteral("leads@vellmor.example"), QStringLiteral("ann@example.org"), QStringLiteral("bob@example.org")},
      {}};
  QStringList focused;
  for (int tabs : {0, 1, 2}) {
    SCOPED_TRACE(tabs);
    const TAnswered sent = Answer(personal, tabs, Qt::Key_Return);
    EXPECT_TRUE(sent.Sent) << sent.Focused.toStdString();
    focused << sent.Focused;
    EXPECT_TRUE(sent.Labels.contains(personal.Summary) &&
                sent.Labels.join(u'\n').contains("Do you confirm sending the email to these recipients?"));
    EXPECT_FALSE(Answer(personal, tabs, Qt::Key_Escape).Sent);
  }
  EXPECT_TRUE(focused.contains("QListWidget")) << focused.join(u' ').toStdString();
}
