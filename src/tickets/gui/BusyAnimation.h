#pragma once

#include <QWidget>

class QTimer;

// A busy animation drawn by Qt, in one of three styles: 1 a turning ring of dots,
// 2 a wave of bars, 3 dots crossing from left to right.
class TBusyAnimation : public QWidget
{
  Q_OBJECT

public:
  TBusyAnimation(int style, QWidget *parent = nullptr);
  QSize sizeHint() const override { return QSize(270, 60); }

protected:
  void paintEvent(QPaintEvent *event) override;
  void showEvent(QShowEvent *event) override;
  void hideEvent(QHideEvent *event) override;

private:
  void PaintRing(QPainter &painter) const;
  void PaintBars(QPainter &painter) const;
  void PaintDots(QPainter &painter) const;

  int FStyle;
  int FFrame = 0;
  QTimer *FTimer;
};
