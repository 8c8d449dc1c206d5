#include "RunLog.h"

#include "uTools.h"

QString LogLine(const QString &text)
{
  return DateTimeToStr(QDateTime::currentDateTime()) + text;
}
