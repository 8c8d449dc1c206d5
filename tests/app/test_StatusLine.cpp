// A status line too long for the window ends in "…", and its tool tip holds it whole.

#include "gui/StatusLine.h"

#include <QMainWindow>
#include <QTest>
#include <gtest/gtest.h>

TEST(StatusLine, ALongMessageIsElidedAndWholeInItsToolTip)
{
  QMainWindow window;
  auto *line = new TStatusLine(&window);
  window.setStatusBar(line);
  window.resize(400, 200);
  window.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));

  const QString message = QStringLiteral("Get tickets: the service at 127.0.0.1:44573 refused the connection: 72 "
                                         "queries of 24 organizations failed. Check that it is running");
  line->showMessage(message);
  EXPECT_TRUE(line->ShownText().endsWith(QChar(0x2026))) << line->ShownText().toStdString();
  EXPECT_TRUE(message.startsWith(line->ShownText().chopped(1)));
  EXPECT_EQ(line->toolTip(), message);

  window.resize(3000, 200);
  QTest::qWait(0);
  EXPECT_EQ(line->ShownText(), message);

  line->showMessage(QStringLiteral("4 open ticket(s) retrieved"));
  EXPECT_EQ(line->toolTip(), "4 open ticket(s) retrieved");
}
