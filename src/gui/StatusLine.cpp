#include "StatusLine.h"

#include <QPainter>
#include <QStyleOption>

TStatusLine::TStatusLine(QWidget *parent) : QStatusBar(parent)
{
  connect(this, &QStatusBar::messageChanged, this, [this](const QString &message) { setToolTip(message); });
}

QRect TStatusLine::MessageRect() const
{
  // As QStatusBar places its message: a small margin, the size grip kept clear.
  const int grip = isSizeGripEnabled() ? style()->pixelMetric(QStyle::PM_SizeGripSize, nullptr, this) : 0;
  return rect().adjusted(6, 0, -6 - grip, 0);
}

QString TStatusLine::ShownText() const
{
  return fontMetrics().elidedText(currentMessage(), Qt::ElideRight, MessageRect().width());
}

void TStatusLine::paintEvent(QPaintEvent *event)
{
  if (currentMessage().isEmpty())
    return QStatusBar::paintEvent(event);
  QPainter painter(this);
  QStyleOption option;
  option.initFrom(this);
  style()->drawPrimitive(QStyle::PE_PanelStatusBar, &option, &painter, this);
  painter.setPen(palette().windowText().color());
  painter.drawText(MessageRect(), Qt::AlignLeading | Qt::AlignVCenter | Qt::TextSingleLine, ShownText());
}
