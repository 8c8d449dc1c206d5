#pragma once

#include <QStatusBar>

// The main window's status bar: a message too long for the width ends in "…"
// instead of being cut mid-word, and its tool tip holds the whole message.
class TStatusLine : public QStatusBar
{
  Q_OBJECT

public:
  explicit TStatusLine(QWidget *parent = nullptr);

  // The message as it fits the bar's current width.
  QString ShownText() const;

protected:
  void paintEvent(QPaintEvent *event) override;

private:
  QRect MessageRect() const;
};
