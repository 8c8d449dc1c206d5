#include "BusyAnimation.h"

#include <QPainter>
#include <QTimer>
#include <cmath>
#include <numbers>

namespace {
constexpr int CFrameMs = 60;
constexpr int CFramesPerTurn = 24;
const QColor CAccent(0x1f, 0x6f, 0xb2);
} // namespace

TBusyAnimation::TBusyAnimation(int style, QWidget *parent)
    : QWidget(parent), FStyle(style), FTimer(new QTimer(this))
{
  setMinimumSize(sizeHint());
  FTimer->setInterval(CFrameMs);
  connect(FTimer, &QTimer::timeout, this, [this] {
    FFrame = (FFrame + 1) % CFramesPerTurn;
    update();
  });
}

void TBusyAnimation::showEvent(QShowEvent *event)
{
  FTimer->start();
  QWidget::showEvent(event);
}

void TBusyAnimation::hideEvent(QHideEvent *event)
{
  FTimer->stop();
  QWidget::hideEvent(event);
}

void TBusyAnimation::paintEvent(QPaintEvent *)
{
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  switch (FStyle) {
  case 1: PaintRing(painter); break;
  case 2: PaintBars(painter); break;
  default: PaintDots(painter); break;
  }
}

void TBusyAnimation::PaintRing(QPainter &painter) const
{
  const QPointF centre = rect().center();
  constexpr int dots = 12;
  const double radius = height() * 0.36;
  for (int i = 0; i < dots; ++i) {
    const double angle = 2 * std::numbers::pi * i / dots;
    const int age = (dots + FFrame / 2 - i) % dots;
    QColor colour = CAccent;
    colour.setAlphaF(1.0 - age / static_cast<double>(dots));
    painter.setBrush(colour);
    painter.drawEllipse(centre + QPointF(radius * std::cos(angle), radius * std::sin(angle)), 3.5, 3.5);
  }
}

void TBusyAnimation::PaintBars(QPainter &painter) const
{
  constexpr int bars = 9;
  const double barWidth = 10;
  const double gap = 8;
  const double left = (width() - bars * barWidth - (bars - 1) * gap) / 2;
  for (int i = 0; i < bars; ++i) {
    const double phase = 2 * std::numbers::pi * (FFrame / static_cast<double>(CFramesPerTurn) - i / 12.0);
    const double barHeight = height() * (0.3 + 0.6 * (0.5 + 0.5 * std::sin(phase)));
    painter.setBrush(CAccent.lighter(100 + i * 8));
    painter.drawRoundedRect(QRectF(left + i * (barWidth + gap), (height() - barHeight) / 2, barWidth, barHeight), 3,
                            3);
  }
}

void TBusyAnimation::PaintDots(QPainter &painter) const
{
  constexpr int dots = 5;
  const double progress = FFrame / static_cast<double>(CFramesPerTurn);
  for (int i = 0; i < dots; ++i) {
    double x = std::fmod(progress + i * 0.08, 1.0);
    x = 0.5 - 0.5 * std::cos(std::numbers::pi * x); // slow at the edges, fast in the middle
    painter.setBrush(QColor(0x2e, 0x8b, 0x57));
    painter.drawEllipse(QPointF(10 + x * (width() - 20), height() / 2.0), 5, 5);
  }
}
