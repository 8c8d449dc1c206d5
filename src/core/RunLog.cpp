#include "RunLog.h"

#include <QLocale>

QString LogDateTime(const QDateTime &moment)
{
  const QLocale locale;
  const QString date = locale.toString(moment.date(), QLocale::ShortFormat);
  if (moment.time() == QTime(0, 0))
    return date;
  return date + u' ' + locale.toString(moment.time(), QLocale::LongFormat);
}

QString LogLine(const QString &text)
{
  return LogDateTime(QDateTime::currentDateTime()) + text;
}
